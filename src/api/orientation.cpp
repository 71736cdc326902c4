#include "api/orientation.h"

#include <algorithm>

namespace kelvo {
namespace {

constexpr int kLast = kTileSize - 1;

void ReflectAtAntiDiagonal(const Tile& tile) {
  for (int row = 0; row < kTileSize; ++row)
    for (int column = 0; row + column < kLast; ++column)
      std::swap(tile.At(kDisplay, row, column), tile.At(kDisplay, kLast - column, kLast - row));
}

void MirrorLeftToRight(const Tile& tile) {
  for (int row = 0; row < kLast; ++row) std::reverse(tile.Row(kDisplay, row), tile.Row(kDisplay, row) + kTileSize);
}

void QuarterTurn(const Tile& tile, bool clockwise) {
  for (int row = 0; row < kTileSize; ++row)
    for (int column = 0; column < kTileSize; ++column)
      tile.At(kTurnScratch, row, column) =
          clockwise ? tile.At(kDisplay, kLast - column, row) : tile.At(kDisplay, column, kLast - row);
  std::copy_n(tile.Cells(kTurnScratch), kPlaneCells, tile.Cells(kDisplay));
}

void Turn(const Tile& tile, Fold fold, bool clockwise) {
  switch (fold) {
    case Fold::kNone:
      return;
    case Fold::kReflect:
      return ReflectAtAntiDiagonal(tile);
    case Fold::kQuarterTurn:
      return QuarterTurn(tile, clockwise);
    case Fold::kMirror:
      return MirrorLeftToRight(tile);
  }
}

}  // namespace

FoldedDirection FoldDirection(int direction) {
  const int angle = direction % 180;
  if (angle <= 45) return {Fold::kNone, angle};
  if (angle <= 90) return {Fold::kReflect, 90 - angle};
  if (angle <= 135) return {Fold::kQuarterTurn, angle - 90};
  return {Fold::kMirror, 180 - angle};
}

void Normalise(const Tile& tile, Fold fold) {
  Turn(tile, fold, true);
}

void Denormalise(const Tile& tile, Fold fold) {
  Turn(tile, fold, false);
}

}  // namespace kelvo
