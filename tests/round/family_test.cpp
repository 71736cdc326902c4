#include "round/family.h"

#include <doctest/doctest.h>

#include "round/pair_model.h"

namespace kelvo::test {
namespace {

TEST_CASE("floors and responses of every width have their control numbers") {
  const int rows[20][5] = {
      // floor cells, horizontal pair: cells, sum of positive amounts; diagonal pair: likewise
      {5, 8, 49152, 6, 49152},    {9, 10, 28086, 12, 37448},  {25, 20, 20163, 22, 27725}, {37, 22, 16380, 24, 22932},
      {49, 28, 14040, 32, 19890}, {69, 22, 11760, 26, 15960}, {97, 28, 10080, 40, 14490}, {101, 30, 9216, 36, 12800},
      {145, 44, 8089, 54, 11325}, {177, 42, 7271, 52, 10575}, {197, 52, 6888, 60, 9472},  {225, 50, 6305, 58, 8973},
      {277, 56, 5837, 72, 8339},  {305, 62, 5490, 74, 7868},  {349, 64, 5152, 78, 7246},  {373, 62, 4862, 72, 6864},
      {429, 68, 4625, 86, 6553},  {489, 78, 4389, 90, 6121},  {545, 84, 4139, 104, 5899}, {593, 90, 3927, 106, 5609},
  };
  for (int width = 1; width <= kMaxWidth; ++width) {
    CAPTURE(width);
    const int* row = rows[width - 1];
    CHECK(FloorCells(width).size() == static_cast<size_t>(row[0]));
    const int columns[kPairFamilies] = {1, 1, 3, 3};
    for (int family = 0; family < kPairFamilies; ++family) {
      const PairModel& model = FinePairModel(width, static_cast<PairFamily>(family));
      int sum = 0;
      for (const int amount : model.amounts) sum += amount;
      CHECK(2 * model.side == row[columns[family]]);
      CHECK(sum == row[columns[family] + 1]);
    }
  }
}

TEST_CASE("refinement counts by width, accuracy and iteration") {
  const struct {
    int width, accuracy, iteration, shortcut, count;
  } cases[] = {
      {1, 2, 1, 0, 2},  {1, 2, 2, 0, 1}, {1, 2, 4, 0, 0},  {3, 1, 1, 0, 1},  {3, 0, 1, 0, 0},  {4, 0, 1, 0, 1},
      {6, 2, 1, 0, 3},  {6, 2, 1, 2, 0}, {6, -1, 1, 1, 0}, {7, -1, 1, 0, 1}, {7, -2, 1, 0, 0}, {7, 2, 2, 0, 3},
      {8, -1, 1, 0, 1}, {9, 2, 1, 0, 8}, {9, 1, 1, 0, 4},  {9, 0, 1, 0, 2},  {11, 1, 1, 0, 6}, {20, -1, 1, 0, 2},
  };
  for (const auto& c : cases) {
    CAPTURE(c.width);
    CAPTURE(c.accuracy);
    TileParams params{};
    params.Accuracy = c.accuracy;
    params.Iteration = c.iteration;
    params.ShortcutMode = c.shortcut;
    CHECK(std::max(0, RoundRefineCount(MemberOf(c.width), params)) == c.count);
  }
}

}  // namespace
}  // namespace kelvo::test
