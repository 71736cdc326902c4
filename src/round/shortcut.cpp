#include "round/shortcut.h"

#include "stages/fixed_point.h"
#include "stages/routines.h"

namespace kelvo {

void SharpenStaged(const Tile& tile, const RoundMember& member) {
  const Region region(member.shortcut_margin);
  const Stencil& blur = DiscBlur(member.width);
  const int shift = 3 - tile.params().ShortcutMode;
  for (int row = region.first; row < region.end; ++row) {
    const int32_t* staged = tile.Row(kStaged, row, region.first);
    int32_t* estimate = tile.Row(kEstimate, row, region.first);
    tile.routines().stencil_row(blur, staged, estimate, region.size());
    for (int column = 0; column < region.size(); ++column) {
      const int32_t beyond = WrapSub(estimate[column], staged[column]) >> shift;
      estimate[column] = Clamp(Signed(Bits(staged[column]) - 2 * Bits(beyond)), 0, KELVO_DISPLAY_WHITE);
    }
  }
}

}  // namespace kelvo
