/* The header in strict C89: every named field at its offset, and a call through the C interface. */
#include <stddef.h>
#include <stdio.h>

#include "kelvo/kelvo.h"

static const struct {
  const char* name;
  size_t offset, expected;
} fields[] = {
#define KELVO_FIELD(name, expected) \
  { #name, offsetof(TileParams, name), expected }
    KELVO_FIELD(StructureSize, 0),
    KELVO_FIELD(BlurSpec, 4),
    KELVO_FIELD(RemoveNoise, 16),
    KELVO_FIELD(Accuracy, 28),
    KELVO_FIELD(WorkHeap, 32),
    KELVO_FIELD(Message, 36),
    KELVO_FIELD(ImageWidth, 292),
    KELVO_FIELD(ImageHeight, 296),
    KELVO_FIELD(TileTop, 300),
    KELVO_FIELD(TileLeft, 304),
    KELVO_FIELD(BlurWidthVotes, 312),
    KELVO_FIELD(DetectedBlurWidth, 396),
    KELVO_FIELD(JPGColumnPhaseSums, 400),
    KELVO_FIELD(JPGRowPhaseSums, 432),
    KELVO_FIELD(JPGTileCount, 464),
    KELVO_FIELD(JPGHorizontalOffset, 472),
    KELVO_FIELD(JPGVerticalOffset, 476),
    KELVO_FIELD(JPGCompression, 480),
    KELVO_FIELD(SmoothedBlurWidthVotes, 492),
    KELVO_FIELD(ShortcutMode, 880),
    KELVO_FIELD(RefineCount, 884),
    KELVO_FIELD(ScaleShift, 888),
    KELVO_FIELD(Pass, 892),
    KELVO_FIELD(HalfStep, 916),
    KELVO_FIELD(NoiseFloor, 920),
    KELVO_FIELD(JPGLevel, 924),
    KELVO_FIELD(CurveIndex, 928),
    KELVO_FIELD(ModelFlags, 936),
    KELVO_FIELD(IterationCount, 940),
    KELVO_FIELD(ExtraIterations, 944),
    KELVO_FIELD(StepDivisor, 948),
    KELVO_FIELD(Step, 964),
    KELVO_FIELD(Iteration, 968),
    KELVO_FIELD(Strength, 972),
    KELVO_FIELD(GradientScale, 976),
    KELVO_FIELD(GainA, 988),
    KELVO_FIELD(GainB, 992),
    KELVO_FIELD(MotionState, 996),
    KELVO_FIELD(RefineIndex, 1000)
#undef KELVO_FIELD
};

int main(void) {
  TileParams params = {0};
  size_t i;
  int wrong = 0;
  for (i = 0; i < sizeof fields / sizeof fields[0]; ++i) {
    if (fields[i].offset == fields[i].expected) continue;
    printf("%s stands at %lu, not %lu\n", fields[i].name, (unsigned long)fields[i].offset,
           (unsigned long)fields[i].expected);
    ++wrong;
  }
  params.StructureSize = sizeof params;
  if (sizeof params != 1004 || KVDLL_GetHeapSize() != KELVO_HEAP_WORDS || KVDLL_GetVersionNumber() != 5000) ++wrong;
  params.BlurSpec = 21;
  if (kelvo_defocus_tile(&params, 0) != KELVO_BAD_BLUR || params.Message[8] != 'B') ++wrong;
  return wrong != 0;
}
