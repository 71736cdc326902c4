#include "stages/stencil.h"

#include <algorithm>

#include "stages/fixed_point.h"

namespace kelvo {

namespace {

int32_t Normalised(const Stencil& stencil, uint32_t total) {
  if (stencil.normaliser == 0) return Signed(total);
  return stencil.product == Product::kSigned ? MulHigh(Signed(total), stencil.normaliser)
                                             : Signed(MulHighUnsigned(total, stencil.normaliser));
}

// Adds up the partial sums, each of which `part` gives, and normalises the total.
template <class Part>
int32_t Total(const Stencil& stencil, Part part) {
  uint32_t total = 0;
  for (const PartialSum sum : stencil.sums) {
    const uint32_t cells = part(sum.count);
    total += sum.shift < 0 ? cells << -sum.shift : ShiftRight(cells, sum.shift);
  }
  return Normalised(stencil, total);
}

}  // namespace

int32_t Evaluate(const Stencil& stencil, const int32_t* cell) {
  const int16_t* next = stencil.cells.data();
  return Total(stencil, [&](int count) {
    uint32_t part = 0;
    for (const int16_t* end = next + count; next != end; ++next) part += Bits(cell[*next]);
    return part;
  });
}

int32_t EvaluateFlat(const Stencil& stencil, int32_t value) {
  return Total(stencil, [value](int count) { return Bits(count) * Bits(value); });
}

namespace plain {
namespace {

// Columns that are worked at once, so that their sums stay in registers.
constexpr int kBlock = 16;

void NormaliseBlock(const Stencil& stencil, const uint32_t* total, int32_t* to) {
  const uint32_t factor = stencil.normaliser;
  if (factor == 0)
    for (int i = 0; i < kBlock; ++i) to[i] = Signed(total[i]);
  else if (stencil.product == Product::kSigned)
    for (int i = 0; i < kBlock; ++i) to[i] = MulHigh(Signed(total[i]), factor);
  else
    for (int i = 0; i < kBlock; ++i) to[i] = Signed(MulHighUnsigned(total[i], factor));
}

void StencilBlock(const Stencil& stencil, const int32_t* from, int32_t* to) {
  uint32_t total[kBlock] = {};
  const int16_t* next = stencil.cells.data();
  for (const PartialSum sum : stencil.sums) {
    uint32_t part[kBlock] = {};
    for (const int16_t* end = next + sum.count; next != end; ++next)
      for (int i = 0; i < kBlock; ++i) part[i] += Bits(from[*next + i]);
    const int left = sum.shift < 0 ? -sum.shift : 0, right = sum.shift < 0 ? 0 : sum.shift;
    for (int i = 0; i < kBlock; ++i) total[i] += ShiftRight(part[i] << left, right);
  }
  NormaliseBlock(stencil, total, to);
}

void MinimumBlock(std::span<const int16_t> cells, const int32_t* from, int32_t* to) {
  int32_t least[kBlock];
  std::fill_n(least, kBlock, 2000000000);
  for (const int16_t cell : cells)
    for (int i = 0; i < kBlock; ++i) least[i] = std::min(least[i], from[cell + i]);
  std::copy_n(least, kBlock, to);
}

// Whole blocks, the last of which overlaps the one before it; rows shorter than a block go cell by cell.
template <class Block, class Cell>
void ForBlocks(int count, Block block, Cell cell) {
  if (count < kBlock) {
    for (int i = 0; i < count; ++i) cell(i);
    return;
  }
  for (int i = 0; i < count; i += kBlock) block(std::min(i, count - kBlock));
}

}  // namespace

void StencilRow(const Stencil& stencil, const int32_t* from, int32_t* to, int count) {
  ForBlocks(
      count, [&](int i) { StencilBlock(stencil, from + i, to + i); },
      [&](int i) { to[i] = Evaluate(stencil, from + i); });
}

void StencilArea(const Stencil& stencil, const int32_t* from, int32_t* to, Extent extent) {
  for (int row = 0; row < extent.rows; ++row)
    StencilRow(stencil, from + row * kTileSize, to + row * kTileSize, extent.columns);
}

void MinimumRow(std::span<const int16_t> cells, const int32_t* from, int32_t* to, int count) {
  const auto minimum = [&](int i) {
    int32_t least = 2000000000;
    for (const int16_t cell : cells) least = std::min(least, from[i + cell]);
    to[i] = least;
  };
  ForBlocks(
      count, [&](int i) { MinimumBlock(cells, from + i, to + i); }, minimum);
}

}  // namespace plain
}  // namespace kelvo
