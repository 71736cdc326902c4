#include "tile_task.h"

#include "api/calls.h"
#include "api/orientation.h"
#include "cpu_level.h"
#include "motion/line.h"
#include "round/family.h"
#include "round/shortcut.h"
#include "stages/stencil.h"
#include "stages/stencils/disc.h"
#include "stages/tone_tables.h"

namespace kelvo::host {
namespace {

constexpr int kToneCurve = 2;  // of every call

// By the tables of docs/quality.md the fit alone is best for every width, direction, noise and Accuracy.
constexpr uint32_t kBestVariant = KELVO_VARIANT_KEEP_FRACTION | KELVO_VARIANT_FIT | KELVO_VARIANT_FIT_ALONE;

// Fitted tiles differ a little where they meet, the more the wider the blur.
constexpr int kFadedOverlap = 16;

TileParams BlockOf(int width, int direction) {
  TileParams params{};
  params.StructureSize = sizeof(TileParams);
  params.BlurSpec = static_cast<uint32_t>(width) | static_cast<uint32_t>(direction) << 8;
  return params;
}

const Stencil& BlurOf(int width, int direction) {
  if (direction == 0) return DiscBlur(width);
  return BareLine(MotionMemberOf(width, BucketOf(FoldDirection(direction).degrees)));
}

// The weights of a blur add up to a little less than one, which shows where a linear value lies on a step of the curve.
FlatGround BlurredFlatGround(int width, int direction) {
  return [width, direction](const TileParams&, int32_t staged) {
    const int32_t linear = kForwardTone[kToneCurve][(staged >> 7) & 255];
    return kInverseTone[kToneCurve][EvaluateFlat(BlurOf(width, direction), linear) >> 12];
  };
}

// What flat ground becomes is the round trip through the tone curves, but for round blurs that a search only sharpens.
FlatGround RestoredFlatGround(int width, int direction, uint32_t variant) {
  if ((variant & KELVO_VARIANT_FIT) != 0)
    return [](const TileParams&, int32_t staged) { return RoundTripBetween(staged); };
  if (direction != 0) return [](const TileParams&, int32_t staged) { return RoundTrip(staged); };
  return [&member = MemberOf(width)](const TileParams& done, int32_t staged) {
    return FlatResponse(member, done.ShortcutMode, staged);
  };
}

}  // namespace

TileTask RestoreTask(const RestoreSettings& settings) {
  TileParams params = BlockOf(settings.width, settings.direction);
  params.RemoveNoise = settings.noise;
  params.Accuracy = settings.accuracy;
  params.JPGCompression = settings.jpeg;
  params.JPGHorizontalOffset = settings.jpeg_column;
  params.JPGVerticalOffset = settings.jpeg_row;
  const uint32_t variant = settings.classic ? 0 : kBestVariant;
  const auto call = [variant](TileParams& block, int32_t* heap) {
    return Call(Operation::kFocus, block, heap, ChosenRoutines(), variant);
  };
  return {params, call, RestoredFlatGround(settings.width, settings.direction, variant), settings.raw_values,
          settings.classic ? 0 : kFadedOverlap};
}

TileTask BlurTask(int width, bool raw_values, int direction) {
  const auto call = [](TileParams& block, int32_t* heap) {
    return Call(Operation::kDefocus, block, heap, ChosenRoutines());
  };
  return {BlockOf(width, direction), call, BlurredFlatGround(width, direction), raw_values, 0};
}

}  // namespace kelvo::host
