#include "stages/fixed_point.h"
#include "stages/prefilter/class_rows.h"
#include "stages/prefilter/classify.h"

namespace kelvo::plain {

using namespace class_code;

void ChooseFilterRow(const DetailThresholds& thresholds, int32_t* __restrict codes, int count) {
  const int32_t* __restrict limits = thresholds.of;
  const int last_directional = thresholds.last_directional;
  for (int i = 0; i < count; ++i) {
    const uint32_t code = Bits(codes[i]) & ~(kRowMask << kRowShift | kDirectional);
    const int32_t contrast = Signed(code >> kContrastShift & kContrastMask),
                  threshold = limits[(code >> 13 & 7) | (code >> 20 & 56)];
    int row = 0;
    for (int halving = 0; halving < 5; ++halving) row += contrast <= threshold >> halving ? 1 : 0;
    const uint32_t directional = row >= 1 && row <= last_directional ? kDirectional : 0;
    codes[i] = Signed(code | Bits(row) << kRowShift | directional);
  }
}

}  // namespace kelvo::plain
