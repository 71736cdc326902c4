// The rules of the enlargement: what becomes of a corner of a block, the 2 x 2 output pixels of one source pixel.
//
// Each rule is written once, for the north-west corner. It looks at the block's source pixel e and at the source pixels
// around it, and the compass says where those lie; turned, the same rule serves the other three corners.
//
//                 NNW  NN  NNE            corner   the output pixel that the rule is about
//            WWN   a   b   c              beside   its neighbour to the east, in the same block
//            WW    d   e   f              below    its neighbour to the south, in the same block
//            WWS   g   h   i              outside  its neighbour to the north-west, in the block of a
//
// Every rule comes in a bright and a dark form, which never hold both. The dark one is the bright one seen in the
// negative: ~x reverses the order of all values, so one form with its comparisons made on `x ^ negative` is both.
// Averages are formed on the true values. There are no branches but around what holds nowhere; a condition is a mask,
// all bits set or none.
//
// `Kind` is what a rule works on, one block or many side by side. It gives the types Cell and Value; Load from cells;
// Above, Least, Most, Pick of values and masks; Any, which may say yes too often; and averages: Half, MeanOfFour, and
// by their weights OneTwoOne, OneThree, ThreeFive, FiveThree, TwoSix.
#ifndef KELVO_ENLARGE_RULES_H
#define KELVO_ENLARGE_RULES_H

#include <cstdint>

#include "stages/target.h"

namespace kelvo {

// Distances in cells from a source pixel to its neighbours in the north and in the west, as the turned rule sees them.
// South and east lie opposite.
struct Compass {
  int north;
  int west;
};

// The four corners of a block; two opposite ones add up to 3.
enum Corner : int { kNorthWest, kNorthEast, kSouthWest, kSouthEast, kCorners };

// Where north and west of a rule about `corner` lie in rows of `stride` cells.
constexpr Compass CompassOf(Corner corner, int stride) {
  const Compass compasses[] = {{-stride, -1}, {1, -stride}, {-1, stride}, {stride, 1}};
  return compasses[corner];
}

namespace KELVO_TARGET {

// The source pixels around a block, as the comparisons see them.
template <class Kind>
struct View {
  using Value = typename Kind::Value;
  const typename Kind::Cell* e;
  Compass compass;
  Value negative;

