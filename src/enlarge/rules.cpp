#include "enlarge/rules.h"

#include <algorithm>

#include "stages/fixed_point.h"

// Every rule comes in a bright and a dark form, which never hold both. The dark one is the bright one seen in the
// negative: ~x reverses the order of all 32-bit values, so one form with its comparisons made on `x ^ negative` is
// both. Averages are formed on the true values. There are no branches, so that compilers work on several blocks at
// once; a condition is a mask, all bits set or none.
namespace kelvo::KELVO_TARGET {
namespace {

using Mask = int32_t;

Mask Above(int32_t x, int32_t y) {
  return -static_cast<int32_t>(x > y);
}

int32_t Pick(Mask mask, int32_t chosen, int32_t otherwise) {
  return (chosen & mask) | (otherwise & ~mask);
}

int32_t Least(int32_t x, int32_t y) {
  return std::min(x, y);
}
int32_t Most(int32_t x, int32_t y) {
  return std::max(x, y);
}

// Averages with small weights that add up to 2, 4 or 8.
int32_t Half(int32_t x, int32_t y) {
  return WrapAdd(x, y) / 2;
}
int32_t Quarters(uint32_t weight_x, int32_t x, uint32_t weight_y, int32_t y) {
  return Signed(weight_x * Bits(x) + weight_y * Bits(y)) / 4;
}
int32_t Eighths(uint32_t weight_x, int32_t x, uint32_t weight_y, int32_t y) {
  return Signed(weight_x * Bits(x) + weight_y * Bits(y)) / 8;
}
int32_t OneTwoOne(int32_t x, int32_t twice, int32_t y) {
  return Signed(Bits(x) + 2 * Bits(twice) + Bits(y)) / 4;
}
int32_t MeanOfFour(int32_t w, int32_t x, int32_t y, int32_t z) {
  return Signed(Bits(w) + Bits(x) + Bits(y) + Bits(z)) / 4;
}

// The source pixels around a block, as the comparisons see them. Names as in the header's picture.
struct View {
  const int32_t* e;
  Compass compass;
  Mask negative;

  int32_t At(int norths, int wests) const { return e[norths * compass.north + wests * compass.west] ^ negative; }
  int32_t True(int32_t seen) const { return seen ^ negative; }
};

// A view in which the pixel at (norths, wests) is below that at (other_norths, other_wests), unless they are equal.
View Bright(const int32_t* e, Compass compass, int low_norths, int low_wests, int high_norths, int high_wests) {
  const View plain{e, compass, 0};
  return {e, compass, Above(plain.At(low_norths, low_wests), plain.At(high_norths, high_wests))};
}

}  // namespace

void ShapeCornerRow(const int32_t* __restrict source, Compass compass, int32_t* __restrict corner,
                    int32_t* __restrict beside, int32_t* __restrict below, int count) {
  for (int i = 0; i < count; ++i) {
    const View view = Bright(source + i, compass, 1, 1, 0, 0);
    const int32_t a = view.At(1, 1), b = view.At(1, 0), c = view.At(1, -1), d = view.At(0, 1), e = view.At(0, 0),
                  f = view.At(0, -1), g = view.At(-1, 1), h = view.At(-1, 0);
    // Halfway between e and the least of the pixels that it stands out from.
    const auto halfway = [&](int32_t least) { return view.True(Half(view.True(least), view.True(e))); };

    const int32_t least = Least(a, Least(b, d)), most = Most(a, Most(b, d));
    const int32_t most_north = Most(c, f), most_west = Most(g, h);
    const Mask stands_out = Above(e, most), arc_north = Above(e, most_north), arc_west = Above(e, most_west);
    const Mask on_diagonal = Above(c, Most(b, f)) | Above(g, Most(d, h));
    const Mask soften = stands_out & (arc_north | arc_west) & on_diagonal;
    const Mask alone = (arc_north & Above(halfway(Least(least, Least(c, f))), Most(most, most_north))) |
                       (arc_west & Above(halfway(Least(least, Least(g, h))), Most(most, most_west)));
    const int32_t threshold = halfway(least);
    const Mask shape = stands_out & ~soften & ~alone & ~Above(a, threshold);

    const int32_t nearer = view.True(Most(b, d)), was = corner[i];
    const Mask c_joins = Above(c, threshold), g_joins = Above(g, threshold);
    const int32_t shaped = Pick(c_joins & g_joins, Half(was, nearer),
                                Pick(c_joins | g_joins, Eighths(5, nearer, 3, was), Eighths(3, nearer, 5, was)));
    corner[i] = Pick(soften, OneTwoOne(view.True(b), was, view.True(d)), Pick(shape, shaped, was));
    beside[i] = Pick(shape & g_joins & ~c_joins, Eighths(2, nearer, 6, beside[i]), beside[i]);
    below[i] = Pick(shape & c_joins & ~g_joins, Eighths(2, nearer, 6, below[i]), below[i]);
  }
}

void FillNotchRow(const int32_t* __restrict source, Compass compass, int32_t* __restrict corner, int count) {
  for (int i = 0; i < count; ++i) {
    const View view = Bright(source + i, compass, 1, 0, 0, 0);
    const int32_t a = view.At(1, 1), b = view.At(1, 0), c = view.At(1, -1), d = view.At(0, 1), e = view.At(0, 0),
                  g = view.At(-1, 1);
    const int32_t true_b = view.True(b), true_d = view.True(d), true_e = view.True(e);
    // Intended: the greatest of the four for the dark notch as well.
    const int32_t greatest = Most(Most(view.True(a), view.True(c)), Most(true_e, view.True(g)));
    const int32_t high = view.True(OneTwoOne(true_b, greatest, true_d));
    const int32_t low = view.True(Quarters(1, view.True(Least(b, d)), 3, true_e));
    const int32_t arms = Most(b, d);
    const Mask notch = Above(Least(a, e), arms) & Above(c, b) & Above(g, d);
    const Mask deep = ~Above(arms, low) & ~Above(high, Least(a, e));
    corner[i] = Pick(notch & deep, OneTwoOne(true_b, true_e, true_d), corner[i]);
  }
}

void JoinLineRow(const int32_t* __restrict source, Compass compass, int32_t* __restrict corner,
                 int32_t* __restrict outside, int count) {
  for (int i = 0; i < count; ++i) {
    const View view = Bright(source + i, compass, 1, 1, 1, 0);
    const int32_t a = view.At(1, 1), b = view.At(1, 0), c = view.At(1, -1), d = view.At(0, 1), e = view.At(0, 0),
                  g = view.At(-1, 1), nn = view.At(2, 0), ww = view.At(0, 2);
    const int32_t corners = MeanOfFour(view.True(a), view.True(c), view.True(e), view.True(g));
    const int32_t points = MeanOfFour(view.True(nn), view.True(b), view.True(ww), view.True(d));
    const int32_t average = view.True(Half(corners, points));
    const Mask ends = Above(nn, Least(view.At(2, 1), view.At(2, -1))) & Above(ww, Least(view.At(1, 2), view.At(-1, 2)));
    const Mask line = Above(b, Most(a, Most(c, e))) & Above(d, Most(a, Most(g, e)));
    const Mask clear = ~Above(average, Least(Least(nn, b), Least(ww, d))) & ~Above(Most(a, Most(c, g)), average);
    const Mask join = ends & line & clear;
    const int32_t middle = Half(view.True(b), view.True(d));
    corner[i] = Pick(join, middle, corner[i]);
    outside[i] = Pick(join, middle, outside[i]);
  }
}

}  // namespace kelvo::KELVO_TARGET
