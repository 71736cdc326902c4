#include "api/dispatch.h"

#include "api/orientation.h"
#include "round/defocus.h"
#include "round/focus.h"

namespace kelvo {
namespace {

// Turns the tile by its direction, runs `routine` with the folded direction in 0..45 degrees and turns it back.
template <class Routine>
void RunTurned(const Tile& tile, Routine routine) {
  const FoldedDirection folded = FoldDirection(MotionDirection(tile.params()));
  Normalise(tile, folded.fold);
  routine(tile, folded.degrees);
  Denormalise(tile, folded.fold);
}

// Motion blur is not built yet: the tile is turned there and back.
void LeaveUntouched(const Tile&, int) {}

}  // namespace

void Defocus(const Tile& tile) {
  if (IsMotion(tile.params())) return RunTurned(tile, LeaveUntouched);
  if (BlurWidth(tile.params()) != 0) DefocusRound(tile);
}

void Focus(const Tile& tile) {
  if (IsMotion(tile.params())) return RunTurned(tile, LeaveUntouched);
  if (BlurWidth(tile.params()) != 0) FocusRound(tile);
}

}  // namespace kelvo
