// Turns the tile so that a motion direction falls into 0..45 degrees, and back.
#ifndef KELVO_API_ORIENTATION_H
#define KELVO_API_ORIENTATION_H

#include "stages/tile.h"

namespace kelvo {

// How a direction is folded: which transform brings it to 0..45 degrees, and what it becomes.
enum class Fold { kNone, kReflect, kQuarterTurn, kMirror };
struct FoldedDirection {
  Fold fold;
  int degrees;  // 0..45
};

// `direction` 1..359; a line at 180 + a is a line at a.
FoldedDirection FoldDirection(int direction);

// The part of the tile that lies in the picture, by ImageWidth, ImageHeight, TileTop and TileLeft; the whole tile if the
// host has not told the picture's size. Empty if the tile lies beside the picture.
Area PictureArea(const TileParams& params);

// Where an area of the tile comes to lie when the tile is turned by Normalise.
Area Normalised(const Area& area, Fold fold);

// Transforms kDisplay in place before a motion routine, and undoes it after: the reflection at the anti-diagonal, the
// quarter turn clockwise (scratch: kTurnScratch, which then holds the turned tile), the mirror left to right. Intended:
// the mirror leaves row 255 alone, both ways.
void Normalise(const Tile& tile, Fold fold);
void Denormalise(const Tile& tile, Fold fold);

}  // namespace kelvo

#endif  // KELVO_API_ORIENTATION_H
