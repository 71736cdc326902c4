// The width of round blur in a picture, from the shape of its edges.
//
//   reads   kDisplay  rows and columns 32..223, any values
//   writes  kLinear   rows and columns 32..223: the tile in linear light; kEdges: scratch
//   fields  in      ImageWidth, ImageHeight, TileTop, TileLeft
//           in/out  BlurWidthVotes: over the tiles of an image; they wrap
//           out     SmoothedBlurWidthVotes, DetectedBlurWidth 0..20, CurveIndex (2)
//   errors  none: the export has checked the block
//
// Every fourth row and column of the core is examined. An edge votes if the 31 samples across it lie inside the image;
// in the middle half of the image its vote counts twice.
#ifndef KELVO_ANALYSIS_BLUR_WIDTH_H
#define KELVO_ANALYSIS_BLUR_WIDTH_H

#include "stages/tile.h"

namespace kelvo {

void DetectBlurWidth(const Tile& tile);

}  // namespace kelvo

#endif  // KELVO_ANALYSIS_BLUR_WIDTH_H
