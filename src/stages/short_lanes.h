// Vectors of 16-bit lanes, twice as many as those of lanes.h.
#ifndef KELVO_STAGES_SHORT_LANES_H
#define KELVO_STAGES_SHORT_LANES_H

#include "stages/lanes.h"

namespace kelvo::KELVO_TARGET {

using ShortVector = int16_t __attribute__((vector_size(kVectorBytes)));
using UnsignedShortVector = uint16_t __attribute__((vector_size(kVectorBytes)));

inline constexpr int kShortLanes = kVectorBytes / 2;

// Consecutive cells, from any address.
inline ShortVector LoadShorts(const int16_t* cells) {
  ShortVector v;
  std::memcpy(&v, cells, sizeof v);
  return v;
}
inline void StoreShorts(int16_t* cells, ShortVector v) {
  std::memcpy(cells, &v, sizeof v);
}

inline ShortVector LessShorts(ShortVector a, ShortVector b) {
  return reinterpret_cast<ShortVector>(a < b);
}

inline ShortVector SelectShorts(ShortVector mask, ShortVector yes, ShortVector no) {
  return reinterpret_cast<ShortVector>(
      Select(reinterpret_cast<Vector>(mask), reinterpret_cast<Vector>(yes), reinterpret_cast<Vector>(no)));
}

inline ShortVector GreaterShorts(ShortVector a, ShortVector b) {
#if defined(__AVX512F__)
  return reinterpret_cast<ShortVector>(_mm512_max_epi16(reinterpret_cast<__m512i>(a), reinterpret_cast<__m512i>(b)));
#elif defined(__AVX2__)
  return reinterpret_cast<ShortVector>(_mm256_max_epi16(reinterpret_cast<__m256i>(a), reinterpret_cast<__m256i>(b)));
#elif defined(__SSE2__)
  return reinterpret_cast<ShortVector>(_mm_max_epi16(reinterpret_cast<__m128i>(a), reinterpret_cast<__m128i>(b)));
#else
  return SelectShorts(LessShorts(a, b), b, a);
#endif
}
inline ShortVector LesserShorts(ShortVector a, ShortVector b) {
#if defined(__AVX512F__)
  return reinterpret_cast<ShortVector>(_mm512_min_epi16(reinterpret_cast<__m512i>(a), reinterpret_cast<__m512i>(b)));
#elif defined(__AVX2__)
  return reinterpret_cast<ShortVector>(_mm256_min_epi16(reinterpret_cast<__m256i>(a), reinterpret_cast<__m256i>(b)));
#elif defined(__SSE2__)
  return reinterpret_cast<ShortVector>(_mm_min_epi16(reinterpret_cast<__m128i>(a), reinterpret_cast<__m128i>(b)));
#else
  return SelectShorts(LessShorts(a, b), a, b);
#endif
}

// Half of the sum, rounded down, of lanes 0..32767.
inline ShortVector HalfShorts(ShortVector a, ShortVector b) {
  const auto sum = reinterpret_cast<UnsignedShortVector>(a) + reinterpret_cast<UnsignedShortVector>(b);
  return reinterpret_cast<ShortVector>(sum >> 1);
}

}  // namespace kelvo::KELVO_TARGET

#endif  // KELVO_STAGES_SHORT_LANES_H
