// Every driver and the larger stages at every level, side by side.
#ifndef KELVO_BENCH_LEVELS_BENCH_H
#define KELVO_BENCH_LEVELS_BENCH_H

namespace kelvo::bench {

struct LevelsRequest {
  const char* only;       // the name of a case, alone or with its accuracy; null for all cases
  const char* json_path;  // null for none
};

// Prints milliseconds of the plain level and how many times as fast the others are; the levels take turns, and each
// number is the least of `repeats` runs in processor time. Writes all of them as JSON if asked; returns false, with a
// message on stderr, if that fails or if there is no such case.
bool PrintLevels(int repeats, const LevelsRequest& request);

}  // namespace kelvo::bench

#endif  // KELVO_BENCH_LEVELS_BENCH_H
