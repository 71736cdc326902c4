#include "round/shortcut.h"

#include "stages/fixed_point.h"
#include "stages/routines.h"
#include "stages/stencils/isotropic.h"
#include "stages/tone_tables.h"

namespace kelvo {
namespace {

constexpr int kWholeRun = 3;  // ShortcutMode in which nothing follows the sharpening

int32_t Sharpened(int32_t staged, int32_t blurred, int mode) {
  const int32_t beyond = WrapSub(blurred, staged) >> (kWholeRun - mode);
  return Clamp(Signed(Bits(staged) - 2 * Bits(beyond)), 0, KELVO_DISPLAY_WHITE);
}

}  // namespace

void SharpenStaged(const Tile& tile, const RoundMember& member) {
  const Region region(member.shortcut_margin);
  const Stencil& blur = DiscBlur(member.width);
  const int mode = tile.params().ShortcutMode;
  for (int row = region.first; row < region.end; ++row) {
    const int32_t* staged = tile.Row(kStaged, row, region.first);
    int32_t* estimate = tile.Row(kEstimate, row, region.first);
    tile.routines().stencil_row(blur, staged, estimate, region.size());
    for (int column = 0; column < region.size(); ++column)
      estimate[column] = Sharpened(staged[column], estimate[column], mode);
  }
}

// The pre-filter smooths flat ground with its widest non-directional filter.
int32_t FlatResponse(const RoundMember& member, int shortcut_mode, int32_t display) {
  if (shortcut_mode != kWholeRun) return RoundTrip(display);
  const int32_t staged = EvaluateFlat(Isotropic(5), display);
  return Sharpened(staged, EvaluateFlat(DiscBlur(member.width), staged), shortcut_mode);
}

}  // namespace kelvo
