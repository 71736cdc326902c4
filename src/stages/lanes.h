// Vectors of 32-bit lanes, in the compiler's own vector types: the same source serves every instruction set.
//
// A file that uses them is compiled once per level (src/CMakeLists.txt), with KELVO_TARGET the name of the level's
// namespace; all that it defines goes there, so that no function compiled for a newer machine can stand in for
// another. Masks are vectors whose lanes are all ones or zero.
#ifndef KELVO_STAGES_LANES_H
#define KELVO_STAGES_LANES_H

#include <cstdint>
#include <cstring>
#if defined(__SSE2__)
#include <immintrin.h>
#elif defined(__ARM_NEON)
#include <arm_neon.h>
#endif

namespace kelvo::KELVO_TARGET {

#if defined(__AVX512F__)
inline constexpr int kVectorBytes = 64;
#elif defined(__AVX2__)
inline constexpr int kVectorBytes = 32;
#else
inline constexpr int kVectorBytes = 16;
#endif

using Vector = uint32_t __attribute__((vector_size(kVectorBytes)));
using SignedVector = int32_t __attribute__((vector_size(kVectorBytes)));
using FloatVector = float __attribute__((vector_size(kVectorBytes)));

inline constexpr int kLanes = kVectorBytes / 4;

inline Vector All(uint32_t value) {
  return Vector{} + value;
}

inline Vector FromSigned(SignedVector v) {
  return reinterpret_cast<Vector>(v);
}
inline SignedVector ToSigned(Vector v) {
  return reinterpret_cast<SignedVector>(v);
}

// Consecutive cells, from any address.
inline Vector Load(const int32_t* cells) {
  Vector v;
  std::memcpy(&v, cells, sizeof v);
  return v;
}
inline void Store(int32_t* cells, Vector v) {
  std::memcpy(cells, &v, sizeof v);
}

// Keeps a loaded vector in its register: a compiler that sees where it came from may load it again for every use.
inline void KeepLoaded([[maybe_unused]] Vector& v) {
#if defined(__SSE2__)
#if defined(__AVX512F__)
  __asm__("" : "+v"(v));  // all 32 registers
#else
  __asm__("" : "+x"(v));
#endif
#elif defined(__ARM_NEON)
  __asm__("" : "+w"(v));
#endif
}

// 0, 1, 2, ..
inline Vector LaneNumbers() {
  Vector v{};
  for (int i = 0; i < kLanes; ++i) v[i] = static_cast<uint32_t>(i);
  return v;
}

// Every second lane of two vectors.
inline Vector EvenLanes(Vector low, Vector high) {
#if defined(__AVX512F__)
  return __builtin_shufflevector(low, high, 0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30);
#elif defined(__AVX2__)
  return __builtin_shufflevector(low, high, 0, 2, 4, 6, 8, 10, 12, 14);
#else
  return __builtin_shufflevector(low, high, 0, 2, 4, 6);
#endif
}
inline Vector OddLanes(Vector low, Vector high) {
#if defined(__AVX512F__)
  return __builtin_shufflevector(low, high, 1, 3, 5, 7, 9, 11, 13, 15, 17, 19, 21, 23, 25, 27, 29, 31);
#elif defined(__AVX2__)
  return __builtin_shufflevector(low, high, 1, 3, 5, 7, 9, 11, 13, 15);
#else
  return __builtin_shufflevector(low, high, 1, 3, 5, 7);
#endif
}

// Every second cell, from any address. Reads one cell beyond the last.
inline Vector LoadEven(const int32_t* cells) {
  return EvenLanes(Load(cells), Load(cells + kLanes));
}

inline Vector ShiftRightArithmetic(Vector v, int shift) {
  return FromSigned(ToSigned(v) >> shift);
}

// All ones where the lane is negative as a signed number.
inline Vector Negative(Vector v) {
  return ShiftRightArithmetic(v, 31);
}

inline Vector Magnitude(Vector v) {
#if defined(__AVX512F__)
  return reinterpret_cast<Vector>(_mm512_abs_epi32(reinterpret_cast<__m512i>(v)));
#elif defined(__AVX2__)
  return reinterpret_cast<Vector>(_mm256_abs_epi32(reinterpret_cast<__m256i>(v)));
#else
  const Vector sign = Negative(v);
  return (v ^ sign) - sign;
#endif
}

inline Vector Less(Vector a, Vector b) {
  return reinterpret_cast<Vector>(a < b);
}
inline Vector LessSigned(Vector a, Vector b) {
  return reinterpret_cast<Vector>(ToSigned(a) < ToSigned(b));
}
inline Vector Less(FloatVector a, FloatVector b) {
  return reinterpret_cast<Vector>(a < b);
}
inline Vector Equal(Vector a, Vector b) {
  return reinterpret_cast<Vector>(a == b);
}

inline Vector Select(Vector mask, Vector yes, Vector no) {
#if defined(__AVX2__) && !defined(__AVX512F__)
  return reinterpret_cast<Vector>(_mm256_blendv_epi8(reinterpret_cast<__m256i>(no), reinterpret_cast<__m256i>(yes),
                                                     reinterpret_cast<__m256i>(mask)));
#else
  return (yes & mask) | (no & ~mask);
#endif
}

inline FloatVector Select(Vector mask, FloatVector yes, FloatVector no) {
  return reinterpret_cast<FloatVector>(Select(mask, reinterpret_cast<Vector>(yes), reinterpret_cast<Vector>(no)));
}

inline FloatVector ToFloats(SignedVector v) {
  return __builtin_convertvector(v, FloatVector);
}
inline FloatVector Magnitude(FloatVector v) {
  return reinterpret_cast<FloatVector>(reinterpret_cast<Vector>(v) & 0x7FFFFFFFu);
}

// The greater and the lesser as signed numbers.
inline Vector Greater(Vector a, Vector b) {
#if defined(__AVX512F__)
  return reinterpret_cast<Vector>(_mm512_max_epi32(reinterpret_cast<__m512i>(a), reinterpret_cast<__m512i>(b)));
#elif defined(__AVX2__)
  return reinterpret_cast<Vector>(_mm256_max_epi32(reinterpret_cast<__m256i>(a), reinterpret_cast<__m256i>(b)));
#else
  return Select(LessSigned(a, b), b, a);
#endif
}
inline Vector Lesser(Vector a, Vector b) {
#if defined(__AVX512F__)
  return reinterpret_cast<Vector>(_mm512_min_epi32(reinterpret_cast<__m512i>(a), reinterpret_cast<__m512i>(b)));
#elif defined(__AVX2__)
  return reinterpret_cast<Vector>(_mm256_min_epi32(reinterpret_cast<__m256i>(a), reinterpret_cast<__m256i>(b)));
#else
  return Select(LessSigned(a, b), a, b);
#endif
}

// The negative lanes; 0 for the others.
inline Vector NegativePart(Vector v) {
#if defined(__AVX2__)
  return Lesser(v, Vector{});
#else
  return v & Negative(v);
#endif
}

// The signed lanes clamped to low .. high.
inline Vector Clamp(Vector v, int32_t low, int32_t high) {
  return Lesser(Greater(v, All(static_cast<uint32_t>(low))), All(static_cast<uint32_t>(high)));
}

// Whether a bit is set in any lane.
inline bool Any(Vector mask) {
#if defined(__AVX512F__)
  return _mm512_test_epi32_mask(reinterpret_cast<__m512i>(mask), reinterpret_cast<__m512i>(mask)) != 0;
#elif defined(__AVX2__)
  return _mm256_testz_si256(reinterpret_cast<__m256i>(mask), reinterpret_cast<__m256i>(mask)) == 0;
#elif defined(__SSE2__)
  return _mm_movemask_epi8(_mm_cmpeq_epi32(reinterpret_cast<__m128i>(mask), _mm_setzero_si128())) != 0xFFFF;
#else
  return (mask[0] | mask[1] | mask[2] | mask[3]) != 0;
#endif
}

// Bit i: the sign of lane i.
inline uint32_t BitsOfLanes(Vector mask) {
#if defined(__AVX512F__)
  return _mm512_movepi32_mask(reinterpret_cast<__m512i>(mask));
#elif defined(__AVX2__)
  return static_cast<uint32_t>(_mm256_movemask_ps(reinterpret_cast<__m256>(mask)));
#elif defined(__SSE2__)
  return static_cast<uint32_t>(_mm_movemask_ps(reinterpret_cast<__m128>(mask)));
#else
  uint32_t bits = 0;
  for (int i = 0; i < kLanes; ++i) bits |= mask[i] >> 31 << i;
  return bits;
#endif
}

// The sum of all lanes; wraps.
inline uint32_t SumOfLanes(Vector v) {
#if defined(__AVX512F__)
  return static_cast<uint32_t>(_mm512_reduce_add_epi32(reinterpret_cast<__m512i>(v)));
#elif defined(__SSE2__)
#if defined(__AVX2__)
  const __m256i whole = reinterpret_cast<__m256i>(v);
  __m128i sum = _mm_add_epi32(_mm256_castsi256_si128(whole), _mm256_extracti128_si256(whole, 1));
#else
  __m128i sum = reinterpret_cast<__m128i>(v);
#endif
  sum = _mm_add_epi32(sum, _mm_shuffle_epi32(sum, 0x4E));
  return static_cast<uint32_t>(_mm_cvtsi128_si32(_mm_add_epi32(sum, _mm_shuffle_epi32(sum, 0xB1))));
#else
  uint32_t sum = 0;
  for (int i = 0; i < kLanes; ++i) sum += v[i];
  return sum;
#endif
}

#if defined(__SSE2__)
using WideVector = uint64_t __attribute__((vector_size(kVectorBytes)));

// The odd lanes in the place of the even ones.
inline Vector OddAsEven(Vector v) {
  return reinterpret_cast<Vector>(reinterpret_cast<WideVector>(v) >> 32);
}

// The products of the even lanes, of 64 bits.
inline Vector MulEven(Vector a, Vector b) {
#if defined(__AVX512F__)
  return reinterpret_cast<Vector>(_mm512_mul_epu32(reinterpret_cast<__m512i>(a), reinterpret_cast<__m512i>(b)));
#elif defined(__AVX2__)
  return reinterpret_cast<Vector>(_mm256_mul_epu32(reinterpret_cast<__m256i>(a), reinterpret_cast<__m256i>(b)));
#else
  return reinterpret_cast<Vector>(_mm_mul_epu32(reinterpret_cast<__m128i>(a), reinterpret_cast<__m128i>(b)));
#endif
}

// The even lanes of one vector, whose others are 0, and the odd ones of another.
inline Vector EvenAndOdd(Vector even, Vector odd) {
#if defined(__AVX512F__)
  return reinterpret_cast<Vector>(
      _mm512_mask_blend_epi32(0xAAAA, reinterpret_cast<__m512i>(even), reinterpret_cast<__m512i>(odd)));
#elif defined(__AVX2__)
  return reinterpret_cast<Vector>(
      _mm256_blend_epi32(reinterpret_cast<__m256i>(even), reinterpret_cast<__m256i>(odd), 0xAA));
#else
  return even | (odd & Vector{0, ~0u, 0, ~0u});
#endif
}

// High halves of the unsigned products of b and a number per lane: in the even lanes of `even` and, for the odd ones of b,
// those of `odd`.
inline Vector MulHigh(Vector even, Vector odd, Vector b) {
  return EvenAndOdd(OddAsEven(MulEven(even, b)), MulEven(odd, OddAsEven(b)));
}
#endif

// High halves of the unsigned products.
inline Vector MulHigh(Vector a, Vector b) {
#if defined(__SSE2__)
  return MulHigh(a, OddAsEven(a), b);
#elif defined(__ARM_NEON)
  const uint32x4_t x = reinterpret_cast<uint32x4_t>(a), y = reinterpret_cast<uint32x4_t>(b);
  const uint32x4_t low = vreinterpretq_u32_u64(vmull_u32(vget_low_u32(x), vget_low_u32(y)));
  const uint32x4_t high = vreinterpretq_u32_u64(vmull_u32(vget_high_u32(x), vget_high_u32(y)));
  return reinterpret_cast<Vector>(vuzp2q_u32(low, high));
#else
  Vector product{};
  for (int i = 0; i < kLanes; ++i) product[i] = static_cast<uint32_t>((static_cast<uint64_t>(a[i]) * b[i]) >> 32);
  return product;
#endif
}

// The same for signed `a` and non-negative `b` of 32 bits: a negative lane counts 2^32 too much as unsigned.
inline Vector MulHighSigned(Vector a, Vector b) {
  return MulHigh(a, b) - (b & Negative(a));
}

// Products of numbers within 2^13 of zero by numbers within 2^17, both prepared: x86 has sums of two products of 16 bits
// in one operation, and of 32 bits in two at best. The large number n is 4 (n / 4) and a rest, the small one itself and
// four times itself.
inline Vector AsSmall(Vector v) {
#if defined(__SSE2__)
  return (v & 0xFFFF) | (v << 18);
#else
  return v;
#endif
}
inline Vector AsLarge(Vector v) {
#if defined(__SSE2__)
  const Vector quarter = Lesser(ShiftRightArithmetic(v, 2), All(32767));
  return ((v - (quarter << 2)) & 0xFFFF) | (quarter << 16);
#else
  return v;
#endif
}
inline uint32_t AsLarge(uint32_t number) {
  return AsLarge(All(number))[0];
}
inline Vector Product(Vector small, Vector large) {
#if defined(__AVX512F__)
  return reinterpret_cast<Vector>(
      _mm512_madd_epi16(reinterpret_cast<__m512i>(small), reinterpret_cast<__m512i>(large)));
#elif defined(__AVX2__)
  return reinterpret_cast<Vector>(
      _mm256_madd_epi16(reinterpret_cast<__m256i>(small), reinterpret_cast<__m256i>(large)));
#elif defined(__SSE2__)
  return reinterpret_cast<Vector>(_mm_madd_epi16(reinterpret_cast<__m128i>(small), reinterpret_cast<__m128i>(large)));
#else
  return small * large;
#endif
}

// The 32 bits at `from` + kStride * index of every lane; the indices are signed.
//
// Single loads on x86-64: what processors offer for this takes as long at best, and 2.4 times as long on those whose
// microcode keeps it from leaking data.
#if defined(__x86_64__)
template <int kStride>
inline __m128i GatherFour(const char* from, __m128i index) {
  const auto two = [from](int64_t indices) {
    const auto word = [from](int64_t i) {
      int32_t cell;
      std::memcpy(&cell, from + kStride * i, sizeof cell);
      return _mm_cvtsi32_si128(cell);
    };
    return _mm_unpacklo_epi32(word(static_cast<int32_t>(indices)), word(indices >> 32));
  };
  return _mm_unpacklo_epi64(two(_mm_cvtsi128_si64(index)), two(_mm_cvtsi128_si64(_mm_unpackhi_epi64(index, index))));
}
#if defined(__AVX2__)
template <int kStride>
inline __m256i GatherEight(const char* from, __m256i index) {
  const __m128i low = GatherFour<kStride>(from, _mm256_castsi256_si128(index));
  return _mm256_set_m128i(GatherFour<kStride>(from, _mm256_extracti128_si256(index, 1)), low);
}
#endif
#endif
template <int kStride>
inline Vector GatherWords(const void* table, Vector index) {
  const char* from = static_cast<const char*>(table);
#if defined(__AVX512F__) && defined(__x86_64__)
  const auto at = reinterpret_cast<__m512i>(index);
  const __m512i low = _mm512_castsi256_si512(GatherEight<kStride>(from, _mm512_castsi512_si256(at)));
  return reinterpret_cast<Vector>(
      _mm512_inserti64x4(low, GatherEight<kStride>(from, _mm512_extracti64x4_epi64(at, 1)), 1));
#elif defined(__AVX2__) && defined(__x86_64__)
  return reinterpret_cast<Vector>(GatherEight<kStride>(from, reinterpret_cast<__m256i>(index)));
#elif defined(__x86_64__)
  return reinterpret_cast<Vector>(GatherFour<kStride>(from, reinterpret_cast<__m128i>(index)));
#else
  Vector v{};
  for (int i = 0; i < kLanes; ++i) {
    uint32_t cell;
    std::memcpy(&cell, from + kStride * static_cast<int32_t>(index[i]), sizeof cell);
    v[i] = cell;
  }
  return v;
#endif
}

// table[index] of every lane.
inline Vector Gather(const int32_t* table, Vector index) {
  return GatherWords<sizeof *table>(table, index);
}

// The same from a table of eight cells, for indices 0..7.
inline Vector GatherFrom8(const int32_t* table, Vector index) {
#if defined(__AVX512F__)
  const __m512i cells = _mm512_castsi256_si512(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(table)));
  return reinterpret_cast<Vector>(_mm512_permutexvar_epi32(reinterpret_cast<__m512i>(index), cells));
#elif defined(__AVX2__)
  const __m256i cells = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(table));
  return reinterpret_cast<Vector>(_mm256_permutevar8x32_epi32(cells, reinterpret_cast<__m256i>(index)));
#else
  return Gather(table, index);
#endif
}

inline FloatVector GatherFloats(const float* table, Vector index) {
  return reinterpret_cast<FloatVector>(GatherWords<sizeof *table>(table, index));
}

struct Neighbours {
  Vector here, next;
};

// table[index] and table[index + 1], read at once.
inline Neighbours GatherNeighbours(const int16_t* table, Vector index) {
  const Vector both = GatherWords<sizeof *table>(table, index);
  return {ShiftRightArithmetic(both << 16, 16), ShiftRightArithmetic(both, 16)};
}

// table[index]; reads the entry behind it as well.
inline Vector Gather16(const int16_t* table, Vector index) {
  return GatherNeighbours(table, index).here;
}

}  // namespace kelvo::KELVO_TARGET

#endif  // KELVO_STAGES_LANES_H
