// Every driver and the larger stages at every level, side by side.
#ifndef KELVO_BENCH_LEVELS_BENCH_H
#define KELVO_BENCH_LEVELS_BENCH_H

namespace kelvo::bench {

// Prints milliseconds of the plain level and how many times as fast the others are; the levels take turns, and each
// number is the least of `repeats` runs in processor time. Writes all of them as JSON to `json_path` unless it is null;
// returns false, with a message on stderr, if that fails.
bool PrintLevels(int repeats, const char* json_path);

}  // namespace kelvo::bench

#endif  // KELVO_BENCH_LEVELS_BENCH_H
