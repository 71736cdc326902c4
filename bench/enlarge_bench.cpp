#include "enlarge_bench.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "enlarge/enlarge.h"
#include "enlarge/literal.h"
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

}  // namespace

void PrintEnlargement(int repeats) {
  std::printf(
      "\nEnlargement: microseconds per tile, in brackets megapixels per second of the result; the least of %d "
      "runs.\n\n",
      repeats);
  std::printf(
      "| tile | the export | without the pre-filter | literal form | literal / rows |\n|---|---|---|---|---|\n");
  for (const Kind& kind : kKinds) PrintKind(repeats, kind);
}

}  // namespace kelvo::bench
