// Loops without branches, which the compiler turns into the vectors of the level that it compiles for.
#include "stages/step_rows.h"

#include "stages/fixed_point.h"
#include "stages/step_code.h"

namespace kelvo::KELVO_TARGET {

void DecodeRow(const StepScale& scale, const int32_t* __restrict codes, int32_t* __restrict steps, int count) {
  const float* __restrict factors = kStepFactors;
  const int shift = scale.shift;
  const float gradient = scale.gradient;
  for (int i = 0; i < count; ++i) {
    const int32_t coded = LowHalf(codes[i]);
    // A mantissa of 11 bits times at most 181 fits.
    const auto scaled = static_cast<int32_t>(factors[coded & 31] * static_cast<float>(coded >> 5));
    steps[i] = TruncToInt(static_cast<float>(Signed(Bits(scaled) << shift)) * gradient);
  }
}

void AddRow(int32_t weight, const int32_t* __restrict from, int32_t* __restrict to, int count) {
  for (int i = 0; i < count; ++i) to[i] = Signed(Bits(to[i]) + Bits(weight) * Bits(from[i]));
}

void ResetRow(CodeReset reset, int32_t* cells, int count) {
  const int halving =
      reset == CodeReset::kClear ? 5 : 1;  // a code has 5 bits: shifted by as many, only its sign is left
  const uint32_t kept = reset == CodeReset::kClear ? 0u : 31u;
  for (int i = 0; i < count; ++i) {
    const uint32_t half = (Bits(cells[i]) & 0xFFE0u) | (Bits(CodeOf(cells[i]) >> halving) & kept);
    cells[i] = Signed(half << 16 | half);
  }
}

void MergeRow(int32_t* cells, int count) {
  for (int i = 0; i < count; ++i) cells[i] = Signed((Bits(cells[i]) & 0xFFFF001Fu) | (Bits(cells[i]) >> 16 & 0xFFE0u));
}

void DampRow(int32_t* cells, int count) {
  for (int i = 0; i < count; ++i) {
    int code = CodeOf(cells[i]);
    code -= code > 14 ? 1 : 0;
    code -= code > 12 ? 1 : 0;
    code -= code > 8 ? 1 : 0;
    cells[i] = Signed((Bits(cells[i]) & ~31u) | (Bits(code) & 31u));
  }
}

}  // namespace kelvo::KELVO_TARGET
