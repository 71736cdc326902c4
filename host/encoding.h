// How a file stores its pixels, so that its result can be stored likewise.
#ifndef KELVO_HOST_ENCODING_H
#define KELVO_HOST_ENCODING_H

#include <array>
#include <optional>
#include <string>
#include <vips/vips8>

namespace kelvo::host {

// What is not known, or does not apply to the file's format, has its default.
struct Encoding {
  std::optional<int> jpeg_quality;  // 1..100, of the scale that encoders share
  bool webp_lossless = false;
  std::optional<VipsForeignTiffCompression> tiff_compression;
  bool tiff_predictor = false;          // horizontal differences
  int tile_columns = 0, tile_rows = 0;  // of a TIFF; 0: it is stored in strips
  bool big_tiff = false;
};

// Looks at the headers of the file; never fails. Of damaged files little is found.
Encoding EncodingOf(const std::string& path);

// The quality 1..100 whose tables come nearest to the quantisation table `steps`, 64 steps in any order. The encoders
// in use scale one example table, so that its sum tells.
int JpegQualityOf(const std::array<int, 64>& steps);

}  // namespace kelvo::host

#endif  // KELVO_HOST_ENCODING_H
