#include "tile_task.h"

#include "round/family.h"
#include "round/shortcut.h"
#include "stages/stencil.h"
#include "stages/stencils/disc.h"
#include "stages/tone_tables.h"

namespace kelvo::host {
namespace {

constexpr int kToneCurve = 2;  // of every call

TileParams BlockOf(int width) {
  TileParams params{};
  params.StructureSize = sizeof(TileParams);
  params.BlurSpec = static_cast<uint32_t>(width);
  return params;
}

// The weights of a blur add up to a little less than one, which shows where a linear value lies on a step of the curve.
int32_t BlurredFlatGround(int width, int32_t staged) {
  const int32_t linear = kForwardTone[kToneCurve][(staged >> 7) & 255];
  return kInverseTone[kToneCurve][EvaluateFlat(DiscBlur(width), linear) >> 12];
}

}  // namespace

TileTask RestoreTask(const RestoreSettings& settings) {
  TileParams params = BlockOf(settings.width);
  params.RemoveNoise = settings.noise;
  params.Accuracy = settings.accuracy;
  params.JPGCompression = settings.jpeg;
  params.JPGHorizontalOffset = settings.jpeg_column;
  params.JPGVerticalOffset = settings.jpeg_row;
  const uint32_t variant = settings.classic ? 0 : KELVO_VARIANT_UNDO_ROUND_MOVES | KELVO_VARIANT_SIGNED_MOTION;
  const auto call = [variant](TileParams& block, int32_t* heap) {
    return kelvo_focus_tile_with(&block, heap, variant);
  };
  const auto flat_ground = [&member = MemberOf(settings.width)](const TileParams& done, int32_t staged) {
    return FlatResponse(member, done.ShortcutMode, staged);
  };
  return {params, call, flat_ground, settings.raw_values};
}

TileTask BlurTask(int width, bool raw_values) {
  const auto call = [](TileParams& block, int32_t* heap) { return kelvo_defocus_tile(&block, heap); };
  const auto flat_ground = [width](const TileParams&, int32_t staged) { return BlurredFlatGround(width, staged); };
  return {BlockOf(width), call, flat_ground, raw_values};
}

}  // namespace kelvo::host
