#include "members.h"

#include <algorithm>
#include <iostream>
#include <map>
#include <nlohmann/json.hpp>

#include "api/orientation.h"
#include "members_text.h"
#include "motion/line.h"
#include "motion/step_model.h"
#include "round/family.h"
#include "stages/schedule.h"

namespace kelvo::host {
namespace {

using Json = nlohmann::ordered_json;

// Rows from the top down, as people read a picture.
using CellKey = std::pair<int, int>;  // row down, column
CellKey KeyOf(int cell) {
  const CellStep step = StepOver(cell);
  return {step.row, step.column};
}

Json CellAt(CellKey key) {
  return {{"column", key.second}, {"up", -key.first}};
}

Json CellsWith(const char* name, const std::map<CellKey, int>& numbers) {
  Json cells = Json::array();
  for (const auto& [key, number] : numbers) {
    cells.push_back(CellAt(key));
    cells.back()[name] = number;
  }
  return cells;
}

// The weights as they run. `total` is their sum in units; 0: the unit is the weight of one in the finest partial sum.
Json DescribeSum(const Stencil& stencil, int total, const char* unit) {
  int shift = 0;
  for (const PartialSum sum : stencil.sums) shift = std::max<int>(shift, sum.shift);
  std::map<CellKey, int> weights;
  int sum_of_weights = 0;
  const int16_t* cell = stencil.cells.data();
  for (const PartialSum sum : stencil.sums)
    for (const int16_t* end = cell + sum.count; cell != end; ++cell) {
      weights[KeyOf(*cell)] += 1 << (shift - sum.shift);
      sum_of_weights += 1 << (shift - sum.shift);
    }
  for (; sum_of_weights < total; sum_of_weights *= 2, ++shift)
    for (auto& [key, weight] : weights) weight *= 2;
  return {{"unit", unit},
          {"total", sum_of_weights},
          {"shift", shift},
          {"normaliser", stencil.normaliser == 0 ? Json() : Json(stencil.normaliser)},
          {"cells", CellsWith("weight", weights)}};
}

Json DescribeTaps(const OperatorTaps& taps) {
  constexpr const char* kParts[] = {"v", "h", "2h"};
  Json list = Json::array();
  for (int i = 0; i < taps.count; ++i) {
    const OperatorTap& tap = taps.taps[static_cast<size_t>(i)];
    list.push_back({{"column", tap.column},
                    {"up", tap.up},
                    {"sign", tap.sign},
                    {"of_step", kParts[static_cast<int>(tap.base)]},
                    {"share", tap.share}});
  }
  return list;
}

Json DescribeResponse(const StepModel& model) {
  std::map<CellKey, int> amounts;
  const auto add = [&](const StepSide& side, int sign) {
    for (size_t i = 0; i < static_cast<size_t>(side.count); ++i) amounts[KeyOf(side.cells[i])] = sign * side.amounts[i];
  };
  add(model.rising, 1);
  add(model.falling, -1);
  return {{"largest", std::max(model.rising.amounts[0], model.falling.amounts[0])},
          {"rising_pixel", CellAt(KeyOf(model.rising.pixel))},
          {"falling_pixel", CellAt(KeyOf(model.falling.pixel))},
          {"cells", CellsWith("amount", amounts)}};
}

Json DescribeOperator(const MotionMember& member, StepKind kind, int pass) {
  constexpr const char* kNames[] = {"unit", "span", "pair", "tent"};
  const StepOperator step_operator =
      kind == StepKind::kFine ? FineOperator(member.width) : CoarseOperator(member.width);
  const StepModel& model = StepModelOf(kind, member);
  return {{"pass", pass},
          {"name", kNames[static_cast<int>(step_operator)]},
          {"taps", DescribeTaps(model.taps)},
          {"response", DescribeResponse(model)}};
}

Json DescribeOperators(const MotionMember& member) {
  Json operators = Json::array();
  if (member.passes == 2) operators.push_back(DescribeOperator(member, StepKind::kCoarse, 1));
  operators.push_back(DescribeOperator(member, StepKind::kFine, member.passes));
  return operators;
}

Json RefinementsOf(TileParams& params, int iterations) {
  Json refinements = Json::array();
  for (params.Iteration = 1; params.Iteration <= iterations; ++params.Iteration)
    refinements.push_back(std::max(0, RefineCount(params)));
  return refinements;
}

Json DescribeSchedule(int width, int direction, int passes) {
  Json schedule = Json::array();
  for (int accuracy = -2; accuracy <= 2; ++accuracy) {
    TileParams params{};
    params.BlurSpec = static_cast<uint32_t>(width) | static_cast<uint32_t>(direction) << 8;
    params.Accuracy = accuracy;
    SetUpSchedule(params);
    // Not braced lists: of one element, compilers take them for the element or for an array.
    Json iterations = Json::array(), refinements = Json::array();
    for (int pass = 1; pass <= passes; ++pass) {
      const int count = pass == 1 ? params.IterationCount : params.ExtraIterations;
      iterations.push_back(count);
      refinements.push_back(RefinementsOf(params, count));
    }
    schedule.push_back({{"accuracy", accuracy}, {"iterations", iterations}, {"refinements", refinements}});
  }
  return schedule;
}

constexpr int SquareOf(int margin) {
  return KELVO_CORE_SIZE + 2 * margin;
}

Json DescribeMotion(int width, int direction) {
  constexpr const char* kTurns[] = {"not at all", "reflected at the anti-diagonal", "a quarter clockwise",
                                    "mirrored left to right"};
  const FoldedDirection folded = FoldDirection(direction);
  const int bucket = BucketOf(folded.degrees);
  const MotionMember& member = MotionMemberOf(width, bucket);
  const auto line = [](const Stencil& stencil, const motion::LineGrid& drawn) {
    return DescribeSum(stencil, motion::TotalOf(drawn), "eighth of a column");
  };
  const Json smoother = member.extra_margin == 0
                            ? Json()
                            : DescribeSum(ObservedLineSmoother(member),
                                          motion::TotalOf(motion::DrawObservedSmoother(member.angle)), "sixteenth");
  return {{"width", width},
          {"direction", direction},
          {"folded", folded.degrees},
          {"turned", kTurns[static_cast<int>(folded.fold)]},
          {"bucket", bucket},
          {"angle", member.angle},
          {"passes", member.passes},
          {"scale_shift", member.scale_shift},
          {"margin", member.margin},
          {"extra_margin", member.extra_margin},
          {"final_margin", member.final_margin},
          {"sweep_size", SquareOf(member.final_margin)},
          {"line_minimum_size", SquareOf(member.line_min_margin)},
          {"reblur_size", SquareOf(member.blur_margin)},
          {"bare_line", line(BareLine(member), motion::DrawBareLine(width, member.angle))},
          {"model_line", line(ModelLine(member), motion::DrawModelLine(member))},
          {"observed_smoother", smoother},
          {"operators", DescribeOperators(member)},
          {"schedule", DescribeSchedule(width, direction, member.passes)}};
}

Json DescribeRound(int width) {
  const RoundMember& member = MemberOf(width);
  return {{"width", width},
          {"passes", member.passes},
          {"scale_shift", member.scale_shift},
          {"margin", member.margin},
          {"extra_margin", member.extra_margin},
          {"final_margin", member.final_margin},
          {"shortcut", member.has_shortcut},
          {"blur_size", SquareOf(member.blur_margin)},
          {"floor_size", SquareOf(member.final_margin + 1)},
          {"floor_cells", FloorCells(width).size()},
          {"blur", DescribeSum(DiscBlur(width), 0, "least weight")},
          {"schedule", DescribeSchedule(width, 0, member.passes)}};
}

}  // namespace

Json DescribeMember(int width, int direction) {
  return direction == 0 ? DescribeRound(width) : DescribeMotion(width, direction);
}

void PrintMember(int width, int direction, bool as_json) {
  const Json member = DescribeMember(width, direction);
  std::cout << (as_json ? member.dump(2) + "\n" : MemberText(member));
}

}  // namespace kelvo::host
