#include "levels_bench.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "api/calls.h"
#include "enlarge/enlarge.h"
#include "round/family.h"
#include "round/focus_driver.h"
#include "round/iteration.h"
#include "stages/copy.h"
#include "stages/output.h"
#include "stages/prefilter/prefilter.h"
#include "stages/schedule.h"
#include "stages/tone.h"
#include "support/levels.h"
#include "timing.h"

namespace kelvo::bench {
namespace {

constexpr int kNone = -1000;  // a setting that does not apply
constexpr uint32_t kModern = KELVO_VARIANT_UNDO_ROUND_MOVES | KELVO_VARIANT_SIGNED_MOTION;
constexpr uint32_t kFit = KELVO_VARIANT_KEEP_FRACTION | KELVO_VARIANT_FIT | KELVO_VARIANT_FIT_ALONE;

// Runs what is measured. Returns milliseconds where it has a clock of its own, else 0.
using Run = std::function<double(Subject&, const Routines&)>;

struct Case {
  std::string what;
  int width, direction, accuracy;
  Run run;
  const char* tile = "soft";
};

struct Result {
  const Case* of;
  std::vector<double> milliseconds;  // by level
};

double ProcessorMilliseconds() {
  timespec now;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return 1e3 * static_cast<double>(now.tv_sec) + 1e-6 * static_cast<double>(now.tv_nsec);
}

// At least `repeats` runs; more of short ones, as a core takes a while to be ready for wide vectors.
Result Measure(const Case& measured, int repeats) {
  constexpr double kLeastMilliseconds = 20;
  Subject subject(measured.width, measured.direction, measured.tile);
  if (measured.accuracy != kNone) subject.bench.params.Accuracy = measured.accuracy;
  subject.bench.params.ImageWidth = subject.bench.params.ImageHeight = 1000;
  const std::vector<Level> levels = test::RunnableLevels();
  Result result{&measured, std::vector<double>(levels.size(), 1e9)};
  double spent = 0;
  for (int i = 0; i < repeats || spent < kLeastMilliseconds; ++i)
    for (size_t level = 0; level < levels.size(); ++level) {
      subject.Reset();
      const double start = ProcessorMilliseconds();
      const double own = measured.run(subject, RoutinesOf(levels[level]));
      const double whole = ProcessorMilliseconds() - start;
      result.milliseconds[level] = std::min(result.milliseconds[level], own > 0 ? own : whole);
      spent += whole;
    }
  return result;
}

Run Calls(Operation operation, uint32_t variant = 0) {
  return [operation, variant](Subject& s, const Routines& routines) {
    Call(operation, s.bench.params, s.bench.heap(), routines, variant);
    return 0.0;
  };
}

// The stages of an iteration, timed inside of a run.
enum class Stage { kMove, kApply };

class ClockedPass : public PairPass {
 public:
  ClockedPass(const RoundMember& member, PairKind kind, Stage stage, double& milliseconds)
      : PairPass(member, kind), stage_(stage), milliseconds_(milliseconds) {}

  void Move(const Tile& tile) const {
    Timed(Stage::kMove, [&] { PairPass::Move(tile); });
  }
  void Apply(const Tile& tile) const {
    Timed(Stage::kApply, [&] { PairPass::Apply(tile); });
  }

 private:
  template <class Work>
  void Timed(Stage stage, Work work) const {
    const double start = ProcessorMilliseconds();
    work();
    if (stage == stage_) milliseconds_ += ProcessorMilliseconds() - start;
  }

