// Rules without branches, which the compiler turns into the vectors of the level that it compiles for.
#include "enlarge/reshape.h"

#include <new>

#include "enlarge/block_grids.h"
#include "stages/fixed_point.h"

namespace kelvo::KELVO_TARGET {
namespace {

int32_t Ratio(uint32_t sum, int32_t divisor) {
  return Signed(sum) / divisor;
}

// One block, whose values are any 32 bits.
struct OneBlock {
  using Cell = int32_t;
  using Value = int32_t;
  static constexpr int kLanes = 1;

  static bool CanHold(uint32_t) { return true; }
  static int32_t Load(const int32_t* cell) { return *cell; }
  static void Store(int32_t* cell, int32_t value) { *cell = value; }

  static bool Any(int32_t) { return true; }
  static int32_t Above(int32_t x, int32_t y) { return -static_cast<int32_t>(x > y); }
  static int32_t Pick(int32_t mask, int32_t chosen, int32_t otherwise) { return (chosen & mask) | (otherwise & ~mask); }
  static int32_t Least(int32_t x, int32_t y) { return x < y ? x : y; }
  static int32_t Most(int32_t x, int32_t y) { return x < y ? y : x; }

  static int32_t Half(int32_t x, int32_t y) { return Ratio(Bits(x) + Bits(y), 2); }
  static int32_t MeanOfFour(int32_t w, int32_t x, int32_t y, int32_t z) {
    return Ratio(Bits(w) + Bits(x) + Bits(y) + Bits(z), 4);
  }
  static int32_t OneTwoOne(int32_t x, int32_t twice, int32_t y) {
    return Ratio(Bits(x) + 2 * Bits(twice) + Bits(y), 4);
  }
  static int32_t OneThree(int32_t x, int32_t y) { return Ratio(Bits(x) + 3 * Bits(y), 4); }
  static int32_t ThreeFive(int32_t x, int32_t y) { return Ratio(3 * Bits(x) + 5 * Bits(y), 8); }
  static int32_t FiveThree(int32_t x, int32_t y) { return Ratio(5 * Bits(x) + 3 * Bits(y), 8); }
  static int32_t TwoSix(int32_t x, int32_t y) { return Ratio(2 * Bits(x) + 6 * Bits(y), 8); }
};

}  // namespace

void ReshapeWords(const int32_t* source, int32_t* scratch, int32_t* pixels) {
  static_assert(sizeof(BlockGrids<OneBlock>) <= kPlaneCells * sizeof(int32_t));
  auto& grids = *new (scratch) BlockGrids<OneBlock>;
  grids.Gather(source);
  grids.ShapeCorners();
  grids.ChangeVertices();
  grids.Scatter(pixels);
}

}  // namespace kelvo::KELVO_TARGET
