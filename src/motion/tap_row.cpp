#include "motion/tap_row.h"

#include "stages/fixed_point.h"

namespace kelvo::KELVO_TARGET {

// TapAmount in a form without branches: a whole share, 65536, gives back what it is of.
void AddTapRow(const OperatorTap& tap, const int32_t* __restrict steps, int32_t* __restrict to, int count) {
  const int halving = tap.base == TapBase::kWhole ? 0 : 1, doubling = tap.base == TapBase::kEven ? 1 : 0;
  const int64_t share = tap.share;
  const uint32_t sign = Bits(tap.sign);
  for (int i = 0; i < count; ++i) {
    const int32_t base = Signed(Bits(steps[i] >> halving) << doubling);
    to[i] = Signed(Bits(to[i]) + sign * static_cast<uint32_t>((base * share) >> 16));
  }
}

}  // namespace kelvo::KELVO_TARGET
