// The members of the motion family against known rows, lines and responses.
#include "motion/family.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <cstdlib>
#include <numeric>

#include "motion/line.h"
#include "motion/step_model.h"
#include "stages/fixed_point.h"
#include "support/tiles.h"

namespace kelvo::test {
namespace {

// Adds a step of v at the pixel that `estimate` points to.
void AddStep(const OperatorTaps& taps, int32_t* estimate, int32_t v) {
  for (int i = 0; i < taps.count; ++i) {
    const OperatorTap& tap = taps.taps[static_cast<size_t>(i)];
    int32_t& cell = estimate[tap.cell];
    cell = Signed(Bits(cell) + Bits(tap.sign) * Bits(TapAmount(tap, v)));
  }
}

// Margin, extra margin, final margin, and the sides of the sweep's and the blurred square, up to a bucket of a width.
struct Row {
  int width, last_bucket, margin, extra, final_margin, sweep, blurred;
};

constexpr Row kRows[] = {
    {1, 9, 6, 0, 2, 132, 138},    {2, 9, 6, 0, 2, 132, 138},    {3, 7, 9, 0, 3, 134, 142},
    {3, 9, 6, 0, 2, 132, 138},    {4, 9, 9, 0, 3, 134, 142},    {5, 6, 12, 0, 4, 136, 146},
    {5, 9, 9, 0, 3, 134, 142},    {6, 8, 12, 0, 4, 136, 146},   {6, 9, 9, 0, 3, 134, 142},
    {7, 5, 15, 0, 5, 138, 150},   {7, 9, 12, 0, 4, 136, 146},   {8, 7, 16, 0, 5, 138, 152},
    {8, 9, 13, 0, 4, 136, 148},   {9, 5, 19, 0, 6, 140, 156},   {9, 9, 16, 0, 5, 138, 152},
    {10, 7, 19, 0, 6, 140, 156},  {10, 9, 16, 0, 5, 138, 152},  {11, 4, 23, 1, 7, 142, 162},
    {11, 8, 20, 1, 6, 140, 158},  {11, 9, 17, 1, 5, 138, 154},  {12, 6, 24, 1, 7, 142, 164},
    {12, 9, 21, 1, 6, 140, 160},  {13, 4, 27, 1, 8, 144, 168},  {13, 7, 24, 1, 7, 142, 164},
    {13, 9, 21, 1, 6, 140, 160},  {14, 5, 27, 1, 8, 144, 168},  {14, 8, 24, 1, 7, 142, 164},
    {14, 9, 21, 1, 6, 140, 160},  {15, 2, 31, 2, 9, 146, 174},  {15, 4, 30, 1, 9, 146, 172},
    {15, 7, 27, 1, 8, 144, 168},  {15, 9, 24, 1, 7, 142, 164},  {16, 5, 31, 2, 9, 146, 174},
    {16, 8, 27, 1, 8, 144, 168},  {16, 9, 24, 1, 7, 142, 164},  {17, 3, 34, 2, 10, 148, 178},
    {17, 6, 31, 2, 9, 146, 174},  {17, 8, 28, 2, 8, 144, 170},  {17, 9, 25, 2, 7, 142, 166},
    {18, 5, 34, 2, 10, 148, 178}, {18, 7, 31, 2, 9, 146, 174},  {18, 9, 28, 2, 8, 144, 170},
    {19, 3, 37, 2, 11, 150, 182}, {19, 6, 34, 2, 10, 148, 178}, {19, 8, 31, 2, 9, 146, 174},
    {19, 9, 27, 1, 8, 144, 168},  {20, 5, 37, 2, 11, 150, 182}, {20, 7, 34, 2, 10, 148, 178},
    {20, 8, 31, 2, 9, 146, 174},  {20, 9, 28, 2, 8, 144, 170},
};

TEST_CASE("every member has its margins and squares") {
  const Row* row = kRows;
  for (int width = 1; width <= kMaxWidth; ++width)
    for (int bucket = 0; bucket < kBuckets; ++bucket) {
      CAPTURE(width);
      CAPTURE(bucket);
      const MotionMember& member = MotionMemberOf(width, bucket);
      REQUIRE(row->width == width);
      CHECK(member.width == width);
      CHECK(member.margin == row->margin);
      CHECK(member.extra_margin == row->extra);
      CHECK(member.final_margin == row->final_margin);
      CHECK(128 + 2 * member.final_margin == row->sweep);
      CHECK(2 * (member.line_min_margin - member.final_margin) == (width <= 7 ? 2 : width <= 11 ? 4 : 6));
      CHECK(128 + 2 * member.blur_margin == row->blurred);
      CHECK(member.scale_shift == (width >= 14 ? 1 : 0));
      CHECK(member.passes == (width >= 4 ? 2 : 1));
      if (bucket == row->last_bucket) ++row;
    }
}

TEST_CASE("directions reach their members: narrow widths share them, wide ones have ten") {
  const int shared[kBuckets] = {0, 0, 15, 15, 15, 30, 30, 30, 45, 45};
  for (int bucket = 0; bucket < kBuckets; ++bucket) {
    for (int width = 1; width <= 4; ++width) CHECK(MotionMemberOf(width, bucket).angle == shared[bucket]);
    for (int width = 5; width <= kMaxWidth; ++width) CHECK(MotionMemberOf(width, bucket).angle == 5 * bucket);
  }
  CHECK(&MotionMemberOf(1, BucketOf(1)) == &MotionMemberOf(1, BucketOf(7)));
  CHECK(MotionMemberOf(1, BucketOf(8)).angle == 15);
  CHECK(MotionMemberOf(5, BucketOf(32)).margin == 12);
  CHECK(MotionMemberOf(5, BucketOf(33)).margin == 9);
  CHECK(MotionMemberOf(5, BucketOf(37)).margin == 9);
}

TEST_CASE("lines have their cells, weights and normalisers") {
  struct Drawn {
    size_t cells;
    int total;
    uint32_t normaliser;
  };
  const struct {
    int width, angle;
    Drawn bare, model;
  } cases[] = {
      {2, 15, {5, 24, 1431655765}, {5, 24, 1431655765}},       {3, 30, {7, 28, 1227133513}, {7, 28, 1227133513}},
      {4, 15, {9, 38, 1808407282}, {9, 38, 1808407282}},       {5, 20, {11, 46, 1493901668}, {11, 46, 1493901668}},
      {9, 25, {17, 72, 1908874353}, {17, 72, 1908874353}},     {11, 0, {13, 96, 1431655765}, {45, 200, 1374389534}},
      {12, 25, {25, 94, 1462116526}, {51, 192, 1431655765}},   {15, 0, {17, 128, 0}, {95, 302, 1820383489}},
      {18, 40, {27, 116, 1184818564}, {115, 298, 1844818167}}, {20, 0, {21, 168, 1636178017}, {115, 394, 1395319324}},
      {20, 20, {41, 158, 1739733588}, {109, 364, 1510318170}}, {20, 45, {15, 118, 1164736893}, {115, 298, 1844818167}},
  };
  for (const auto& c : cases) {
    CAPTURE(c.width);
    CAPTURE(c.angle);
    const MotionMember& member = MotionMemberOf(c.width, BucketOf(c.angle));
    CHECK(motion::TotalOf(motion::DrawBareLine(c.width, c.angle)) == c.bare.total);
    CHECK(BareLine(member).normaliser == c.bare.normaliser);
    CHECK(motion::TotalOf(motion::DrawModelLine(member)) == c.model.total);
    CHECK(ModelLine(member).normaliser == c.model.normaliser);
    CHECK(ModelLineCells(member).size() == c.model.cells);
    std::vector<int16_t> bare(BareLine(member).cells.begin(), BareLine(member).cells.end());
    std::sort(bare.begin(), bare.end());
    CHECK(static_cast<size_t>(std::unique(bare.begin(), bare.end()) - bare.begin()) == c.bare.cells);
  }
}

// Rows from the top, columns -reach .. reach.
std::vector<int> Rows(const motion::LineGrid& line, int top, int bottom, int reach) {
  std::vector<int> weights;
  for (int up = top; up >= bottom; --up)
    for (int column = -reach; column <= reach; ++column) weights.push_back(line.At(column, up));
  return weights;
}

TEST_CASE("drawn lines: weights cell by cell") {
  CHECK(Rows(motion::DrawBareLine(5, 20), 1, -1, 3) ==
        std::vector<int>{0, 0, 0, 0, 3, 6, 3, 0, 2, 5, 8, 5, 2, 0, 3, 6, 3, 0, 0, 0, 0});
  const motion::LineGrid band = motion::DrawModelLine(MotionMemberOf(12, 5));
  CHECK(Rows(band, 2, 0, 7) == std::vector<int>{0, 0, 0, 0, 0, 0, 0, 0, 2, 4, 5, 8, 6, 2, 1,  //
                                                0, 0, 0, 0, 0, 0, 2, 4, 6, 7, 7, 4, 3, 0, 0,  //
                                                0, 0, 0, 1, 2, 5, 6, 8, 6, 5, 2, 1, 0, 0, 0});
  for (int up = -4; up <= 4; ++up)  // turned by half it is the same
    for (int column = -9; column <= 9; ++column) CHECK(band.At(column, up) == band.At(-column, -up));
}

// A value per cell around the pixel, so that one wrong tap shows.
TEST_CASE("narrow lines: their integer forms, written out") {
  std::vector<int32_t> plane(21 * 256);
  for (size_t i = 0; i < plane.size(); ++i) plane[i] = static_cast<int32_t>(Mix(static_cast<uint32_t>(i)) >> 8);
  const int32_t* x = &plane[10 * 256 + 128];
  const auto at = [x](int column, int up) { return Bits(x[column - 256 * up]); };
  const uint32_t sides = at(-1, 0) + at(1, 0), slant = at(1, 1) + at(-1, -1);
  const uint32_t five = at(-2, 0) + at(-1, 0) + at(0, 0) + at(1, 0) + at(2, 0);
  const struct {
    int width, bucket;
    uint32_t value;
  } cases[] = {
      {1, 0, (at(0, 0) >> 1) + (sides >> 2)},
      {1, 3, (at(0, 0) >> 1) + (sides >> 3) + ((slant + sides) >> 4)},
      {1, 6, MulHighUnsigned((sides >> 2) + 2 * at(0, 0) + (slant >> 1), 1227133513)},
      {1, 9, MulHighUnsigned(2 * at(0, 0) + (slant >> 1), 1431655765)},
      {2, 0, MulHighUnsigned(at(0, 0) + sides, 1431655765)},
      {3, 0, ((at(-2, 0) + at(2, 0)) >> 3) + ((sides + at(0, 0)) >> 2)},
      {4, 0, MulHighUnsigned(five >> 1, 1717986918)},
      {5, 0, MulHighUnsigned((five >> 1) + ((at(-3, 0) + at(3, 0)) >> 2), 1431655765)},
  };
  for (const auto& c : cases) {
    CAPTURE(c.width);
    CAPTURE(c.bucket);
    CHECK(Bits(Evaluate(BareLine(MotionMemberOf(c.width, c.bucket)), x)) == c.value);
    CHECK(Bits(Evaluate(ModelLine(MotionMemberOf(c.width, c.bucket)), x)) == c.value);
  }
  const uint32_t up_down = at(0, 1) + at(0, -1), other = at(-1, 1) + at(1, -1);
  CHECK(Bits(Evaluate(ObservedLineSmoother(MotionMemberOf(20, 9)), x)) ==
        MulHighUnsigned(
            (at(0, 0) >> 1) + (slant >> 3) + ((sides + up_down) >> 2) + ((sides + up_down + slant + other) >> 4),
            1908874353));
}

TEST_CASE("responses have their cells and largest amounts") {
  const struct {
    int width, angle;
    StepKind kind;
    int cells, largest;
  } cases[] = {
      {1, 0, StepKind::kFine, 4, 16380},   {1, 45, StepKind::kFine, 4, 33408},
      {2, 15, StepKind::kFine, 8, 16380},  {3, 30, StepKind::kFine, 13, 9722},
      {4, 0, StepKind::kFine, 2, 13104},   {4, 15, StepKind::kCoarse, 18, 7573},
      {4, 15, StepKind::kFine, 14, 6896},  {5, 20, StepKind::kCoarse, 22, 6472},
      {5, 20, StepKind::kFine, 17, 5828},  {9, 25, StepKind::kCoarse, 20, 6548},
      {9, 25, StepKind::kFine, 24, 3823},  {11, 0, StepKind::kCoarse, 36, 3276},
      {11, 0, StepKind::kFine, 24, 1965},  {12, 25, StepKind::kCoarse, 50, 4536},
      {12, 25, StepKind::kFine, 40, 3172}, {18, 40, StepKind::kCoarse, 92, 2738},
      {18, 40, StepKind::kFine, 74, 2060}, {20, 0, StepKind::kCoarse, 48, 2660},
      {20, 0, StepKind::kFine, 38, 1995},  {20, 20, StepKind::kCoarse, 70, 2168},
      {20, 20, StepKind::kFine, 54, 1587}, {20, 45, StepKind::kCoarse, 76, 3297},
      {20, 45, StepKind::kFine, 48, 2198},
  };
  for (const auto& c : cases) {
    CAPTURE(c.width);
    CAPTURE(c.angle);
    const StepModel& model = StepModelOf(c.kind, MotionMemberOf(c.width, BucketOf(c.angle)));
    CHECK(model.rising.count + model.falling.count == c.cells);
    CHECK(std::max(model.rising.amounts[0], model.falling.amounts[0]) == c.largest);
  }
}

TEST_CASE("operators: shares of a slanted tent, and what a step adds in all") {
  const OperatorTaps tent = motion::MakeTaps(StepOperator::kTent, 20);
  const int shares[6][3] = {{1, 0, 41682}, {1, 1, 23853}, {2, 0, 17829}, {2, 1, 47706}, {3, 1, 59512}, {3, 2, 6023}};
  for (const auto& share : shares) {
    const auto found = std::find_if(tent.taps.begin(), tent.taps.end(), [&](const OperatorTap& tap) {
      return tap.column == share[0] && tap.up == share[1] && tap.share == share[2] && tap.sign == 1;
    });
    CHECK(found != tent.taps.end());
  }
  for (int angle = 0; angle <= 45; angle += 5)
    for (const StepOperator kind : {StepOperator::kUnit, StepOperator::kSpan, StepOperator::kPair, StepOperator::kTent})
      for (const int32_t v : {1, -1, 3, 1000, -65535, 65535}) {
        CAPTURE(angle);
        CAPTURE(v);
        std::vector<int32_t> plane(9 * 256);
        AddStep(motion::MakeTaps(kind, angle), &plane[4 * 256 + 128], v);
        const int sum = std::accumulate(plane.begin(), plane.end(), 0);
        CHECK(std::abs(sum) <= (kind == StepOperator::kUnit && angle % 45 != 0 ? 2 : 0));
        if (std::abs(v) >= 1000) CHECK(std::count(plane.begin(), plane.end(), 0) < 9 * 256);
      }
}

}  // namespace
}  // namespace kelvo::test
