// The rules of the enlargement in vectors of 16-bit lanes, many blocks side by side.
#include <new>

#include "enlarge/block_grids.h"
#include "enlarge/reshape.h"
#include "stages/short_lanes.h"

namespace kelvo::KELVO_TARGET {
namespace {

// Blocks side by side, whose values are 0..32767: no average leaves that range, none truncates a negative, and those
// with weights are halves of halves, as rounding down twice is rounding down once.
struct BlockLanes {
  using Cell = int16_t;
  using Value = ShortVector;
  static constexpr int kLanes = kShortLanes;

  static bool CanHold(uint32_t bits) { return bits <= INT16_MAX; }
  static Value Load(const Cell* cells) { return LoadShorts(cells); }
  static void Store(Cell* cells, Value v) { StoreShorts(cells, v); }

  static bool Any(Value mask) { return KELVO_TARGET::Any(reinterpret_cast<Vector>(mask)); }
  static Value Above(Value x, Value y) { return LessShorts(y, x); }
  static Value Pick(Value mask, Value chosen, Value otherwise) { return SelectShorts(mask, chosen, otherwise); }
  static Value Least(Value x, Value y) { return LesserShorts(x, y); }
  static Value Most(Value x, Value y) { return GreaterShorts(x, y); }

  static Value Half(Value x, Value y) { return HalfShorts(x, y); }
  // What both halves drop may add up to one.
  static Value MeanOfFour(Value w, Value x, Value y, Value z) {
    return Half(Half(w, x) + ((w ^ x) & (y ^ z) & 1), Half(y, z));
  }
  static Value OneTwoOne(Value x, Value twice, Value y) { return Half(Half(x, y), twice); }
  static Value OneThree(Value x, Value y) { return Half(Half(x, y), y); }
  static Value ThreeFive(Value x, Value y) { return Half(OneThree(y, x), y); }
  static Value FiveThree(Value x, Value y) { return Half(OneThree(x, y), x); }
  static Value TwoSix(Value x, Value y) { return OneThree(x, y); }
};

}  // namespace

void ReshapeBlocks(const int32_t* source, int32_t* scratch, int32_t* pixels) {
  static_assert(sizeof(BlockGrids<BlockLanes>) <= kPlaneCells * sizeof(int32_t));
  auto& grids = *new (scratch) BlockGrids<BlockLanes>;
  if (!grids.Gather(source)) return ReshapeWords(source, scratch, pixels);
  grids.ShapeCorners();
  grids.ChangeVertices();
  grids.Scatter(pixels);
}

}  // namespace kelvo::KELVO_TARGET
