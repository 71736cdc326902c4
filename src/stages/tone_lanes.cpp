// plain::LinearRow and plain::DisplayRow in vectors of neighbouring cells.
#include "stages/lanes.h"
#include "stages/tone.h"

namespace kelvo::KELVO_TARGET {
namespace {

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
