// The binary interface: who owns which bytes, where the heap comes from, calls side by side.
#include <doctest/doctest.h>

#include <cstring>
#include <thread>

#if defined(__linux__)
#include <sys/mman.h>
#endif

#include "support/tiles.h"

namespace kelvo::test {
namespace {

using Export = int32_t (*)(TileParams*);
using EntryPoint = int32_t (*)(TileParams*, int32_t*);

const Export kExports[] = {KVDLL_DefocusTile, KVDLL_FocusTile, KVDLL_DetectBlurWidthForTile,
                           KVDLL_DetectJPGCompressionForTile, KVDLL_IncreaseResolution};
const EntryPoint kEntryPoints[] = {kelvo_defocus_tile, kelvo_focus_tile, kelvo_detect_blur_width_for_tile,
                                   kelvo_detect_jpg_compression_for_tile, kelvo_increase_resolution};

TEST_CASE("the two queries answer") {
  CHECK(KVDLL_GetHeapSize() == 1048576);
  CHECK(KVDLL_GetVersionNumber() == 5000);
}

TEST_CASE("bytes that belong to the host are neither cleared nor changed") {
  const auto host_bytes = [](TileParams& p) {
    return std::vector<std::pair<uint8_t*, size_t>>{
        {p.Host8, sizeof p.Host8},     {p.Host20, sizeof p.Host20},   {p.Host85, sizeof p.Host85},
        {p.Host308, sizeof p.Host308}, {p.Host468, sizeof p.Host468}, {p.Host484, sizeof p.Host484},
        {p.Host576, sizeof p.Host576}, {p.Host896, sizeof p.Host896}, {p.Host932, sizeof p.Host932},
        {p.Host952, sizeof p.Host952}, {p.Host980, sizeof p.Host980}};
  };
  for (const EntryPoint call : kEntryPoints)
    for (const uint32_t size : {1004u, 1u}) {
      Bench bench;
      bench.Fill("soft", {1, 1});
      bench.params.StructureSize = size;
      bench.params.BlurSpec = 5;
      bench.params.Accuracy = 1;
      for (const auto& [bytes, count] : host_bytes(bench.params)) std::memset(bytes, 0xCC, count);
      std::memset(bench.params.Message, 0xCC, sizeof bench.params.Message);
      call(&bench.params, bench.heap());
      for (const auto& [bytes, count] : host_bytes(bench.params))
        for (size_t i = 0; i < count; ++i) REQUIRE(bytes[i] == 0xCC);
      const size_t length = std::strlen(bench.params.Message);
      for (size_t i = length + 1; i < sizeof bench.params.Message; ++i)
        REQUIRE(static_cast<uint8_t>(bench.params.Message[i]) == 0xCC);
    }
}

TEST_CASE("a refused call says why and touches nothing else") {
  for (const EntryPoint call : kEntryPoints) {
    Bench bench;
    bench.params.StructureSize = 1005;
    bench.params.JPGVerticalOffset = 8;
    TileParams before = bench.params;
    const uint32_t heap_before = bench.Crc(0, 0, 256);
    CHECK(call(&bench.params, bench.heap()) != 0);
    CHECK(bench.params.Message[0] == 'I');
    std::memcpy(before.Message, bench.params.Message, sizeof before.Message);
    // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison): every byte counts
    CHECK(std::memcmp(&before, &bench.params, sizeof before) == 0);
    CHECK(bench.Crc(0, 0, 256) == heap_before);
  }
}

#if defined(MAP_32BIT)
TEST_CASE("the exports take the heap from the block, the entry points from their argument") {
  const size_t bytes = 4u * KELVO_HEAP_WORDS;
  void* low = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_32BIT, -1, 0);
  REQUIRE(low != MAP_FAILED);
  for (size_t i = 0; i < std::size(kExports); ++i) {
    CAPTURE(i);
    Bench bench;
    bench.Fill("soft", {4, 1});
    bench.params.BlurSpec = 5;
    std::memcpy(low, bench.heap(), bytes);
    TileParams params = bench.params;
    params.WorkHeap = static_cast<uint32_t>(reinterpret_cast<uintptr_t>(low));
    CHECK(kExports[i](&params) == 0);
    bench.params.WorkHeap = 0xDEADBEEF;
    CHECK(kEntryPoints[i](&bench.params, bench.heap()) == 0);
    CHECK(std::memcmp(low, bench.heap(), bytes) == 0);
  }
  munmap(low, bytes);
}
#endif

// Every export on a block and a heap of its own, for each thread the same: also what ThreadSanitizer watches.
TEST_CASE("calls on distinct blocks and heaps run side by side") {
  const auto run = [](uint32_t* sum) {
    for (const uint32_t blur : {6u, 9u, 3u | 40u << 8, 12u | 100u << 8}) {
      Bench bench;
      bench.Fill("soft", {8, 2});
      bench.params.BlurSpec = blur;
      bench.params.Accuracy = blur < 8 ? 1 : -2;
      bench.params.ImageWidth = bench.params.ImageHeight = 256;
      for (const EntryPoint call : kEntryPoints) {
        *sum += static_cast<uint32_t>(call(&bench.params, bench.heap()));
        *sum = Mix(*sum ^ bench.CoreCrc());
      }
    }
  };
  uint32_t sums[6] = {};
  std::vector<std::thread> threads;
  for (uint32_t& sum : sums) threads.emplace_back(run, &sum);
  for (std::thread& thread : threads) thread.join();
  for (const uint32_t sum : sums) CHECK(sum == sums[0]);
}

}  // namespace
}  // namespace kelvo::test
