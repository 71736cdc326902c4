// Both detections as a host calls them: what counts, what does not, and how sums add up.
#include <doctest/doctest.h>

#include <cstring>

#include "analysis/jpeg_grid.h"
#include "analysis/width_votes.h"
#include "stages/tile.h"
#include "support/fields.h"
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
