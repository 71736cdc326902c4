#include "support/library.h"

#include <stdexcept>
#include <string>

#if defined(_WIN32)
#include <windows.h>
#endif

namespace kelvo::test {
namespace {

int32_t CallEntryPoint(int ordinal, TileParams& params, int32_t* heap, uint32_t variant) {
  switch (ordinal) {
    case 3:
      return kelvo_defocus_tile(&params, heap);
    case 4:
      return kelvo_focus_tile_with(&params, heap, variant);
    case 5:
      return kelvo_detect_blur_width_for_tile(&params, heap);
    case 6:
      return kelvo_detect_jpg_compression_for_tile(&params, heap);
    case 7:
      return kelvo_increase_resolution(&params, heap);
    default:
      throw std::invalid_argument("no tile export with ordinal " + std::to_string(ordinal));
  }
}

#if defined(_WIN32)
FARPROC ExportOf(int ordinal) {
  static const HMODULE library = LoadLibraryA("Kelvo.dll");
  if (library == nullptr) throw std::runtime_error("Kelvo.dll cannot be loaded");
  const FARPROC function = GetProcAddress(library, MAKEINTRESOURCEA(ordinal));
  if (function == nullptr) throw std::runtime_error("Kelvo.dll has no ordinal " + std::to_string(ordinal));
  return function;
}

// The argument lies `pad` bytes below an address that is a multiple of 16.
int32_t CallWithStack(FARPROC function, TileParams* params, int pad) {
  int32_t result = 0;
  asm volatile(
      "movl %%esp, %%esi\n\t"
      "andl $-16, %%esp\n\t"
      "subl %%ebx, %%esp\n\t"
      "pushl %1\n\t"
      "call *%2\n\t"
      "movl %%esi, %%esp"
      : "=a"(result), "+c"(params), "+d"(function)
      : "b"(pad)
      : "esi", "memory", "cc", "xmm0", "xmm1", "xmm2", "xmm3", "xmm4", "xmm5", "xmm6", "xmm7");
  return result;
}
#endif

}  // namespace

int32_t CallLibrary(int ordinal, TileParams& params, int32_t* heap, uint32_t variant) {
#if defined(_WIN32)
  if (variant == 0) {
    static int calls = 0;
    params.WorkHeap = reinterpret_cast<uintptr_t>(heap);
    return CallWithStack(ExportOf(ordinal), &params, calls++ % 4 * 4);
  }
#endif
  return CallEntryPoint(ordinal, params, heap, variant);
}

}  // namespace kelvo::test
