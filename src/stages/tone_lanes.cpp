// plain::LinearRow and plain::DisplayRow in vectors of neighbouring cells.
#include "stages/lanes.h"
#include "stages/tone.h"

namespace kelvo::KELVO_TARGET {
namespace {

// table[index] of 16 bits: two neighbours at once, of which the lower is wanted. The last entry has no neighbour, and is
// taken as that of the last but one.
Vector Gather16(const int16_t* table, Vector index) {
  const Vector beyond = Equal(index, All(4095));
#if defined(__AVX512F__)
  const Vector both =
      reinterpret_cast<Vector>(_mm512_i32gather_epi32(reinterpret_cast<__m512i>(index + beyond), table, sizeof *table));
#elif defined(__AVX2__)
  const Vector both = reinterpret_cast<Vector>(_mm256_i32gather_epi32(
      reinterpret_cast<const int*>(table), reinterpret_cast<__m256i>(index + beyond), sizeof *table));
#else
  Vector both{};
  for (int i = 0; i < kLanes; ++i) {
    uint32_t pair;
    std::memcpy(&pair, table + (index[i] + beyond[i]), sizeof pair);
    both[i] = pair;
  }
#endif
  return ShiftRightArithmetic(Select(beyond, both, both << 16), 16);
}

// Vectors, the last of which overlaps the one before it. `from` and `to` may be the same row, so the last one is read
// before that is written.
template <class Map>
void ForRow(const int32_t* from, int32_t* to, int count, Map map) {
  const Vector last = map(Load(from + count - kLanes));
  for (int i = 0; i + kLanes <= count; i += kLanes) Store(to + i, map(Load(from + i)));
  Store(to + count - kLanes, last);
}

}  // namespace

void LinearRow(const int32_t* table, const int32_t* from, int32_t* to, int count) {
  if (count < kLanes) return plain::LinearRow(table, from, to, count);
  ForRow(from, to, count, [table](Vector v) { return Gather(table, (v >> 7) & 255); });
}

void DisplayRow(const int16_t* table, const int32_t* from, int32_t* to, int count) {
  if (count < kLanes) return plain::DisplayRow(table, from, to, count);
  ForRow(from, to, count, [table](Vector v) { return Gather16(table, Clamp(ShiftRightArithmetic(v, 12), 0, 4095)); });
}

}  // namespace kelvo::KELVO_TARGET
