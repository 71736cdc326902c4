// The pre-filter: cleans the tile before a run, and keeps what it took away.
//
//   reads   kDisplay     region M + 7 at most, M = margin + extra
//   writes  kStaged      region M, display values: the smoothed tile
//           kResidual    region M: see residual.h
//           kPreSmoothed, kClass  scratch, region M + 3 at most
//   fields  BlurSpec, RemoveNoise, NoiseFloor, JPGCompression, JPG offsets, TileTop, TileLeft
//
// kClass and kResidual must be zero (ClearPrefilterPlanes). Any values in kDisplay are safe.
#ifndef KELVO_STAGES_PREFILTER_PREFILTER_H
#define KELVO_STAGES_PREFILTER_PREFILTER_H

#include "stages/tile.h"

namespace kelvo {

void Prefilter(const Tile& tile, int margin, int extra);

}  // namespace kelvo

#endif  // KELVO_STAGES_PREFILTER_PREFILTER_H
