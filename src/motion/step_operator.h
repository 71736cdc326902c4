// Difference operators: how a step along the line changes the estimate.
//
// A step of v moves light from the cells behind a pixel to those before it, along the line. A point of the line that
// lies between two rows is shared by the two cells of its column:
//
//   unit   + v on the pixel, - v one column back along the line
//   span   + v one column ahead, - v one column back
//   pair   + 2h one and + h two columns ahead, minus the same behind    h = v >> 1, 2h = 2 (v >> 1)
//   tent   + h one, + 2h two and + h three columns ahead, minus the same behind
//
// Span, pair and tent add exactly what they take. Unit with a shared partner takes up to 2 less than it gives, because
// its shares sum to 65535/65536.
#ifndef KELVO_MOTION_STEP_OPERATOR_H
#define KELVO_MOTION_STEP_OPERATOR_H

#include <array>
#include <cstdint>

#include "motion/family.h"
#include "stages/fixed_point.h"
#include "stages/stencil.h"

namespace kelvo {

enum class StepOperator { kUnit, kSpan, kPair, kTent };

// What a tap takes of the step v: all of it, h or 2h.
enum class TapBase : int8_t { kWhole, kHalf, kEven };

struct OperatorTap {
  int16_t column, up;  // from the pixel
  int16_t cell;        // the same as a distance in cells of a plane
  int8_t sign;
  TapBase base;
  int32_t share;  // of 65536
};

struct OperatorTaps {
  static constexpr int kMax = 12;

  std::array<OperatorTap, kMax> taps;
  int count;
};

// The operators of a member: the coarse one of pass 1 and the fine one of the last pass. The fine operator is one rung
// of the ladder unit, span, pair, tent below the coarse one; widths 1..3 have the fine one alone.
constexpr StepOperator CoarseOperator(int width) {
  return width <= 7 ? StepOperator::kSpan : width <= 11 ? StepOperator::kPair : StepOperator::kTent;
}
constexpr StepOperator FineOperator(int width) {
  return width <= 7 ? StepOperator::kUnit : width <= 11 ? StepOperator::kSpan : StepOperator::kPair;
}

// What a tap's cell gains, or loses, by a step of v. The sign is applied after the shift, so that mirrored taps cancel.
constexpr int32_t TapAmount(const OperatorTap& tap, int32_t v) {
  const int32_t half = v >> 1;
  const int32_t base = tap.base == TapBase::kWhole ? v : tap.base == TapBase::kHalf ? half : half * 2;
  return tap.share == 65536 ? base : static_cast<int32_t>((static_cast<int64_t>(base) * tap.share) >> 16);
}

// The rest builds the taps at compile time.
namespace motion {

// The two cells of the column `step` columns ahead, or the one that the line hits; behind the pixel they are turned by
// half around it.
constexpr void AddPoint(OperatorTaps& taps, int angle, int step, int side, TapBase base) {
  const double height = step * Tangent(angle);
  const int row = Floor(height);
  const double upper = height - row;
  const auto add = [&](int up, double share) {
    const int column = side * step, turned_up = side * up;
    taps.taps[static_cast<size_t>(taps.count++)] = {static_cast<int16_t>(column),
                                                    static_cast<int16_t>(turned_up),
                                                    static_cast<int16_t>(CellsTo(-turned_up, column)),
                                                    static_cast<int8_t>(side),
                                                    base,
                                                    Floor(65536.0 * share)};
  };
  add(row, 1.0 - upper);
  if (upper > 0.0) add(row + 1, upper);
}

constexpr OperatorTaps MakeTaps(StepOperator step_operator, int angle) {
  OperatorTaps taps{};
  const auto both = [&](int step, TapBase base) {
    AddPoint(taps, angle, step, 1, base);
    AddPoint(taps, angle, step, -1, base);
  };
  switch (step_operator) {
    case StepOperator::kUnit:
      AddPoint(taps, angle, 0, 1, TapBase::kWhole);
      AddPoint(taps, angle, 1, -1, TapBase::kWhole);
      break;
    case StepOperator::kSpan:
      both(1, TapBase::kWhole);
      break;
    case StepOperator::kPair:
      both(1, TapBase::kEven);
      both(2, TapBase::kHalf);
      break;
    case StepOperator::kTent:
      both(1, TapBase::kHalf);
      both(2, TapBase::kEven);
      both(3, TapBase::kHalf);
      break;
  }
  return taps;
}

}  // namespace motion

}  // namespace kelvo

#endif  // KELVO_MOTION_STEP_OPERATOR_H
