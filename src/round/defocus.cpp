#include "round/defocus.h"

#include "stages/forward_blur.h"
#include "stages/stencils/disc.h"

namespace kelvo {

void DefocusRound(const Tile& tile) {
  BlurDisplay(tile, DiscBlur(BlurWidth(tile.params())));
}

}  // namespace kelvo
