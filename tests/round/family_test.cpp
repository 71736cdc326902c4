#include "round/family.h"

#include <doctest/doctest.h>

#include "round/pair_model.h"

namespace kelvo::test {
namespace {

// Cells of both sides, and the sum of the amounts of one.
struct Response {
  int cells, sum;
};

Response ResponseOf(PairKind kind, int width, PairFamily family) {
  const PairModel& model = ModelOf(kind, width, family);
  int sum = 0;
  for (const int amount : model.amounts) sum += amount;
  return {2 * model.side, sum};
}

TEST_CASE("floors and responses of every width have their control numbers") {
  const struct {
    size_t floor_cells;
    Response fine_axis, fine_diagonal, coarse_axis, coarse_diagonal;
  } rows[20] = {
      {5, {8, 49152}, {6, 49152}, {0, 0}, {0, 0}},
      {9, {10, 28086}, {12, 37448}, {0, 0}, {0, 0}},
      {25, {20, 20163}, {22, 27725}, {0, 0}, {0, 0}},
      {37, {22, 16380}, {24, 22932}, {0, 0}, {0, 0}},
      {49, {28, 14040}, {32, 19890}, {0, 0}, {0, 0}},
      {69, {22, 11760}, {26, 15960}, {0, 0}, {0, 0}},
      {97, {28, 10080}, {40, 14490}, {0, 0}, {0, 0}},
      {101, {30, 9216}, {36, 12800}, {72, 65792}, {70, 86016}},
      {145, {44, 8089}, {54, 11325}, {70, 53987}, {84, 78453}},
      {177, {42, 7271}, {52, 10575}, {80, 50144}, {98, 73439}},
      {197, {52, 6888}, {60, 9472}, {86, 46844}, {98, 65856}},
      {225, {50, 6305}, {58, 8973}, {92, 42850}, {110, 62064}},
      {277, {56, 5837}, {72, 8339}, {106, 40641}, {110, 55860}},
      {305, {62, 5490}, {74, 7868}, {112, 38138}, {146, 56978}},
      {349, {64, 5152}, {78, 7246}, {118, 35480}, {134, 50530}},
      {373, {62, 4862}, {72, 6864}, {120, 32944}, {154, 49386}},
      {429, {68, 4625}, {86, 6553}, {138, 32551}, {166, 47160}},
      {489, {78, 4389}, {90, 6121}, {140, 30238}, {162, 43117}},
      {545, {84, 4139}, {104, 5899}, {146, 28199}, {174, 41237}},
      {593, {90, 3927}, {106, 5609}, {156, 26958}, {180, 38959}},
  };
  const auto check = [](PairKind kind, int width, PairFamily family, Response expected) {
    CAPTURE(width);
    CAPTURE(family);
    const Response response = ResponseOf(kind, width, family);
    CHECK(response.cells == expected.cells);
    CHECK(response.sum == expected.sum);
  };
  for (int width = 1; width <= kMaxWidth; ++width) {
    const auto& row = rows[width - 1];
    CHECK(FloorCells(width).size() == row.floor_cells);
    for (const PairFamily family : {kHorizontalPair, kVerticalPair, kDiagonalPair, kAntiDiagonalPair}) {
      const bool axis = family < kDiagonalPair;
      check(PairKind::kFine, width, family, axis ? row.fine_axis : row.fine_diagonal);
      if (MemberOf(width).passes == 2)
        check(PairKind::kCoarse, width, family, axis ? row.coarse_axis : row.coarse_diagonal);
    }
  }
}

}  // namespace
}  // namespace kelvo::test
