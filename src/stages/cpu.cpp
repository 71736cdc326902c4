#include "stages/cpu.h"

#if defined(__x86_64__) || defined(__i386__)
#include <cpuid.h>
#endif

namespace kelvo {

#if defined(__x86_64__) || defined(__i386__)
namespace {

// Which registers the system saves: bits of the extended control register 0.
constexpr unsigned kVectors256 = 0x06, kVectors512 = 0xE6;

unsigned SavedRegisters() {
  unsigned low, high;
  __asm__ volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
  return low;
}

constexpr bool Has(unsigned bits, unsigned wanted) {
  return (bits & wanted) == wanted;
}

}  // namespace

// AVX-512 here is the foundation with BW, DQ and VL, which the routines are compiled for. Asks no more than three times: in
// a virtual machine every answer takes as long as a tone curve.
Level BestLevel() {
  unsigned a, b, c, d;
  if (__get_cpuid_max(0, nullptr) < 7) return Level::kBaseline;
  __cpuid(1, a, b, c, d);
  if (!Has(c, bit_OSXSAVE | bit_AVX)) return Level::kBaseline;
  const unsigned saved = SavedRegisters();
  __cpuid_count(7, 0, a, b, c, d);
  if (!Has(saved, kVectors256) || !Has(b, bit_AVX2)) return Level::kBaseline;
  const bool wide = Has(b, bit_AVX512F | bit_AVX512BW | bit_AVX512DQ | bit_AVX512VL) && Has(saved, kVectors512);
  return wide ? Level::kAvx512 : Level::kAvx2;
}
#else
Level BestLevel() {
  return Level::kBaseline;
}
#endif

const char* NameOf(Level level) {
  switch (level) {
    case Level::kPlain:
      return "plain";
    case Level::kBaseline:
#if defined(__aarch64__)
      return "neon";
#else
      return "sse2";
#endif
    case Level::kAvx2:
      return "avx2";
    case Level::kAvx512:
      return "avx512";
  }
  return "";
}

}  // namespace kelvo
