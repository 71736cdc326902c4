// kelvo-bench: milliseconds per tile of the stages and drivers, and nanoseconds per pair, by width, as Markdown tables.
//
// Every number is the least of several runs on the same generated tile, on one thread. The share of the pair search is
// taken inside the driver, by timing the move stage of each iteration.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>

#include "round/focus_driver.h"
#include "stages/routines.h"
#include "support/tiles.h"

namespace {

using kelvo::test::Bench;
using Clock = std::chrono::steady_clock;

double Milliseconds(Clock::duration time) {
  return std::chrono::duration<double, std::milli>(time).count();
}

// A pass with a clock around its pair search, and a count of the pairs.
class TimedPass : public kelvo::PairPass {
 public:
  TimedPass(const kelvo::RoundMember& member, kelvo::PairKind kind)
      : PairPass(member, kind), member_(member), kind_(kind) {}

  void Move(const kelvo::Tile& tile) const {
    const auto start = Clock::now();
    PairPass::Move(tile);
    searching += Clock::now() - start;
    const bool diagonals = (tile.params().ModelFlags & kelvo::kDiagonalPairs) != 0;
    const int side = kelvo::Region(member_.final_margin).size() / (kind_ == kelvo::PairKind::kFine ? 1 : 2);
    pairs += (diagonals ? 4 : 2) * side * side;
  }

  mutable Clock::duration searching{};
  mutable long pairs = 0;

 private:
  const kelvo::RoundMember& member_;
  kelvo::PairKind kind_;
};

// Milliseconds of a run, of its pair search in all, and nanoseconds per pair of each kind.
struct Times {
  double total, searching, per_coarse_pair, per_fine_pair;
};

// The fastest of `repeats` runs; `run` fills all but the total.
template <class Run>
Times Fastest(int repeats, Bench& bench, const std::vector<int32_t>& tile, Run run) {
  Times best{};
  for (int i = 0; i < repeats; ++i) {
    std::copy(tile.begin(), tile.end(), bench.heap());
    const auto start = Clock::now();
    Times times = run();
    times.total = Milliseconds(Clock::now() - start);
    if (i == 0 || times.total < best.total) best = times;
  }
  return best;
}

double NanosecondsPerPair(const TimedPass& pass) {
  return pass.pairs == 0 ? 0 : 1e6 * Milliseconds(pass.searching) / static_cast<double>(pass.pairs);
}

Times TimeFocus(Bench& bench, const std::vector<int32_t>& tile, int width, int accuracy, int repeats) {
  bench.params.BlurSpec = static_cast<uint32_t>(width);
  bench.params.Accuracy = accuracy;
  return Fastest(repeats, bench, tile, [&] {
    const kelvo::RoundMember& member = kelvo::MemberOf(width);
    const TimedPass coarse(member, kelvo::PairKind::kCoarse), fine(member, kelvo::PairKind::kFine);
    const kelvo::Tile view(bench.params, bench.heap(), kelvo::PlainRoutines(), KELVO_VARIANT_UNDO_ROUND_MOVES);
    kelvo::RunRoundFocus(view, member, coarse, fine);
    return Times{0, Milliseconds(coarse.searching + fine.searching), NanosecondsPerPair(coarse),
                 NanosecondsPerPair(fine)};
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
                   return Times{};
                 })
      .total;
}

double TimeDefocus(Bench& bench, const std::vector<int32_t>& tile, int repeats) {
  return Fastest(repeats, bench, tile,
                 [&] {
                   kelvo_defocus_tile(&bench.params, bench.heap());
                   return Times{};
                 })
      .total;
}

// A tile like a photograph blurred by the width, and a bench with the width set.
struct Subject {
  explicit Subject(int width) {
    bench.Fill("soft", {width, (width + 3) / 4});
    tile.assign(bench.heap(), bench.heap() + 65536);
    bench.params.BlurSpec = static_cast<uint32_t>(width);
  }
  Bench bench;
  std::vector<int32_t> tile;
};

void PrintTiles(int repeats) {
  std::printf("Milliseconds per tile, the least of %d runs; in brackets the share of the pair search.\n\n", repeats);
  std::printf("| width | defocus | pre-filter | focus -2 | focus -1 | focus 0 | focus 1 | focus 2 |\n");
  std::printf("|---|---|---|---|---|---|---|---|\n");
  for (int width = 1; width <= kelvo::kMaxWidth; ++width) {
    Subject s(width);
    std::printf("| %d | %.2f | %.2f |", width, TimeDefocus(s.bench, s.tile, repeats),
                TimePrefilter(s.bench, s.tile, width, repeats));
    for (int accuracy = -2; accuracy <= 2; ++accuracy) {
      const Times times = TimeFocus(s.bench, s.tile, width, accuracy, repeats);
      std::printf(" %.1f (%.0f %%) |", times.total, 100 * times.searching / times.total);
    }
    std::printf("\n");
  }
}

double MeanCells(kelvo::PairKind kind, int width) {
  double cells = 0;
  for (int family = 0; family < kelvo::kPairFamilies; ++family)
    cells += 2 * kelvo::ModelOf(kind, width, static_cast<kelvo::PairFamily>(family)).side;
  return cells / static_cast<int>(kelvo::kPairFamilies);
}

// At Accuracy 2, where all four families move.
void PrintPairs(int repeats) {
  std::printf(
      "\nThe pair search at accuracy 2: response cells of a pair (mean of the families), nanoseconds per pair, and\n");
  std::printf("per pair and cell.\n\n");
  std::printf(
      "| width | coarse cells | ns | ns per cell | fine cells | ns | ns per cell |\n|---|---|---|---|---|---|---|\n");
  for (int width = 2; width <= kelvo::kMaxWidth; ++width) {
    Subject s(width);
    const Times times = TimeFocus(s.bench, s.tile, width, 2, repeats);
    std::printf("| %d |", width);
    if (kelvo::MemberOf(width).passes == 2) {
      const double cells = MeanCells(kelvo::PairKind::kCoarse, width);
      std::printf(" %.0f | %.0f | %.1f |", cells, times.per_coarse_pair, times.per_coarse_pair / cells);
    } else {
      std::printf(" | | |");
    }
    const double cells = MeanCells(kelvo::PairKind::kFine, width);
    std::printf(" %.0f | %.0f | %.1f |\n", cells, times.per_fine_pair, times.per_fine_pair / cells);
  }
}

}  // namespace

int main(int argc, char** argv) {
  const int repeats = argc > 1 ? std::max(1, std::atoi(argv[1])) : 5;
  PrintTiles(repeats);
  PrintPairs(repeats);
  return 0;
}
