#include "analysis/edge_model.h"

#include <array>
#include <cassert>
#include <cstddef>

namespace kelvo {
namespace {

constexpr int kMostTyped = ModelReach(kModelWidths - 1);
constexpr int32_t kOne = 65536;

// Row w - 1: positions -reach..-1 of width w. The other half follows from the symmetry.
constexpr int32_t kRising[kModelWidths - 1][kMostTyped] = {
    {12603},
    {18725},
    {5041, 22685},
    {9540, 24473},
    {2632, 12580, 25746},
    {5745, 15320, 26810},
    {1776, 8556, 17596, 27603},
    {3984, 10922, 19146, 28142},
    {1244, 6222, 12858, 20532, 28620},
    {3003, 8235, 14497, 21531, 28994},
    {945, 4724, 9808, 15840, 22379, 29280},
    {2340, 6405, 11456, 17122, 23221, 29565},
    {744, 3819, 7954, 12832, 18240, 23913, 29799},
    {1854, 5191, 9363, 14044, 19142, 24471, 29987},
    {648, 3124, 6576, 10638, 15145, 19937, 24972, 30169},
    {1584, 4357, 7814, 11775, 16096, 20669, 25422, 30319},
    {518, 2584, 5489, 8910, 12784, 16916, 21274, 25795, 30444},
    {1355, 3717, 6655, 10054, 13773, 17751, 21931, 26196, 30577},
    {442, 2215, 4719, 7693, 11032, 14634, 18443, 22435, 26506, 30681},
    {1134, 3168, 5745, 8724, 11964, 15463, 19127, 22932, 26810, 30782},
    {388, 1937, 4111, 6735, 9660, 12845, 16201, 19729, 23366, 27088, 30875},
    {1023, 2812, 5053, 7668, 10537, 13623, 16887, 20287, 23785, 27343, 30960},
    {342, 1701, 3623, 5906, 8479, 11307, 14316, 17470, 20751, 24123, 27549, 31028},
    {884, 2469, 4470, 6772, 9340, 12091, 15027, 18079, 21247, 24481, 27766, 31101},
    {295, 1516, 3215, 5269, 7584, 10115, 12815, 15656, 18619, 21674, 24790, 27953, 31163},
    {788, 2201, 3987, 6072, 8385, 10871, 13499, 16269, 19140, 22083, 25097, 28140, 31225},
};

constexpr int kRoom = 16;  // for vectors that read beyond what is compared

using Row = std::array<int32_t, 2 * kModelReach + kRoom>;

constexpr Row MakeRow(int width) {
  Row row{};
  for (int32_t& share : row) share = kOne;
  const int reach = ModelReach(width);
  for (int position = 0; position < kModelReach; ++position) {
    const int32_t before = position < reach ? kRising[width - 1][reach - 1 - position] : 0;
    row[static_cast<size_t>(kModelReach - 1 - position)] = before;
    row[static_cast<size_t>(kModelReach + position)] = kOne - before;
  }
  return row;
}

constexpr std::array<Row, kModelWidths> MakeRows() {
  std::array<Row, kModelWidths> rows{};
  for (int width = 0; width < kModelWidths; ++width) rows[static_cast<size_t>(width)] = MakeRow(width);
  return rows;
}

constexpr std::array<Row, kModelWidths> kRows = MakeRows();

constexpr ModelPart MakePart(int width, int from, int to) {
  const bool last = to == ComparedReach(width);
  assert(to - from + last <= kLongestPart);
  int32_t rise = 0;
  for (int i = from; i < to; ++i) rise += kRows[static_cast<size_t>(width)][static_cast<size_t>(kModelReach - 1 - i)];
  const auto cells = static_cast<float>(to - from);
  return {from, to, last ? to + 1 : to, cells, last ? cells + 1 : cells, static_cast<float>(rise) / kOne};
}

constexpr ModelParts MakeParts(int width) {
  const int slope = ModelReach(width), reach = ComparedReach(width);
  const int cuts[kMostParts + 1] = {0, slope / 3, 2 * slope / 3, slope, slope + (reach - slope) / 2, reach};
  ModelParts parts{};
  for (int i = 0; i < kMostParts; ++i)
    if (cuts[i] < cuts[i + 1]) {
      parts.part[parts.count++] = MakePart(width, cuts[i], cuts[i + 1]);
      if (cuts[i] < slope) parts.slopes = parts.count;
    }
  return parts;
}

constexpr std::array<ModelParts, kModelWidths> MakeAllParts() {
  std::array<ModelParts, kModelWidths> parts{};
  for (int width = 0; width < kModelWidths; ++width) parts[static_cast<size_t>(width)] = MakeParts(width);
  return parts;
}

constexpr std::array<ModelParts, kModelWidths> kParts = MakeAllParts();

}  // namespace

const int32_t* EdgeModel(int width) {
  return kRows[static_cast<size_t>(width)].data() + kModelReach;
}

const ModelParts& PartsOfModel(int width) {
  return kParts[static_cast<size_t>(width)];
}

}  // namespace kelvo
