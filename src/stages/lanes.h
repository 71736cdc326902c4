// Vectors of 32-bit lanes, in the compiler's own vector types: the same source serves every instruction set.
//
// V is a vector of uint32_t. Masks are vectors whose lanes are all ones or zero.
#ifndef KELVO_STAGES_LANES_H
#define KELVO_STAGES_LANES_H

#include <cstdint>
#include <cstring>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "stages/fixed_point.h"

namespace kelvo::lanes {

using Vector4 = uint32_t __attribute__((vector_size(16)));

template <class V>
struct SignedOf;
template <>
struct SignedOf<Vector4> {
  using Type = int32_t __attribute__((vector_size(16)));
};

template <class V>
inline constexpr int kCount = static_cast<int>(sizeof(V) / sizeof(uint32_t));

template <class V>
V All(uint32_t value) {
  return V{} + value;
}

// Consecutive cells, from any address.
template <class V>
V Load(const int32_t* cells) {
  V v;
  std::memcpy(&v, cells, sizeof v);
  return v;
}

template <class V>
V ShiftRightArithmetic(V v, int shift) {
  return reinterpret_cast<V>(reinterpret_cast<typename SignedOf<V>::Type>(v) >> shift);
}

// All ones where the lane is negative as a signed number.
template <class V>
V Negative(V v) {
  return ShiftRightArithmetic(v, 31);
}

template <class V>
V Magnitude(V v) {
  const V sign = Negative(v);
  return (v ^ sign) - sign;
}

template <class V>
V Less(V a, V b) {
  return reinterpret_cast<V>(a < b);
}
template <class V>
V LessSigned(V a, V b) {
  using S = typename SignedOf<V>::Type;
  return reinterpret_cast<V>(reinterpret_cast<S>(a) < reinterpret_cast<S>(b));
}

template <class V>
V Select(V mask, V yes, V no) {
  return (yes & mask) | (no & ~mask);
}

// The signed lanes clamped to low .. high.
template <class V>
V Clamp(V v, int32_t low, int32_t high) {
  const V floor = All<V>(Bits(low)), ceiling = All<V>(Bits(high));
  v = Select(LessSigned(v, floor), floor, v);
  return Select(LessSigned(ceiling, v), ceiling, v);
}

inline bool Any(Vector4 mask) {
#if defined(__SSE2__)
  return _mm_movemask_epi8(reinterpret_cast<__m128i>(mask)) != 0;
#else
  return (mask[0] | mask[1] | mask[2] | mask[3]) != 0;
#endif
}

// High halves of the unsigned products.
inline Vector4 MulHigh(Vector4 a, Vector4 b) {
#if defined(__SSE2__)
  const __m128i x = reinterpret_cast<__m128i>(a), y = reinterpret_cast<__m128i>(b);
  const __m128i even = _mm_srli_epi64(_mm_mul_epu32(x, y), 32);
  const __m128i odd = _mm_mul_epu32(_mm_srli_epi64(x, 32), _mm_srli_epi64(y, 32));
  return reinterpret_cast<Vector4>(_mm_or_si128(even, _mm_and_si128(odd, _mm_set_epi32(-1, 0, -1, 0))));
#else
  Vector4 product;
  for (int i = 0; i < 4; ++i) product[i] = MulHighUnsigned(a[i], b[i]);
  return product;
#endif
}

// table[index] of every lane.
inline Vector4 Gather(const int32_t* table, Vector4 index) {
  const auto at = [&](int lane) { return Bits(table[Signed(index[lane])]); };
  return Vector4{at(0), at(1), at(2), at(3)};
}

}  // namespace kelvo::lanes

#endif  // KELVO_STAGES_LANES_H
