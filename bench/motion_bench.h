// The motion half of kelvo-bench.
#ifndef KELVO_BENCH_MOTION_BENCH_H
#define KELVO_BENCH_MOTION_BENCH_H

namespace kelvo::bench {

// Prints, as Markdown tables, milliseconds per tile by width and bucket, and what searching neighbouring cells together
// gains over searching them one by one.
void PrintMotion(int repeats);

}  // namespace kelvo::bench

#endif  // KELVO_BENCH_MOTION_BENCH_H
