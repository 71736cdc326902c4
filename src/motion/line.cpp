#include "motion/line.h"

#include <utility>

namespace kelvo {
namespace {

using motion::CellsOf;
using motion::LineGrid;

using LineBuilder = StencilBuilder<256, 4>;

constexpr int FloorLog2(int value) {
  int log = 0;
  while (value >> (log + 1) != 0) ++log;
  return log;
}

// The weights as a stencil. Every bit of the weights is one partial sum of the cells that have it; the shifts leave the
// total between two and four times a weight of one, which uses 32 bits well, and the normaliser does the rest.
constexpr LineBuilder IntegerForm(const LineGrid& weights) {
  const motion::LineCells line = CellsOf(weights);
  const int log = FloorLog2(line.total), shift = line.total == 1 << log ? log : log - 1;
  LineBuilder builder;
  for (int bit = 3; bit >= 0; --bit) {
    bool open = false;
    for (size_t i = 0; i < static_cast<size_t>(line.count); ++i) {
      const motion::LineCell& cell = line.cells[i];
      assert(cell.weight < 16);
      if ((cell.weight >> bit & 1) == 0) continue;
      if (!open) builder.Open(shift - bit);
      open = true;
      builder.Add(-cell.up, cell.column);
    }
  }
  return builder.Normalise();
}

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

constexpr MotionMember MemberAt(int index) {
  return motion::MakeMember(motion::NameOf(index));
}

template <int index>
constexpr LineBuilder kBareLine = IntegerForm(motion::DrawBareLine(MemberAt(index).width, MemberAt(index).angle));
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

template <int... i>
constexpr std::array<MemberLines, sizeof...(i)> MakeLines(std::integer_sequence<int, i...>) {
  return {MemberLines{Unsigned(kBareLine<i>.View()), Unsigned(kModelLine<i>.View()),
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
