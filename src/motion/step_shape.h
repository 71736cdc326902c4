// Which cells a step along the line moves, and what lies around them.
//
// Angles whose operators hit the same cells share a shape: there are 16 of them, of 40 operators. A search reads little
// but neighbours, and where they lie is a constant of the shape.
#ifndef KELVO_MOTION_STEP_SHAPE_H
#define KELVO_MOTION_STEP_SHAPE_H

#include <array>
#include <cstdint>

#include "motion/step_operator.h"

namespace kelvo {

// A moved cell, and the cells around it that do not move.
struct MovedCell {
  int16_t count;
  std::array<int16_t, 8> neighbours;
};

// Two moved cells that touch, by tap number.
struct TouchingCells {
  int8_t first, second;
};

struct StepShape {
  static constexpr int kMaxTouching = 40;

  OperatorTaps taps;
  std::array<MovedCell, OperatorTaps::kMax> moved;  // by tap
  std::array<TouchingCells, kMaxTouching> touching;
  int16_t touching_count;
};

namespace motion {

constexpr bool Touch(const OperatorTap& a, const OperatorTap& b) {
  const int columns = a.column - b.column, rows = a.up - b.up;
  return columns >= -1 && columns <= 1 && rows >= -1 && rows <= 1;
}

constexpr bool Moves(const OperatorTaps& taps, int cell) {
  bool moves = false;
  for (int i = 0; i < taps.count; ++i) moves = moves || taps.taps[static_cast<size_t>(i)].cell == cell;
  return moves;
}

constexpr StepShape MakeShape(StepOperator step_operator, int angle) {
  StepShape shape{};
  shape.taps = MakeTaps(step_operator, angle);
  const auto& taps = shape.taps.taps;
  for (size_t i = 0; i < static_cast<size_t>(shape.taps.count); ++i) {
    MovedCell& moved = shape.moved[i];
    for (int up = 1; up >= -1; --up)
      for (int column = -1; column <= 1; ++column) {
        const int cell = taps[i].cell + CellsTo(-up, column);
        if (!Moves(shape.taps, cell)) moved.neighbours[static_cast<size_t>(moved.count++)] = static_cast<int16_t>(cell);
      }
    for (size_t j = 0; j < i; ++j)
      if (Touch(taps[i], taps[j]))
        shape.touching[static_cast<size_t>(shape.touching_count++)] = {static_cast<int8_t>(j), static_cast<int8_t>(i)};
  }
  return shape;
}

inline constexpr int kOperators = 4;
inline constexpr int kShapes = kOperators * kBuckets;  // numbers of shapes; most are not in use

constexpr StepShape ShapeOf(int number) {
  return MakeShape(static_cast<StepOperator>(number / kBuckets), number % kBuckets * 5);
}

// The number of an operator's shape: that of the least angle with the same cells.
constexpr int ShapeNumber(StepOperator step_operator, int angle) {
  const OperatorTaps taps = MakeTaps(step_operator, angle);
  for (int bucket = 0;; ++bucket) {
    const OperatorTaps others = MakeTaps(step_operator, 5 * bucket);
    bool same = taps.count == others.count;
    for (size_t i = 0; same && i < static_cast<size_t>(taps.count); ++i)
      same = taps.taps[i].cell == others.taps[i].cell;
    if (same) return static_cast<int>(step_operator) * kBuckets + bucket;
  }
}

}  // namespace motion

}  // namespace kelvo

#endif  // KELVO_MOTION_STEP_SHAPE_H
