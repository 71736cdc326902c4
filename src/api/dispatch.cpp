#include "api/dispatch.h"

#include "api/orientation.h"
#include "motion/defocus.h"
#include "motion/focus.h"
#include "round/defocus.h"
#include "round/focus.h"

namespace kelvo {
namespace {

// Turns the tile by its direction, runs `routine` with the member of the folded direction and turns it back.
template <class Routine>
void RunTurned(const Tile& tile, Routine routine) {
  const FoldedDirection folded = FoldDirection(MotionDirection(tile.params()));
  Normalise(tile, folded.fold);
  const int width = BlurWidth(tile.params());
  if (width != 0) {
    const Tile turned = tile.Showing(Normalised(PictureArea(tile.params()), folded.fold));
    routine(turned, MotionMemberOf(width, BucketOf(folded.degrees)));
  }
  Denormalise(tile, folded.fold);
}

}  // namespace

void Defocus(const Tile& tile) {
  if (IsMotion(tile.params())) return RunTurned(tile, DefocusMotion);
  if (BlurWidth(tile.params()) != 0) DefocusRound(tile);
}

void Focus(const Tile& tile) {
  if (IsMotion(tile.params())) return RunTurned(tile, FocusMotion);
  if (BlurWidth(tile.params()) != 0) FocusRound(tile.Showing(PictureArea(tile.params())));
}

}  // namespace kelvo
