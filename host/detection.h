// What a picture tells of itself: the width of its blur, and the grid and strength of JPEG compression.
#ifndef KELVO_HOST_DETECTION_H
#define KELVO_HOST_DETECTION_H

#include <array>
#include <cstdint>
#include <string>
#include <vips/vips8>

#include "kelvo/kelvo.h"

namespace kelvo::host {

constexpr int kVotedWidths = 21;  // 0..20
constexpr int kGridPhases = 8;

// Sums over the tiles of a picture. Each tile is measured in a block of its own, so they do not depend on the order or
// on the number of threads, and do not overflow.
struct DetectionSums {
  std::array<int64_t, kVotedWidths> votes{};
  std::array<int64_t, kGridPhases> column_steps{}, row_steps{};
  int64_t tiles = 0;  // whose grid was measured

  void Add(const TileParams& block);  // the outcome of calls on a block whose sums were zero
  void Add(const DetectionSums& other);
};

struct Detection {
  int width = 0;                                       // of round blur, pixels; 0: sharp, or nothing to tell it by
  std::array<int64_t, kVotedWidths> votes{};           // by width; all 0 if no edge was found
  std::array<int64_t, kVotedWidths> smoothed_votes{};  // the width is where these are greatest
  int jpeg = 0;                                        // strength 0..80
  int column_phase = 0, row_phase = 0;                 // 0..7: block borders lie before columns of this phase, mod 8

  bool HasEdges() const;

  // The widths with the most smoothed votes and their share, for example "5 61%, 4 22%, 6 9%"; "none" without votes.
  std::string Votes() const;
};

// The verdict on sums, the same that the library's calls leave in a single block if nothing overflows there. Larger
// sums are halved together until they fit.
Detection Decide(const DetectionSums& sums);

// Which of the two is to be measured.
struct Wanted {
  bool width = true;
  bool grid = true;
};

// Measures all tiles of a picture, uchar or ushort without coding, on as many threads as libvips uses. Of three or
// more bands the first three are taken as RGB and weighed to luma; else the first band is measured. `show_progress`:
// a bar on standard error. Throws HostError or vips::VError, also when the user stops it.
DetectionSums Measure(const vips::VImage& image, int colour_bands, Wanted wanted, bool show_progress);

}  // namespace kelvo::host

#endif  // KELVO_HOST_DETECTION_H
