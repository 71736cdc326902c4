// The stages of an iteration of motion blur: blur, floor, move, apply.
#ifndef KELVO_MOTION_ITERATION_H
#define KELVO_MOTION_ITERATION_H

#include "motion/family.h"
#include "motion/step_model.h"
#include "stages/tile.h"

namespace kelvo {

// The estimate blurred by the member's model; its products are signed with KELVO_VARIANT_SIGNED_MOTION.
//   reads  kEstimate, region blur_margin and the line's reach;  writes  kBlurred, region blur_margin
void BlurAlongLine(const Tile& tile, const MotionMember& member);

// The floor under every pixel: the least blurred value along the model's line. Once per run.
//   reads  kBlurred;  writes  kFloor, region line_min_margin
void FindLineFloor(const Tile& tile, const MotionMember& member);

// A pass of one operator at every cell of region final_margin: Stages of stages/restoration.h.
class StepPass {
 public:
  static constexpr int kCodePlanes[] = {kSteps};

  StepPass(const MotionMember& member, StepKind kind) : member_(member), kind_(kind) {}

  void Blur(const Tile& tile) const { BlurAlongLine(tile, member_); }
  void Move(const Tile& tile) const;
  void Apply(const Tile& tile) const;

 private:
  const MotionMember& member_;
  StepKind kind_;
};

}  // namespace kelvo

#endif  // KELVO_MOTION_ITERATION_H
