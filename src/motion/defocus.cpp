#include "motion/defocus.h"

#include "motion/line.h"
#include "stages/forward_blur.h"

namespace kelvo {

void DefocusMotion(const Tile& tile, const MotionMember& member) {
  BlurDisplay(tile, BareLine(member));
}

}  // namespace kelvo
