#include "encoding.h"

#include <tiffio.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <numeric>
#include <vector>

namespace kelvo::host {
namespace {

// The example table for luminance of ITU-T T.81, table K.1, row by row.
constexpr int kExampleSteps[64] = {16, 11, 10, 16, 24,  40,  51,  61,  12, 12, 14, 19, 26,  58,  60,  55,  //
                                   14, 13, 16, 24, 40,  57,  69,  56,  14, 17, 22, 29, 51,  87,  80,  62,  //
                                   18, 22, 37, 56, 68,  109, 103, 77,  24, 35, 55, 64, 81,  104, 113, 92,  //
                                   49, 64, 78, 87, 103, 121, 120, 101, 72, 92, 95, 98, 112, 100, 103, 99};

// The scale that encoders share: the example table as it is at 50, half of it at 75, ones at 100.
int SumOfSteps(int quality) {
  const int percent = quality < 50 ? 5000 / quality : 200 - 2 * quality;
  int sum = 0;
  for (const int step : kExampleSteps) sum += std::clamp((step * percent + 50) / 100, 1, 255);
  return sum;
}

// The bytes of a file, in order; zeros behind its end.
class Reader {
 public:
  explicit Reader(const std::string& path) : file_(path, std::ios::binary) {}

  bool good() const { return file_.good(); }
  int Byte() {
    const int byte = file_.get();
    return byte < 0 ? 0 : byte;
  }
  int Word() {
    const int high = Byte();
    return high << 8 | Byte();
  }
  std::string Text(int bytes) {
    std::string text(bytes, '\0');
    file_.read(text.data(), bytes);
    return text;
  }
  void Skip(std::streamoff bytes) { file_.seekg(bytes, std::ios::cur); }

 private:
  std::ifstream file_;
};

// The quality by table 0, which luminance uses, from a segment of `left` bytes.
std::optional<int> QualityInTables(Reader& reader, int left) {
  std::optional<int> quality;
  while (left > 0 && reader.good()) {
    const int head = reader.Byte();
    const bool words = head >> 4 != 0;
    std::array<int, 64> steps{};
    for (int& step : steps) step = words ? reader.Word() : reader.Byte();
    if ((head & 15) == 0 && reader.good()) quality = JpegQualityOf(steps);
    left -= words ? 129 : 65;
  }
  return quality;
}

std::optional<int> JpegQualityIn(const std::string& path) {
  constexpr int kTables = 0xDB, kScan = 0xDA;
  Reader reader(path);
  if (reader.Word() != 0xFFD8) return std::nullopt;
  while (reader.good() && reader.Byte() == 0xFF) {
    int marker = 0xFF;
    while (marker == 0xFF && reader.good()) marker = reader.Byte();
    if (marker == kScan) return std::nullopt;
    const int left = reader.Word() - 2;
    if (left < 0) return std::nullopt;
    if (marker == kTables) {
      if (const auto quality = QualityInTables(reader, left)) return quality;
    } else {
      reader.Skip(left);
    }
  }
  return std::nullopt;
}

bool IsLosslessWebp(const std::string& path) {
  Reader reader(path);
  if (reader.Text(4) != "RIFF") return false;
  reader.Skip(4);
  if (reader.Text(4) != "WEBP") return false;
  while (reader.good()) {
    const std::string chunk = reader.Text(4);
    if (chunk == "VP8L" || chunk == "VP8 ") return chunk == "VP8L";
    uint32_t bytes = 0;
    for (int i = 0; i < 4; ++i) bytes |= static_cast<uint32_t>(reader.Byte()) << (8 * i);
    reader.Skip(std::streamoff{bytes} + bytes % 2);
  }
  return false;
}

std::optional<VipsForeignTiffCompression> CompressionNamed(uint16_t code) {
  switch (code) {
    case COMPRESSION_NONE:
      return VIPS_FOREIGN_TIFF_COMPRESSION_NONE;
    case COMPRESSION_LZW:
      return VIPS_FOREIGN_TIFF_COMPRESSION_LZW;
    case COMPRESSION_DEFLATE:
    case COMPRESSION_ADOBE_DEFLATE:
      return VIPS_FOREIGN_TIFF_COMPRESSION_DEFLATE;
    case COMPRESSION_PACKBITS:
      return VIPS_FOREIGN_TIFF_COMPRESSION_PACKBITS;
    case COMPRESSION_ZSTD:
      return VIPS_FOREIGN_TIFF_COMPRESSION_ZSTD;
    default:
      return std::nullopt;  // lossy ones, and those for two colours
  }
}

void ReadTiff(const std::string& path, Encoding& encoding) {
  {
    Reader reader(path);
    const int order = reader.Word();
    if (order != 0x4949 && order != 0x4D4D) return;
    encoding.big_tiff = (order == 0x4D4D ? reader.Word() : reader.Byte()) == 43;
  }
  const std::unique_ptr<TIFF, decltype(&TIFFClose)> tiff(TIFFOpen(path.c_str(), "rm"), TIFFClose);
  if (!tiff) return;
  uint16_t compression = 0, predictor = 0;
  uint32_t columns = 0, rows = 0;
  if (TIFFGetField(tiff.get(), TIFFTAG_COMPRESSION, &compression) == 1)
    encoding.tiff_compression = CompressionNamed(compression);
  if (TIFFGetField(tiff.get(), TIFFTAG_PREDICTOR, &predictor) == 1)
    encoding.tiff_predictor = predictor == PREDICTOR_HORIZONTAL;
  // A writer that keeps rows of tiles in memory is not to be led astray by a damaged header.
  constexpr uint32_t kMostTile = 4096;
  if (TIFFIsTiled(tiff.get()) != 0 && TIFFGetField(tiff.get(), TIFFTAG_TILEWIDTH, &columns) == 1 &&
      TIFFGetField(tiff.get(), TIFFTAG_TILELENGTH, &rows) == 1 && std::max(columns, rows) <= kMostTile &&
      columns % 16 == 0 && rows % 16 == 0) {
    encoding.tile_columns = static_cast<int>(columns);
    encoding.tile_rows = static_cast<int>(rows);
  }
}

}  // namespace

int JpegQualityOf(const std::array<int, 64>& steps) {
  const int sum = std::accumulate(steps.begin(), steps.end(), 0);
  int nearest = 1;
  for (int quality = 2; quality <= 100; ++quality)
    if (std::abs(SumOfSteps(quality) - sum) < std::abs(SumOfSteps(nearest) - sum)) nearest = quality;
  return nearest;
}

Encoding EncodingOf(const std::string& path) {
  Encoding encoding;
  encoding.jpeg_quality = JpegQualityIn(path);
  encoding.webp_lossless = IsLosslessWebp(path);
  ReadTiff(path, encoding);
  return encoding;
}

}  // namespace kelvo::host
