#include <doctest/doctest.h>

#include "stages/fixed_point.h"
#include "stages/prefilter/class_rows.h"
#include "stages/prefilter/classify.h"
#include "stages/prefilter/filter_rows.h"
#include "stages/prefilter/filters.h"
#include "stages/prefilter/residual.h"
#include "stages/routines.h"
#include "support/levels.h"
#include "support/tiles.h"

namespace kelvo::test {
namespace {

using namespace class_code;

using Plane = std::vector<int32_t>;

// Rows and columns kFirst .. kFirst + rows (or columns) - 1 of a plane.
constexpr int kFirst = 20;
struct Extent {
  int rows, columns;
};
constexpr Extent kExtents[] = {{1, 16}, {20, 17}, {40, 64}, {142, 142}, {206, 206}};

int PlaceOf(int row, int column) {
  return (kFirst + row) * kTileSize + kFirst + column;
}

template <class CellOf>
Plane MakePlane(CellOf cell_of) {
  Plane plane(kPlaneCells);
  for (uint32_t i = 0; i < plane.size(); ++i) plane[i] = cell_of(i);
  return plane;
}

template <class Change>
void ForEachPlace(Extent extent, Change change) {
  for (int row = 0; row < extent.rows; ++row)
    for (int column = 0; column < extent.columns; ++column)
      change(static_cast<size_t>(PlaceOf(row, column)), row, column);
}

// The codes that choose filters: what else they hold must not matter.
int32_t CodeOfFilter(uint32_t seed, int run) {
  const uint32_t hash = Mix(seed / static_cast<uint32_t>(run)), row = hash % kFilterRows;
  const bool directional = row >= 1 && (row <= 3 || (row == 4 && (hash >> 8 & 1) != 0));
  const uint32_t others = Mix(seed) & ~(kRowMask << kRowShift | kDirectional | kDirectionMask);
  return Signed(others | row << kRowShift | (directional ? kDirectional : 0) | (hash >> 16 & kDirectionMask));
}

int32_t LiterallyFiltered(const int32_t* cell, int32_t code) {
  const int row = static_cast<int>(Bits(code) >> kRowShift & kRowMask);
  const bool directional = (Bits(code) & kDirectional) != 0;
  return Evaluate(PrefilterFilter(row, directional ? static_cast<int>(Bits(code) & kDirectionMask) : kDirections),
                  cell);
}

TEST_CASE("pre-filter over many rows: every level filters each cell by its code, and touches nothing else") {
  const Plane display = MakePlane([](uint32_t i) { return static_cast<int32_t>(Mix(i)); });
  for (const int run : {1, 5, 40, 70000})
    for (const Extent extent : kExtents) {
      const Plane codes = MakePlane([run](uint32_t i) { return CodeOfFilter(i, run); });
      Plane expected(kPlaneCells, 12345);
      ForEachPlace(extent, [&](size_t i, int, int) { expected[i] = LiterallyFiltered(&display[i], codes[i]); });
      for (const Level level : RunnableLevels()) {
        CAPTURE(run);
        CAPTURE(extent.columns);
        CAPTURE(std::string(NameOf(level)));
        Plane staged(kPlaneCells, 12345);
        const int first = PlaceOf(0, 0);
        RoutinesOf(level).filter_rows({&codes[first], &display[first], &staged[first]}, extent.rows, extent.columns);
        CHECK(staged == expected);
      }
    }
}

// The row counts how often the threshold, halved again and again, still reaches the contrast.
int32_t LiterallyChosen(const DetailThresholds& thresholds, int32_t cell) {
  const uint32_t code = Bits(cell) & ~(kRowMask << kRowShift | kDirectional);
  const int32_t threshold = thresholds.of[(code >> 13 & 7) | (code >> 23 & 7) << 3];
  uint32_t row = 0;
  while (row < 5 && Signed(code >> kContrastShift & kContrastMask) <= threshold >> row) ++row;
  const bool directional = row >= 1 && Signed(row) <= thresholds.last_directional;
  return Signed(code | row << kRowShift | (directional ? kDirectional : 0));
}

TEST_CASE("pre-filter over many rows: every level chooses the same filters, with ringing and without") {
  for (const uint32_t ringing : {0u, kRinging2, kRinging1 | kRinging2 | kRinging3})
    for (const int last_directional : {3, 4})
      for (const int count : {16, 17, 142, 206}) {
        DetailThresholds thresholds{{}, last_directional};
        for (uint32_t i = 0; i < 64; ++i) thresholds.of[i] = i % 9 == 0 ? -1 : Signed(Mix(i) % 8192);
        const uint32_t fixed = ~(kRinging1 | kRinging2 | kRinging3) | ringing;
        const Plane codes = MakePlane([fixed](uint32_t i) { return Signed(Mix(i) & fixed); });
        Plane expected = codes;
        for (int i = 20; i < 20 + count; ++i) {
          int32_t& cell = expected[static_cast<size_t>(i)];
          cell = LiterallyChosen(thresholds, cell);
        }
        for (const Level level : RunnableLevels()) {
          CAPTURE(count);
          CAPTURE(std::string(NameOf(level)));
          Plane chosen = codes;
          RoutinesOf(level).choose_filter_row(thresholds, &chosen[20], count);
          CHECK(chosen == expected);
        }
      }
}

// Cells 1 in `rarity` mark; 1: all of them.
bool Marks(uint32_t i, uint32_t rarity) {
  return Mix(i) % rarity == 0;
}

// `mark` with the place of every cell of the extent that lies less than 9 rows and columns away.
template <class Mark>
void ForEachAround(Extent extent, int row, int column, Mark mark) {
  for (int y = std::max(-row, -8); y <= std::min(extent.rows - 1 - row, 8); ++y)
    for (int x = std::max(-column, -8); x <= std::min(extent.columns - 1 - column, 8); ++x)
      mark(static_cast<size_t>(PlaceOf(row + y, column + x)), y, x);
}

uint32_t ContrastOf(int32_t code) {
  return Bits(code) >> kContrastShift & kContrastMask;
}

Plane LiterallyRinging(const Plane& codes, Extent extent) {
  Plane marked = codes;
  ForEachPlace(extent, [&](size_t i, int row, int column) {
    const uint32_t contrast = ContrastOf(codes[i]);
    if (contrast <= 50) return;
    const uint32_t near = contrast >= 201 ? kRinging1 : contrast >= 101 ? kRinging2 : kRinging3;
    ForEachAround(extent, row, column, [&](size_t place, int y, int x) {
      if (ContrastOf(codes[place]) > 50) return;
      const bool is_near = std::abs(y) <= 4 && std::abs(x) <= 4;
      marked[place] = Signed(Bits(marked[place]) | (is_near ? near : 0) | (contrast >= 101 ? near << 1 : 0));
    });
  });
  return marked;
}

TEST_CASE("pre-filter over many rows: ringing is marked in squares around contrasts, however many") {
  const uint32_t contrasts[] = {51, 100, 101, 200, 201, 511};
  for (const uint32_t rarity : {1u, 2u, 9u, 200u, 3000u})
    for (const Extent extent : kExtents) {
      const Plane codes = MakePlane([&](uint32_t i) {
        const uint32_t contrast = Marks(i, rarity) ? contrasts[Mix(i + 7) % 6] : Mix(i) % 51;
        return Signed((Mix(i + 1) & ~(kContrastMask << kContrastShift | kRinging1 | kRinging2 | kRinging3)) |
                      contrast << kContrastShift);
      });
      const Plane expected = LiterallyRinging(codes, extent);
      for (const Level level : RunnableLevels()) {
        CAPTURE(rarity);
        CAPTURE(extent.columns);
        CAPTURE(std::string(NameOf(level)));
        Plane marked = codes;
        RoutinesOf(level).mark_ringing_rows(&marked[PlaceOf(0, 0)], extent.rows, extent.columns);
        CHECK(marked == expected);
      }
    }
}

struct Residuals {
  Plane cells, codes;
};

// A residual beyond 32 is halved until it is within, three times at most.
int32_t LiterallyLimited(int32_t cell) {
  int32_t residual = ResidualByte(cell);
  for (int i = 0; i < 3 && (residual > 32 || residual < -32); ++i) residual >>= 1;
  return Signed((Bits(cell) & ~255u) | (Bits(residual) & 255u));
}

void LimitLiterally(Residuals& residuals, Extent extent) {
  ForEachPlace(extent, [&](size_t i, int row, int column) {
    if ((Bits(residuals.codes[i]) & kOverLimit) == 0) return;
    ForEachAround(extent, row, column, [&](size_t place, int y, int x) {
      if (y * y + x * x <= 32) residuals.codes[place] = Signed(Bits(residuals.codes[place]) | kLimited);
    });
  });
  ForEachPlace(extent, [&](size_t i, int, int) {
    if ((Bits(residuals.codes[i]) & kLimited) != 0) residuals.cells[i] = LiterallyLimited(residuals.cells[i]);
  });
}

TEST_CASE("pre-filter over many rows: residuals are limited in discs around crowds, however many") {
  for (const uint32_t rarity : {1u, 2u, 9u, 200u, 3000u})
    for (const Extent extent : kExtents) {
      const Residuals before = {
          MakePlane([](uint32_t i) { return static_cast<int32_t>(Mix(i + 5)); }), MakePlane([rarity](uint32_t i) {
            const uint32_t limited = Marks(i + 99, 500) ? kLimited : 0;
            return Signed((Mix(i + 3) & ~(kOverLimit | kLimited)) | limited | (Marks(i, rarity) ? kOverLimit : 0));
          })};
      Residuals expected = before;
      LimitLiterally(expected, extent);
      for (const Level level : RunnableLevels()) {
        CAPTURE(rarity);
        CAPTURE(extent.columns);
        CAPTURE(std::string(NameOf(level)));
        Residuals after = before;
        const int first = PlaceOf(0, 0);
        RoutinesOf(level).limit_rows(&after.cells[first], &after.codes[first], extent.rows, extent.columns);
        CHECK(after.cells == expected.cells);
        CHECK(after.codes == expected.codes);
      }
    }
}

}  // namespace
}  // namespace kelvo::test
