// plain::ChooseFilterRow in vectors of neighbouring cells.
#include "stages/fixed_point.h"
#include "stages/lanes.h"
#include "stages/prefilter/class_rows.h"
#include "stages/prefilter/classify.h"

namespace kelvo::KELVO_TARGET {
namespace {

using namespace class_code;

// Most tiles have no ringing, and then there are eight thresholds: few enough for a register.
Vector ThresholdsOf(const int32_t* limits, Vector code) {
  const Vector edges = code >> 13 & 7;
  if (Any(code & (kRinging1 | kRinging2 | kRinging3))) return Gather(limits, edges | (code >> 20 & 56));
  return GatherFrom8(limits, edges);
}

Vector Chosen(const DetailThresholds& thresholds, Vector code) {
  code &= ~(kRowMask << kRowShift | kDirectional);
  const Vector contrast = code >> kContrastShift & kContrastMask, threshold = ThresholdsOf(thresholds.of, code);
  Vector row = All(5);  // less one for every halving of the threshold that the contrast exceeds
  for (int halving = 0; halving < 5; ++halving) row += LessSigned(ShiftRightArithmetic(threshold, halving), contrast);
  const Vector beyond = LessSigned(All(Bits(thresholds.last_directional)), row);
  return code | row << kRowShift | (LessSigned(All(0), row) & ~beyond & kDirectional);
}

}  // namespace

void ChooseFilterRow(const DetailThresholds& thresholds, int32_t* codes, int count) {
  for (int i = 0; i < count; i += kLanes) {
    int32_t* cells = codes + (i + kLanes <= count ? i : count - kLanes);  // a cell that is met twice stays as chosen
    Store(cells, Chosen(thresholds, Load(cells)));
  }
}

}  // namespace kelvo::KELVO_TARGET
