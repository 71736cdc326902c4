// Weights by brightness in the lanes of vectors; included by the files that are compiled once per level.
#ifndef KELVO_STAGES_WEIGHT_LANES_H
#define KELVO_STAGES_WEIGHT_LANES_H

#include "stages/lanes.h"
#include "stages/weights.h"

namespace kelvo::KELVO_TARGET {

// A weight in every lane, as the operation that multiplies takes them: x86 multiplies every second lane, and a table's
// cell gets there without a shift. What lies between them is of no account.
struct Weights {
#if defined(__SSE2__)
  Vector even, odd;
#else
  Vector all;
#endif
};

// High halves of the products.
inline Vector Weighed(const Weights& weights, Vector v) {
#if defined(__SSE2__)
  return MulHigh(weights.even, weights.odd, v);
#else
  return MulHigh(weights.all, v);
#endif
}

#if defined(__SSE2__)
// The cells of a table at at[0] and at[2] of every eight indices, each in the low half of 64 bits; the high halves are
// the cells behind them.
inline Vector EverySecondCell(const int32_t* table, const int16_t* at) {
  const auto two = [table, at](int first) {
    const auto* low = reinterpret_cast<const __m128i*>(table + at[first]);
    const auto* high = reinterpret_cast<const __m64*>(table + at[first + 2]);
    return _mm_castps_si128(_mm_loadh_pi(_mm_castsi128_ps(_mm_loadl_epi64(low)), high));
  };
#if defined(__AVX512F__)
  const __m256i low = _mm256_set_m128i(two(8), two(0)), high = _mm256_set_m128i(two(24), two(16));
  return reinterpret_cast<Vector>(_mm512_inserti64x4(_mm512_castsi256_si512(low), high, 1));
#elif defined(__AVX2__)
  return reinterpret_cast<Vector>(_mm256_set_m128i(two(8), two(0)));
#else
  return reinterpret_cast<Vector>(two(0));
#endif
}

// Stores two vectors of signed numbers as 16 bits, clamped, by fours in turns.
inline void StoreClamped(int16_t* to, Vector first, Vector second, int16_t low, int16_t high) {
#if defined(__AVX512F__)
  const __m512i both = _mm512_packs_epi32(reinterpret_cast<__m512i>(first), reinterpret_cast<__m512i>(second));
  _mm512_store_si512(to, _mm512_min_epi16(_mm512_max_epi16(both, _mm512_set1_epi16(low)), _mm512_set1_epi16(high)));
#elif defined(__AVX2__)
  const __m256i both = _mm256_packs_epi32(reinterpret_cast<__m256i>(first), reinterpret_cast<__m256i>(second));
  _mm256_store_si256(reinterpret_cast<__m256i*>(to),
                     _mm256_min_epi16(_mm256_max_epi16(both, _mm256_set1_epi16(low)), _mm256_set1_epi16(high)));
#else
  const __m128i both = _mm_packs_epi32(reinterpret_cast<__m128i>(first), reinterpret_cast<__m128i>(second));
  _mm_store_si128(reinterpret_cast<__m128i*>(to),
                  _mm_min_epi16(_mm_max_epi16(both, _mm_set1_epi16(low)), _mm_set1_epi16(high)));
#endif
}
#endif

// Where the weights of two vectors of cells lie in the table of smoothness, by indices that may lie beyond it. Set some
// time before they are read: indices go through memory, from where one takes one operation, out of a vector two.
class SmoothnessPlaces {
 public:
#if defined(__SSE2__)
  void Set(Vector first, Vector second) {
    StoreClamped(at_, first, second, kFirstSmoothness, kLastSmoothness);
    __asm__("" : "+m"(at_));
  }
  // `table` is the first cell of kBlurred.
  Weights First(const int32_t* table) const {
    return Read(SmoothnessTable(table), at_);
  }
  Weights Second(const int32_t* table) const {
    return Read(SmoothnessTable(table), at_ + 4);
  }

 private:
  static Weights Read(const int32_t* table, const int16_t* at) {
    return {EverySecondCell(table, at), EverySecondCell(table, at + 1)};
  }

  alignas(kVectorBytes) int16_t at_[2 * kLanes];
#else
  void Set(Vector first, Vector second) {
    first_ = Clamp(first, kFirstSmoothness, kLastSmoothness);
    second_ = Clamp(second, kFirstSmoothness, kLastSmoothness);
  }
  Weights First(const int32_t* table) const {
    return {Gather(SmoothnessTable(table), first_)};
  }
  Weights Second(const int32_t* table) const {
    return {Gather(SmoothnessTable(table), second_)};
  }

 private:
  Vector first_, second_;
#endif
};

// See RoughnessWeight; within 16 bits, not yet clamped.
inline Vector SmoothnessIndex(Vector value, Vector floor) {
  return ShiftRightArithmetic(value + NegativePart(ShiftRightArithmetic(value - floor, 1)), 16);
}

// Weights of misfits where the observed cells are `observed`.
inline Vector DataWeights(const int32_t* table, Vector observed) {
  return Gather(DataWeightTable(table), ShiftRightArithmetic(observed, 16));
}

}  // namespace kelvo::KELVO_TARGET

#endif  // KELVO_STAGES_WEIGHT_LANES_H
