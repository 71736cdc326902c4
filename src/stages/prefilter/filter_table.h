// The cells of the directional filters, for those who need them while compiling.
#ifndef KELVO_STAGES_PREFILTER_FILTER_TABLE_H
#define KELVO_STAGES_PREFILTER_FILTER_TABLE_H

#include <string_view>

#include "stages/prefilter/filters.h"
#include "stages/stencil.h"

namespace kelvo {

using DirectionalBuilder = StencilBuilder<48, 4>;

// Directional filters of rows 2..5 for directions 0, 1 and 2; the others are reflections. The middle of a picture is
// the cell. Cells with the same digit form one partial sum, shifted right by that digit; `c` is the cell as a partial
// sum of its own, shifted by 2. But for row 2, direction 2, a picture holds the cells nearest to the cell when distance
// is along^2 + q across^2, q = 8.5 (row 5: 3.5): so all directions of a row remove the same noise.
struct Picture {
  int height, width;
  std::string_view cells;
};

constexpr Picture kPictures[4][3] = {
    {{3, 5,
      "..4.."
      "42c24"
      "..4.."},
     {3, 5,
      "...44"
      ".2c2."
      "44..."},
     {5, 5,
      "....4"
      ".4.2."
      "..c.."
      ".2.4."
      "4...."}},
    {{3, 7,
      "...3..."
      "4333334"
      "...3..."},
     {3, 5,
      "..433"
      ".333."
      "334.."},
     {5, 5,
      "....4"
      "..33."
      ".333."
      ".33.."
      "4...."}},
    {{3, 9,
      "..54445.."
      "544444445"
      "..54445.."},
     {5, 7,
      ".....55"
      "..54444"
      ".44444."
      "44445.."
      "55....."},
     {7, 7,
      ".....5."
      "....445"
      "..5444."
      "..444.."
      ".4445.."
      "544...."
      ".5....."}},
    {{5, 9,
      "..65556.."
      "655555556"
      "655555556"
      "655555556"
      "..65556.."},
     {5, 9,
      "...655556"
      ".65555556"
      "655555556"
      "65555556."
      "655556..."},
     {7, 7,
      "...6556"
      "..65555"
      ".655555"
      "6555556"
      "555556."
      "55556.."
      "6556..."}},
};

// The picture and the reflection that make a direction: 3 and 4 are 1 and 0 reflected at the anti-diagonal, 5, 6 and 7
// are 3, 2 and 1 mirrored left to right.
struct Turn {
  int picture;
  bool reflect, mirror;
};
constexpr Turn kTurns[kDirections] = {{0, false, false}, {1, false, false}, {2, false, false}, {1, true, false},
                                      {0, true, false},  {1, true, true},   {2, false, true},  {1, false, true}};

constexpr void AddTurned(DirectionalBuilder& builder, const Turn& turn, int row, int column) {
  const int y = turn.reflect ? -column : row, x = turn.reflect ? -row : column;
  builder.Add(y, turn.mirror ? -x : x);
}

constexpr DirectionalBuilder FromPicture(const Picture& picture, const Turn& turn) {
  DirectionalBuilder builder;
  for (const char sign : std::string_view("c23456")) {
    bool open = false;
    for (int i = 0; i < picture.height * picture.width; ++i) {
      if (picture.cells[static_cast<size_t>(i)] != sign) continue;
      if (!open) builder.Open(sign == 'c' ? 2 : sign - '0');
      open = true;
      AddTurned(builder, turn, i / picture.width - picture.height / 2, i % picture.width - picture.width / 2);
    }
  }
  return builder.Normalise();
}

// The neighbour along an even direction; the other one is opposite.
constexpr int kAlong[4][2] = {{0, 1}, {-1, 1}, {-1, 0}, {-1, -1}};

// Rows 0 and 1: the cell (twice in row 0, halved in row 1), and a quarter of the sum of its two neighbours along an
// even direction or an eighth of those along the two even directions next to an odd one.
constexpr DirectionalBuilder Short(int row, int direction) {
  DirectionalBuilder builder;
  builder.Open(row == 0 ? -1 : 1).Add(0, 0);
  builder.Open(direction % 2 == 0 ? 2 : 3);
  for (int even : {direction / 2, (direction + 1) / 2 % 4}) {
    builder.Add(kAlong[even][0], kAlong[even][1]).Add(-kAlong[even][0], -kAlong[even][1]);
    if (direction % 2 == 0) break;
  }
  return builder.Normalise();
}

struct DirectionalTable {
  DirectionalBuilder builders[kFilterRows][kDirections];
};

constexpr DirectionalTable MakeDirectional() {
  DirectionalTable table;
  for (int row = 0; row < kFilterRows; ++row)
    for (int direction = 0; direction < kDirections; ++direction)
      table.builders[row][direction] =
          row < 2 ? Short(row, direction)
                  : FromPicture(kPictures[row - 2][kTurns[direction].picture], kTurns[direction]);
  return table;
}

constexpr DirectionalTable kDirectionals = MakeDirectional();

}  // namespace kelvo

#endif  // KELVO_STAGES_PREFILTER_FILTER_TABLE_H
