// A tile: the caller's block and heap, seen as planes of cells.
//
// The heap is sixteen planes of 256 x 256 signed 32-bit cells, row by row. The result of a call is the core of plane
// 0, rows and columns 64..191. Region m is the core widened by m: rows and columns 64 - m .. 191 + m.
#ifndef KELVO_STAGES_TILE_H
#define KELVO_STAGES_TILE_H

#include <cassert>
#include <cstdint>

#include "kelvo/kelvo.h"

namespace kelvo {

inline constexpr int kTileSize = KELVO_TILE_SIZE;
inline constexpr int kPlaneCells = kTileSize * kTileSize;
inline constexpr int kCoreFirst = KELVO_CORE_START;
inline constexpr int kCoreEnd = KELVO_CORE_START + KELVO_CORE_SIZE;

// What the planes hold. Several serve two stages of a run that never overlap, and so have two names.
enum Plane : int {
  kDisplay = 0,        // tile in and result out, display values
  kEstimate = 1,       // the restored tile, linear values
  kLinear = 1,         // blur width: the tile in linear light
  kPreSmoothed = 2,    // pre-filter: what the classification measures
  kEdges = 2,          // blur width: the profiles of edges, and room to fit them
  kFloor = 2,          // restoration: minimum of the first blurred estimate over the blur's footprint
  kBlurred = 3,        // the estimate blurred by the model; cells 0..8191 are the weight tables
  kJpegResidual = 3,   // JPEG grid: smoothed minus own value, bit 0 set where nothing is counted
  kObserved = 4,       // what the restoration fits
  kStaged = 5,         // the pre-filtered tile, display values, then linear ones
  kResidual = 6,       // low byte of a cell: detail that the pre-filter removed, quarters of a grey level
  kClass = 7,          // pre-filter: bit fields that choose a cell's filter
  kSteps = 7,          // restoration from motion: coded steps along the line
  kHorizontal = 7,     // restoration: coded moves of the horizontal pairs
  kMisfit = 8,         // restoration, while moves are searched: blurred minus observed
  kVertical = 9,       // coded moves of the vertical pairs
  kTurnScratch = 9,    // orientation: the tile while it is turned
  kDoubledClass = 9,   // enlargement: kClass, every cell as 2 x 2
  kKeptEstimate = 10,  // restoration: the estimate in the order of waves (round/pair_waves.h)
  kDiagonal = 11,      // coded moves of the diagonal pairs
  kAntiDiagonal = 13,  // coded moves of the anti-diagonal pairs
  kSaved = 15,         // the estimate while refinement tries moves
};

// Rows, or columns, first .. end - 1 of region `margin`, which must be 0..64.
struct Region {
  explicit constexpr Region(int margin) : first(kCoreFirst - margin), end(kCoreEnd + margin) {}
  constexpr int size() const { return end - first; }
  int first;
  int end;
};

// Rows and columns first .. end - 1 of a tile.
struct Area {
  int first_row = 0, end_row = kTileSize;
  int first_column = 0, end_column = kTileSize;
};

struct Routines;

class Tile {
 public:
  // `routines` are the row routines that this call uses, `variant` the sum of KELVO_VARIANT_* bits.
  Tile(TileParams& params, int32_t* heap, const Routines& routines, uint32_t variant = 0)
      : params_(&params), heap_(heap), routines_(&routines), variant_(variant) {}

  TileParams& params() const { return *params_; }
  const Routines& routines() const { return *routines_; }
  bool Has(uint32_t variant_bit) const { return (variant_ & variant_bit) != 0; }

  // The same tile, of which only `picture` shows the picture; around it the host has made the cells up.
  Tile Showing(const Area& picture) const {
    Tile tile = *this;
    tile.picture_ = picture;
    return tile;
  }
  const Area& picture() const { return picture_; }

  int32_t* Cells(int plane) const {
    assert(plane >= 0 && plane < 16);
    return heap_ + plane * kPlaneCells;
  }

  // The row from `column` on.
  int32_t* Row(int plane, int row, int column = 0) const {
    assert(row >= 0 && row < kTileSize && column >= 0 && column < kTileSize);
    return Cells(plane) + row * kTileSize + column;
  }

  int32_t& At(int plane, int row, int column) const { return *Row(plane, row, column); }

 private:
  TileParams* params_;
  int32_t* heap_;
  const Routines* routines_;
  uint32_t variant_;
  Area picture_;
};

// Bits 0..7 of BlurSpec: 0..255, 0..20 once validated.
inline int BlurWidth(const TileParams& params) {
  return static_cast<int>(params.BlurSpec & 255u);
}

// Degrees, 0 for round blur; 1..359 once validated.
inline int MotionDirection(const TileParams& params) {
  return static_cast<int32_t>(params.BlurSpec) >> 8;
}

inline bool IsMotion(const TileParams& params) {
  return MotionDirection(params) != 0;
}

}  // namespace kelvo

#endif  // KELVO_STAGES_TILE_H
