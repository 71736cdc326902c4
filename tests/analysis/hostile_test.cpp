// Both detections on values that no host would send.
#include <doctest/doctest.h>

#include <cstring>

#include "support/guarded_heap.h"
#include "support/tiles.h"

namespace kelvo::test {
namespace {

// Every field is wild but for what the exports check; on a heap between guard pages.
TEST_CASE("hostile blocks and tiles stay within the heap and the fields") {
  GuardedHeap heap;
  for (const char* kind : {"wild", "noise", "blackwhite", "edge", "scene"})
    for (const int fill : {0x7F, 0x80, 0xFF, 0xCC}) {
      CAPTURE(kind);
      CAPTURE(fill);
      for (int i = 0; i < 65536; ++i) heap.cells()[i] = TileCell(kind, {3, 1, -32640, 32767}, i / 256, i % 256);
      TileParams params;
      std::memset(&params, fill, sizeof params);
      params.StructureSize = sizeof params;
      params.JPGHorizontalOffset = params.JPGVerticalOffset = 7;
      params.ImageWidth = params.ImageHeight = INT32_MAX;
      const TileParams before = params;
      CHECK(kelvo_detect_blur_width_for_tile(&params, heap.cells()) == KELVO_OK);
      CHECK(kelvo_detect_jpg_compression_for_tile(&params, heap.cells()) == KELVO_OK);
      params.TileTop = params.TileLeft = INT32_MIN;
      params.ImageHeight = -1;
      CHECK(kelvo_detect_blur_width_for_tile(&params, heap.cells()) == KELVO_OK);
      CHECK(kelvo_detect_jpg_compression_for_tile(&params, heap.cells()) == KELVO_OK);
      CHECK(std::memcmp(params.Host85, before.Host85, sizeof params.Host85) == 0);
      CHECK(std::memcmp(params.Host468, before.Host468, sizeof params.Host468) == 0);
      CHECK(std::memcmp(params.Host484, before.Host484, sizeof params.Host484) == 0);
      CHECK(std::memcmp(params.Host576, before.Host576, sizeof params.Host576) == 0);
      CHECK(params.NoiseFloor == before.NoiseFloor);
      CHECK(params.RefineIndex == before.RefineIndex);
      CHECK((params.DetectedBlurWidth >= 0 && params.DetectedBlurWidth <= 20));
      CHECK((params.JPGHorizontalOffset >= 0 && params.JPGHorizontalOffset <= 7));
    }
}

TEST_CASE("sums at the end of the integers wrap") {
  Bench bench;
  bench.Fill("edge", {0, 1, 0, 32640});
  bench.params.TileTop = bench.params.TileLeft = 64;
  bench.params.ImageHeight = bench.params.ImageWidth = 256;
  for (int32_t& votes : bench.params.BlurWidthVotes) votes = INT32_MAX;
  for (int32_t& sum : bench.params.JPGColumnPhaseSums) sum = INT32_MAX;
  bench.params.JPGTileCount = INT32_MAX;
  CHECK(kelvo_detect_blur_width_for_tile(&bench.params, bench.heap()) == KELVO_OK);
  CHECK(kelvo_detect_jpg_compression_for_tile(&bench.params, bench.heap()) == KELVO_OK);
  CHECK(bench.params.BlurWidthVotes[0] == INT32_MIN + 765 * 63 - 1);
  CHECK(bench.params.JPGTileCount == INT32_MIN);
}

}  // namespace
}  // namespace kelvo::test
