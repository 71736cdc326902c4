#include "stages/stencil.h"

#include <doctest/doctest.h>

#include <array>

#include "motion/line.h"
#include "stages/fixed_point.h"
#include "stages/prefilter/filters.h"
#include "stages/routines.h"
#include "stages/stencils/disc.h"
#include "stages/stencils/isotropic.h"
#include "stages/tone.h"
#include "stages/tone_tables.h"
#include "support/levels.h"
#include "support/tiles.h"

namespace kelvo::test {
namespace {

// Value at cell (128, 128) of a plane of 24-bit hashes, less `shift`.
int32_t Probe(const Stencil& stencil, int32_t shift) {
  static std::vector<int32_t> plane(65536);
  for (size_t i = 0; i < plane.size(); ++i) plane[i] = static_cast<int32_t>(Mix(static_cast<uint32_t>(i)) >> 8) - shift;
  return Evaluate(stencil, &plane[128 * 256 + 128]);
}

TEST_CASE("blurs and smoothers of every width give their control values") {
  const int32_t rows[20][3] = {
      // blur of v, blur of v - 2^23, smoother of v - 2^23
      {11813594, 3424986, 0},     {9004415, 615807, 0},       {8911336, 522728, 0},       {8846375, 457767, 0},
      {8917559, 528951, 0},       {8967758, 579150, 0},       {8521487, 132879, 5049593}, {8470749, 82141, 3424986},
      {8494352, 105744, 615807},  {8434909, 46301, 615807},   {8351192, -37416, 615807},  {8306564, -82044, 615807},
      {8189641, -198967, 642955}, {8088953, -299655, 621807}, {8108133, -280475, 558149}, {8121735, -266873, 586967},
      {8086860, -301748, 492368}, {8112355, -276253, 571890}, {8128987, -259621, 451997}, {8163183, -225425, 483705},
  };
  for (int width = 1; width <= kMaxWidth; ++width) {
    CAPTURE(width);
    CHECK(Probe(DiscBlur(width), 0) == rows[width - 1][0]);
    CHECK(Probe(DiscBlur(width), 1 << 23) == rows[width - 1][1]);
    if (width >= 7) CHECK(Probe(ObservedSmoother(width), 1 << 23) == rows[width - 1][2]);
  }
}

TEST_CASE("normalisers are the reciprocals of the total weights") {
  const uint32_t discs[20] = {0,          1227133513, 1321528398, 0x66666666, 1227133513, 0x69069069, 0x4EC4EC4E,
                              0,          0x6522C3F3, 0x52BF5A81, 0x47DC11F7, 0x795CEB24, 0x685B4FE5, 0x5B87DDAD,
                              0x50B59897, 0x478BBCEC, 0x40404040, 0x73C9B971, 0x67B23A54, 0x5DE42046};
  for (int width = 1; width <= kMaxWidth; ++width) CHECK(DiscBlur(width).normaliser == discs[width - 1]);
  const uint32_t smoothers[8] = {0x71C71C71, 0x6BCA1AF2, 0x55555555, 0x5D1745D1, 0x49249249, 0x61861861, 0, 0x469EE584};
  for (int width = 13; width <= kMaxWidth; ++width) CHECK(ObservedSmoother(width).normaliser == smoothers[width - 13]);
}

// Whether `row` writes what `cell` gives for each of the cells, and nothing beside them.
template <class Row, class Cell>
bool WritesCells(int count, Row row, Cell cell) {
  std::vector<int32_t> got(static_cast<size_t>(count) + 2, 12345);
  row(got.data() + 1);
  bool same = got.front() == 12345 && got.back() == 12345;
  for (int i = 0; i < count; ++i) same = same && got[static_cast<size_t>(i) + 1] == cell(i);
  return same;
}

void CheckRows(const Routines& routines, int width, const int32_t* from, int count) {
  constexpr std::array<int16_t, 6> kCells = {-300, -1, 0, 1, 255, 777};
  const auto least = [&](int i) {
    int32_t value = 2000000000;
    for (const int16_t cell : kCells) value = std::min(value, from[i + cell]);
    return value;
  };
  Stencil blur = DiscBlur(width);
  bool same = true;
  for (const Product product : {Product::kSigned, Product::kUnsigned}) {
    blur.product = product;
    const auto blurred = [&](int i) { return Evaluate(blur, from + i); };
    same = WritesCells(
               count, [&](int32_t* to) { routines.stencil_row(blur, from, to, count); }, blurred) &&
           same;
  }
  CHECK(same);
  same = WritesCells(
      count, [&](int32_t* to) { routines.minimum_row(kCells, from, to, count); }, least);
  CHECK(same);
}

TEST_CASE("a row of any length equals its cells one by one, and nothing beside it is touched") {
  std::vector<int32_t> plane(65536);
  for (const uint32_t mask : {0x7FFFu, 0xFFFFFFu, 0xFFFFFFFFu}) {
    for (size_t i = 0; i < plane.size(); ++i)
      plane[i] = static_cast<int32_t>(Mix(static_cast<uint32_t>(i) + mask) & mask);
    for (const int width : {1, 2, 7, 8, 13, 20})
      for (const int count : {1, 15, 16, 17, 128, 201})
        for (const Level level : RunnableLevels()) {
          CAPTURE(width);
          CAPTURE(count);
          CAPTURE(std::string(NameOf(level)));
          CheckRows(RoutinesOf(level), width, &plane[100 * 256 + 20], count);
        }
  }
}

// Whether an area of `to` has become the stencil's values around `from`, and nothing beside it has changed.
bool WritesArea(const Routines& routines, const Stencil& stencil, const int32_t* from, Extent extent) {
  constexpr int kRing = 2, kUntouched = 12345;
  std::vector<int32_t> to(65536, kUntouched);
  routines.stencil_area(stencil, from, &to[kRing * 256 + kRing], extent);
  bool same = true;
  for (int row = -kRing; row < extent.rows + kRing; ++row)
    for (int column = -kRing; column < extent.columns + kRing; ++column) {
      const bool inside = row >= 0 && row < extent.rows && column >= 0 && column < extent.columns;
      const int32_t expected = inside ? Evaluate(stencil, from + row * 256 + column) : kUntouched;
      same = same && to[static_cast<size_t>((row + kRing) * 256 + column + kRing)] == expected;
    }
  return same;
}

void CheckArea(Stencil stencil, Extent extent) {
  static const std::vector<int32_t> plane = [] {
    std::vector<int32_t> cells(65536);
    for (size_t i = 0; i < cells.size(); ++i) cells[i] = static_cast<int32_t>(Mix(static_cast<uint32_t>(i)));
    return cells;
  }();
  stencil.product = extent.rows % 2 == 0 ? Product::kUnsigned : Product::kSigned;
  for (const Level level : RunnableLevels()) {
    CAPTURE(extent.rows);
    CAPTURE(extent.columns);
    CAPTURE(std::string(NameOf(level)));
    CHECK(WritesArea(RoutinesOf(level), stencil, &plane[100 * 256 + 60], extent));
  }
}

TEST_CASE("an area of any shape equals its cells one by one, for every disc, every line and other stencils") {
  for (const Extent extent : {Extent{1, 40}, {5, 33}, {12, 16}, {13, 130}, {30, 7}, {31, 48}}) {
    CheckArea(Isotropic(4), extent);
    for (int width = 1; width <= kMaxWidth; ++width) {
      CAPTURE(width);
      CheckArea(DiscBlur(width), extent);
      for (int bucket = 0; bucket < kBuckets; ++bucket) {
        CAPTURE(bucket);
        CheckArea(BareLine(MotionMemberOf(width, bucket)), extent);
      }
    }
  }
}

// Whether the rows of the tile's tone curves, in place, equal the curves cell by cell.
bool MapsRows(const Tile& tile, const std::vector<int32_t>& row) {
  const int curve = tile.params().CurveIndex, count = static_cast<int>(row.size());
  const bool keep = tile.Has(KELVO_VARIANT_KEEP_FRACTION);
  std::vector<int32_t> linear = row, display = row;
  ToLinearRow(tile, linear.data(), linear.data(), count);
  ToDisplayRow(tile, display.data(), display.data(), count);
  bool same = true;
  for (size_t i = 0; i < row.size(); ++i) {
    same = same && linear[i] == (keep ? ForwardToneBetween(kForwardTone[curve], row[i]) : ForwardTone(curve, row[i]));
    same = same && display[i] == (keep ? InverseToneBetween(kInverseTone[curve], row[i]) : InverseTone(curve, row[i]));
  }
  return same;
}

TEST_CASE("tone curves over rows, in place: every level equals the curve cell by cell") {
  TileParams params{};
  Bench bench;
  for (const size_t count : {1u, 8u, 37u, 160u}) {
    std::vector<int32_t> row(count);
    for (size_t i = 0; i < count; ++i)
      row[i] = static_cast<int32_t>(i % 3 == 0 ? Mix(static_cast<uint32_t>(i)) : (i * 4099) << 10);
    row.back() = 0xFFFFFF;
    for (params.CurveIndex = 0; params.CurveIndex < 4; ++params.CurveIndex)
      for (const uint32_t variant : {0u, uint32_t{KELVO_VARIANT_KEEP_FRACTION}})
        for (const Level level : RunnableLevels()) {
          CAPTURE(std::string(NameOf(level)));
          CAPTURE(variant);
          CHECK(MapsRows(Tile(params, bench.heap(), RoutinesOf(level), variant), row));
        }
  }
}

TEST_CASE("every filter of the pre-filter gives its control value") {
  std::vector<int32_t> patch(11 * 256);
  uint32_t x = 12345;
  for (int row = 0; row < 11; ++row)
    for (int column = 0; column < 11; ++column) {
      x = (x * 1103515245u + 12345u) & 0x7FFFFFFFu;
      patch[static_cast<size_t>(row * 256 + column)] = static_cast<int32_t>(x >> 16);
    }
  const int32_t expected[kFilterRows][kDirections + 1] = {
      {4805, 4616, 4427, 4841, 5255, 6268, 7281, 6043, 2364},
      {8468, 7995, 7522, 8557, 9592, 12125, 14659, 11563, 9030},
      {10689, 11798, 12458, 13528, 13849, 13119, 17897, 13992, 13393},
      {12160, 13883, 13470, 15376, 17021, 14558, 17126, 18272, 15574},
      {16011, 15013, 16186, 15293, 17675, 16292, 15940, 15526, 16215},
      {16313, 17078, 16005, 15044, 16073, 16932, 16241, 16364, 16738},
  };
  for (int row = 0; row < kFilterRows; ++row)
    for (int direction = 0; direction <= kDirections; ++direction) {
      CAPTURE(row);
      CAPTURE(direction);
      CHECK(Evaluate(PrefilterFilter(row, direction), &patch[5 * 256 + 5]) == expected[row][direction]);
    }
}

}  // namespace
}  // namespace kelvo::test
