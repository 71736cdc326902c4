// The benchmark of detection.
#ifndef KELVO_BENCH_ANALYSIS_BENCH_H
#define KELVO_BENCH_ANALYSIS_BENCH_H

namespace kelvo::bench {

// Prints the milliseconds per tile of both detections, the megapixels per second of both together on one thread and on
// two, and their time as a share of focus at width 5, Accuracy 0, on the same tile.
void PrintAnalysis(int repeats);

}  // namespace kelvo::bench

#endif  // KELVO_BENCH_ANALYSIS_BENCH_H
