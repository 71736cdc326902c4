#include "motion/family.h"

#include <array>

namespace kelvo {
namespace {

constexpr std::array<MotionMember, motion::kMembers> MakeMembers() {
  std::array<MotionMember, motion::kMembers> members{};
  for (int i = 0; i < motion::kMembers; ++i) members[static_cast<size_t>(i)] = motion::MemberAt(i);
  return members;
}

constexpr std::array<MotionMember, motion::kMembers> kMembers = MakeMembers();

}  // namespace

const MotionMember& MotionMemberOf(int width, int bucket) {
  return kMembers[static_cast<size_t>(motion::IndexOf(width, bucket))];
}

}  // namespace kelvo
