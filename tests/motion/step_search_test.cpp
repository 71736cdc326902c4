// The searches of all levels against a literal one that works on the planes: it carries out
// every candidate move, adds up its cost from the planes and takes it back bit by bit of the total.
#include <doctest/doctest.h>

#include <algorithm>

#include "motion/line.h"
#include "motion/step_sweep.h"
#include "stages/routines.h"
#include "support/levels.h"
#include "support/tiles.h"

namespace kelvo::test {
namespace {

class LiteralStep {
 public:
  LiteralStep(const StepSweep& sweep, int cell, int32_t unit) : s(sweep), m(*sweep.model), p(cell), unit_(unit) {}

  int Search(int32_t previous) {
    uint32_t best = Cost();
    int sign = s.iteration > 1 && previous < 0 ? -1 : 1;
    if (Try(sign, 0) >= best) {
      sign = -sign;
      if (Try(sign, 0) >= best) return 0;
      if (s.iteration >= 2) unit_ >>= 1;
    }
    int total = 0;
    const auto take = [&](int k) {
      best = Try(sign, k);
      Move(sign, k);
      total += sign * (1 << k);
    };
    take(0);
    int k = 1;
    for (; k <= 10 && Try(sign, k) < best; ++k) take(k);
    for (--k; k >= 0;) {
      if (Try(sign, k) < best) {
        take(k--);
        continue;
      }
      if (--k < 0) break;
      sign = -sign;
      if (Try(sign, k) < best)
        take(k--);
      else
        sign = -sign;
    }
    for (int bit = 0; bit < 12; ++bit)
      if (std::abs(total) >> bit & 1) Move(total > 0 ? -1 : 1, bit);
    return total;
  }

 private:
  void Move(int sign, int k) {
    const auto add = [&](int32_t& cell, int side, int32_t amount) {
      cell = Signed(Bits(cell) + Bits(sign * side) * (Bits(amount) << (s.scale_shift + k)));
    };
    for (int i = 0; i < m.taps.count; ++i) {
      const OperatorTap& tap = m.taps.taps[static_cast<size_t>(i)];
      add(s.estimate[p + tap.cell], tap.sign, TapAmount(tap, unit_));
    }
    for (const StepSide* side : {&m.rising, &m.falling})
      for (size_t i = 0; i < static_cast<size_t>(side->count); ++i)
        add(s.blurred[p + side->cells[i]], side == &m.rising ? 1 : -1, side->amounts[i]);
  }

  uint32_t Try(int sign, int k) {
    Move(sign, k);
    const uint32_t cost = Cost();
    Move(-sign, k);
    return cost;
  }

  uint32_t Misfit(const StepSide& side) const {
    uint32_t sum = 0;
    for (size_t i = 0; i < static_cast<size_t>(side.count); ++i)
      sum += Magnitude(Bits(s.blurred[p + side.cells[i]]) - Bits(s.observed[p + side.cells[i]]));
    return MulHighUnsigned(Bits(s.blurred[6400 + (s.observed[p + side.pixel] >> 16)]), sum);
  }

  bool Moves(int cell) const {
    return std::any_of(m.taps.taps.begin(), m.taps.taps.begin() + m.taps.count,
                       [cell](const OperatorTap& tap) { return tap.cell == cell; });
  }

  uint32_t Roughness(int moved) const {
    const int32_t value = s.estimate[p + moved];
    uint32_t sum = 0;
    for (const int near : {-257, -256, -255, -1, 1, 255, 256, 257}) {
      const uint32_t difference = Magnitude(Bits(value) - Bits(s.estimate[p + moved + near]));
      sum += Moves(moved + near) ? difference >> 1 : difference;
    }
    const int32_t below = std::min(WrapSub(value, s.floor[p + moved]), 0) >> 1;
    return MulHighUnsigned(Bits(s.blurred[512 + Clamp(WrapAdd(value, below) >> 16, -511, 7679)]), sum);
  }

  uint32_t Cost() const {
    uint32_t cost = Misfit(m.rising) + Misfit(m.falling);
    for (int i = 0; i < m.taps.count; ++i) cost += Roughness(m.taps.taps[static_cast<size_t>(i)].cell);
    return cost;
  }

