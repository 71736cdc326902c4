/* Every field of the block that the interface names, for code that walks them. C and C++. */
#ifndef KELVO_TESTS_SUPPORT_FIELD_NAMES_H
#define KELVO_TESTS_SUPPORT_FIELD_NAMES_H

#define KELVO_FIELD_NAMES(FIELD) \
  FIELD(StructureSize)           \
  FIELD(BlurSpec)                \
  FIELD(RemoveNoise)             \
  FIELD(Accuracy)                \
  FIELD(WorkHeap)                \
  FIELD(Message)                 \
  FIELD(ImageWidth)              \
  FIELD(ImageHeight)             \
  FIELD(TileTop)                 \
  FIELD(TileLeft)                \
  FIELD(BlurWidthVotes)          \
  FIELD(DetectedBlurWidth)       \
  FIELD(JPGColumnPhaseSums)      \
  FIELD(JPGRowPhaseSums)         \
  FIELD(JPGTileCount)            \
  FIELD(JPGHorizontalOffset)     \
  FIELD(JPGVerticalOffset)       \
  FIELD(JPGCompression)          \
  FIELD(SmoothedBlurWidthVotes)  \
  FIELD(ShortcutMode)            \
  FIELD(RefineCount)             \
  FIELD(ScaleShift)              \
  FIELD(Pass)                    \
  FIELD(HalfStep)                \
  FIELD(NoiseFloor)              \
  FIELD(JPGLevel)                \
  FIELD(CurveIndex)              \
  FIELD(ModelFlags)              \
  FIELD(IterationCount)          \
  FIELD(ExtraIterations)         \
  FIELD(StepDivisor)             \
  FIELD(Step)                    \
  FIELD(Iteration)               \
  FIELD(Strength)                \
  FIELD(GradientScale)           \
  FIELD(GainA)                   \
  FIELD(GainB)                   \
  FIELD(MotionState)             \
  FIELD(RefineIndex)

#endif /* KELVO_TESTS_SUPPORT_FIELD_NAMES_H */
