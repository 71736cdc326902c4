// Samples of a picture <-> display values of a tile (8-bit grey level times 128, 0..32640).
//
// The library keeps the upper 8 bits of a display value in most runs and its tone curves are coarse in the shadows, so
// that it does not return the value it was given even where nothing changes. Results are therefore merged as changes:
// what the core has over the library's response to flat ground of the same value is added to the original sample. A
// cell that the library leaves alone keeps its exact sample at any depth.
#ifndef KELVO_HOST_STAGING_H
#define KELVO_HOST_STAGING_H

#include <algorithm>
#include <concepts>
#include <cstdint>
#include <limits>

#include "kelvo/kelvo.h"

namespace kelvo::host {

template <typename T>
concept Sample = std::same_as<T, uint8_t> || std::same_as<T, uint16_t>;

// 16-bit white over display white is 65535 / 32640 = 257 / 128.
constexpr int32_t kSample16PerDisplayNum = 257;
constexpr int32_t kSample16PerDisplayDen = 128;

// The display value of a sample, 0..32640, rounded to nearest.
constexpr int32_t DisplayOf(uint8_t sample) {
  return sample * KELVO_LEVEL;
}
constexpr int32_t DisplayOf(uint16_t sample) {
  // 128 / 257 = (1 - 1 / 257) / 2, and taking the whole 257ths first leaves halves and less to drop.
  return (sample - sample / kSample16PerDisplayNum) >> 1;
}

// A difference or value in display units as a number of samples, halves rounded up. |display| up to 32767.
template <Sample T>
constexpr int32_t SamplesFrom(int32_t display) {
  if constexpr (std::same_as<T, uint8_t>) {
    return (display + KELVO_LEVEL / 2) >> 7;
  } else {
    return (display * kSample16PerDisplayNum + kSample16PerDisplayDen / 2) >> 7;
  }
}

template <Sample T>
constexpr T ClampTo(int32_t value) {
  return static_cast<T>(std::clamp<int32_t>(value, 0, std::numeric_limits<T>::max()));
}

// The sample a core cell stands for by itself, rounded and clamped.
template <Sample T>
constexpr T SampleOf(int32_t core) {
  return ClampTo<T>(SamplesFrom<T>(core));
}

// The original sample plus what the core has over `flat`, the response to flat ground; rounded and clamped.
template <Sample T>
constexpr T Changed(T original, int32_t core, int32_t flat) {
  return ClampTo<T>(original + SamplesFrom<T>(core - flat));
}

}  // namespace kelvo::host

#endif  // KELVO_HOST_STAGING_H
