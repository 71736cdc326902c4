// The binary layout of the block, checked by the compiler.
#include <cstddef>

#include "kelvo/kelvo.h"

#define KELVO_AT(field, offset) static_assert(offsetof(TileParams, field) == (offset))

static_assert(sizeof(TileParams) == 1004);
static_assert(sizeof(float) == 4);
KELVO_AT(StructureSize, 0);
KELVO_AT(BlurSpec, 4);
KELVO_AT(RemoveNoise, 16);
KELVO_AT(Accuracy, 28);
KELVO_AT(WorkHeap, 32);
KELVO_AT(Message, 36);
KELVO_AT(ImageWidth, 292);
KELVO_AT(ImageHeight, 296);
KELVO_AT(TileTop, 300);
KELVO_AT(TileLeft, 304);
KELVO_AT(BlurWidthVotes, 312);
KELVO_AT(DetectedBlurWidth, 396);
KELVO_AT(JPGColumnPhaseSums, 400);
KELVO_AT(JPGRowPhaseSums, 432);
KELVO_AT(JPGTileCount, 464);
KELVO_AT(JPGHorizontalOffset, 472);
KELVO_AT(JPGVerticalOffset, 476);
KELVO_AT(JPGCompression, 480);
KELVO_AT(SmoothedBlurWidthVotes, 492);
KELVO_AT(ShortcutMode, 880);
KELVO_AT(RefineCount, 884);
KELVO_AT(ScaleShift, 888);
KELVO_AT(Pass, 892);
KELVO_AT(HalfStep, 916);
KELVO_AT(NoiseFloor, 920);
KELVO_AT(JPGLevel, 924);
KELVO_AT(CurveIndex, 928);
KELVO_AT(ModelFlags, 936);
KELVO_AT(IterationCount, 940);
KELVO_AT(ExtraIterations, 944);
KELVO_AT(StepDivisor, 948);
KELVO_AT(Step, 964);
KELVO_AT(Iteration, 968);
KELVO_AT(Strength, 972);
KELVO_AT(GradientScale, 976);
KELVO_AT(GainA, 988);
KELVO_AT(GainB, 992);
KELVO_AT(MotionState, 996);
KELVO_AT(RefineIndex, 1000);

#undef KELVO_AT
