// The enlargement's part of kelvo-bench.
#ifndef KELVO_BENCH_ENLARGE_BENCH_H
#define KELVO_BENCH_ENLARGE_BENCH_H

namespace kelvo::bench {

// Prints two Markdown tables: megapixels per second of the enlargement with and without its pre-filter and of its literal
// form, on several kinds of tiles; and nanoseconds per block of each rule. The least of `repeats` runs, one thread.
void PrintEnlargement(int repeats);

}  // namespace kelvo::bench

#endif  // KELVO_BENCH_ENLARGE_BENCH_H
