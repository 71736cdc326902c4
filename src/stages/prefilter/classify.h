// Classification: what kind of ground every cell of the tile lies on, as a class code that chooses its filter.
//
//   reads   kDisplay     region margin + 3, and the pre-smoother's reach (4 at most) beyond
//   writes  kPreSmoothed region margin + 3
//           kClass       region margin + 2, all bits below; must be zero on entry
//
// A class code holds: bits 0..2 direction of least roughness, bits 4..12 contrast across it (0..511), bits 13..15 near
// a strong, a middling, a faint edge, bits 16..18 filter row, bit 19 directional filter, bits 21 and 22 limiting of
// residuals, bits 23..25 near a contrast where JPEG rings, strongest first, bits 27..31 edge score.
#ifndef KELVO_STAGES_PREFILTER_CLASSIFY_H
#define KELVO_STAGES_PREFILTER_CLASSIFY_H

#include "stages/tile.h"

namespace kelvo {

namespace class_code {
inline constexpr uint32_t kDirectionMask = 7;
inline constexpr int kContrastShift = 4;
inline constexpr uint32_t kContrastMask = 511;
inline constexpr uint32_t kOnEdge = 1u << 13, kByEdge = 1u << 14, kNearEdge = 1u << 15;
inline constexpr int kRowShift = 16;
inline constexpr uint32_t kRowMask = 7;
inline constexpr uint32_t kDirectional = 1u << 19;
inline constexpr uint32_t kLimited = 1u << 21, kOverLimit = 1u << 22;
inline constexpr uint32_t kRinging1 = 1u << 23, kRinging2 = 1u << 24, kRinging3 = 1u << 25;
inline constexpr int kScoreShift = 27;
}  // namespace class_code

void Classify(const Tile& tile, int margin);

}  // namespace kelvo

#endif  // KELVO_STAGES_PREFILTER_CLASSIFY_H
