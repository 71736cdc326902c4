#include "stages/output.h"

#include "stages/fixed_point.h"
#include "stages/prefilter/residual.h"
#include "stages/tone.h"

namespace kelvo {
namespace {

int32_t Extrapolated(int32_t estimate, int32_t staged, int32_t floor) {
  const int32_t gain = WrapSub(estimate, staged);
  if (estimate >= floor) {
    const int32_t pushed = WrapAdd(estimate, gain >> 2);
    return pushed < floor ? WrapAdd(pushed, WrapSub(floor, pushed) >> 1) : pushed;
  }
  const int32_t pushed = WrapAdd(estimate, gain >> 3);
  return pushed >= floor ? WrapSub(Signed(2 * Bits(pushed)), floor) : pushed;
}

}  // namespace

void Extrapolate(const Tile& tile, int margin) {
  const Region region(margin);
  for (int row = region.first; row < region.end; ++row) {
    int32_t* estimate = tile.Row(kEstimate, row, region.first);
    const int32_t* staged = tile.Row(kStaged, row, region.first);
    const int32_t* floor = tile.Row(kFloor, row, region.first);
    for (int column = 0; column < region.size(); ++column)
      estimate[column] = Extrapolated(estimate[column], staged[column], floor[column]);
  }
}

void OutputCore(const Tile& tile, OutputBase base) {
  const Region core(0);
  for (int row = core.first; row < core.end; ++row) {
    int32_t* estimate = tile.Row(kEstimate, row, core.first);
    int32_t* display = tile.Row(kDisplay, row, core.first);
    const int32_t* residual = tile.Row(kResidual, row, core.first);
    ToDisplayRow(tile, estimate, estimate, core.size());
    for (int column = 0; column < core.size(); ++column) {
      if (base == OutputBase::kEstimate) display[column] = estimate[column];
      const int32_t detail = ResidualByte(residual[column]) * 32;
      display[column] = Clamp(WrapAdd(display[column], detail - (detail >> 2)), 0, 32767);
    }
  }
}

}  // namespace kelvo
