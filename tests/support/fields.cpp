#include "support/fields.h"

#include <cstddef>
#include <map>
#include <stdexcept>

namespace kelvo::test {

#define KELVO_FIELD(name) \
  { #name, offsetof(TileParams, name) }

int32_t* FieldWord(TileParams& params, const std::string& name) {
  static const std::map<std::string, size_t> offsets = {
      KELVO_FIELD(StructureSize),
      KELVO_FIELD(BlurSpec),
      KELVO_FIELD(RemoveNoise),
      KELVO_FIELD(Accuracy),
      KELVO_FIELD(ImageWidth),
      KELVO_FIELD(ImageHeight),
      KELVO_FIELD(TileTop),
      KELVO_FIELD(TileLeft),
      KELVO_FIELD(BlurWidthVotes),
      KELVO_FIELD(DetectedBlurWidth),
      KELVO_FIELD(JPGColumnPhaseSums),
      KELVO_FIELD(JPGRowPhaseSums),
      KELVO_FIELD(JPGTileCount),
      KELVO_FIELD(JPGHorizontalOffset),
      KELVO_FIELD(JPGVerticalOffset),
      KELVO_FIELD(JPGCompression),
      KELVO_FIELD(SmoothedBlurWidthVotes),
      KELVO_FIELD(ShortcutMode),
      KELVO_FIELD(RefineCount),
      KELVO_FIELD(ScaleShift),
      KELVO_FIELD(Pass),
      KELVO_FIELD(HalfStep),
      KELVO_FIELD(NoiseFloor),
      KELVO_FIELD(JPGLevel),
      KELVO_FIELD(CurveIndex),
      KELVO_FIELD(ModelFlags),
      KELVO_FIELD(IterationCount),
      KELVO_FIELD(ExtraIterations),
      KELVO_FIELD(StepDivisor),
      KELVO_FIELD(Step),
      KELVO_FIELD(Iteration),
      KELVO_FIELD(Strength),
      KELVO_FIELD(GradientScale),
      KELVO_FIELD(GainA),
      KELVO_FIELD(GainB),
      KELVO_FIELD(MotionState),
      KELVO_FIELD(RefineIndex),
  };
  const auto found = offsets.find(name);
  if (found == offsets.end()) throw std::invalid_argument("unknown field: " + name);
  return reinterpret_cast<int32_t*>(reinterpret_cast<char*>(&params) + found->second);
}

#undef KELVO_FIELD

}  // namespace kelvo::test
