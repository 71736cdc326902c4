// The stack half of kelvo-bench.
#ifndef KELVO_BENCH_STACK_BENCH_H
#define KELVO_BENCH_STACK_BENCH_H

namespace kelvo::bench {

// Prints, as a Markdown table, the most bytes of stack that each export takes, over all widths and many directions.
void PrintStack();

}  // namespace kelvo::bench

#endif  // KELVO_BENCH_STACK_BENCH_H
