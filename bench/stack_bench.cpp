#include "stack_bench.h"

#include <pthread.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

#include "timing.h"

namespace kelvo::bench {
namespace {

constexpr size_t kStack = 1u << 20;
constexpr unsigned char kPaint = 0xA7;

void* RunTask(void* task) {
  (*static_cast<const std::function<void()>*>(task))();
  return nullptr;
}

// Runs the task on a painted stack of its own; returns how far down the paint is gone.
size_t BytesTouched(const std::function<void()>& task) {
  static std::vector<unsigned char> room(kStack + 65536);
  unsigned char* stack = room.data() + (65536 - reinterpret_cast<uintptr_t>(room.data()) % 65536);
  std::fill_n(stack, kStack, kPaint);
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_t thread{};
  if (pthread_attr_setstack(&attributes, stack, kStack) != 0 ||
      pthread_create(&thread, &attributes, RunTask, const_cast<std::function<void()>*>(&task)) != 0)
    return 0;
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
  return kStack - static_cast<size_t>(
                      std::find_if(stack, stack + kStack, [](unsigned char byte) { return byte != kPaint; }) - stack);
}

}  // namespace

void PrintStack() {
  const size_t empty = BytesTouched([] {});
  const struct {
    const char* name;
    int32_t (*call)(TileParams*, int32_t*);
    bool by_blur;
  } exports[] = {{"KVDLL_DefocusTile", kelvo_defocus_tile, true},
                 {"KVDLL_FocusTile", kelvo_focus_tile, true},
                 {"KVDLL_DetectBlurWidthForTile", kelvo_detect_blur_width_for_tile, false},
                 {"KVDLL_DetectJPGCompressionForTile", kelvo_detect_jpg_compression_for_tile, false},
                 {"KVDLL_IncreaseResolution", kelvo_increase_resolution, false}};
  std::printf("\nMost bytes of stack (%zu-bit build):\n\n| export | bytes |\n|---|---|\n", 8 * sizeof(void*));
  for (const auto& each : exports) {
    size_t most = 0;
    for (int width = 1; width <= (each.by_blur ? 20 : 1); ++width)
      for (const int direction : {0, 17, 76, 118, 149, 180}) {
        Subject s(width, direction);
        s.bench.params.Accuracy = 1;
        s.bench.params.ImageWidth = s.bench.params.ImageHeight = 1000;
        s.bench.params.TileTop = s.bench.params.TileLeft = 128;
        most = std::max(most, BytesTouched([&] { each.call(&s.bench.params, s.bench.heap()); }));
      }
    std::printf("| `%s` | %zu |\n", each.name, most - empty);
  }
}

}  // namespace kelvo::bench
