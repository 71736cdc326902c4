#include "stages/step_code.h"

#include <bit>
#include <cassert>
#include <initializer_list>

#include "stages/fixed_point.h"

namespace kelvo {
namespace {

constexpr int kLeastCode = -8;  // from here down the factor is 0
constexpr int kGreatestCode = 15;
constexpr int kGreatestMantissa = 1023;

// F(-7) .. F(15).
constexpr float kStepFactors[23] = {0.07f, 0.13f, 0.18f, 0.25f, 0.35f, 0.5f,  0.71f, 1.0f,  1.4f,  2.0f,   2.8f,  4.0f,
                                    5.7f,  8.0f,  11.0f, 16.0f, 22.0f, 32.0f, 45.0f, 64.0f, 91.0f, 128.0f, 181.0f};

int32_t Scaled(int code, int32_t value) {
  return TruncToInt(StepFactor(code) * static_cast<float>(value));
}

// The code of a step that changed its sign: two lower, then lower still until the step is at most half_step.
int ShrunkenCode(int code, int32_t value, int half_step) {
  code -= 2;
  const int sign = value > 0 ? 1 : -1;
  while (sign * Scaled(code, value) > half_step) --code;
  return code < kLeastCode ? kLeastCode : code;
}

// The code of a step that kept its sign: higher by 1 or 2 if it is more than half, or twice, the previous one.
// `previous >> 1` rounds down, so the two signs differ for odd mantissas. Intended.
int GrownCode(int code, int32_t value, int32_t previous) {
  const bool more_than_half = value > 0 ? value > previous >> 1 : value < previous >> 1;
  const bool more_than_twice = value > 0 ? value > 2 * previous : value < 2 * previous;
  if (!more_than_half) return code;
  code += more_than_twice ? 2 : 1;
  return code > kGreatestCode ? kGreatestCode : code;
}

int NextCode(int code, int32_t previous, int32_t value, int half_step) {
  if (previous == 0) return code;
  if (value == 0) {
    if (previous >= -2 && previous <= 2) return code;
    return code - 1 < kLeastCode ? kLeastCode : code - 1;
  }
  const bool sign_changed = (previous < 0) != (value < 0);
  return sign_changed ? ShrunkenCode(code, value, half_step) : GrownCode(code, value, previous);
}

template <class Change>
void ForEachCell(const Tile& tile, int plane, Change change) {
  int32_t* cells = tile.Cells(plane);
  for (int i = 0; i < kPlaneCells; ++i) cells[i] = change(cells[i]);
}

constexpr float FactorOf(int code) {
  return code <= kLeastCode ? 0.0f : kStepFactors[code - kLeastCode - 1];
}

constexpr int32_t FactorBits(int code) {
  return std::bit_cast<int32_t>(FactorOf(code));
}

}  // namespace

float StepFactor(int code) {
  assert(code <= kGreatestCode);
  return FactorOf(code);
}

// clang-format off
const int32_t kStepFactorBits[32] = {
    FactorBits(0),   FactorBits(1),   FactorBits(2),   FactorBits(3),   FactorBits(4),   FactorBits(5),
    FactorBits(6),   FactorBits(7),   FactorBits(8),   FactorBits(9),   FactorBits(10),  FactorBits(11),
    FactorBits(12),  FactorBits(13),  FactorBits(14),  FactorBits(15),  0, 0, 0, 0, 0, 0, 0, 0, 0,
    FactorBits(-7),  FactorBits(-6),  FactorBits(-5),  FactorBits(-4),  FactorBits(-3),  FactorBits(-2),
    FactorBits(-1)};
// clang-format on

int32_t CodeStep(int iteration, int half_step, int32_t previous, int32_t value) {
  value = Clamp(value, -kGreatestMantissa, kGreatestMantissa);
  if (iteration == 1) return value * 32;
  const int code = NextCode(CodeOf(previous), previous >> 5, value, half_step);
  return value * 32 + (code & 31);
}

int32_t DecodeStep(const TileParams& params, int32_t coded) {
  const int32_t scaled = Scaled(CodeOf(coded), coded >> 5);
  const int32_t shifted = Signed(Bits(scaled) << (params.ScaleShift & 31));
  return TruncToInt(static_cast<float>(shifted) * params.GradientScale);
}

void ResetCodes(const Tile& tile, int plane, CodeReset reset) {
  ForEachCell(tile, plane, [reset](int32_t cell) {
    const int32_t code = reset == CodeReset::kClear ? 0 : CodeOf(cell) >> 1;
    const uint32_t half = (Bits(cell) & 0xFFE0u) | (Bits(code) & 31u);
    return Signed(half << 16 | half);
  });
}

void MergeHalves(const Tile& tile, int plane) {
  ForEachCell(tile, plane,
              [](int32_t cell) { return Signed((Bits(cell) & 0xFFFF001Fu) | (Bits(cell) >> 16 & 0xFFE0u)); });
}

void DampCodes(const Tile& tile, int plane) {
  ForEachCell(tile, plane, [](int32_t cell) {
    int code = CodeOf(cell);
    for (int limit : {14, 12, 8}) code -= code > limit ? 1 : 0;
    return Signed((Bits(cell) & ~31u) | (Bits(code) & 31u));
  });
}

}  // namespace kelvo
