// kelvo-bench: milliseconds per tile of the stages and drivers, by width, as a Markdown table.
//
// Every number is the least of several runs on the same generated tile, on one thread. The share of the pair search is
// taken inside the driver, by timing the move stage of each iteration.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>

#include "round/focus.h"
#include "round/focus_driver.h"
#include "stages/routines.h"
#include "support/tiles.h"

namespace {

using kelvo::test::Bench;
using Clock = std::chrono::steady_clock;

double Milliseconds(Clock::duration time) {
  return std::chrono::duration<double, std::milli>(time).count();
}

// A pass with a clock around its pair search.
class TimedPass : public kelvo::PairPass {
 public:
  using PairPass::PairPass;

  void Move(const kelvo::Tile& tile) const {
    const auto start = Clock::now();
    PairPass::Move(tile);
    searching += Clock::now() - start;
  }

  mutable Clock::duration searching{};
};

struct Times {
  double total, searching;
};

// The fastest of `repeats` runs. `run` returns the time spent searching, in milliseconds.
template <class Run>
Times Fastest(int repeats, Bench& bench, const std::vector<int32_t>& tile, Run run) {
  Times best{1e9, 0};
  for (int i = 0; i < repeats; ++i) {
    std::copy(tile.begin(), tile.end(), bench.heap());
    const auto start = Clock::now();
    const double searching = run();
    const double total = Milliseconds(Clock::now() - start);
    if (total < best.total) best = {total, searching};
  }
  return best;
}

Times TimeFocus(Bench& bench, const std::vector<int32_t>& tile, int width, int accuracy, int repeats) {
  bench.params.BlurSpec = static_cast<uint32_t>(width);
  bench.params.Accuracy = accuracy;
  return Fastest(repeats, bench, tile, [&] {
    const kelvo::RoundMember& member = kelvo::MemberOf(width);
    const TimedPass coarse(member, kelvo::PairKind::kCoarse), fine(member, kelvo::PairKind::kFine);
    const kelvo::Tile view(bench.params, bench.heap(), kelvo::PlainRoutines(), KELVO_VARIANT_UNDO_ROUND_MOVES);
    kelvo::RunRoundFocus(view, member, coarse, fine);
    return Milliseconds(coarse.searching + fine.searching);
  });
}

double TimePrefilter(Bench& bench, const std::vector<int32_t>& tile, int width, int repeats) {
  const kelvo::RoundMember& member = kelvo::MemberOf(width);
  const kelvo::Tile view(bench.params, bench.heap(), kelvo::PlainRoutines());
  return Fastest(repeats, bench, tile,
                 [&] {
                   kelvo::SetUpSchedule(bench.params);
                   kelvo::ClearPrefilterPlanes(view);
                   kelvo::Prefilter(view, member.margin, member.extra_margin);
                   return 0.0;
                 })
      .total;
}

double TimeDefocus(Bench& bench, const std::vector<int32_t>& tile, int repeats) {
  return Fastest(repeats, bench, tile,
                 [&] {
                   kelvo_defocus_tile(&bench.params, bench.heap());
                   return 0.0;
                 })
      .total;
}

void PrintRow(int width, int repeats) {
  Bench bench;
  bench.Fill("soft", {width, (width + 3) / 4});
  const std::vector<int32_t> tile(bench.heap(), bench.heap() + 65536);
  bench.params.BlurSpec = static_cast<uint32_t>(width);
  std::printf("| %d | %.2f | %.2f |", width, TimeDefocus(bench, tile, repeats),
              TimePrefilter(bench, tile, width, repeats));
  for (int accuracy = -2; kelvo::RestoresRound(width) && accuracy <= 2; ++accuracy) {
    const Times times = TimeFocus(bench, tile, width, accuracy, repeats);
    std::printf(" %.1f (%.0f %%) |", times.total, 100 * times.searching / times.total);
  }
  std::printf("\n");
}

}  // namespace

int main(int argc, char** argv) {
  const int repeats = argc > 1 ? std::max(1, std::atoi(argv[1])) : 5;
  std::printf("Milliseconds per tile, the least of %d runs; in brackets the share of the pair search.\n\n", repeats);
  std::printf("| width | defocus | pre-filter | focus -2 | focus -1 | focus 0 | focus 1 | focus 2 |\n");
  std::printf("|---|---|---|---|---|---|---|---|\n");
  for (int width = 1; width <= kelvo::kMaxWidth; ++width) PrintRow(width, repeats);
  return 0;
}
