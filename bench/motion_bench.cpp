#include "motion_bench.h"

#include <cstdio>

#include "api/dispatch.h"
#include "motion/iteration.h"
#include "motion/step_sweep.h"
#include "stages/routines.h"
#include "timing.h"

namespace kelvo::bench {
namespace {

// 0 degrees is asked for as 180: direction 0 is round blur.
Subject SubjectOf(int width, int bucket) {
  return Subject(width, 180 + 5 * bucket);
}

template <class Time>
void PrintByBucket(const char* what, Time time) {
  std::printf(
      "\n%s\n\n| width | 0 | 5 | 10 | 15 | 20 | 25 | 30 | 35 | 40 | 45 "
      "|\n|---|---|---|---|---|---|---|---|---|---|---|\n",
      what);
  for (int width = 1; width <= kMaxWidth; ++width) {
    std::printf("| %d |", width);
    for (int bucket = 0; bucket < kBuckets; ++bucket) std::printf(" %s |", time(width, bucket).c_str());
    std::printf("\n");
  }
}

std::string Text(double value, int digits) {
  char text[32];
  std::snprintf(text, sizeof text, "%.*f", digits, value);
  return text;
}

double TimeFocus(Subject& s, const Routines& routines, int repeats) {
  return Fastest(repeats, s,
                 [&] { Focus(Tile(s.bench.params, s.bench.heap(), routines, KELVO_VARIANT_SIGNED_MOTION)); });
}

// One sweep of the fine operator over the planes that a run leaves: nanoseconds per cell.
double TimeSweep(Subject& s, const MotionMember& member, const Routines& routines, int repeats) {
  const Tile tile(s.bench.params, s.bench.heap(), routines);
  Focus(tile);
  s.bench.params.Iteration = 2;
  const StepPass pass(member, StepKind::kFine);
  double best = 0;
  for (int i = 0; i < repeats; ++i) {
    const auto start = Clock::now();
    pass.Move(tile);
    const double time = Milliseconds(Clock::now() - start);
    if (i == 0 || time < best) best = time;
  }
  const int side = Region(member.final_margin).size();
  return 1e6 * best / (side * side);
}

void PrintLanes(int repeats) {
  std::printf(
      "\nOne sweep of the fine operator, nanoseconds per cell: one cell at a time, neighbours in lanes, and the "
      "ratio;\n");
  std::printf("then the ratio of whole runs at accuracy 0.\n\n");
  std::printf(
      "| width | angle | response cells | one at a time | in lanes | ratio | ratio of runs "
      "|\n|---|---|---|---|---|---|---|\n");
  for (const int width : {1, 2, 3, 5, 8, 11, 12, 14, 16, 18, 20})
    for (const int bucket : {0, 3, 6, 9}) {
      const MotionMember& member = MotionMemberOf(width, bucket);
      const StepModel& model = StepModelOf(StepKind::kFine, member);
      Subject s = SubjectOf(width, bucket);
      const double plain_run = TimeFocus(s, RoutinesOf(Level::kPlain), repeats),
                   run = TimeFocus(s, BestRoutines(), repeats);
      s.Reset();
      const double plain = TimeSweep(s, member, RoutinesOf(Level::kPlain), repeats);
      s.Reset();
      const double lanes = TimeSweep(s, member, BestRoutines(), repeats);
      std::printf("| %d | %d | %d | %.0f | %.0f | %.2f | %.2f |\n", width, member.angle,
                  model.rising.count + model.falling.count, plain, lanes, plain / lanes, plain_run / run);
    }
}

}  // namespace

void PrintMotion(int repeats) {
  PrintByBucket("Motion, milliseconds per tile of defocus, by width and nominal angle:", [&](int width, int bucket) {
    Subject s = SubjectOf(width, bucket);
    return Text(Fastest(repeats, s, [&] { kelvo_defocus_tile(&s.bench.params, s.bench.heap()); }), 2);
  });
  PrintByBucket("Motion, milliseconds per tile of focus at accuracy 0:", [&](int width, int bucket) {
    Subject s = SubjectOf(width, bucket);
    return Text(TimeFocus(s, BestRoutines(), repeats), 1);
  });
  PrintLanes(repeats);
}

}  // namespace kelvo::bench
