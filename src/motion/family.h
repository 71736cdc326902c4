// The motion-blur family: one row of constants per member. Start here for any member.
//
// A member is a width 1..20 and an angle: the direction of the blur, folded to 0..45 degrees and rounded to 5 (widths
// 1..4: to 0, 15, 30, 45). In the tile as the members see it the line runs at that angle from the row's direction
// towards the row above. All constants follow from the line's half length.
#ifndef KELVO_MOTION_FAMILY_H
#define KELVO_MOTION_FAMILY_H

#include "stages/stencils/disc.h"
#include "stages/tile.h"

namespace kelvo {

inline constexpr int kBuckets = 10;  // of 5 degrees each: bucket b is nominally 5 b degrees

struct MotionMember {
  int width;            // 1..20; the line is width + 1 pixels long
  int angle;            // degrees
  int scale_shift;      // ScaleShift
  int passes;           // 1, or 2: the coarse operator, then the fine one
  int operator_reach;   // columns that the widest operator reaches
  int extra_margin;     // region of the pre-filter and of staging beyond `margin`; 0: nothing is pre-smoothed
  int final_margin;     // region of moves and of the extrapolation
  int line_min_margin;  // region of the floors
  int blur_margin;      // region of the blurred estimate
  int margin;           // region of staging
};

// The member of width 1..20 and bucket 0..9. Buckets of widths 1..4 share members.
const MotionMember& MotionMemberOf(int width, int bucket);

// The bucket of a folded direction 0..45 degrees.
constexpr int BucketOf(int degrees) {
  return (degrees + 2) / 5;
}

// The rest tells the rules, at compile time.
namespace motion {

// Members by index, widths in turn, angles rising.
inline constexpr int kSharingWidths = 4;  // widths 1..4 have four members each
inline constexpr int kMembers = 4 * kSharingWidths + kBuckets * (kMaxWidth - kSharingWidths);

constexpr int IndexOf(int width, int bucket) {
  constexpr int kShared[kBuckets] = {0, 0, 1, 1, 1, 2, 2, 2, 3, 3};
  return width <= kSharingWidths ? 4 * (width - 1) + kShared[bucket]
                                 : 4 * kSharingWidths + kBuckets * (width - kSharingWidths - 1) + bucket;
}

struct Name {
  int width, angle;
};
constexpr Name NameOf(int index) {
  if (index < 4 * kSharingWidths) return {index / 4 + 1, index % 4 * 15};
  const int rest = index - 4 * kSharingWidths;
  return {kSharingWidths + 1 + rest / kBuckets, rest % kBuckets * 5};
}

// Of 0, 5 .. 45 degrees. No rounding or comparison of the rules comes nearer than 4e-4 to its boundary.
inline constexpr double kCosine[kBuckets] = {1.0,
                                             0.99619469809174553,
                                             0.98480775301220806,
                                             0.96592582628906829,
                                             0.93969262078590838,
                                             0.90630778703664996,
                                             0.86602540378443865,
                                             0.81915204428899178,
                                             0.76604444311897804,
                                             0.70710678118654752};
inline constexpr double kTangent[kBuckets] = {0.0,
                                              0.087488663525924005,
                                              0.17632698070846498,
                                              0.26794919243112271,
                                              0.36397023426620236,
                                              0.46630765815499859,
                                              0.57735026918962576,
                                              0.70020753820970978,
                                              0.83909963117728002,
                                              1.0};

constexpr double Cosine(int angle) {
  return kCosine[angle / 5];
}
constexpr double Tangent(int angle) {
  return kTangent[angle / 5];
}

constexpr int Floor(double x) {
  const int whole = static_cast<int>(x);
  return whole > x ? whole - 1 : whole;
}
constexpr int Round(double x) {
  return Floor(x + 0.5);
}

// Half the line's length in columns: it covers width + 1 pixels along its angle.
constexpr double HalfLength(int width, int angle) {
  return (width + 1) / 2.0 * Cosine(angle);
}

// The last column that the line touches.
constexpr int LastColumn(int width, int angle) {
  const double end = HalfLength(width, angle) + 0.5;
  return Floor(end) == end ? Floor(end) - 1 : Floor(end);
}

// The bands of widths 15 and 16 are wider at small angles; 19 has a narrow one at 45 degrees. Intended.
constexpr int ExtraMargin(int width, int angle) {
  if (width <= 10) return 0;
  if (width <= 14) return 1;
  if (width == 15) return angle <= 10 ? 2 : 1;
  if (width == 16) return angle <= 25 ? 2 : 1;
  return width == 19 && angle == 45 ? 1 : 2;
}

// A stage reads as far as its operator reaches into what the stage before it wrote.
constexpr MotionMember MakeMember(Name name) {
  const int last = LastColumn(name.width, name.angle);
  const int reach = name.width <= 7 ? 1 : name.width <= 11 ? 2 : 3;
  const int extra = ExtraMargin(name.width, name.angle);
  MotionMember member{};
  member.width = name.width;
  member.angle = name.angle;
  member.scale_shift = name.width >= 14 ? 1 : 0;
  member.passes = name.width >= 4 ? 2 : 1;
  member.operator_reach = reach;
  member.extra_margin = extra;
  member.final_margin = last + 1;
  member.line_min_margin = last + 1 + reach;
  member.blur_margin = last + 1 + reach + 1 + last + extra;
  member.margin = 3 * last + 2 + reach + extra;
  return member;
}

// By index 0..kMembers - 1.
constexpr MotionMember MemberAt(int index) {
  return MakeMember(NameOf(index));
}

}  // namespace motion

}  // namespace kelvo

#endif  // KELVO_MOTION_FAMILY_H
