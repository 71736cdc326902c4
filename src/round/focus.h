// Restores a tile from round blur.
#ifndef KELVO_ROUND_FOCUS_H
#define KELVO_ROUND_FOCUS_H

#include "stages/tile.h"

namespace kelvo {

// Whether FocusRound restores this width yet.
constexpr bool RestoresRound(int width) {
  return width >= 1 && width <= 20;
}

// Restores the core of kDisplay from the round blur of the block's width; the rest of the plane is context.
void FocusRound(const Tile& tile);

}  // namespace kelvo

#endif  // KELVO_ROUND_FOCUS_H
