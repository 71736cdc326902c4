#include "analysis/width_votes.h"

#include "stages/fixed_point.h"
#include "stages/tile.h"

namespace kelvo {
namespace {

constexpr int kWidths = 21;

// Intended: the head is uneven.
constexpr double kWeights[kWidths] = {3.0, 1.5, 2.0, 0.6, 1.0, 1.0, 1.0, 1.0, 1.0, 1.1, 1.1,
                                      1.2, 1.2, 1.3, 1.3, 1.4, 1.4, 1.5, 1.5, 1.6, 1.6};

// Smoothed vote k: the sum of votes k + offset, each shifted right by its own. Intended: lopsided,
// widths 2..9 borrow most from the next ones.
struct Term {
  int offset, shift;
};
struct Kernel {
  int first, last;  // the k it serves
  int terms;
  Term term[5];
};
constexpr Kernel kKernels[] = {
    {0, 0, 1, {{0, 0}}},
    {1, 1, 3, {{-1, 2}, {0, 1}, {1, 2}}},
    {2, 2, 4, {{-1, 3}, {0, 1}, {1, 3}, {1, 2}}},
    {3, 3, 2, {{0, 1}, {1, 1}}},
    {4, 7, 3, {{0, 2}, {1, 1}, {2, 2}}},
    {8, 8, 2, {{0, 1}, {1, 1}}},
    {9, 9, 4, {{-1, 3}, {0, 1}, {1, 3}, {1, 2}}},
    {10, 14, 3, {{-1, 2}, {0, 1}, {1, 2}}},
    {15, 18, 5, {{-2, 3}, {-1, 2}, {0, 2}, {1, 2}, {2, 3}}},
    {19, 19, 5, {{-2, 3}, {-1, 2}, {0, 2}, {1, 2}, {1, 3}}},
    {20, 20, 5, {{-2, 3}, {-1, 2}, {0, 2}, {0, 2}, {0, 3}}},
};

int32_t Smoothed(const int32_t* vote, const Kernel& kernel) {
  int32_t sum = 0;
  for (int i = 0; i < kernel.terms; ++i) sum = WrapAdd(sum, vote[kernel.term[i].offset] >> kernel.term[i].shift);
  return sum;
}

}  // namespace

int32_t VoteWeight(int width, int32_t step) {
  return TruncToInt(kWeights[width] * (Magnitude(Bits(step)) >> 16));
}

void DecideBlurWidth(TileParams& params) {
  for (const Kernel& kernel : kKernels)
    for (int k = kernel.first; k <= kernel.last; ++k)
      params.SmoothedBlurWidthVotes[k] = Smoothed(params.BlurWidthVotes + k, kernel);
  params.DetectedBlurWidth = 0;
  int32_t most = 0;
  for (int k = 0; k < kWidths; ++k) {
    if (params.SmoothedBlurWidthVotes[k] <= most) continue;
    most = params.SmoothedBlurWidthVotes[k];
    params.DetectedBlurWidth = k;
  }
}

}  // namespace kelvo
