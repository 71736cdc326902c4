// Colours weighed by transparency, for enlarging: c a, where c is a colour sample and a the alpha sample beside it.
//
// Averages of colours weighed by alpha do not see what is transparent. The way back divides by the enlarged alpha; it
// starts from the exact samples and takes the library's results as changes, so that a pixel without changes keeps its
// colour exactly, and an opaque one is treated as if there were no alpha.
#ifndef KELVO_HOST_WEIGHTED_COLOUR_H
#define KELVO_HOST_WEIGHTED_COLOUR_H

#include "staging.h"

namespace kelvo::host {

// 1 or 257: samples per display value, in units of 1 / KELVO_LEVEL.
template <Sample T>
constexpr int64_t kSamplesPerDisplay = std::same_as<T, uint8_t> ? 1 : kSample16PerDisplayNum;

// The display value of colour x alpha / white, 0..32640, rounded to nearest.
template <Sample T>
constexpr int32_t WeightedDisplay(T colour, T alpha) {
  constexpr int64_t kDivisor = kSamplesPerDisplay<T> * std::numeric_limits<T>::max();
  return static_cast<int32_t>((2 * KELVO_LEVEL * int64_t{colour} * alpha + kDivisor) / (2 * kDivisor));
}

// The colour of a pixel that had `colour` and `alpha`, after WeightedDisplay has changed by `change` and the display
// value of alpha by `alpha_change`; rounded and clamped. A pixel that is transparent afterwards keeps its colour.
template <Sample T>
constexpr T UnweightedColour(T colour, T alpha, int32_t change, int32_t alpha_change) {
  constexpr int64_t kWhite = std::numeric_limits<T>::max();
  const int64_t weight = KELVO_LEVEL * int64_t{alpha} + kSamplesPerDisplay<T> * alpha_change;
  const int64_t weighted = KELVO_LEVEL * int64_t{colour} * alpha + kWhite * kSamplesPerDisplay<T> * change;
  if (weight <= 0) return colour;
  return static_cast<T>(std::clamp<int64_t>(2 * weighted + weight, 0, 2 * weight * kWhite) / (2 * weight));
}

}  // namespace kelvo::host

#endif  // KELVO_HOST_WEIGHTED_COLOUR_H
