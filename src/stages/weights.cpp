#include "stages/weights.h"

namespace kelvo {

void BuildWeightTables(const Tile& tile) {
  const TileParams& params = tile.params();
  const uint32_t* source = kWeightSource[params.CurveIndex];
  const double strength = static_cast<double>(params.Strength);
  const auto scaled = [&](int index) { return TruncToUint(static_cast<double>(source[index]) * strength); };
  int32_t* table = tile.Cells(kBlurred);

  uint32_t ramp = scaled(0);
  for (int cell = 512; cell >= 1; --cell) {
    if (params.CurveIndex > 0) ramp = TruncToUint(static_cast<double>(ramp) * 1.05);
    ramp = ramp > 4000000000u ? 4000000000u : ramp;
    table[cell] = Signed(ramp);
  }
  for (int cell = 512; cell < 6144; ++cell) table[cell] = Signed(scaled(cell < 1024 ? cell - 512 : 511));
  for (int cell = 6144; cell < 8192; ++cell) table[cell] = Signed(source[Clamp(cell - 6400, 0, 511)]);
}

}  // namespace kelvo