  Value True(int norths, int wests) const { return Kind::Load(e + norths * compass.north + wests * compass.west); }
  Value At(int norths, int wests) const { return True(norths, wests) ^ negative; }
  Value Turned(Value value) const { return value ^ negative; }  // from seen to true and back
};

// Rounds the corner of a bright or dark shape towards the nearer of b and d, unless e stands alone: an isolated peak
// keeps its block. Changes corner, beside and below.
template <class Kind, class Value = typename Kind::Value>
inline void ShapeCorner(const typename Kind::Cell* e_cell, Compass compass, Value& corner, Value& beside,
                        Value& below) {
  const auto above = Kind::Above;
  View<Kind> view{e_cell, compass, Value{}};
  view.negative = above(view.True(1, 1), view.True(0, 0));
  const Value a = view.At(1, 1), b = view.At(1, 0), c = view.At(1, -1), d = view.At(0, 1), e = view.At(0, 0),
              f = view.At(0, -1), g = view.At(-1, 1), h = view.At(-1, 0);
  // Halfway between e and the least of the pixels that it stands out from.
  const auto halfway = [&](Value least) { return view.Turned(Kind::Half(view.Turned(least), view.True(0, 0))); };

  const Value arms = Kind::Most(b, d), least = Kind::Least(a, Kind::Least(b, d)), most = Kind::Most(a, arms);
  const Value stands_out = above(e, most);
  if (!Kind::Any(stands_out)) return;
  const Value most_north = Kind::Most(c, f), most_west = Kind::Most(g, h);
  const Value arc_north = above(e, most_north), arc_west = above(e, most_west);
  const Value on_diagonal = above(c, Kind::Most(b, f)) | above(g, Kind::Most(d, h));
  const Value soften = stands_out & (arc_north | arc_west) & on_diagonal;
  const Value alone =
      (arc_north & above(halfway(Kind::Least(least, Kind::Least(c, f))), Kind::Most(most, most_north))) |
      (arc_west & above(halfway(Kind::Least(least, Kind::Least(g, h))), Kind::Most(most, most_west)));
  const Value threshold = halfway(least);
  const Value shape = stands_out & ~(soften | alone | above(a, threshold));

  const Value nearer = view.Turned(arms), was = corner;
  const Value c_joins = above(c, threshold), g_joins = above(g, threshold);
  const Value shaped =
      Kind::Pick(c_joins & g_joins, Kind::Half(was, nearer),
                 Kind::Pick(c_joins | g_joins, Kind::FiveThree(nearer, was), Kind::ThreeFive(nearer, was)));
  const Value softened = Kind::OneTwoOne(view.True(1, 0), was, view.True(0, 1));
  corner = Kind::Pick(soften, softened, Kind::Pick(shape, shaped, was));
  beside = Kind::Pick(shape & g_joins & ~c_joins, Kind::TwoSix(nearer, beside), beside);
  below = Kind::Pick(shape & c_joins & ~g_joins, Kind::TwoSix(nearer, below), below);
}

// What two opposite corners at a vertex, where four blocks meet, become.
template <class Value>
struct Change {
  Value notch, filled;  // mask and value of the corner's own notch
  Value line;           // the mask where a line passes
};

// Where e and a stand out from both b and d, seen in the negative as `negative` says, and so do c and g beside them:
// fills the corner if two flat arms meet around a notch, or says that b and d are part of a thin diagonal line.
template <class Kind, class Value = typename Kind::Value>
inline Change<Value> ChangeAt(const View<Kind>& view, Value saddle) {
  const auto above = Kind::Above;
  const Value a = view.At(1, 1), b = view.At(1, 0), c = view.At(1, -1), d = view.At(0, 1), e = view.At(0, 0),
              g = view.At(-1, 1);
  const Value stands_out = saddle & above(c, b) & above(g, d);
  if (!Kind::Any(stands_out)) return {Value{}, Value{}, Value{}};

  const Value true_b = view.True(1, 0), true_d = view.True(0, 1), true_e = view.True(0, 0);
  const Value true_a = view.True(1, 1), true_c = view.True(1, -1), true_g = view.True(-1, 1);
  const Value arms = Kind::Most(b, d);
  // Intended: the greatest of the four for the dark notch as well.
  const Value greatest = Kind::Most(Kind::Most(true_a, true_c), Kind::Most(true_e, true_g));
  const Value high = view.Turned(Kind::OneTwoOne(true_b, greatest, true_d));
  const Value low = view.Turned(Kind::OneThree(view.Turned(Kind::Least(b, d)), true_e));
  const Value shallow = above(arms, low) | above(high, Kind::Least(a, e));

  const Value nn = view.At(2, 0), ww = view.At(0, 2);
  const Value corners = Kind::MeanOfFour(true_a, true_c, true_e, true_g);
  const Value points = Kind::MeanOfFour(view.True(2, 0), true_b, view.True(0, 2), true_d);
  const Value average = view.Turned(Kind::Half(corners, points));
  const Value ends =
      above(Kind::Most(view.At(2, 1), view.At(2, -1)), nn) & above(Kind::Most(view.At(1, 2), view.At(-1, 2)), ww);
  const Value blurred =
      above(Kind::Most(arms, Kind::Most(nn, ww)), average) | above(average, Kind::Least(a, Kind::Least(c, g)));
  return {stands_out & ~shallow, Kind::OneTwoOne(true_b, true_e, true_d), stands_out & ends & ~blurred};
}

}  // namespace KELVO_TARGET
}  // namespace kelvo

#endif  // KELVO_ENLARGE_RULES_H
