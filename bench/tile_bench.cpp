// kelvo-bench: milliseconds per tile of the stages and drivers, and nanoseconds per pair, by width, as Markdown tables.
//
// Every number is the least of several runs on the same generated tile, on one thread. The share of the pair search is
// taken inside the driver, by timing the move stage of each iteration.
//
//   kelvo-bench [REPEATS [round|motion|detect|enlarge|stack|levels]]   everything, or one part
//     --only NAME   of the levels the cases of that name, or of "NAME ACCURACY": --only "focus 0"
//     --json FILE   the levels side by side also as JSON (see bench/compare, bench/plot)
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "analysis_bench.h"
#include "enlarge_bench.h"
#include "levels_bench.h"
#include "motion_bench.h"
#include "round/focus_driver.h"
#include "stack_bench.h"
#include "stages/routines.h"
#include "timing.h"

namespace {

using kelvo::bench::Clock;
using kelvo::bench::Fastest;
using kelvo::bench::Milliseconds;
using kelvo::bench::Subject;

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

double NanosecondsPerPair(const TimedPass& pass) {
  return pass.pairs == 0 ? 0 : 1e6 * Milliseconds(pass.searching) / static_cast<double>(pass.pairs);
}

// Each number is the least of the runs.
Times TimeFocus(Subject& s, int width, int accuracy, int repeats) {
  s.bench.params.Accuracy = accuracy;
  Times best{1e9, 1e9, 1e9, 1e9};
  best.total = Fastest(repeats, s, [&] {
    const kelvo::RoundMember& member = kelvo::MemberOf(width);
    const TimedPass coarse(member, kelvo::PairKind::kCoarse), fine(member, kelvo::PairKind::kFine);
    const kelvo::Tile view(s.bench.params, s.bench.heap(), kelvo::BestRoutines(), KELVO_VARIANT_UNDO_ROUND_MOVES);
    kelvo::RunRoundFocus(view, member, coarse, fine);
    best.searching = std::min(best.searching, Milliseconds(coarse.searching + fine.searching));
    best.per_coarse_pair = std::min(best.per_coarse_pair, NanosecondsPerPair(coarse));
    best.per_fine_pair = std::min(best.per_fine_pair, NanosecondsPerPair(fine));
  });
  return best;
}

double TimePrefilter(Subject& s, int width, int repeats) {
  const kelvo::RoundMember& member = kelvo::MemberOf(width);
  const kelvo::Tile view(s.bench.params, s.bench.heap(), kelvo::BestRoutines());
  return Fastest(repeats, s, [&] {
    kelvo::SetUpSchedule(s.bench.params);
    kelvo::ClearPrefilterPlanes(view);
    kelvo::Prefilter(view, member.margin, member.extra_margin);
  });
}

double TimeDefocus(Subject& s, int repeats) {
  return Fastest(repeats, s, [&] { kelvo_defocus_tile(&s.bench.params, s.bench.heap()); });
}

void PrintTiles(int repeats) {
  std::printf("Milliseconds per tile, the least of %d runs; in brackets the share of the pair search.\n\n", repeats);
  std::printf("| width | defocus | pre-filter | focus -2 | focus -1 | focus 0 | focus 1 | focus 2 |\n");
  std::printf("|---|---|---|---|---|---|---|---|\n");
  for (int width = 1; width <= kelvo::kMaxWidth; ++width) {
    Subject s(width);
    std::printf("| %d | %.2f | %.2f |", width, TimeDefocus(s, repeats), TimePrefilter(s, width, repeats));
    for (int accuracy = -2; accuracy <= 2; ++accuracy) {
      const Times times = TimeFocus(s, width, accuracy, repeats);
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
    const Times times = TimeFocus(s, width, 2, repeats);
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

// Takes `--name VALUE` from the arguments; null if it is not there.
const char* TakeOption(std::vector<const char*>& arguments, const char* name) {
  const auto at = std::find_if(arguments.begin(), arguments.end(),
                               [name](const char* argument) { return std::string(argument) == name; });
  if (at == arguments.end() || at + 1 == arguments.end()) return nullptr;
  const char* value = *(at + 1);
  arguments.erase(at, at + 2);
  return value;
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<const char*> arguments(argv + 1, argv + argc);
  const char* json_path = TakeOption(arguments, "--json");
  const char* only = TakeOption(arguments, "--only");
  const int repeats = arguments.empty() ? 5 : std::max(1, std::atoi(arguments[0]));
  const std::string part = arguments.size() > 1 ? arguments[1] : "all";
  const bool all = part == "all";
  if (all || part == "round") {
    PrintTiles(repeats);
    PrintPairs(repeats);
  }
  if (all || part == "motion") kelvo::bench::PrintMotion(repeats);
  if (all || part == "detect") kelvo::bench::PrintAnalysis(repeats);
  if (all || part == "enlarge") kelvo::bench::PrintEnlargement(repeats);
  if (all || part == "stack") kelvo::bench::PrintStack();
  if (all || part == "levels") return kelvo::bench::PrintLevels(repeats, {only, json_path}) ? 0 : 1;
  return 0;
}
