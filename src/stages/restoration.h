// The frame of a restoration that both families of blur fill: passes of iterations, each of blur, move, refine, apply.
//
// A family gives one object per pass, Stages:
//   static constexpr int kCodePlanes[]     the coded planes that its moves live in
//   void Blur(const Tile&) const           kEstimate -> kBlurred
//   void Move(const Tile&) const           searches every move of the pass, codes it in the low halves
//   void Apply(const Tile&) const          adds the decoded moves to kEstimate
#ifndef KELVO_STAGES_RESTORATION_H
#define KELVO_STAGES_RESTORATION_H

#include <algorithm>

#include "stages/copy.h"
#include "stages/schedule.h"
#include "stages/step_code.h"
#include "stages/tile.h"
#include "stages/weights.h"

namespace kelvo {

// Tries the current moves on top of the saved estimate, decides every move again and keeps only the step codes that
// come of it: the moves and the estimate leave as they came.
template <class Stages>
void Refine(const Tile& tile, const Stages& stages) {
  TileParams& params = tile.params();
  params.RefineCount = std::max(0, RefineCount(params));
  if (params.RefineCount == 0) return;

  const bool clear = params.RefineCount >= 4 || params.Iteration < 2;
  for (int plane : Stages::kCodePlanes) ResetCodes(tile, plane, clear ? CodeReset::kClear : CodeReset::kHalve);
  SaveEstimate(tile);
  params.Iteration += 1;  // coder and search are to see the next iteration
  for (params.RefineIndex = 1; params.RefineIndex <= params.RefineCount; ++params.RefineIndex) {
    stages.Apply(tile);
    stages.Blur(tile);
    stages.Move(tile);
    for (int plane : Stages::kCodePlanes) MergeHalves(tile, plane);
    RestoreEstimate(tile);
  }
  params.Iteration -= 1;
  for (int plane : Stages::kCodePlanes) DampCodes(tile, plane);
}

// Runs pass `pass` for `count` iterations; a count below 1 still sets the pass up. Iteration ends one past the count.
template <class Stages>
void RunPass(const Tile& tile, const Stages& stages, int pass, int scale_shift, int count) {
  TileParams& params = tile.params();
  SetUpPass(params, pass, scale_shift);
  BuildWeightTables(tile);
  for (params.Iteration = 1; params.Iteration <= count; ++params.Iteration) {
    SetUpIteration(params, params.Iteration);
    stages.Blur(tile);
    stages.Move(tile);
    Refine(tile, stages);
    stages.Apply(tile);
  }
}

}  // namespace kelvo

#endif  // KELVO_STAGES_RESTORATION_H
