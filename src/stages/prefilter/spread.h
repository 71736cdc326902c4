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
  int reach;
  uint8_t along, down;  // the bits that the step spreads within rows and across them
};

// The marks of a row, with cells on either side that stay zero.
struct MarkRow {
  static constexpr int kMargin = 4;
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

  // Changes the row to the spread one of `delay()` rows before; the rows before the first count as unmarked.
  void Pass(MarkRow& row) {
    for (int s = 0; s < kSteps; ++s) Along(steps_[s], row);
    for (int s = 0; s < kSteps; ++s) Down(steps_[s], past_[s], row);
    ++time_;
  }

 private:
  static constexpr int kPast = 2 * MarkRow::kMargin;

  void Along(const SpreadStep& step, MarkRow& row) {
    if (step.along == 0) return;
    const MarkRow from = row;
    const uint8_t *left = from.cells() - step.reach, *middle = from.cells(), *right = from.cells() + step.reach;
    for (int i = 0; i < count_; ++i)
      row.cells()[i] = static_cast<uint8_t>(middle[i] | ((left[i] | right[i]) & step.along));
  }

  // `past` are the rows that came last, twice as many as the reach, in turn.
  void Down(const SpreadStep& step, MarkRow (&past)[kPast], MarkRow& row) {
    MarkRow& oldest = past[time_ & (2 * step.reach - 1)];
    const uint8_t* middle = past[(time_ + step.reach) & (2 * step.reach - 1)].cells();
    for (int i = 0; i < count_; ++i) {
      const uint8_t latest = row.cells()[i];
      row.cells()[i] = static_cast<uint8_t>(middle[i] | ((oldest.cells()[i] | latest) & step.down));
      oldest.cells()[i] = latest;
    }
  }

  const SpreadStep (&steps_)[kSteps];
  int count_, time_ = 0;
  MarkRow past_[kSteps][kPast] = {};
};

}  // namespace kelvo::KELVO_TARGET

#endif  // KELVO_STAGES_PREFILTER_SPREAD_H
