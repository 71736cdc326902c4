#include "motion/line.h"

#include <utility>

#include "motion/line_strips.h"

namespace kelvo {
namespace {

using motion::BareLineOf;
using motion::CellsOf;
using motion::IntegerForm;
using motion::LineBuilder;
using motion::LineGrid;
using motion::MemberAt;

struct CellList {
  std::array<int16_t, 160> cells{};
  size_t count = 0;
};

constexpr CellList DistancesOf(const LineGrid& weights) {
  const motion::LineCells line = CellsOf(weights);
  CellList list;
  for (; list.count < static_cast<size_t>(line.count); ++list.count)
    list.cells[list.count] = static_cast<int16_t>(CellsTo(-line.cells[list.count].up, line.cells[list.count].column));
  return list;
}

template <int index>
constexpr LineBuilder kBareLine = BareLineOf(MemberAt(index));
template <int index>
constexpr LineBuilder kModelLine = IntegerForm(motion::DrawModelLine(MemberAt(index)));
template <int index>
constexpr CellList kModelCells = DistancesOf(motion::DrawModelLine(MemberAt(index)));
template <int bucket>
constexpr LineBuilder kObserved = IntegerForm(motion::DrawObservedSmoother(5 * bucket));

constexpr Stencil Unsigned(Stencil stencil) {
  stencil.product = Product::kUnsigned;
  return stencil;
}

struct MemberLines {
  Stencil bare, model;
  std::span<const int16_t> cells;
};

template <int index>
constexpr Stencil MakeBareLine() {
  Stencil stencil = Unsigned(kBareLine<index>.View());
  stencil.line = index + 1;
  return stencil;
}

template <int index>
constexpr Stencil MakeModelLine() {
  return MemberAt(index).extra_margin == 0 ? MakeBareLine<index>() : Unsigned(kModelLine<index>.View());
}

template <int... i>
constexpr std::array<MemberLines, sizeof...(i)> MakeLines(std::integer_sequence<int, i...>) {
  return {MemberLines{MakeBareLine<i>(), MakeModelLine<i>(),
                      std::span<const int16_t>(kModelCells<i>.cells.data(), kModelCells<i>.count)}...};
}

template <int... bucket>
constexpr std::array<Stencil, sizeof...(bucket)> MakeSmoothers(std::integer_sequence<int, bucket...>) {
  return {Unsigned(kObserved<bucket>.View())...};
}

constexpr auto kLines = MakeLines(std::make_integer_sequence<int, motion::kMembers>());
constexpr auto kSmoothers = MakeSmoothers(std::make_integer_sequence<int, kBuckets>());

const MemberLines& LinesOf(const MotionMember& member) {
  return kLines[static_cast<size_t>(motion::IndexOf(member.width, BucketOf(member.angle)))];
}

}  // namespace

const Stencil& BareLine(const MotionMember& member) {
  return LinesOf(member).bare;
}

const Stencil& ModelLine(const MotionMember& member) {
  return LinesOf(member).model;
}

std::span<const int16_t> ModelLineCells(const MotionMember& member) {
  return LinesOf(member).cells;
}

const Stencil& ObservedLineSmoother(const MotionMember& member) {
  return kSmoothers[static_cast<size_t>(BucketOf(member.angle))];
}

}  // namespace kelvo
