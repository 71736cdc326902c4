// Both detections as a host calls them: what counts, what does not, and how sums add up.
#include <doctest/doctest.h>

#include <cstdlib>
#include <cstring>

#include "analysis/jpeg_grid.h"
#include "analysis/jpeg_rows.h"
#include "analysis/width_votes.h"
#include "stages/routines.h"
#include "stages/tile.h"
#include "support/fields.h"
#include "support/levels.h"
#include "support/tiles.h"

namespace kelvo::test {
namespace {

void Detect(Bench& bench) {
  CHECK(kelvo_detect_blur_width_for_tile(&bench.params, bench.heap()) == KELVO_OK);
  CHECK(kelvo_detect_jpg_compression_for_tile(&bench.params, bench.heap()) == KELVO_OK);
}

void Place(TileParams& params, int top, int left, int height, int width) {
  params.TileTop = top;
  params.TileLeft = left;
  params.ImageHeight = height;
  params.ImageWidth = width;
}

int Mod8(int64_t value) {
  return static_cast<int>(((value % 8) + 8) % 8);
}

TEST_CASE("the grid's phase is that of the image, also where tiles begin before it or near the end of the integers") {
  for (const int start : {0, 128, 3, -3, -61, -64, INT32_MAX - 200}) {
    CAPTURE(start);
    Bench bench;
    bench.Fill("blocks", {1, 2, 5});
    Place(bench.params, start, -start / 2, INT32_MAX, INT32_MAX);
    Detect(bench);
    CHECK(bench.params.JPGVerticalOffset == Mod8(int64_t{start} - 64 - 2));
    CHECK(bench.params.JPGHorizontalOffset == Mod8(int64_t{-start / 2} - 64 - 5));
    CHECK(bench.params.JPGCompression == 80);
  }
}

TEST_CASE("what is flat or outside the image adds nothing, and the verdict is that of the sums") {
  const struct {
    const char* tile;
    int argument, top, left;
  } cases[] = {{"flat", 12800, 0, 0}, {"scene", 1, 500, 0}, {"scene", 1, 0, 600}, {"scene", 1, -300, 0}};
  for (const auto& c : cases) {
    CAPTURE(c.top);
    CAPTURE(c.left);
    Bench bench;
    bench.Fill(c.tile, {c.argument});
    Place(bench.params, c.top, c.left, 500, 600);
    const bool before_image = c.top < 0;  // the grid is measured there, edges are not
    for (int k = 0; k < 21; ++k) bench.params.BlurWidthVotes[k] = k == 6 ? 4000 : 0;
    bench.params.JPGColumnPhaseSums[3] = bench.params.JPGRowPhaseSums[6] = 100000;
    Detect(bench);
    CHECK(bench.params.BlurWidthVotes[6] == 4000);
    CHECK(bench.params.DetectedBlurWidth == 5);  // the vote for 6 counts half for 5, a quarter for 4 and 6
    CHECK(bench.params.JPGTileCount == 1);
    CHECK(bench.params.JPGHorizontalOffset == 3);
    CHECK(bench.params.JPGVerticalOffset == 6);
    if (!before_image) CHECK(bench.params.JPGColumnPhaseSums[3] == 100000);
  }
}

TEST_CASE("a sharp edge votes for width 0, twice in the middle half of the image") {
  Bench bench;
  bench.Fill("edge", {0, 1, 0, 32640});
  Place(bench.params, 64, 64, 256, 256);
  Detect(bench);
  CHECK(bench.params.BlurWidthVotes[0] == 765 * (31 * 2 + 1));  // rows 64..188; row 64 lies on the quarter
  for (int k = 1; k <= 20; ++k) CHECK(bench.params.BlurWidthVotes[k] == 0);
  // Within 15 samples of the image's border the same edge is silent.
  Bench narrow;
  narrow.Fill("edge", {0, 1, 0, 32640});
  Place(narrow.params, 64, 64, 256, 128 + 15);
  Detect(narrow);
  CHECK(narrow.params.BlurWidthVotes[0] == 0);
}

TEST_CASE("strong detail of exactly seven levels is left out only beside stronger detail") {
  const auto left_out = [](int centre, int before) {
    Bench bench;
    bench.Fill("flat", {0});
    Place(bench.params, 0, 0, 1000, 1000);
    bench.Cell(0, 100, 100) = centre;
    bench.Cell(0, 99, 99) = before;
    Detect(bench);
    return (bench.Cell(3, 101, 101) & 1) != 0;
  };
  CHECK_FALSE(left_out(-956, 0));  // residual 896
  CHECK(left_out(-959, 0));        // residual 898
  CHECK(left_out(-1090, -2000));   // residual 896, flagged by its neighbour
  CHECK_FALSE(left_out(955, 0));   // residual -896
}

// Residuals around the limit, in few kinds of values, so that what hangs on a neighbour comes in chains.
void FillResiduals(Bench& bench, uint32_t kind) {
  const std::vector<int32_t> values[] = {{0, 896, 898},
                                         {896, 896, 896, 896, 0, 898},
                                         {-896, -898, 896, 894, 0, 2},
                                         {INT32_MIN, 896, 0, INT32_MAX - 1, 12},
                                         {0, 2, 4, 64, 300, -300}};
  const std::vector<int32_t>& from = values[kind % 5];
  for (int i = 0; i < 65536; ++i) {
    const uint32_t random = Mix(kind * 65536 + static_cast<uint32_t>(i));
    bench.Cell(3, i / 256, i % 256) = from[random % from.size()] | (random >> 24 == 0 ? 1 : 0);
  }
}

// LeaveOutStrongRow one cell after another.
void LeaveOutLiterally(int32_t* cells, int count) {
  for (int i = 0; i < count; ++i)
    if (cells[i] != INT32_MIN && std::abs(cells[i]) > 896)
      for (int row = -1; row <= 1; ++row)
        for (int column = -1; column <= 1; ++column) cells[256 * row + i + column] |= 1;
}

TEST_CASE(
    "rows of the grid at every level: strong detail as one cell after another finds it, steps as plain finds them") {
  for (const Level level : RunnableLevels())
    for (uint32_t kind = 0; kind < 10; ++kind) {
      CAPTURE(NameOf(level));
      CAPTURE(kind);
      const Routines &routines = RoutinesOf(level), &plain = RoutinesOf(Level::kPlain);
      Bench want, got;
      FillResiduals(want, kind);
      FillResiduals(got, kind);
      StepTally wanted{}, tally{};
      for (int row = 64; row < 192; ++row) {
        const int count = row % 5 == 0 ? static_cast<int>(Mix(kind + static_cast<uint32_t>(row)) % 129) : 128;
        LeaveOutLiterally(&want.Cell(3, row, 64), count);
        routines.leave_out_strong_row(&got.Cell(3, row, 64), count);
        plain.count_steps_row(&want.Cell(3, row, 64), wanted);
        routines.count_steps_row(&want.Cell(3, row, 64), tally);
        CHECK(std::memcmp(&wanted, &tally, sizeof tally) == 0);
        plain.jpeg_residual_row(&want.Cell(4, row, 64), &want.Cell(5, row, 64), 160);
        routines.jpeg_residual_row(&got.Cell(4, row, 64), &got.Cell(5, row, 64), 160);
      }
      for (const int cells : {3, 5})
        CHECK(std::memcmp(&want.Cell(cells, 0, 0), &got.Cell(cells, 0, 0), 65536 * sizeof(int32_t)) == 0);
    }
}

TEST_CASE("the ladder of strengths: a ratio must be exceeded") {
  const int cases[][2] = {{123, 0}, {124, 2}, {132, 2}, {133, 5}, {165, 10}, {166, 12}, {391, 70}, {392, 80}};
  for (const auto& c : cases) {
    const int peak = c[0], compression = c[1];
    CAPTURE(peak);
    TileParams params{};
    const int rest = 1600 - 2 * peak;
    for (int phase = 0; phase < 7; ++phase) {
      params.JPGColumnPhaseSums[phase] = rest / 14;
      params.JPGRowPhaseSums[phase] = phase == 0 ? rest - 13 * (rest / 14) : rest / 14;
    }
    params.JPGColumnPhaseSums[7] = params.JPGRowPhaseSums[7] = peak;
    DecideJpegGrid(params);
    CHECK(params.JPGCompression == compression);
    CHECK(params.JPGHorizontalOffset == 7);
  }
  TileParams negative{};
  for (int phase = 0; phase < 8; ++phase) negative.JPGColumnPhaseSums[phase] = negative.JPGRowPhaseSums[phase] = -9;
  DecideJpegGrid(negative);
  CHECK(negative.JPGCompression == 0);
  CHECK(negative.JPGVerticalOffset == 0);
}

TEST_CASE("tiles measured in blocks of their own add up to those measured in one") {
  const char* const kinds[] = {"scene", "blocks", "soft", "noise", "edge"};
  Bench one;
  TileParams sums{};
  for (int i = 0; i < 10; ++i) {
    const std::vector<int> arguments = {i % 5 == 4 ? 1 : i, 2, 3, 32000};
    one.Fill(kinds[i % 5], arguments);
    Place(one.params, 128 * (i % 3) - 5, 128 * (i / 3) - 7, 380, 500);
    Detect(one);
    Bench own(static_cast<uint32_t>(i));  // other rubbish in the heap
    own.Fill(kinds[i % 5], arguments);
    Place(own.params, one.params.TileTop, one.params.TileLeft, 380, 500);
    Detect(own);
    for (int k = 0; k < 21; ++k) sums.BlurWidthVotes[k] += own.params.BlurWidthVotes[k];
    for (int k = 0; k < 8; ++k) sums.JPGColumnPhaseSums[k] += own.params.JPGColumnPhaseSums[k];
    for (int k = 0; k < 8; ++k) sums.JPGRowPhaseSums[k] += own.params.JPGRowPhaseSums[k];
  }
  DecideBlurWidth(sums);
  DecideJpegGrid(sums);
  for (const char* field : {"DetectedBlurWidth", "JPGHorizontalOffset", "JPGVerticalOffset", "JPGCompression"}) {
    CAPTURE(field);
    CHECK(*FieldWord(sums, field) == *FieldWord(one.params, field));
  }
  CHECK(std::memcmp(sums.BlurWidthVotes, one.params.BlurWidthVotes, sizeof sums.BlurWidthVotes) == 0);
  CHECK(std::memcmp(sums.JPGColumnPhaseSums, one.params.JPGColumnPhaseSums, 2 * sizeof sums.JPGColumnPhaseSums) == 0);
  CHECK(sums.BlurWidthVotes[0] > 0);
}

}  // namespace
}  // namespace kelvo::test
