// The checks of the exports, in their fixed order.
#ifndef KELVO_API_VALIDATE_H
#define KELVO_API_VALIDATE_H

#include "kelvo/kelvo.h"

namespace kelvo {

// A failed check: its result code and the text that goes to TileParams::Message. Success has code 0 and an empty text.
struct Verdict {
  int32_t code;
  const char* message;
};

Verdict CheckDefocus(const TileParams& params);       // size, width, direction
Verdict CheckFocus(const TileParams& params);         // size, RemoveNoise, Accuracy, width, direction
Verdict CheckSize(const TileParams& params);          // size alone
Verdict CheckJpgDetection(const TileParams& params);  // the two offsets; deliberately not the size

}  // namespace kelvo

#endif  // KELVO_API_VALIDATE_H
