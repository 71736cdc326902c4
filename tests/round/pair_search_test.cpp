// The pair search against a literal one that works on the planes: it carries out every candidate step, adds up its cost
// from the planes and takes it back.
#include <doctest/doctest.h>

#include "round/family.h"
#include "round/pair_sweep.h"
#include "stages/fixed_point.h"
#include "stages/routines.h"
#include "stages/step_code.h"
#include "stages/weights.h"
#include "support/levels.h"
#include "support/tiles.h"

namespace kelvo::test {
namespace {

class LiteralPair {
 public:
  LiteralPair(const PairSweep& sweep, PairKind kind, int cell, int32_t unit)
      : s(sweep), m(*sweep.model), p(cell), spacing_(kind == PairKind::kFine ? 1 : 2), unit_(unit) {}

  int Search(int32_t previous) {
    uint32_t best = Cost();
    int sign = s.iteration >= 2 && previous < 0 ? -1 : 1;
    if (Try(sign, 0) >= best) {
      sign = -sign;
      if (Try(sign, 0) >= best) return 0;
      if (s.iteration >= 2) unit_ >>= 1;
    }
    best = Try(sign, 0);
    Move(sign, 0);
    int n = sign, j = 1;
    for (; j <= 10 && Try(sign, j) < best; ++j) Take(sign, j, best, n);
    for (--j; j >= 0;) {
      if (Try(sign, j) < best) {
        Take(sign, j--, best, n);
        continue;
      }
      if (--j < 0) break;
      sign = -sign;
      if (Try(sign, j) < best)
        Take(sign, j--, best, n);
      else
        sign = -sign;
    }
    return n;
  }

  void Undo(int n) {
    for (int j = 0; j < 12; ++j)
      if (std::abs(n) >> j & 1) Move(n > 0 ? -1 : 1, j);
  }

 private:
  void Move(int sign, int j) {
    const auto add = [&](int32_t& cell, uint32_t value) { cell = Signed(Bits(cell) + Bits(sign) * value); };
    const uint32_t step = Bits(unit_) << (s.scale_shift + j);
    for (int row = -1; row <= 1; ++row)
      for (int column = -1; column <= 1; ++column) {
        if (spacing_ == 1 && (row != 0 || column != 0)) continue;
        const uint32_t spread =
            spacing_ == 1 ? step : Bits((2 - row * row) * (2 - column * column)) * ShiftRight(step, 2);
        add(s.estimate[p + m.b + CellsTo(row, column)], spread);
        add(s.estimate[p + m.a + CellsTo(row, column)], 0 - spread);
      }
    for (size_t i = 0; i < static_cast<size_t>(m.side); ++i) {
      add(s.blurred[p + m.cells_b[i]], Bits(m.amounts[i]) << (s.scale_shift + j));
      add(s.blurred[p + m.cells_a[i]], 0 - (Bits(m.amounts[i]) << (s.scale_shift + j)));
    }
  }

  uint32_t Try(int sign, int j) {
    Move(sign, j);
    const uint32_t cost = Cost();
    Move(-sign, j);
    return cost;
  }

  void Take(int sign, int j, uint32_t& best, int& n) {
    best = Try(sign, j);
    Move(sign, j);
    n += sign * (1 << j);
  }

  uint32_t Misfit(const std::array<int16_t, PairModel::kMaxSide>& cells, int pixel) const {
    uint32_t sum = 0;
    for (size_t i = 0; i < static_cast<size_t>(m.side); ++i)
      sum += Magnitude(Bits(s.blurred[p + cells[i]]) - Bits(s.observed[p + cells[i]]));
    return MulHighUnsigned(Bits(s.blurred[6400 + (s.observed[p + pixel] >> 16)]), sum);
  }

  uint32_t Roughness(int pixel, int partner) const {
    const int32_t value = s.estimate[p + pixel];
    uint32_t sum = Magnitude(Bits(value) - Bits(s.estimate[p + partner])) >> 1;
    for (const int near : {-257, -256, -255, -1, 1, 255, 256, 257}) {
      const int neighbour = pixel + spacing_ * near;
      if (neighbour != partner) sum += Magnitude(Bits(value) - Bits(s.estimate[p + neighbour]));
    }
    const int32_t below = std::min(WrapSub(value, s.floor[p + pixel]), 0) >> 1;
    const int index = Clamp(WrapAdd(value, below) >> 16, -511, 7679);
    return MulHighUnsigned(Bits(s.blurred[512 + index]), sum);
  }

  uint32_t Cost() const {
    return Misfit(m.cells_b, m.b) + Misfit(m.cells_a, m.a) + Roughness(m.a, m.b) + Roughness(m.b, m.a);
  }

