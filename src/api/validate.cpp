#include "api/validate.h"

#include <initializer_list>

#include "stages/tile.h"

namespace kelvo {
namespace {

using Check = Verdict (*)(const TileParams&);

constexpr Verdict kPass{KELVO_OK, ""};

Verdict CheckNoise(const TileParams& params) {
  const bool valid = params.RemoveNoise >= -1 && params.RemoveNoise <= 3;
  return valid ? kPass : Verdict{KELVO_BAD_LEVEL, "Invalid RemoveNoise"};
}

Verdict CheckAccuracy(const TileParams& params) {
  const bool valid = params.Accuracy >= -2 && params.Accuracy <= 2;
  return valid ? kPass : Verdict{KELVO_BAD_LEVEL, "Invalid Accuracy"};
}

Verdict CheckWidth(const TileParams& params) {
  return BlurWidth(params) <= 20 ? kPass : Verdict{KELVO_BAD_BLUR, "Invalid Blur Width"};
}

Verdict CheckDirection(const TileParams& params) {
  const int direction = MotionDirection(params);
  return direction >= 0 && direction <= 359 ? kPass : Verdict{KELVO_BAD_BLUR, "Invalid Motion Blur Direction"};
}

Verdict FirstFailure(const TileParams& params, std::initializer_list<Check> checks) {
  for (const Check check : checks)
    if (const Verdict verdict = check(params); verdict.code != KELVO_OK) return verdict;
  return kPass;
}

}  // namespace

Verdict CheckSize(const TileParams& params) {
  return params.StructureSize == sizeof(TileParams) ? kPass : Verdict{KELVO_BAD_SIZE, "Invalid Structure Size"};
}

Verdict CheckDefocus(const TileParams& params) {
  return FirstFailure(params, {CheckSize, CheckWidth, CheckDirection});
}

Verdict CheckFocus(const TileParams& params) {
  return FirstFailure(params, {CheckSize, CheckNoise, CheckAccuracy, CheckWidth, CheckDirection});
}

Verdict CheckJpgDetection(const TileParams& params) {
  const auto valid = [](int32_t offset) { return offset >= 0 && offset <= 7; };
  if (valid(params.JPGHorizontalOffset) && valid(params.JPGVerticalOffset)) return kPass;
  return {KELVO_BAD_JPG_OFFSET, "Invalid JPGHorizontalOffset or JPGVerticalOffset"};
}

}  // namespace kelvo
