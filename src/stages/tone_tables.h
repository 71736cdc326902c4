// The tone curves between display values and linear light.
//
// Curve k has the exponent g = 1.0, 1.6, 1.8, 2.0 for k = 0..3; every run uses curve 2. Both directions are the floor
// of the real value:
//   forward, index = grey level 0..255:         16711680 x (level / 255)^g, linear values 0..16711680 (= 255 x 65536)
//   inverse, index = linear value >> 12, 0..4095: 32640 x (index / 4080)^(1/g), display values 0..32706
#ifndef KELVO_STAGES_TONE_TABLES_H
#define KELVO_STAGES_TONE_TABLES_H

#include <cstdint>

namespace kelvo {

extern const int32_t kForwardTone[4][256];
extern const int16_t kInverseTone[4][4096];

// What a display value becomes when it goes to linear light and back with curve 2: the fraction below a grey level is
// dropped, and in the shadows (levels 1 and 2) the curves are too coarse to return. Any int32_t; result 0..32640.
inline int32_t RoundTrip(int32_t display) {
  return kInverseTone[2][kForwardTone[2][(display >> 7) & 255] >> 12];
}

}  // namespace kelvo

#endif  // KELVO_STAGES_TONE_TABLES_H
