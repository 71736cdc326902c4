/* Prints the binary interface as this compiler and this library have it, in the form of interface.txt: the block's
 * size, every named field with its offset and, where the library is a DLL, every export with the ordinal that it was
 * found by and the calling convention that it was seen to follow. In strict C89, as hosts may be. */
#include <stddef.h>
#include <stdio.h>
#include <string.h>

#include "kelvo/kelvo.h"
#include "support/field_names.h"

#if defined(_WIN32)
#include <windows.h>

static const char* const names[] = {
    "KVDLL_GetHeapSize",       "KVDLL_GetVersionNumber",       "KVDLL_DefocusTile",
    "KVDLL_FocusTile",         "KVDLL_DetectBlurWidthForTile", "KVDLL_DetectJPGCompressionForTile",
    "KVDLL_IncreaseResolution"};

/* Who removed the argument: 0 bytes by the callee are cdecl. */
static int bytes_removed(FARPROC function, TileParams* params) {
  int removed, argument = (int)params, address = (int)function, result;
  __asm__ volatile(
      "movl %%esp, %%esi\n\t"
      "pushl %2\n\t"
      "movl %%esp, %1\n\t"
      "call *%3\n\t"
      "subl %%esp, %1\n\t"
      "movl %%esi, %%esp"
      : "=a"(result), "=&D"(removed), "+c"(argument), "+d"(address)
      :
      : "esi", "memory", "cc");
  return -removed;
}

static int print_exports(void) {
  HMODULE library = LoadLibraryA("Kelvo.dll");
  int ordinal;
  if (library == NULL) return 1;
  for (ordinal = 1; ordinal <= 7; ++ordinal) {
    FARPROC function = GetProcAddress(library, (LPCSTR)(size_t)ordinal);
    TileParams refused = {0};
    refused.JPGHorizontalOffset = 8; /* no call gets past its checks */
    if (function == NULL || function != GetProcAddress(library, names[ordinal - 1])) return 1;
    printf("export %d %s %s\n", ordinal, names[ordinal - 1],
           bytes_removed(function, &refused) == 0 ? "cdecl" : "other");
  }
  return 0;
}
#else
static int print_exports(void) {
  return 0;
}
#endif

int main(void) {
  TileParams params = {0};
  params.StructureSize = sizeof params;
  params.BlurSpec = 21;
  if (KVDLL_GetHeapSize() != KELVO_HEAP_WORDS || KVDLL_GetVersionNumber() != 5000) return 1;
  if (KVDLL_DefocusTile(&params) != KELVO_BAD_BLUR || strcmp(params.Message, "Invalid Blur Width") != 0) return 1;
  printf("block %lu\n", (unsigned long)sizeof(TileParams));
#define KELVO_PRINT(field) printf("field %lu " #field "\n", (unsigned long)offsetof(TileParams, field));
  KELVO_FIELD_NAMES(KELVO_PRINT)
  return print_exports();
}
