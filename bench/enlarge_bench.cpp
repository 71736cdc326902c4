#include "enlarge_bench.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "enlarge/enlarge.h"
#include "enlarge/literal.h"
#include "enlarge/rules.h"
#include "stages/routines.h"
#include "timing.h"

namespace kelvo::bench {
namespace {

// Microseconds.
template <class Run>
double Least(int repeats, Run run) {
  double least = 0;
  for (int i = 0; i < repeats; ++i) {
    const auto start = Clock::now();
    run();
    const double time = 1000 * Milliseconds(Clock::now() - start);
    if (i == 0 || time < least) least = time;
  }
  return least;
}

struct Kind {
  const char* name;
  std::string tile;
  std::vector<int> arguments;
};

const std::vector<Kind> kKinds = {{"flat", "flat", {16320}},
                                  {"soft, like a photograph", "soft", {2, 1}},
                                  {"shapes and grain", "scene", {2}},
                                  {"noise", "noise", {2}}};

void PrintKind(int repeats, const Kind& kind) {
  test::Bench bench;
  bench.Fill(kind.tile, kind.arguments);
  const std::vector<int32_t> cells(bench.heap(), bench.heap() + 65536);
  const Tile tile(bench.params, bench.heap(), BestRoutines());
  const auto timed = [&](auto run) {
    return Least(repeats, [&] {
      std::copy(cells.begin(), cells.end(), bench.heap());
      run();
    });
  };
  const double whole = timed([&] { Enlarge(tile); });
  const double centre = timed([&] { EnlargeCentre(tile); });
  const double literal = Least(repeats, [&] { test::EnlargeLiterally(cells); });
  constexpr double kPixels = KELVO_CORE_SIZE * KELVO_CORE_SIZE;
  std::printf("| %s | %.0f (%.1f) | %.0f (%.1f) | %.0f (%.1f) | %.1f |\n", kind.name, whole, kPixels / whole, centre,
              kPixels / centre, literal, kPixels / literal, literal / centre);
}

// One rule over 64 rows of 66 blocks, all of them within cells that were gathered from noise.
template <class Rule>
double NanosecondsPerBlock(int repeats, Rule rule) {
  constexpr int kStride = 72, kBlocks = 66, kRows = 64;
  std::vector<int32_t> source(kStride * (kRows + 4)), outputs[3];
  for (size_t i = 0; i < source.size(); ++i)
    source[i] = static_cast<int32_t>(test::Mix(static_cast<uint32_t>(i)) >> 17);
  for (auto& output : outputs) output = source;
  const double time = Least(repeats, [&] {
    for (int row = 2; row < kRows + 2; ++row) {
      const auto at = static_cast<size_t>(row * kStride + 2);
      rule(&source[at], Compass{-kStride, -1}, &outputs[0][at], &outputs[1][at], &outputs[2][at], kBlocks);
    }
  });
  return 1000 * time / (kBlocks * kRows);
}

}  // namespace

void PrintEnlargement(int repeats) {
  std::printf(
      "\nEnlargement: microseconds per tile, in brackets megapixels per second of the result; the least of %d "
      "runs.\n\n",
      repeats);
  std::printf(
      "| tile | the export | without the pre-filter | literal form | literal / rows |\n|---|---|---|---|---|\n");
  for (const Kind& kind : kKinds) PrintKind(repeats, kind);

  const Routines& routines = BestRoutines();
  std::printf("\n| rule | ns per block |\n|---|---|\n");
  std::printf("| corner | %.2f |\n", NanosecondsPerBlock(repeats, routines.shape_corner_row));
  std::printf("| notch | %.2f |\n", NanosecondsPerBlock(repeats, [&](const int32_t* source, Compass compass,
                                                                     int32_t* corner, int32_t*, int32_t*, int count) {
                routines.fill_notch_row(source, compass, corner, count);
              }));
  std::printf("| line | %.2f |\n",
              NanosecondsPerBlock(
                  repeats, [&](const int32_t* source, Compass compass, int32_t* corner, int32_t* outside, int32_t*,
                               int count) { routines.join_line_row(source, compass, corner, outside, count); }));
}

}  // namespace kelvo::bench