  Stage stage_;
  double& milliseconds_;
};

Run InRun(Stage stage) {
  return [stage](Subject& s, const Routines& routines) {
    double milliseconds = 0;
    const RoundMember& member = MemberOf(BlurWidth(s.bench.params));
    const ClockedPass coarse(member, PairKind::kCoarse, stage, milliseconds);
    const ClockedPass fine(member, PairKind::kFine, stage, milliseconds);
    RunRoundFocus(Tile(s.bench.params, s.bench.heap(), routines, kModern), member, coarse, fine);
    return milliseconds;
  };
}

template <class Stage>
Case StageCase(const char* what, int width, Stage stage, const char* tile = "soft") {
  return {what,
          width,
          0,
          kNone,
          [stage](Subject& s, const Routines& routines) {
            stage(Tile(s.bench.params, s.bench.heap(), routines), MemberOf(BlurWidth(s.bench.params)));
            return 0.0;
          },
          tile};
}

// Noise is where neighbouring cells want different filters; strong JPEG adds ringing and the damping of its blocks.
void AddPrefilters(std::vector<Case>& cases) {
  const auto prefilter = [](int noise, int jpeg) {
    return [noise, jpeg](const Tile& tile, const RoundMember& member) {
      tile.params().RemoveNoise = noise;
      tile.params().JPGCompression = jpeg;
      SetUpSchedule(tile.params());
      ClearPrefilterPlanes(tile);
      Prefilter(tile, member.margin, member.extra_margin);
    };
  };
  for (const int width : {1, 5, 8, 12, 20}) cases.push_back(StageCase("pre-filter", width, prefilter(0, 0)));
  for (const int width : {1, 5}) {
    cases.push_back(StageCase("pre-filter, noise", width, prefilter(2, 0), "noise"));
    cases.push_back(StageCase("pre-filter, strong JPEG", width, prefilter(0, 20)));
    cases.push_back(StageCase("pre-filter, noise, strong JPEG", width, prefilter(2, 20), "noise"));
  }
}

void AddStages(std::vector<Case>& cases) {
  AddPrefilters(cases);
  for (const int width : {1, 5, 8, 12, 20}) {
    cases.push_back(StageCase("blur", width, BlurEstimate));
    cases.push_back(StageCase("floor", width, FindFloor));
    if (width == 1) continue;  // does not search at this accuracy
    cases.push_back({"moves of a run", width, 0, 1, InRun(Stage::kMove)});
    cases.push_back({"moves applied in a run", width, 0, 1, InRun(Stage::kApply)});
  }
  cases.push_back(StageCase(
      "tone curve", 1, [](const Tile& tile, const RoundMember&) { ToneMapRegion(tile, kDisplay, KELVO_CORE_START); }));
  cases.push_back(
      StageCase("output", 1, [](const Tile& tile, const RoundMember&) { OutputCore(tile, OutputBase::kEstimate); }));
}

// At an angle where the line's cells lie askew at every accuracy, and at one where they lie on a diagonal.
void AddMotion(std::vector<Case>& cases, int width) {
  for (const int angle : {20, 45}) {
    cases.push_back({"motion defocus", width, angle, kNone, Calls(Operation::kDefocus)});
    for (int accuracy = -2; accuracy <= 2; ++accuracy) {
      if (angle == 45 && accuracy != 0) continue;
      cases.push_back({"motion focus", width, angle, accuracy, Calls(Operation::kFocus, kModern)});
      cases.push_back({"motion fit", width, angle, accuracy, Calls(Operation::kFocus, kFit)});
    }
  }
}

std::vector<Case> AllCases() {
  std::vector<Case> cases;
  AddStages(cases);
  for (int width = 1; width <= kMaxWidth; ++width) {
    cases.push_back({"defocus", width, 0, kNone, Calls(Operation::kDefocus)});
    for (int accuracy = -2; accuracy <= 2; ++accuracy)
      for (const auto& [what, variant] : {std::pair{"focus", kModern}, {"fit", kFit}})
        cases.push_back({what, width, 0, accuracy, Calls(Operation::kFocus, variant)});
    cases.push_back({"focus, moves stay", width, 0, 0, Calls(Operation::kFocus)});
  }
  for (int width = 1; width <= kMaxWidth; ++width) AddMotion(cases, width);
  cases.push_back({"detect width", 5, 0, kNone, Calls(Operation::kDetectBlurWidth)});
  cases.push_back({"detect grid", 5, 0, kNone, Calls(Operation::kDetectJpegGrid)});
  cases.push_back({"enlarge", 2, 0, kNone, Calls(Operation::kEnlarge)});
  cases.push_back({"enlarge, no pre-filter", 2, 0, kNone, [](Subject& s, const Routines& routines) {
                     EnlargeCentre(Tile(s.bench.params, s.bench.heap(), routines));
                     return 0.0;
                   }});
  cases.push_back({"enlarge, one value out of range", 2, 0, kNone, [](Subject& s, const Routines& routines) {
                     s.bench.Cell(kDisplay, 128, 128) = -1;
                     EnlargeCentre(Tile(s.bench.params, s.bench.heap(), routines));
                     return 0.0;
                   }});
  return cases;
}

std::string Text(int setting) {
  return setting == kNone ? "" : std::to_string(setting);
}

void Print(const Result& result) {
  const Case& c = *result.of;
  std::printf("| %s | %d | %s | %s | %.3f |", c.what.c_str(), c.width, Text(c.direction).c_str(),
              Text(c.accuracy).c_str(), result.milliseconds[0]);
  for (size_t level = 1; level < result.milliseconds.size(); ++level)
    std::printf(" %.2f |", result.milliseconds[0] / result.milliseconds[level]);
  std::printf("\n");
  std::fflush(stdout);
}

bool WriteJson(const std::vector<Result>& results, const char* path) {
  std::FILE* file = std::fopen(path, "w");
  if (file != nullptr) {
    const char* separator = "[";
    for (const Result& result : results) {
      const Case& c = *result.of;
      std::fprintf(file, "%s\n{\"what\": \"%s\", \"width\": %d, \"direction\": %d", separator, c.what.c_str(), c.width,
                   c.direction);
      if (c.accuracy != kNone) std::fprintf(file, ", \"accuracy\": %d", c.accuracy);
      std::fprintf(file, ", \"milliseconds\": {");
      const std::vector<Level> levels = test::RunnableLevels();
      for (size_t level = 0; level < levels.size(); ++level)
        std::fprintf(file, "%s\"%s\": %.5f", level == 0 ? "" : ", ", NameOf(levels[level]), result.milliseconds[level]);
      std::fprintf(file, "}}");
      separator = ",";
    }
    std::fprintf(file, "\n]\n");
    if (std::fclose(file) == 0) return true;
  }
  std::fprintf(stderr, "kelvo-bench: %s: cannot be written: %s\n", path, std::strerror(errno));
  return false;
}

}  // namespace

bool PrintLevels(int repeats, const LevelsRequest& request) {
  std::vector<Case> cases = AllCases();
  if (request.only != nullptr)
    std::erase_if(cases, [&](const Case& c) {
      return c.what != request.only && c.what + " " + Text(c.accuracy) != request.only;
    });
  if (cases.empty()) {
    std::fprintf(stderr, "kelvo-bench: --only %s: no such case; the first column of a full run names them\n",
                 request.only);
    return false;
  }
  std::printf("\nMilliseconds of processor time per tile, plain, and how many times as fast the others are.\n\n");
  std::printf("| what | width | direction | accuracy | plain, ms |");
  std::string rule = "|---|---|---|---|---|";
  for (const Level level : test::RunnableLevels()) {
    if (level == Level::kPlain) continue;
    std::printf(" %s |", NameOf(level));
    rule += "---|";
  }
  std::printf("\n%s\n", rule.c_str());
  std::vector<Result> results;
  for (const Case& c : cases) {
    results.push_back(Measure(c, repeats));
    Print(results.back());
  }
  return request.json_path == nullptr || WriteJson(results, request.json_path);
}

}  // namespace kelvo::bench
