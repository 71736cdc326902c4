#include "motion/step_model.h"

#include <cassert>
#include <utility>

#include "motion/line.h"
#include "stages/move_sweep.h"

namespace kelvo {
namespace {

constexpr int Abs(int value) {
  return value < 0 ? -value : value;
}

// In halves of a step: what share of it a tap moves.
constexpr int HalvesOf(const OperatorTap& tap) {
  return tap.base == TapBase::kHalf ? 1 : 2;
}

// Numbers by cell around a pixel, as far out as a line and an operator reach.
struct Response {
  static constexpr int kReach = motion::kLineReach + 3;
  motion::Grid<int64_t, kReach> amounts;
  int64_t unit = 65520;  // the amount of one
  int columns = 0, rows = 0;
};

// The blur's answer to a step of one, per cell. The model's weights are those of the drawn line.
constexpr Response Respond(const OperatorTaps& taps, const motion::LineCells& line) {
  Response response;
  response.columns = line.columns + 3;
  response.rows = line.rows + 3;
  for (int i = 0; i < taps.count; ++i) {
    const OperatorTap& tap = taps.taps[static_cast<size_t>(i)];
    const int64_t part = int64_t{tap.sign} * HalvesOf(tap) * tap.share;
    for (size_t k = 0; k < static_cast<size_t>(line.count); ++k)
      response.amounts.At(tap.column + line.cells[k].column, tap.up + line.cells[k].up) += part * line.cells[k].weight;
  }
  response.unit = int64_t{2} * 65536 * line.total;
  return response;
}

// Intended: width 1 at 45 degrees has amounts of its own.
constexpr Response SteepNarrowResponse() {
  Response response;
  response.columns = response.rows = 2;
  response.amounts.At(0, 0) = 33408;
  response.amounts.At(-1, -1) = -33408;
  response.amounts.At(1, 1) = 10692;
  response.amounts.At(-2, -2) = -10692;
  return response;
}

constexpr void Insert(StepSide& side, int cell, int amount) {
  assert(amount <= kGreatestAmount);
  auto at = static_cast<size_t>(side.count++);
  for (; at > 0 && side.amounts[at - 1] < amount; --at) {
    side.amounts[at] = side.amounts[at - 1];
    side.cells[at] = side.cells[at - 1];
  }
  side.amounts[at] = amount;
  side.cells[at] = static_cast<int16_t>(cell);
  side.total_amount += amount;
}

constexpr void Pad(StepSide& side) {
  side.padded = static_cast<int16_t>((side.count + StepSide::kLanes - 1) / StepSide::kLanes * StepSide::kLanes);
}

// In 65520ths. Cells below a sixteenth of the largest amount are left out: they are the noise that rounding the line to eighths
// leaves along its inside, nearly half of the cells and a twentieth of the response.
constexpr void SetSides(StepModel& model, const Response& response) {
  struct {
    int cell, amount;
  } found[512]{};
  size_t count = 0;
  int largest = 0;
  for (int up = response.rows; up >= -response.rows; --up)
    for (int column = -response.columns; column <= response.columns; ++column) {
      const int64_t amount = response.amounts.At(column, up);
      if (amount == 0) continue;
      found[count] = {CellsTo(-up, column), static_cast<int>(amount * 65520 / response.unit)};
      if (Abs(found[count].amount) > largest) largest = Abs(found[count].amount);
      ++count;
    }
  for (size_t i = 0; i < count; ++i) {
    const int amount = found[i].amount;
    if (amount == 0 || 16 * Abs(amount) < largest) continue;
    Insert(amount > 0 ? model.rising : model.falling, found[i].cell, Abs(amount));
  }
  Pad(model.rising);
  Pad(model.falling);
}

constexpr void SetReach(StepModel& model) {
  for (size_t i = 0; i < static_cast<size_t>(model.taps.count); ++i)
    for (size_t k = 0; k < static_cast<size_t>(model.moved[i].count); ++k)
      model.reach = Farther(model.reach, model.moved[i].neighbours[k]);
  for (const StepSide* side : {&model.rising, &model.falling})
    for (size_t i = 0; i < static_cast<size_t>(side->count); ++i) model.reach = Farther(model.reach, side->cells[i]);
}

// The moved cell that stands for a side: the one with the largest part of the step. It is always one alone.
constexpr int16_t MostMoved(const OperatorTaps& taps, int sign) {
  int64_t most = 0;
  int16_t cell = 0;
  for (int i = 0; i < taps.count; ++i) {
    const OperatorTap& tap = taps.taps[static_cast<size_t>(i)];
    const int64_t part = int64_t{HalvesOf(tap)} * tap.share;
    if (tap.sign != sign || part <= most) continue;
    most = part;
    cell = tap.cell;
  }
  return cell;
}

constexpr StepModel MakeModel(StepKind kind, int index) {
  const MotionMember member = motion::MemberAt(index);
  const StepOperator step_operator =
      kind == StepKind::kFine ? FineOperator(member.width) : CoarseOperator(member.width);
  StepModel model{};
  static_cast<StepShape&>(model) = motion::MakeShape(step_operator, member.angle);
  model.shape = static_cast<int16_t>(motion::ShapeNumber(step_operator, member.angle));
  SetSides(model, member.width == 1 && member.angle == 45
                      ? SteepNarrowResponse()
                      : Respond(model.taps, motion::CellsOf(motion::DrawModelLine(member))));
  assert(step_operator == StepOperator::kUnit || model.rising.amounts == model.falling.amounts);
  SetReach(model);
  model.rising.pixel = MostMoved(model.taps, 1);
  model.falling.pixel = MostMoved(model.taps, -1);
  return model;
}

template <StepKind kind, int index>
constexpr StepModel kModel = MakeModel(kind, index);

template <StepKind kind, int first, int... i>
constexpr std::array<const StepModel*, sizeof...(i)> ModelTable(std::integer_sequence<int, i...>) {
  return {&kModel<kind, first + i>...};
}

constexpr int kFirstCoarse = motion::IndexOf(4, 0);
constexpr auto kFine = ModelTable<StepKind::kFine, 0>(std::make_integer_sequence<int, motion::kMembers>());
constexpr auto kCoarse =
    ModelTable<StepKind::kCoarse, kFirstCoarse>(std::make_integer_sequence<int, motion::kMembers - kFirstCoarse>());

}  // namespace

const StepModel& StepModelOf(StepKind kind, const MotionMember& member) {
  const int index = motion::IndexOf(member.width, BucketOf(member.angle));
  return kind == StepKind::kFine ? *kFine[static_cast<size_t>(index)]
                                 : *kCoarse[static_cast<size_t>(index - kFirstCoarse)];
}

}  // namespace kelvo
