#include "motion/line_strips.h"

#include "motion/line.h"

namespace kelvo::KELVO_TARGET {
namespace {

template <int kIndex>
struct Line {
  static constexpr MotionMember kMember = motion::MemberAt(kIndex);
  static constexpr motion::LineBuilder kBuilder = motion::BareLineOf(kMember);
  static constexpr int kReach = motion::LastColumn(kMember.width, kMember.angle), kMostRows = 3, kApart = 0;
};

template <int... kIndex>
constexpr std::array<Strip, motion::kMembers> MakeStrips(std::integer_sequence<int, kIndex...>) {
  return {MakeStrip<Line<kIndex>, Line<kIndex>::kMember.width>()...};
}

constexpr auto kStrips = MakeStrips(std::make_integer_sequence<int, motion::kMembers>());

}  // namespace

Strip LineStrip(int index) {
  return kStrips.data()[index];
}

}  // namespace kelvo::KELVO_TARGET
