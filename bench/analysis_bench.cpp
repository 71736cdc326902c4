#include "analysis_bench.h"

#include <cstdio>
#include <thread>

#include "timing.h"

namespace kelvo::bench {
namespace {

constexpr int kTilesPerRun = 4;
constexpr double kMegapixelsPerTile = KELVO_CORE_SIZE * KELVO_CORE_SIZE / 1e6;

// A block and a heap whose tile lies in the middle of an image.
struct Measured : Subject {
  Measured(const char* kind, const std::vector<int>& arguments) : Subject(5) {
    bench.Fill(kind, arguments);
    tile.assign(bench.heap(), bench.heap() + 65536);
    bench.params.ImageWidth = bench.params.ImageHeight = 1000;
    bench.params.TileTop = bench.params.TileLeft = 384;
  }
  void Width() { kelvo_detect_blur_width_for_tile(&bench.params, bench.heap()); }
  void Grid() { kelvo_detect_jpg_compression_for_tile(&bench.params, bench.heap()); }
  void Both() {
    for (int i = 0; i < kTilesPerRun; ++i) {
      Width();
      Grid();
    }
  }
};

// Milliseconds in which both subjects measure their tiles at once.
double TwoThreads(int repeats, Measured& one, Measured& other) {
  return Fastest(repeats, one, [&] {
    std::thread second([&] { other.Both(); });
    one.Both();
    second.join();
  });
}

}  // namespace

void PrintAnalysis(int repeats) {
  std::printf("\nDetection: milliseconds per tile, megapixels per second of both together.\n\n");
  std::printf("| tile | width | JPEG grid | one thread | two threads | share of focus at width 5 |\n");
  std::printf("|---|---|---|---|---|---|\n");
  const struct {
    const char* kind;
    std::vector<int> arguments;
  } tiles[] = {{"scene", {1}}, {"soft", {5, 2}}, {"noise", {1}}, {"flat", {9000}}};
  for (const auto& t : tiles) {
    Measured one(t.kind, t.arguments), other(t.kind, t.arguments);
    other.Reset();
    const double width = Fastest(repeats, one, [&] { one.Width(); });
    const double grid = Fastest(repeats, one, [&] { one.Grid(); });
    const double alone = width + grid;
    const double together = TwoThreads(repeats, one, other) / kTilesPerRun;
    const double focus = Fastest(repeats, one, [&] { kelvo_focus_tile_with(&one.bench.params, one.bench.heap(), 3); });
    std::printf("| %s | %.2f | %.2f | %.1f | %.1f | %.3f |\n", t.kind, width, grid, 1e3 * kMegapixelsPerTile / alone,
                2e3 * kMegapixelsPerTile / together, alone / focus);
  }
}

}  // namespace kelvo::bench
