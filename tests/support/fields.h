// The block's fields by name, for tables of cases and of expectations.
#ifndef KELVO_TESTS_SUPPORT_FIELDS_H
#define KELVO_TESTS_SUPPORT_FIELDS_H

#include <cstdint>
#include <string>

#include "kelvo/kelvo.h"

namespace kelvo::test {

// First 32-bit word of a field; single-precision fields by their bits. Throws std::invalid_argument for an unknown
// name.
int32_t* FieldWord(TileParams& params, const std::string& name);

}  // namespace kelvo::test

#endif  // KELVO_TESTS_SUPPORT_FIELDS_H
