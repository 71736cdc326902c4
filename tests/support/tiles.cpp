#include "support/tiles.h"

#include <algorithm>
#include <array>
#include <stdexcept>

namespace kelvo::test {
namespace {

uint32_t Hash(int seed, int row, int column) {
  return Mix(static_cast<uint32_t>(65536 * seed + 256 * row + column));
}

// Grey level of the scene: a slope, a disc, stripes, and grain that grows to the right.
int Level(int seed, int row, int column) {
  const int grain = static_cast<int>(Hash(seed, row, column) >> 27) - 16;
  const bool in_disc = (row - 128) * (row - 128) + (column - 128) * (column - 128) < 3600;
  const bool in_stripe = (column + 2 * row) % 64 < 20;
  const int level = 60 + (row >> 2) + (in_disc ? 70 : 0) + (in_stripe ? 40 : 0) + ((grain * (column >> 5)) >> 3);
  return std::clamp(level, 0, 255);
}

int SoftLevel(int seed, int radius, int row, int column) {
  int sum = 0;
  for (int y = row - radius; y <= row + radius; ++y)
    for (int x = column - radius; x <= column + radius; ++x)
      sum += Level(seed, std::clamp(y, 0, 255), std::clamp(x, 0, 255));
  return sum / ((2 * radius + 1) * (2 * radius + 1));
}

using CrcTable = std::array<std::array<uint32_t, 256>, 4>;

// [bytes][value]: what a byte makes of the CRC once `bytes` more have followed it.
constexpr CrcTable MakeCrcTable() {
  CrcTable table{};
  for (uint32_t value = 0; value < 256; ++value) {
    uint32_t crc = value;
    for (int bit = 0; bit < 8; ++bit) crc = crc & 1 ? (crc >> 1) ^ 0xEDB88320u : crc >> 1;
    table[0][value] = crc;
  }
  for (size_t bytes = 1; bytes < table.size(); ++bytes)
    for (size_t value = 0; value < 256; ++value) {
      const uint32_t before = table[bytes - 1][value];
      table[bytes][value] = before >> 8 ^ table[0][before & 255];
    }
  return table;
}
constexpr CrcTable kCrc = MakeCrcTable();

}  // namespace

int32_t TileCell(const std::string& kind, const std::vector<int>& a, int row, int column) {
  const auto hash = [&] { return Hash(a[0], row, column); };
  if (kind == "flat") return a[0];
  if (kind == "noise") return static_cast<int32_t>(hash() >> 17);
  if (kind == "levels") return static_cast<int32_t>(128 * (hash() >> 24));
  if (kind == "blackwhite") return static_cast<int32_t>(32640 * (hash() >> 31));
  if (kind == "wild") return static_cast<int32_t>(hash());
  if (kind == "ramp") return std::clamp(16320 + (row - 128) * a[0] + (column - 128) * a[1], 0, 32640);
  if (kind == "edge") return (row - 128) * a[0] + (column - 128) * a[1] >= 0 ? a[3] : a[2];
  if (kind == "scene") return 128 * Level(a[0], row, column);
  if (kind == "soft") return 128 * SoftLevel(a[0], a[1], row, column);
  if (kind == "blocks")
    return 128 * (100 + (row >> 3) + static_cast<int>(Hash(a[0], (row + a[1]) >> 3, (column + a[2]) >> 3) >> 28) - 8);
  throw std::invalid_argument("unknown tile kind: " + kind);
}

Bench::Bench(uint32_t seed) : heap_(KELVO_HEAP_WORDS) {
  params.StructureSize = sizeof(TileParams);
  for (size_t i = 0; i < heap_.size(); ++i) heap_[i] = static_cast<int32_t>(Mix(static_cast<uint32_t>(i) + seed));
}

void Bench::Fill(const std::string& kind, const std::vector<int>& arguments) {
  for (int row = 0; row < 256; ++row)
    for (int column = 0; column < 256; ++column) Cell(0, row, column) = TileCell(kind, arguments, row, column);
}

uint32_t Bench::Crc(int plane, int first, int end) {
  uint32_t crc = ~0u;
  for (int row = first; row < end; ++row)
    for (int column = first; column < end; ++column) {
      crc ^= static_cast<uint32_t>(Cell(plane, row, column));
      crc = kCrc[3][crc & 255] ^ kCrc[2][crc >> 8 & 255] ^ kCrc[1][crc >> 16 & 255] ^ kCrc[0][crc >> 24];
    }
  return ~crc;
}

std::vector<int32_t> Bench::Core() {
  std::vector<int32_t> core;
  for (int row = 64; row < 192; ++row) core.insert(core.end(), &Cell(0, row, 64), &Cell(0, row, 192));
  return core;
}

}  // namespace kelvo::test
