// Whole runs of defocus and focus: what must hold for every width, whatever the tile and the heap.
#include <doctest/doctest.h>

#include <algorithm>

#include "round/shortcut.h"
#include "stages/stencils/disc.h"
#include "support/tiles.h"

namespace kelvo::test {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(KELVO_EMULATED)
constexpr bool kSlow = true;  // five times slower, emulated forty: fewer repetitions
#else
constexpr bool kSlow = false;
#endif

Bench Prepared(uint32_t heap_seed, const std::string& kind, const std::vector<int>& arguments, int width) {
  Bench bench(heap_seed);
  bench.Fill(kind, arguments);
  bench.params.BlurSpec = static_cast<uint32_t>(width);
  return bench;
}

bool IsFlat(const std::vector<int32_t>& core) {
  return std::all_of(core.begin(), core.end(), [&](int32_t cell) { return cell == core.front(); });
}

TEST_CASE("a flat tile stays flat: defocus") {
  for (int width = 1; width <= kMaxWidth; ++width)
    for (const int display : {0, 128, 896, 12800, 12801, 32640, 32767}) {
      CAPTURE(width);
      CAPTURE(display);
      Bench bench = Prepared(77, "flat", {display}, width);
      REQUIRE(kelvo_defocus_tile(&bench.params, bench.heap()) == 0);
      CHECK(IsFlat(bench.Core()));
    }
}

// Every setting; each takes another of the levels, so that all of them meet all widths and accuracies.
TEST_CASE("a flat tile stays flat, and its response is the predicted one: focus") {
  const int displays[] = {128 * 2, 12800, 12801, 16320 + 127, 32640};
  const int step = kSlow ? 5 : 1;
  for (int width = 1; width <= kMaxWidth; ++width)
    for (int accuracy = kSlow ? width % 5 - 2 : -2; accuracy <= 2; accuracy += step)
      for (int noise = kSlow ? width / 2 % 5 - 1 : -1; noise <= 3; noise += step) {
        const int display = displays[(width + accuracy + noise + 3) % 5];
        CAPTURE(width);
        CAPTURE(accuracy);
        CAPTURE(noise);
        CAPTURE(display);
        Bench bench = Prepared(77, "flat", {display}, width);
        bench.params.Accuracy = accuracy;
        bench.params.RemoveNoise = noise;
        const uint32_t variant = static_cast<uint32_t>(accuracy + noise + 3) & 1u;
        REQUIRE(kelvo_focus_tile_with(&bench.params, bench.heap(), variant) == 0);
        CHECK(IsFlat(bench.Core()));
        CHECK(bench.Core().front() == FlatResponse(MemberOf(width), bench.params.ShortcutMode, display));
      }
}

// The one-shot runs keep the fraction of a grey level, so every fraction has a response of its own.
TEST_CASE("flat tiles of every fraction keep to the response: shortcuts") {
  for (int width = 1; width <= 6; ++width)
    for (int fraction = 0; fraction < 128; ++fraction) {
      const int display = 128 * (3 + 40 * width) + fraction;
      CAPTURE(width);
      CAPTURE(display);
      Bench bench = Prepared(77, "flat", {display}, width);
      bench.params.Accuracy = -2;
      REQUIRE(kelvo_focus_tile(&bench.params, bench.heap()) == 0);
      CHECK(bench.Core().front() == FlatResponse(MemberOf(width), bench.params.ShortcutMode, display));
    }
}

TEST_CASE("a result does not depend on what the heap held") {
  const struct {
    const char* kind;
    int accuracy;
    uint32_t variant;
  } cases[] = {{"soft", 1, 0}, {"wild", -1, 1}, {"blackwhite", 0, 0}};
  for (int width = 1; width <= kMaxWidth; width += kSlow ? 4 : 1) {
    const auto& c = cases[width % 3];
    CAPTURE(width);
    CAPTURE(c.kind);
    std::vector<int32_t> cores[2];
    for (uint32_t i = 0; i < 2; ++i) {
      Bench bench = Prepared(77 + 123457 * i, c.kind, {width, 1}, width);
      bench.params.Accuracy = c.accuracy;
      bench.params.JPGCompression = 17;
      REQUIRE(kelvo_focus_tile_with(&bench.params, bench.heap(), c.variant) == 0);
      cores[i] = bench.Core();
    }
    CHECK(cores[0] == cores[1]);
  }
}

}  // namespace
}  // namespace kelvo::test
