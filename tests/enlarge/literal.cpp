#include "enlarge/literal.h"

#include <algorithm>
#include <array>
#include <utility>

namespace kelvo::test {
namespace {

using Plane = std::vector<int32_t>;

// Wrapped to 32 bits, then divided toward zero.
int32_t Ratio(int64_t sum, int32_t divisor) {
  return static_cast<int32_t>(static_cast<uint32_t>(sum)) / divisor;
}

// One block in one phase: directions turn clockwise by `turns` quarters.
class Block {
 public:
  Block(const Plane& source, Plane& output, int phase, int row, int column, Taken* taken)
      : source_(source), output_(output), phase_(phase), row_(row), column_(column), taken_(taken) {}

  // The source pixel `south` blocks below and `east` blocks right of this one, as seen before turning.
  int64_t Source(int south, int east) const {
    const auto [down, right] = Turned(south, east);
    return source_[Index(row_ + 2 * down, column_ + 2 * right)];
  }
  // Likewise the output pixel, counted in pixels from the phase's corner.
  int32_t& Output(int south, int east) const {
    const auto [down, right] = Turned(south, east);
    return output_[Index(row_ + down, column_ + right)];
  }
  void Took(const char* what) const {
    if (taken_ != nullptr) ++(*taken_)[what + std::string("/") + std::to_string(phase_)];
  }

 private:
  std::pair<int, int> Turned(int south, int east) const {
    switch (phase_) {
      case 1:
        return {east, -south};
      case 2:
        return {-east, south};
      case 3:
        return {-south, -east};
      default:
        return {south, east};
    }
  }
  static size_t Index(int row, int column) { return static_cast<size_t>(256 * row + column); }

