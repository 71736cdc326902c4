// What is done to each tile: a filled parameter block and the library call it goes to.
#ifndef KELVO_HOST_TILE_TASK_H
#define KELVO_HOST_TILE_TASK_H

#include <functional>

#include "kelvo/kelvo.h"
#include "stages/stencils/disc.h"

namespace kelvo::host {

// A library call on one block and one heap of KELVO_HEAP_WORDS words. Runs on several threads at once.
using TileCall = std::function<int32_t(TileParams& params, int32_t* heap)>;

// What a call makes of flat ground. `done` is the block after a call of the same task, `staged` the display value of
// all cells, 0..32640. The same for every tile of a task.
using FlatGround = std::function<int32_t(const TileParams& done, int32_t staged)>;

struct TileTask {
  TileParams params;       // copied for each tile, then TileTop and TileLeft are set
  TileCall call;           // returns KELVO_OK or leaves the reason in params.Message
  FlatGround flat_ground;  // results count as changes against this
  bool raw_values;         // samples are the library's own values instead of original plus change
  int overlap = 0;         // rows and columns that neighbouring cores share and fade over, 0..64
};

struct RestoreSettings {
  int width = 0;         // pixels, 1..kMaxWidth
  int direction = 0;     // of motion blur, degrees 1..359 counter-clockwise from the row; 0: round blur
  int noise = 0;         // -1..3
  int accuracy = 0;      // -2..2
  int jpeg = 0;          // 0..80
  int jpeg_column = 0;   // 0..7, phase of the block grid in the picture
  int jpeg_row = 0;      // 0..7
  bool classic = false;  // the plain pair search, without undoing its trial moves
  bool raw_values = false;
};

TileTask RestoreTask(const RestoreSettings& settings);

// Defocus of the given width in pixels, 1..kMaxWidth; with a direction 1..359 motion blur, a line of width + 1 pixels.
TileTask BlurTask(int width, bool raw_values, int direction = 0);

}  // namespace kelvo::host

#endif  // KELVO_HOST_TILE_TASK_H
