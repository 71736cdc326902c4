// The tone curves between display values and linear light.
//
// Curve k has the exponent g = 1.0, 1.6, 1.8, 2.0 for k = 0..3; every run uses curve 2. Both directions are the floor
// of the real value:
//   forward, index = grey level 0..255:         16711680 x (level / 255)^g, linear values 0..16711680 (= 255 x 65536)
//   inverse, index = linear value >> 12, 0..4095: 32640 x (index / 4080)^(1/g), display values 0..32706
#ifndef KELVO_STAGES_TONE_TABLES_H
#define KELVO_STAGES_TONE_TABLES_H

#include <cstdint>

#include "stages/fixed_point.h"

namespace kelvo {

// The last entry stands twice: beyond it the chords go on level.
extern const int32_t kForwardTone[4][257];
extern const int16_t kInverseTone[4][4097];

inline constexpr int32_t kLinearWhite = 255 * 65536;  // linear value of level 255

// By entry: any int32_t; of a display value only bits 7..14 count, a linear value outside 0..16777215 counts as the
// nearest.
inline int32_t ForwardTone(int curve, int32_t display) {
  return kForwardTone[curve][(display >> 7) & 255];
}
inline int32_t InverseTone(int curve, int32_t linear) {
  return kInverseTone[curve][Clamp(linear >> 12, 0, 4095)];
}

// Between the entries of one curve, along the chord, truncated.
inline int32_t ForwardToneBetween(const int32_t* entries, int32_t display) {
  const int level = (display >> 7) & 255;
  return entries[level] + ((entries[level + 1] - entries[level]) * (display & 127) >> 7);
}
inline int32_t InverseToneBetween(const int16_t* entries, int32_t linear) {
  const int32_t inside = Clamp(linear, 0, (4096 << 12) - 1);
  const int index = inside >> 12;
  return entries[index] + ((entries[index + 1] - entries[index]) * (inside & 4095) >> 12);
}

// What a display value becomes when it goes to linear light and back with curve 2. By entry the fraction below a grey
// level is dropped, and in the shadows (levels 1 and 2) the curves are too coarse to return. Any int32_t; result
// 0..32640.
inline int32_t RoundTrip(int32_t display) {
  return InverseTone(2, ForwardTone(2, display));
}
inline int32_t RoundTripBetween(int32_t display) {
  return InverseToneBetween(kInverseTone[2], ForwardToneBetween(kForwardTone[2], display));
}

}  // namespace kelvo

#endif  // KELVO_STAGES_TONE_TABLES_H