  const Plane& source_;
  Plane& output_;
  int phase_, row_, column_;
  Taken* taken_;
};

using Arc = std::array<int64_t, 5>;

bool AllBelow(const Arc& values, int64_t limit) {
  return std::all_of(values.begin(), values.end(), [limit](int64_t value) { return value < limit; });
}
bool AllAbove(const Arc& values, int64_t limit) {
  return std::all_of(values.begin(), values.end(), [limit](int64_t value) { return value > limit; });
}

void ShapeCorner(const Block& block) {
  const int64_t a = block.Source(-1, -1), b = block.Source(-1, 0), c = block.Source(-1, 1), d = block.Source(0, -1),
                e = block.Source(0, 0), f = block.Source(0, 1), g = block.Source(1, -1), h = block.Source(1, 0);
  int32_t &o1 = block.Output(0, 0), &o2 = block.Output(0, 1), &o3 = block.Output(1, 0);
  const Arc north = {a, b, c, d, f}, west = {a, b, d, g, h};
  for (const Arc* side : {&north, &west}) {
    const Arc& arc = *side;
    if (AllBelow(arc, e)) {
      if ((c > b && c > f) || (g > d && g > h)) {
        o1 = Ratio(b + 2 * int64_t{o1} + d, 4);
        return block.Took("peak softened");
      }
      if (AllBelow(arc, Ratio(*std::min_element(arc.begin(), arc.end()) + e, 2)))
        return block.Took(&arc == &north ? "peak north" : "peak west");
    }
    if (AllAbove(arc, e)) {
      if ((c < b && c < f) || (g < d && g < h)) {
        o1 = Ratio(b + 2 * int64_t{o1} + d, 4);
        return block.Took("pit softened");
      }
      if (AllAbove(arc, Ratio(*std::max_element(arc.begin(), arc.end()) + e, 2)))
        return block.Took(&arc == &north ? "pit north" : "pit west");
    }
  }
  if (e > a && e > b && e > d) {
    const int64_t t = Ratio(std::min({a, b, d}) + e, 2), m = std::max(b, d);
    if (a > t) return block.Took("bright stopped");
    if (c <= t && g <= t) {
      o1 = Ratio(3 * m + 5 * int64_t{o1}, 8);
      block.Took("bright weak");
    } else if (c <= t) {
      o1 = Ratio(5 * m + 3 * int64_t{o1}, 8);
      o2 = Ratio((m + 3 * int64_t{o2}) * 2, 8);
      block.Took("bright beside");
    } else if (g <= t) {
      o1 = Ratio(5 * m + 3 * int64_t{o1}, 8);
      o3 = Ratio((m + 3 * int64_t{o3}) * 2, 8);
      block.Took("bright below");
    } else {
      o1 = Ratio(o1 + m, 2);
      block.Took("bright half");
    }
  }
  if (e < a && e < b && e < d) {
    const int64_t t = Ratio(std::max({a, b, d}) + e, 2), m = std::min(b, d);
    if (a < t) return block.Took("dark stopped");
    if (c >= t && g >= t) {
      o1 = Ratio(3 * m + 5 * int64_t{o1}, 8);
      block.Took("dark weak");
    } else if (c >= t) {
      o1 = Ratio(5 * m + 3 * int64_t{o1}, 8);
      o2 = Ratio((m + 3 * int64_t{o2}) * 2, 8);
      block.Took("dark beside");
    } else if (g >= t) {
      o1 = Ratio(5 * m + 3 * int64_t{o1}, 8);
      o3 = Ratio((m + 3 * int64_t{o3}) * 2, 8);
      block.Took("dark below");
    } else {
      o1 = Ratio(o1 + m, 2);
      block.Took("dark half");
    }
  }
}

void FillNotch(const Block& block) {
  const int64_t a = block.Source(-1, -1), b = block.Source(-1, 0), c = block.Source(-1, 1), d = block.Source(0, -1),
                e = block.Source(0, 0), g = block.Source(1, -1);
  const int64_t high = Ratio(b + 2 * std::max({a, c, e, g}) + d, 4);
  if (e > b && e > d && a > b && a > d && c > b && g > d) {
    const int64_t low = Ratio(std::min(b, d) + 3 * e, 4);
    if (b <= low && d <= low && a >= high && e >= high) {
      block.Output(0, 0) = Ratio(b + 2 * e + d, 4);
      block.Took("bright notch");
    }
  }
  if (e < b && e < d && a < b && a < d && c < b && g < d) {
    const int64_t low = Ratio(std::max(b, d) + 3 * e, 4);
    if (b >= low && d >= low && a <= high && e <= high) {
      block.Output(0, 0) = Ratio(b + 2 * e + d, 4);
      block.Took("dark notch");
    }
  }
}

void JoinLine(const Block& block) {
  const int64_t a = block.Source(-1, -1), b = block.Source(-1, 0), c = block.Source(-1, 1), d = block.Source(0, -1),
                e = block.Source(0, 0), g = block.Source(1, -1), nn = block.Source(-2, 0), nnw = block.Source(-2, -1),
                nne = block.Source(-2, 1), ww = block.Source(0, -2), wwn = block.Source(-1, -2),
                wws = block.Source(1, -2);
  const int32_t mid = Ratio(b + d, 2);
  const int64_t avg = Ratio(int64_t{Ratio(a + c + e + g, 4)} + Ratio(nn + b + ww + d, 4), 2);
  const auto join = [&](const char* what) {
    block.Output(0, 0) = block.Output(-1, -1) = mid;
    block.Took(what);
  };
  if ((nn > nnw || nn > nne) && b > a && b > c && (ww > wwn || ww > wws) && d > a && d > g && b > e && d > e) {
    if (std::min({nn, b, ww, d}) >= avg && std::max({a, c, g}) <= avg) join("bright line");
  }
  if (nn >= nnw && nn >= nne) return;
  if (b < a && b < c) {
    if (ww >= wwn && ww >= wws) return;
    if (d < a && d < g && b < e && d < e && std::max({nn, b, ww, d}) <= avg && std::min({a, c, g}) >= avg)
      join("dark line");
  }
}

Plane Doubled(const Plane& tile) {
  Plane doubled(65536);
  for (int row = 0; row < 256; ++row)
    for (int column = 0; column < 256; ++column)
      doubled[static_cast<size_t>(256 * row + column)] =
          tile[static_cast<size_t>(256 * (64 + row / 2) + 64 + column / 2)];
  return doubled;
}

}  // namespace

std::vector<int32_t> EnlargeLiterally(const std::vector<int32_t>& tile, Taken* taken) {
  const Plane source = Doubled(tile);
  Plane work = source;
  for (const auto rule : {ShapeCorner, FillNotch, JoinLine})
    for (int phase = 0; phase < 4; ++phase)
      for (int row = 62 + phase / 2; row < 194; row += 2)
        for (int column = 62 + phase % 2; column < 194; column += 2)
          rule(Block(source, work, phase, row, column, taken));
  Plane result = source;
  for (int row = 62; row < 194; ++row) std::copy_n(work.begin() + 256 * row + 62, 132, result.begin() + 256 * row + 62);
  return result;
}

}  // namespace kelvo::test
