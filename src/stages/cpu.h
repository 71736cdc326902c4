// The instruction sets that routines exist for, and what this machine can run.
#ifndef KELVO_STAGES_CPU_H
#define KELVO_STAGES_CPU_H

namespace kelvo {

// In the order of preference. kPlain is one thing at a time; kBaseline is what every machine of the build has (SSE2,
// NEON).
enum class Level { kPlain, kBaseline, kAvx2, kAvx512 };

inline constexpr Level kLevels[] = {Level::kPlain, Level::kBaseline, Level::kAvx2, Level::kAvx512};

// The greatest level whose instructions the processor has and whose registers the system saves. Asks the processor on
// every call, which takes a microsecond or, in a virtual machine, several: ask once per call of the library.
Level BestLevel();

// plain, sse2 (neon where that is the baseline), avx2 or avx512.
const char* NameOf(Level level);

}  // namespace kelvo

#endif  // KELVO_STAGES_CPU_H
