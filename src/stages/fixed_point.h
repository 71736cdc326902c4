// Integer arithmetic of the library: 32-bit two's complement that wraps, arithmetic right shifts, multiply-high.
#ifndef KELVO_STAGES_FIXED_POINT_H
#define KELVO_STAGES_FIXED_POINT_H

#include <cfloat>
#include <cstdint>

namespace kelvo {

static_assert(FLT_EVAL_METHOD == 0, "single precision must be rounded to single after every operation");
static_assert((-1 >> 1) == -1, "right shifts of signed values must be arithmetic");

// Sums and products below are formed on unsigned values, where wrapping is defined; these two convert.
constexpr uint32_t Bits(int32_t value) {
  return static_cast<uint32_t>(value);
}
constexpr int32_t Signed(uint32_t bits) {
  return static_cast<int32_t>(bits);
}

constexpr int32_t WrapAdd(int32_t a, int32_t b) {
  return Signed(Bits(a) + Bits(b));
}
constexpr int32_t WrapSub(int32_t a, int32_t b) {
  return Signed(Bits(a) - Bits(b));
}

// Magnitude of a wrapped difference: 2^31 for the most negative value.
constexpr uint32_t Magnitude(uint32_t bits) {
  const int64_t value = Signed(bits);  // 64 bits, where compilers see the instruction for it
  return static_cast<uint32_t>(value < 0 ? -value : value);
}

// Arithmetic shift of a value held in unsigned bits.
constexpr uint32_t ShiftRight(uint32_t bits, int shift) {
  return Bits(Signed(bits) >> shift);
}

// High half of the 64-bit product of a signed value and a non-negative factor of at most 32 bits.
constexpr int32_t MulHigh(int32_t value, uint32_t factor) {
  return static_cast<int32_t>((static_cast<int64_t>(value) * static_cast<int64_t>(factor)) >> 32);
}

constexpr uint32_t MulHighUnsigned(uint32_t a, uint32_t b) {
  return static_cast<uint32_t>((static_cast<uint64_t>(a) * b) >> 32);
}

// low <= high. Two steps, which compilers know as a maximum and a minimum.
constexpr int32_t Clamp(int32_t value, int32_t low, int32_t high) {
  const int32_t raised = value < low ? low : value;
  return raised > high ? high : raised;
}

// Conversions truncate toward zero. What does not fit becomes INT32_MIN or 0: a fixed answer, the same on every
// machine.
constexpr int32_t TruncToInt(float value) {
  return value >= -2147483648.0f && value < 2147483648.0f ? static_cast<int32_t>(value) : INT32_MIN;
}
constexpr int32_t TruncToInt(double value) {
  return value > -2147483649.0 && value < 2147483648.0 ? static_cast<int32_t>(value) : INT32_MIN;
}
constexpr uint32_t TruncToUint(double value) {
  return value >= 0.0 && value < 4294967296.0 ? static_cast<uint32_t>(value) : 0;
}

}  // namespace kelvo

#endif  // KELVO_STAGES_FIXED_POINT_H
