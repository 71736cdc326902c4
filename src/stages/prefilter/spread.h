// Marks that spread to the cells around them: dilation by rectangles, one rectangle for each bit of a mark.
//
// A rectangle is made in steps, each of which ORs in the marks `reach` cells before and behind: reaches 1, 1, 2, 4 make
// a half-width of 8. A step spreads the bits that it names; so bits that skip steps have narrower rectangles.
#ifndef KELVO_STAGES_PREFILTER_SPREAD_H
#define KELVO_STAGES_PREFILTER_SPREAD_H

#include <cstdint>

#include "stages/target.h"
#include "stages/tile.h"

namespace kelvo::KELVO_TARGET {

struct SpreadStep {
  int reach;            // 1, 2 or 4
  uint8_t along, down;  // the bits that the step spreads within rows and across them
};

// The marks of a row, with cells on either side that stay zero.
struct MarkRow {
  static constexpr int kMargin = 4;
  static constexpr int kPiece = 32;  // cells that are worked at once, without a remainder: the last piece may hang over
  uint8_t* cells() { return bytes + kMargin; }
  const uint8_t* cells() const { return bytes + kMargin; }
  uint8_t bytes[kMargin + kTileSize + kMargin];
};

// Takes marked rows from the top down and gives them spread, as many rows later as the reaches add up to.
template <int kSteps>
class Spread {
 public:
  Spread(const SpreadStep (&steps)[kSteps], int count) : steps_(steps), count_(count) {}

  // How many rows later.
  int delay() const {
    int rows = 0;
    for (const SpreadStep& step : steps_) rows += step.reach;
    return rows;
  }

  // The row to be marked next: zero.
  MarkRow& Next() { return row_ = {}; }

  // Spreads it, and gives the spread one of `delay()` rows before. Those before the first are unmarked.
  const MarkRow& Pass() {
    for (int s = 0; s < kSteps; ++s) {
      if (steps_[s].along == 0) continue;
      const MarkRow from = row_;
      for (int i = 0; i < count_; i += MarkRow::kPiece) Along(steps_[s], from.cells() + i, row_.cells() + i);
    }
    for (int s = 0; s < kSteps; ++s) {
      const int reach = steps_[s].reach;
      MarkRow& oldest = past_[s][time_ & (2 * reach - 1)];
      const MarkRow& middle = past_[s][(time_ + reach) & (2 * reach - 1)];
      for (int i = 0; i < count_; i += MarkRow::kPiece)
        Down(steps_[s].down, oldest.cells() + i, middle.cells() + i, row_.cells() + i);
    }
    ++time_;
    return row_;
  }

 private:
  static void Along(const SpreadStep& step, const uint8_t* __restrict from, uint8_t* __restrict to) {
    for (int k = 0; k < MarkRow::kPiece; ++k)
      to[k] = static_cast<uint8_t>(from[k] | ((from[k - step.reach] | from[k + step.reach]) & step.along));
  }

  static void Down(uint8_t down, uint8_t* __restrict oldest, const uint8_t* __restrict middle,
                   uint8_t* __restrict latest) {
    for (int k = 0; k < MarkRow::kPiece; ++k) {
      const uint8_t before = oldest[k];
      oldest[k] = latest[k];
      latest[k] = static_cast<uint8_t>(middle[k] | ((before | latest[k]) & down));
    }
  }

  const SpreadStep (&steps_)[kSteps];
  int count_, time_ = 0;
  MarkRow row_ = {};
  MarkRow past_[kSteps][2 * MarkRow::kMargin] = {};  // of a step, the latest rows, twice as many as it reaches, in turn
};

}  // namespace kelvo::KELVO_TARGET

#endif  // KELVO_STAGES_PREFILTER_SPREAD_H