  const PairSweep& s;
  const PairModel& m;
  int p, spacing_;
  int32_t unit_;
};

void LiteralRow(const PairSweep& sweep, PairKind kind, int first, int count) {
  const int stride = kind == PairKind::kFine ? 1 : 2;
  for (int cell = first; cell < first + stride * count; cell += stride) {
    const int32_t previous = LowHalf(sweep.codes[cell]);
    const float factor = sweep.iteration > 2 ? StepFactor(CodeOf(previous)) : 1.0f;
    LiteralPair pair(sweep, kind, cell, TruncToInt(static_cast<float>(sweep.unit) * factor));
    const int units = pair.Search(previous);
    if (sweep.undo) pair.Undo(units);
    sweep.codes[cell] = WithLowHalf(sweep.codes[cell], CodeStep(sweep.iteration, sweep.half_step, previous, units));
  }
}

// Estimate, blurred, observed, floor and codes; `mask` bounds the estimate, the blurred image and the floor.
struct Planes {
  Planes(uint32_t seed, uint32_t mask) : cells(7 * 65536) {
    for (size_t i = 0; i < cells.size(); ++i)
      cells[i] = static_cast<int32_t>(Mix(static_cast<uint32_t>(i) + seed) & mask);
    for (size_t i = 65536; i < 65536 + 8192; ++i) cells[i] = static_cast<int32_t>(Mix(static_cast<uint32_t>(i) - seed));
    for (size_t i = 2 * 65536; i < 3 * 65536; ++i) cells[i] = static_cast<int32_t>(Bits(cells[i]) % 16711681);
    for (size_t i = 4 * 65536; i < 5 * 65536; ++i) cells[i] = static_cast<int32_t>(Mix(static_cast<uint32_t>(i)));
  }
  PairSweep Sweep(const PairModel& model, int iteration, int scale, bool undo) {
    int32_t* c = cells.data();
    return {{c, c + 65536, c + 2 * 65536, c + 3 * 65536, c + 5 * 65536, c + 6 * 65536, c + 4 * 65536, iteration, 40,
             scale, 5000},
            &model,
            undo};
  }
  std::vector<int32_t> cells;
};

bool SameButScratch(const Planes& a, const Planes& b) {
  return std::equal(a.cells.begin(), a.cells.begin() + 5 * 65536, b.cells.begin());
}

// 40 pairs from row 128, column 100 on.
PairMoves OneRow(const PairSweep& sweep, int stride) {
  return {{sweep}, 1, {128, 129, 100, 100 + 40 * stride}, stride};
}

void CompareSearches(PairKind kind, int width, int family, uint32_t mask, bool undo) {
  CAPTURE(width);
  CAPTURE(family);
  CAPTURE(mask);
  CAPTURE(undo);
  Planes want(static_cast<uint32_t>(width), mask);
  const Planes start = want;
  const PairModel& model = ModelOf(kind, width, static_cast<PairFamily>(family));
  const int iteration = 1 + (width + family + (undo ? 1 : 0)) % 3;
  const int scale = MemberOf(width).scale_shift, first = CellsTo(128, 100);
  LiteralRow(want.Sweep(model, iteration, scale, undo), kind, first, 40);
  for (const Level level : RunnableLevels()) {
    CAPTURE(std::string(NameOf(level)));
    Planes got = start;
    RoutinesOf(level).move_pairs(OneRow(got.Sweep(model, iteration, scale, undo), kind == PairKind::kFine ? 1 : 2));
    CHECK(SameButScratch(got, want));
  }
}

TEST_CASE("the search from local cells equals the literal one, on fitting and on hostile planes") {
  for (int width = 1; width <= kMaxWidth; ++width)
    for (int family = 0; family < kPairFamilies; ++family)
      for (const uint32_t mask : {0x3FFFFu, 0xFFFFFFu, 0xFFFFFFFFu})
        for (const bool undo : {false, true}) {
          CompareSearches(PairKind::kFine, width, family, mask, undo);
          if (MemberOf(width).passes == 2) CompareSearches(PairKind::kCoarse, width, family, mask, undo);
        }
}

// All families over 37 rows of 40 pairs: more rows than a vector has lanes, and moves that meet.
void CompareLevels(PairKind kind, int width, uint32_t mask, bool undo) {
  CAPTURE(width);
  CAPTURE(mask);
  CAPTURE(undo);
  Planes start(static_cast<uint32_t>(width), mask), want = start;
  const auto search = [&](Planes& planes, Level level) {
    const int stride = kind == PairKind::kFine ? 1 : 2;
    PairMoves moves{{}, kPairFamilies, {99, 99 + 37 * stride, 70, 70 + 40 * stride}, stride};
    for (int family = 0; family < kPairFamilies; ++family)
      moves.sweeps[static_cast<size_t>(family)] = planes.Sweep(ModelOf(kind, width, static_cast<PairFamily>(family)),
                                                               1 + width % 3, MemberOf(width).scale_shift, undo);
    RoutinesOf(level).move_pairs(moves);
  };
  search(want, Level::kPlain);
  CHECK(!SameButScratch(want, start));
  for (const Level level : RunnableLevels()) {
    CAPTURE(std::string(NameOf(level)));
    Planes got = start;
    search(got, level);
    CHECK(SameButScratch(got, want));
  }
}

TEST_CASE("sweeps of many rows are the same at every level, whether moves stay or not") {
  for (int width = 1; width <= kMaxWidth; ++width)
    for (const uint32_t mask : {0xFFFFFFu, 0xFFFFFFFFu})
      for (const bool undo : {false, true}) {
        CompareLevels(PairKind::kFine, width, mask, undo);
        if (MemberOf(width).passes == 2) CompareLevels(PairKind::kCoarse, width, mask, undo);
      }
}

TEST_CASE("moves that are undone leave the estimate and the blurred image bit-identical") {
  Planes planes(3, 0xFFFFFF);
  const std::vector<int32_t> before = planes.cells;
  plain::MovePairs(OneRow(planes.Sweep(ModelOf(PairKind::kFine, 5, kDiagonalPair), 2, 2, true), 1));
  CHECK(std::equal(before.begin(), before.begin() + 4 * 65536, planes.cells.begin()));
  CHECK(before != planes.cells);
}

}  // namespace
}  // namespace kelvo::test
