// Stencils: fixed weighted sums over a cell's neighbourhood, in exact integers.
//
// A stencil is a list of partial sums. The cells of a partial sum are added and the sum is shifted; the shifted sums
// are added; the total is multiplied by a normaliser and the high 32 bits are kept. The grouping is part of the result:
// every shift truncates downward. Everything else that follows from a stencil (weights, reach, response to a move)
// is computed from it.
#ifndef KELVO_STAGES_STENCIL_H
#define KELVO_STAGES_STENCIL_H

#include <array>
#include <cassert>
#include <cstdint>
#include <initializer_list>
#include <span>

#include "stages/target.h"
#include "stages/tile.h"

namespace kelvo {

// From one cell to another: rows down and columns right.
struct CellStep {
  int row, column;
};

// The distance of a step in cells of a plane, and the step of a distance; columns -127..127.
constexpr int CellsTo(int row, int column) {
  return row * kTileSize + column;
}
constexpr CellStep StepOver(int cells) {
  const int row = (cells + 127 * kTileSize + kTileSize / 2) / kTileSize - 127;
  return {row, cells - row * kTileSize};
}

// The greater of `reach` and the rows and columns that the distance spans.
constexpr int16_t Farther(int16_t reach, int cells) {
  const CellStep step = StepOver(cells);
  for (const int distance : {step.row, -step.row, step.column, -step.column})
    reach = distance > reach ? static_cast<int16_t>(distance) : reach;
  return reach;
}

// One partial sum: `count` cells, then an arithmetic shift right by `shift`, or left by -shift.
struct PartialSum {
  int16_t count;
  int16_t shift;
};

// How the total is multiplied by the normaliser. The two differ where it is negative.
enum class Product { kSigned, kUnsigned };

// A stencil as the evaluators read it; the arrays have static storage.
struct Stencil {
  std::span<const int16_t> cells;  // distances in cells, sum by sum
  std::span<const PartialSum> sums;
  uint32_t normaliser;  // 2^32 / total weight, rounded down; 0: the total weight is 1 and nothing is multiplied
  Product product = Product::kSigned;

  // Whose blur it is, where there is unrolled code for it; 0 for all others.
  uint8_t disc = 0;  // the round width 1..20
  uint8_t line = 0;  // 1 + the index of a member of straight motion
};

// A class (a, b) is every cell (±a, ±b) and (±b, ±a); the four axis neighbours are (0, 1).
struct CellClass {
  int a, b;
};
inline constexpr CellClass kCentre{0, 0}, kAxis{0, 1}, kCorner{1, 1}, kAxis2{0, 2}, kKnight{1, 2}, kCorner2{2, 2};

constexpr bool IsIn(CellClass c, int row, int column) {
  const int a = row < 0 ? -row : row, b = column < 0 ? -column : column;
  return (a == c.a && b == c.b) || (a == c.b && b == c.a);
}

// The storage of a stencil, filled at compile time.
template <int kMaxCells, int kMaxSums>
class StencilBuilder {
 public:
  static constexpr int kReach = 10;  // the widest stencil reaches 10 cells

  // Opens a partial sum; Add puts cells into it.
  constexpr StencilBuilder& Open(int shift) {
    sums_[static_cast<size_t>(sum_count_++)] = {0, static_cast<int16_t>(shift)};
    return *this;
  }

  constexpr StencilBuilder& Add(int row, int column) {
    cells_[static_cast<size_t>(cell_count_++)] = static_cast<int16_t>(CellsTo(row, column));
    ++sums_[static_cast<size_t>(sum_count_ - 1)].count;
    return *this;
  }

  // One partial sum of every cell of the classes.
  constexpr StencilBuilder& Sum(int shift, std::initializer_list<CellClass> classes) {
    Open(shift);
    for (const CellClass c : classes) AddWhere([c](int row, int column) { return IsIn(c, row, column); });
    return *this;
  }

  // The cells for which `in` holds, dealt in turn to `hands` partial sums: numbered row by row, left to right, from
  // 0, cell i goes to sum i mod hands.
  template <class Predicate>
  constexpr StencilBuilder& Deal(int hands, int shift, Predicate in) {
    for (int hand = 0; hand < hands; ++hand) {
      Open(shift);
      int number = 0;
      AddWhere([&](int row, int column) { return in(row, column) && number++ % hands == hand; });
    }
    return *this;
  }

  // Sets the normaliser that makes the weights sum to one.
  constexpr StencilBuilder& Normalise() {
    int finest = 0;
    for (const PartialSum sum : sums_) finest = sum.shift > finest ? sum.shift : finest;
    uint64_t total = 0;  // in units of 2^-finest
    for (const PartialSum sum : sums_) total += static_cast<uint64_t>(sum.count) << (finest - sum.shift);
    assert(total > 0);
    normaliser_ = total == uint64_t{1} << finest ? 0 : static_cast<uint32_t>((uint64_t{1} << (32 + finest)) / total);
    return *this;
  }

  constexpr Stencil View() const {
    return {{cells_.data(), static_cast<size_t>(cell_count_)},
            {sums_.data(), static_cast<size_t>(sum_count_)},
            normaliser_,
            Product::kSigned};
  }

 private:
  template <class Predicate>
  constexpr void AddWhere(Predicate in) {
    for (int row = -kReach; row <= kReach; ++row)
      for (int column = -kReach; column <= kReach; ++column)
        if (in(row, column)) Add(row, column);
  }

  std::array<int16_t, kMaxCells> cells_{};
  std::array<PartialSum, kMaxSums> sums_{};
  int cell_count_ = 0;
  int sum_count_ = 0;
  uint32_t normaliser_ = 0;
};

// Rows and columns of a part of a plane.
struct Extent {
  int rows, columns;
};

// Areas are worked fastest in multiples of so many rows.
inline constexpr int kAreaRows = 12;

// The stencil's value at one cell. All arithmetic wraps.
int32_t Evaluate(const Stencil& stencil, const int32_t* cell);

// The stencil's value where every cell holds `value`: lower than it by the truncation of the partial sums.
int32_t EvaluateFlat(const Stencil& stencil, int32_t value);

namespace plain {

// See Routines::stencil_row, Routines::stencil_area and Routines::minimum_row.
void StencilRow(const Stencil& stencil, const int32_t* from, int32_t* to, int count);
void StencilArea(const Stencil& stencil, const int32_t* from, int32_t* to, Extent extent);
void MinimumRow(std::span<const int16_t> cells, const int32_t* from, int32_t* to, int count);

}  // namespace plain

namespace KELVO_TARGET {

void StencilRow(const Stencil& stencil, const int32_t* from, int32_t* to, int count);
void StencilArea(const Stencil& stencil, const int32_t* from, int32_t* to, Extent extent);
void MinimumRow(std::span<const int16_t> cells, const int32_t* from, int32_t* to, int count);

}  // namespace KELVO_TARGET

}  // namespace kelvo

#endif  // KELVO_STAGES_STENCIL_H
