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

// Where the picture begins or ends in a tile that starts at `tile_start` of it; any values are safe.
int PlaceInTile(int64_t picture_position, int32_t tile_start) {
  const int64_t place = picture_position - tile_start + KELVO_CORE_START;
  return static_cast<int>(std::clamp<int64_t>(place, 0, kTileSize));
}

}  // namespace

Area PictureArea(const TileParams& params) {
  if (params.ImageWidth <= 0 || params.ImageHeight <= 0) return {};
  return {PlaceInTile(0, params.TileTop), PlaceInTile(params.ImageHeight, params.TileTop),
          PlaceInTile(0, params.TileLeft), PlaceInTile(params.ImageWidth, params.TileLeft)};
}

Area Normalised(const Area& area, Fold fold) {
  const int top = kTileSize - area.end_row, bottom = kTileSize - area.first_row;
  const int left = kTileSize - area.end_column, right = kTileSize - area.first_column;
  switch (fold) {
    case Fold::kNone:
      break;
    case Fold::kReflect:
      return {left, right, top, bottom};
    case Fold::kQuarterTurn:
      return {area.first_column, area.end_column, top, bottom};
    case Fold::kMirror:
      return {area.first_row, area.end_row, left, right};
  }
  return area;
}

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
