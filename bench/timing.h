// The clock of the benchmarks, and the tiles that they run on.
#ifndef KELVO_BENCH_TIMING_H
#define KELVO_BENCH_TIMING_H

#include <algorithm>
#include <chrono>
#include <vector>

#include "support/tiles.h"

namespace kelvo::bench {

using Clock = std::chrono::steady_clock;

inline double Milliseconds(Clock::duration time) {
  return std::chrono::duration<double, std::milli>(time).count();
}

// A tile like a photograph blurred by the width, or one of another kind (support/tiles.h), and a block with the blur
// set. `direction` 1..359, 0 for round blur.
struct Subject {
  explicit Subject(int width, int direction = 0, const char* kind = "soft") {
    bench.Fill(kind, {width, (width + 3) / 4});
    tile.assign(bench.heap(), bench.heap() + 65536);
    bench.params.BlurSpec = static_cast<uint32_t>(width) | static_cast<uint32_t>(direction) << 8;
  }

  void Reset() { std::copy(tile.begin(), tile.end(), bench.heap()); }

  test::Bench bench;
  std::vector<int32_t> tile;
};

// Milliseconds of the fastest of `repeats` runs, each on the subject's own tile.
template <class Run>
double Fastest(int repeats, Subject& subject, Run run) {
  double best = 0;
  for (int i = 0; i < repeats; ++i) {
    subject.Reset();
    const auto start = Clock::now();
    run();
    const double time = Milliseconds(Clock::now() - start);
    if (i == 0 || time < best) best = time;
  }
  return best;
}

}  // namespace kelvo::bench

#endif  // KELVO_BENCH_TIMING_H
