// The tone curves of tone.h in vectors of neighbouring cells.
#include "stages/lanes.h"
#include "stages/tone.h"

namespace kelvo::KELVO_TARGET {
namespace {

constexpr uint32_t kLastLevel = 255, kLastEntry = 4095;

Vector OnChord(Vector here, Vector next, Vector part, int shift) {
  return here + ShiftRightArithmetic((next - here) * part, shift);
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
  ForRow(from, to, count, [table](Vector v) { return Gather(table, (v >> 7) & kLastLevel); });
}

void DisplayRow(const int16_t* table, const int32_t* from, int32_t* to, int count) {
  if (count < kLanes) return plain::DisplayRow(table, from, to, count);
  ForRow(from, to, count,
         [table](Vector v) { return Gather16(table, Clamp(ShiftRightArithmetic(v, 12), 0, kLastEntry)); });
}

void LinearBetweenRow(const int32_t* table, const int32_t* from, int32_t* to, int count) {
  if (count < kLanes) return plain::LinearBetweenRow(table, from, to, count);
  ForRow(from, to, count, [table](Vector v) {
    const Vector level = (v >> 7) & kLastLevel;
    return OnChord(Gather(table, level), Gather(table + 1, level), v & 127, 7);
  });
}

void DisplayBetweenRow(const int16_t* table, const int32_t* from, int32_t* to, int count) {
  if (count < kLanes) return plain::DisplayBetweenRow(table, from, to, count);
  ForRow(from, to, count, [table](Vector v) {
    const Vector inside = Clamp(v, 0, (4096 << 12) - 1);
    const Neighbours entries = GatherNeighbours(table, inside >> 12);
    return OnChord(entries.here, entries.next, inside & 4095, 12);
  });
}

}  // namespace kelvo::KELVO_TARGET
