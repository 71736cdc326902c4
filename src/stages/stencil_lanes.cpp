// plain::StencilRow and plain::MinimumRow in vectors of neighbouring cells.
#include "stages/stencil_lanes.h"

namespace kelvo::KELVO_TARGET {
namespace {

// Vectors that are worked at once, so that their sums stay in registers. Three of 16 lanes fit the rows better than
// four: 128 to 150 cells.
constexpr int kVectors = kLanes == 16 ? 3 : 4;
constexpr int kBlock = kVectors * kLanes;

template <int kCount>
void StencilBlock(const Stencil& stencil, const int32_t* from, int32_t* to) {
  Vector total[kCount] = {};
  const int16_t* next = stencil.cells.data();
  for (size_t s = 0; s < stencil.sums.size(); ++s) {
    const PartialSum sum = stencil.sums.data()[s];
    Vector part[kCount] = {};
    for (const int16_t* end = next + sum.count; next != end; ++next)
      for (int k = 0; k < kCount; ++k) part[k] += Load(from + *next + k * kLanes);
    for (int k = 0; k < kCount; ++k) total[k] += Shifted(part[k], sum.shift);
  }
  for (int k = 0; k < kCount; ++k) Store(to + k * kLanes, Normalised(stencil, total[k]));
}

template <int kCount>
void MinimumBlock(std::span<const int16_t> cells, const int32_t* from, int32_t* to) {
  Vector least[kCount];
  for (int k = 0; k < kCount; ++k) least[k] = All(2000000000);
  for (size_t c = 0; c < cells.size(); ++c)
    for (int k = 0; k < kCount; ++k) least[k] = Lesser(least[k], Load(from + cells.data()[c] + k * kLanes));
  for (int k = 0; k < kCount; ++k) Store(to + k * kLanes, least[k]);
}

// Blocks, then single vectors; the last one overlaps the one before it.
template <class Block, class Single>
void ForBlocks(int count, Block block, Single single) {
  int i = 0;
  for (; i + kBlock <= count; i += kBlock) block(i);
  for (; i < count; i += kLanes) single(i + kLanes <= count ? i : count - kLanes);
}

}  // namespace

void StencilRow(const Stencil& stencil, const int32_t* from, int32_t* to, int count) {
  if (count < kLanes) return plain::StencilRow(stencil, from, to, count);
  ForBlocks(
      count, [&](int i) { StencilBlock<kVectors>(stencil, from + i, to + i); },
      [&](int i) { StencilBlock<1>(stencil, from + i, to + i); });
}

void MinimumRow(std::span<const int16_t> cells, const int32_t* from, int32_t* to, int count) {
  if (count < kLanes) return plain::MinimumRow(cells, from, to, count);
  ForBlocks(
      count, [&](int i) { MinimumBlock<kVectors>(cells, from + i, to + i); },
      [&](int i) { MinimumBlock<1>(cells, from + i, to + i); });
}

}  // namespace kelvo::KELVO_TARGET
