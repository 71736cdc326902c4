// The library under test, called the way its users call it.
#ifndef KELVO_TESTS_SUPPORT_LIBRARY_H
#define KELVO_TESTS_SUPPORT_LIBRARY_H

#include "kelvo/kelvo.h"

namespace kelvo::test {

// Calls the tile export of an ordinal, 3..7. `variant` other than 0 is for focus alone, ordinal 4.
//
// On Windows the call goes through Kelvo.dll, loaded at run time and found by ordinal, with the heap's address in the
// block and with stacks of every alignment to 4 bytes; variants, which are no exports, go to the static library.
int32_t CallLibrary(int ordinal, TileParams& params, int32_t* heap, uint32_t variant);

}  // namespace kelvo::test

#endif  // KELVO_TESTS_SUPPORT_LIBRARY_H
