// The blocks that are reshaped, as small planes with one cell per block, and the rules applied to all of them.
#ifndef KELVO_ENLARGE_BLOCK_GRIDS_H
#define KELVO_ENLARGE_BLOCK_GRIDS_H

#include <cstdint>

#include "enlarge/reshape.h"
#include "enlarge/rules.h"
#include "stages/target.h"
#include "stages/tile.h"

namespace kelvo::KELVO_TARGET {

// The source pixels and the four output pixels of every block, apart, so that neighbours lie side by side. Planes are
// worked from end to end, across the ring around the blocks, where nothing matters.
template <class Kind>
class BlockGrids {
 public:
  using Cell = typename Kind::Cell;
  using Value = typename Kind::Value;

  // Source pixels in rows of a tile; whether Kind can work with all of them.
  bool Gather(const int32_t* source) {
    uint32_t all = 0;
    for (int row = 0; row < kGridSide; ++row) {
      const int32_t* from = source + row * kTileSize;
      Cell *to = source_ + row * kGridSide, *inside = inside_ + row * kGridSide;
      for (int i = 0; i < kGridSide; ++i) {
        all |= static_cast<uint32_t>(from[i]);
        to[i] = static_cast<Cell>(from[i]);
      }
      for (int i = 0; i < kGridSide; ++i) inside[i] = IsBlock(row) && IsBlock(i) ? -1 : 0;
    }
    return Kind::CanHold(all);
  }

  // Corners change nothing outside their block, so all phases pass over a block at once.
  void ShapeCorners() {
    for (int i = IndexOf(0, 0); i <= IndexOf(kBlocks - 1, kBlocks - 1); i += Kind::kLanes) {
      const Cell* e = source_ + i;
      Value nw = Kind::Load(e), ne = nw, sw = nw, se = nw;
      ShapeCorner<Kind>(e, CompassOf(kNorthWest, kGridSide), nw, ne, sw);
      ShapeCorner<Kind>(e, CompassOf(kNorthEast, kGridSide), ne, se, nw);
      ShapeCorner<Kind>(e, CompassOf(kSouthWest, kGridSide), sw, nw, se);
      ShapeCorner<Kind>(e, CompassOf(kSouthEast, kGridSide), se, sw, ne);
      Kind::Store(output_[kNorthWest] + i, nw);
      Kind::Store(output_[kNorthEast] + i, ne);
      Kind::Store(output_[kSouthWest] + i, sw);
      Kind::Store(output_[kSouthEast] + i, se);
    }
  }

  // Vertex i lies south-east of block i.
  void ChangeVertices() {
    for (int i = IndexOf(-1, -1); i <= IndexOf(kBlocks - 1, kBlocks - 1); i += Kind::kLanes) {
      constexpr int kEast = 1, kSouth = kGridSide;
      const Value nw = Kind::Load(source_ + i), ne = Kind::Load(source_ + i + kEast);
      const Value sw = Kind::Load(source_ + i + kSouth), se = Kind::Load(source_ + i + kSouth + kEast);
      const Value bright = Kind::Above(Kind::Least(nw, se), Kind::Most(ne, sw));
      const Value dark = Kind::Above(Kind::Least(ne, sw), Kind::Most(nw, se));
      if (!Kind::Any(bright | dark)) continue;
      ChangePair(kNorthWest, i + kSouth + kEast, i, {bright | dark, dark, Kind::Half(ne, sw)});
      ChangePair(kNorthEast, i + kSouth, i + kEast, {bright | dark, bright, Kind::Half(nw, se)});
    }
  }

  // Output pixels among one another, in rows of a tile.
  void Scatter(int32_t* pixels) const {
    for (int row = 0; row < 2 * kBlocks; ++row) {
      const Cell* west = output_[row % 2 == 0 ? kNorthWest : kSouthWest] + IndexOf(row / 2, 0);
      const Cell* east = output_[row % 2 == 0 ? kNorthEast : kSouthEast] + IndexOf(row / 2, 0);
      int32_t* to = pixels + row * kTileSize;
      for (int column = 0; column < kBlocks; ++column) {
        to[2 * column] = west[column];
        to[2 * column + 1] = east[column];
      }
    }
  }

 private:
  // Where two opposite blocks at a vertex stand out from the other two, how they are to be seen, and what lies halfway
  // between those two.
  struct Saddle {
    Value mask, negative, middle;
  };

  // The `corner` of block e and the opposite one of block a across the vertex. Both may find the line that joins the
  // other two blocks; no line is found from outside the blocks.
  void ChangePair(Corner corner, int e, int a, const Saddle& saddle) {
    const Corner opposite = static_cast<Corner>(kSouthEast - corner);
    const auto at_e = ChangeAt<Kind>({source_ + e, CompassOf(corner, kGridSide), saddle.negative}, saddle.mask);
    const auto at_a = ChangeAt<Kind>({source_ + a, CompassOf(opposite, kGridSide), saddle.negative}, saddle.mask);
    const Value line = (at_e.line & Kind::Load(inside_ + e)) | (at_a.line & Kind::Load(inside_ + a));
    const auto change = [&](Cell* cell, const auto& here) {
      Kind::Store(cell, Kind::Pick(line, saddle.middle, Kind::Pick(here.notch, here.filled, Kind::Load(cell))));
    };
    change(output_[corner] + e, at_e);
    change(output_[opposite] + a, at_a);
  }

  static constexpr int kRoom = 92;  // for vectors that reach beyond the last block
  static constexpr int kCells = kGridSide * kGridSide + kRoom;

  static constexpr int IndexOf(int row, int column) { return (row + kGridRing) * kGridSide + column + kGridRing; }
  static constexpr bool IsBlock(int position) { return position >= kGridRing && position < kGridRing + kBlocks; }

  Cell source_[kCells];
  Cell inside_[kCells];  // all ones for a block, zero in the ring
  Cell output_[kCorners][kCells];
};

}  // namespace kelvo::KELVO_TARGET

#endif  // KELVO_ENLARGE_BLOCK_GRIDS_H
