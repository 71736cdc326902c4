// Generated tiles: the pictures that tests feed to the library, and the block and heap that carry them.
#ifndef KELVO_TESTS_SUPPORT_TILES_H
#define KELVO_TESTS_SUPPORT_TILES_H

#include <cstdint>
#include <string>
#include <vector>

#include "kelvo/kelvo.h"

namespace kelvo::test {

// A well-mixed 32-bit function of a counter.
constexpr uint32_t Mix(uint32_t i) {
  uint32_t h = i * 2654435761u;
  h = (h ^ (h >> 15)) * 2246822519u;
  return h ^ (h >> 13);
}

// Cell (row, column) of the picture named `kind` with whole-number arguments:
//   flat v; noise s (0..32767); levels s (whole grey levels); blackwhite s; wild s (any 32 bits); ramp a b; edge a b lo
//   hi; scene s (shapes and grain); soft s r (the scene averaged over 2r+1 squares); blocks s a b (8 x 8 blocks at a
//   phase)
int32_t TileCell(const std::string& kind, const std::vector<int>& arguments, int row, int column);

// One block and one heap. The heap starts full of rubbish that depends on `seed`; the block is zero but for its size.
class Bench {
 public:
  explicit Bench(uint32_t seed = 77);

  TileParams params{};
  int32_t* heap() { return heap_.data(); }
  int32_t& Cell(int plane, int row, int column) {
    return heap_[static_cast<size_t>(plane * 65536 + row * 256 + column)];
  }

  void Fill(const std::string& kind, const std::vector<int>& arguments);

  // CRC-32 (zlib's) of rows and columns first .. end - 1 of a plane, cells row by row as little-endian 32-bit.
  uint32_t Crc(int plane, int first, int end);
  uint32_t CoreCrc() { return Crc(0, 64, 192); }

  // The core of plane 0.
  std::vector<int32_t> Core();

 private:
  std::vector<int32_t> heap_;
};

}  // namespace kelvo::test

#endif  // KELVO_TESTS_SUPPORT_TILES_H