  const StepSweep& s;
  const StepModel& m;
  int p;
  int32_t unit_;
};

void LiteralRow(const StepSweep& sweep, const Window& window) {
  const int first = CellsTo(window.first_row, window.first_column);
  for (int cell = first; cell < first + window.columns(); ++cell) {
    const int32_t previous = LowHalf(sweep.codes[cell]);
    const float factor = sweep.iteration > 2 ? StepFactor(CodeOf(previous)) : 1.0f;
    LiteralStep step(sweep, cell, TruncToInt(static_cast<float>(sweep.unit) * factor));
    const int units = step.Search(previous);
    sweep.codes[cell] = WithLowHalf(sweep.codes[cell], CodeStep(sweep.iteration, sweep.half_step, previous, units));
  }
}

constexpr int kPlane = 72 * 256;  // rows enough for the tables and all reaches

// Estimate, blurred, observed, floor and codes; `mask` bounds the estimate, the blurred image and the floor. A smooth
// estimate lets moves of many units win.
struct Planes {
  Planes(uint32_t seed, uint32_t mask, bool smooth) : cells(6 * kPlane) {
    for (size_t i = 0; i < cells.size(); ++i)
      cells[i] = static_cast<int32_t>(Mix(static_cast<uint32_t>(smooth ? i / 64 : i) + seed) & mask);
    for (size_t i = kPlane; i < kPlane + 8192; ++i) cells[i] = static_cast<int32_t>(Mix(static_cast<uint32_t>(i)) >> 9);
    for (size_t i = 2 * kPlane; i < 3 * kPlane; ++i) cells[i] = static_cast<int32_t>(Bits(cells[i]) % 16711681);
    for (size_t i = 4 * kPlane; i < 5 * kPlane; ++i) cells[i] = static_cast<int32_t>(Mix(static_cast<uint32_t>(i)));
  }
  StepSweep Sweep(const StepModel& model, int iteration, int scale) {
    int32_t* c = cells.data();
    return {{c, c + kPlane, c + 2 * kPlane, c + 3 * kPlane, c + 5 * kPlane, nullptr, c + 4 * kPlane, iteration, 40,
             scale, 5000},
            &model};
  }
  std::vector<int32_t> cells;
};

template <class Row>
std::vector<int32_t> Searched(Planes planes, const StepModel& model, int iteration, int scale, int count, Row row) {
  row(planes.Sweep(model, iteration, scale), Window{48, 49, 100, 100 + count});
  planes.cells.resize(5 * kPlane);  // without the scratch plane
  return planes.cells;
}

// Compares the searches on planes of one kind; `turn` varies all that a sweep may differ in. Returns how many codes the
// search has changed.
size_t CompareSearches(const StepModel& model, int scale_shift, uint32_t mask, int turn) {
  const int iteration = 1 + turn % 3, count = turn % 5 == 0 ? 3 : 21;
  const Planes planes(static_cast<uint32_t>(turn), mask, turn % 2 == 0);
  const auto search = [&](auto row) { return Searched(planes, model, iteration, scale_shift, count, row); };
  const std::vector<int32_t> want = search(LiteralRow);
  CHECK(std::equal(want.begin(), want.begin() + 4 * kPlane, planes.cells.begin()));
  for (const Level level : RunnableLevels()) {
    CAPTURE(std::string(NameOf(level)));
    CHECK(search(RoutinesOf(level).move_steps) == want);
  }
  size_t changed = 0;
  for (size_t i = 4 * kPlane; i < want.size(); ++i) changed += want[i] != planes.cells[i] ? 1 : 0;
  return changed;
}

TEST_CASE("all members: every level finds what the literal search finds, and leaves the planes as they were") {
  int turn = 0;
  size_t changed = 0;
  for (int index = 0; index < motion::kMembers; ++index) {
    const motion::Name name = motion::NameOf(index);
    const MotionMember& member = MotionMemberOf(name.width, BucketOf(name.angle));
    CAPTURE(name.width);
    CAPTURE(name.angle);
    for (const uint32_t mask : {0x3FFFFu, 0xFFFFFFu, 0x1FFFFFFFu, 0xFFFFFFFFu}) {
      CAPTURE(mask);
      changed += CompareSearches(StepModelOf(StepKind::kFine, member), member.scale_shift, mask, ++turn);
      if (member.passes == 2)
        changed += CompareSearches(StepModelOf(StepKind::kCoarse, member), member.scale_shift, mask, ++turn);
    }
  }
  CHECK(changed > 20000);  // of 23664 cells searched: the comparison has seen codes of many kinds
}

}  // namespace
}  // namespace kelvo::test
