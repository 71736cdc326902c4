#include "stages/prefilter/classify.h"

#include <algorithm>

#include "stages/fixed_point.h"
#include "stages/point_operator.h"
#include "stages/prefilter/filters.h"
#include "stages/prefilter/roughness.h"

namespace kelvo {
namespace {

using namespace class_code;

uint32_t Contrast(uint32_t code) {
  return code >> kContrastShift & kContrastMask;
}

void MeasureDirections(const Tile& tile, int margin) {
  const Region region(margin);
  for (int row = region.first; row < region.end; ++row) {
    const int32_t* smoothed = tile.Row(kPreSmoothed, row, region.first);
    int32_t* codes = tile.Row(kClass, row, region.first);
    for (int column = 0; column < region.size(); ++column) {
      const Roughness rough = MeasureRoughness(smoothed + column);
      const uint32_t contrast = Bits(std::min(rough.across >> 5, 511));
      const uint32_t score = Bits(std::min(rough.along >> 7, 31));
      codes[column] = Signed(Bits(rough.direction) | contrast << kContrastShift | score << kScoreShift);
    }
  }
}

struct Square {
  int row, column, radius;
};

// Sets `flag` on the cells of the square that lie in the region and pass.
template <class Predicate>
void MarkSquare(const Tile& tile, const Region& region, Square square, uint32_t flag, Predicate pass) {
  const auto first = [&](int middle) { return std::max(middle - square.radius, region.first); };
  const auto end = [&](int middle) { return std::min(middle + square.radius + 1, region.end); };
  for (int row = first(square.row); row < end(square.row); ++row)
    for (int column = first(square.column); column < end(square.column); ++column) {
      int32_t& cell = tile.At(kClass, row, column);
      if (pass(Bits(cell))) cell = Signed(Bits(cell) | flag);
    }
}

void MarkEdgeSurroundings(const Tile& tile, int margin) {
  const auto any = [](uint32_t) { return true; };
  const Region region(margin);
  for (int row = region.first; row < region.end; ++row)
    for (int column = region.first; column < region.end; ++column) {
      int32_t& cell = tile.At(kClass, row, column);
      const uint32_t score = Bits(cell) >> kScoreShift;
      if (score < 3) continue;
      const uint32_t own = score >= 8 ? kOnEdge : score >= 4 ? kByEdge : kNearEdge;
      const uint32_t before = Bits(cell);
      if (score >= 4) MarkSquare(tile, region, {row, column, 1}, own << 1, any);
      cell = Signed(before | own);  // the square's middle is not its own neighbour
    }
}

// JPEG rings in the flat ground beside a contrast, so only flat cells are marked: an edge must not raise its own
// threshold.
void MarkRinging(const Tile& tile, int margin) {
  const auto flat = [](uint32_t code) { return Contrast(code) <= 50; };
  const Region region(margin);
  for (int row = region.first; row < region.end; ++row)
    for (int column = region.first; column < region.end; ++column) {
      const uint32_t contrast = Contrast(Bits(tile.At(kClass, row, column)));
      if (contrast <= 50) continue;
      const uint32_t near = contrast >= 201 ? kRinging1 : contrast >= 101 ? kRinging2 : kRinging3;
      MarkSquare(tile, region, {row, column, 4}, near, flat);
      if (contrast >= 101) MarkSquare(tile, region, {row, column, 8}, near << 1, flat);
    }
}

// The contrast above which a cell counts as detail. In 64 bits, because the enlargement takes whatever NoiseFloor the
// host left; the products with 1.4 and 1.2 are double and truncated.
int64_t DetailThreshold(uint32_t code, int32_t noise_floor) {
  int64_t threshold = noise_floor;
  if (code & kOnEdge)
    threshold >>= 1;
  else if (code & kByEdge)
    threshold -= threshold >> 2;
  else if (code & kNearEdge)
    threshold -= threshold >> 3;

  if (code & kRinging1)
    threshold *= 2;
  else if (code & kRinging2)
    threshold = static_cast<int64_t>(static_cast<double>(threshold) * 1.4);
  else if (code & kRinging3)
    threshold = static_cast<int64_t>(static_cast<double>(threshold) * 1.2);
  return threshold;
}

// Filter row and directional flag, in place. Flatter cells get a wider filter; from row 4 on it is directional only
// where noise is to be removed.
uint32_t FilterBits(uint32_t code, int32_t noise_floor, int32_t remove_noise) {
  const int64_t threshold = DetailThreshold(code, noise_floor);
  const int64_t contrast = Contrast(code);
  uint32_t row = 0;
  while (row < 5 && contrast <= threshold >> row) ++row;
  const bool directional = row >= 1 && (row <= 3 || (row == 4 && remove_noise >= 2));
  return row << kRowShift | (directional ? kDirectional : 0);
}

void ChooseFilters(const Tile& tile, int margin) {
  const Region region(margin);
  const TileParams& params = tile.params();
  for (int row = region.first; row < region.end; ++row)
    for (int column = region.first; column < region.end; ++column) {
      int32_t& cell = tile.At(kClass, row, column);
      const uint32_t code = Bits(cell) & ~(kRowMask << kRowShift | kDirectional);
      cell = Signed(code | FilterBits(code, params.NoiseFloor, params.RemoveNoise));
    }
}

}  // namespace

void Classify(const Tile& tile, int margin) {
  ApplyPointOperator(tile, PreSmoother(tile.params()), kDisplay, kPreSmoothed, margin + 3);
  MeasureDirections(tile, margin + 2);
  MarkEdgeSurroundings(tile, margin);
  if (tile.params().JPGCompression >= 16) MarkRinging(tile, margin);
  ChooseFilters(tile, margin);
}

}  // namespace kelvo
