/* Loads Kelvo.dll, blurs a drawn tile and restores it: all that a host has to do, in one file.
 *
 *   i686-w64-mingw32-gcc -I include restore_one_tile.c -o restore_one_tile.exe
 *   cl /I include restore_one_tile.c
 *
 * Build it as a 32-bit program: the block carries the heap's address in 32 bits. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <windows.h>

#include "kelvo/kelvo.h"

typedef int32_t(KELVO_CALL* QueryFunction)(void);
typedef int32_t(KELVO_CALL* TileFunction)(TileParams*);

static FARPROC find(HMODULE library, const char* name) {
  FARPROC function = GetProcAddress(library, name);
  if (function == NULL) {
    fprintf(stderr, "Kelvo.dll has no function %s\n", name);
    exit(1);
  }
  return function;
}

/* A host would copy its image here: 256 x 256 samples of one channel, of which the middle 128 x 128 are restored.
 * 8-bit levels count 128 each. */
static void draw_tile(int32_t* tile) {
  int row, column;
  for (row = 0; row < KELVO_TILE_SIZE; ++row)
    for (column = 0; column < KELVO_TILE_SIZE; ++column)
      tile[row * KELVO_TILE_SIZE + column] = ((row / 12 + column / 20) % 2 ? 190 : 60) * KELVO_LEVEL;
}

/* Mean distance of the core from that of `wanted`, in grey levels. */
static double distance(const int32_t* tile, const int32_t* wanted) {
  double sum = 0;
  int row, column;
  for (row = KELVO_CORE_START; row < KELVO_CORE_START + KELVO_CORE_SIZE; ++row)
    for (column = KELVO_CORE_START; column < KELVO_CORE_START + KELVO_CORE_SIZE; ++column)
      sum += abs(tile[row * KELVO_TILE_SIZE + column] - wanted[row * KELVO_TILE_SIZE + column]);
  return sum / KELVO_LEVEL / KELVO_CORE_SIZE / KELVO_CORE_SIZE;
}

/* Blurs the whole tile. A call changes the core alone, so the tile is shifted under it, quarter by quarter. */
static void blur_tile(TileFunction defocus, TileParams* block, int32_t* heap, int32_t* tile) {
  int32_t* source = (int32_t*)malloc(sizeof(int32_t) * 65536);
  int top, left, row, column;
  memcpy(source, tile, sizeof(int32_t) * 65536);
  for (top = 0; top < 256; top += 128)
    for (left = 0; left < 256; left += 128) {
      for (row = 0; row < 256; ++row)
        for (column = 0; column < 256; ++column)
          heap[row * 256 + column] = source[((top + row - 64) & 255) * 256 + ((left + column - 64) & 255)];
      defocus(block);
      for (row = 0; row < 128; ++row)
        for (column = 0; column < 128; ++column)
          tile[(top + row) * 256 + left + column] = heap[(64 + row) * 256 + 64 + column];
    }
  free(source);
}

int main(void) {
  HMODULE library = LoadLibraryA("Kelvo.dll");
  QueryFunction heap_size, version;
  TileFunction defocus, focus;
  TileParams block;
  int32_t *heap, *wanted, *tile;
  int32_t result;

  if (library == NULL) {
    fprintf(stderr, "Kelvo.dll is not beside this program\n");
    return 1;
  }
  heap_size = (QueryFunction)find(library, "KVDLL_GetHeapSize");
  version = (QueryFunction)find(library, "KVDLL_GetVersionNumber");
  defocus = (TileFunction)find(library, "KVDLL_DefocusTile");
  focus = (TileFunction)find(library, "KVDLL_FocusTile");

  heap = (int32_t*)malloc(sizeof(int32_t) * (size_t)heap_size()); /* the tile is its first 65536 words */
  tile = (int32_t*)malloc(sizeof(int32_t) * 65536);
  wanted = (int32_t*)malloc(sizeof(int32_t) * 65536);

  memset(&block, 0, sizeof block);
  block.StructureSize = sizeof block;
  block.WorkHeap = (uint32_t)(size_t)heap;
  block.BlurSpec = 4; /* width 4; a motion's direction in degrees would stand in bits 8 and up */
  block.Accuracy = 2;

  draw_tile(wanted);
  memcpy(tile, wanted, sizeof(int32_t) * 65536);
  blur_tile(defocus, &block, heap, tile);

  memcpy(heap, tile, sizeof(int32_t) * 65536);
  result = focus(&block);
  if (result != KELVO_OK) {
    fprintf(stderr, "KVDLL_FocusTile: %s (%d)\n", block.Message, (int)result);
    return 1;
  }
  printf("Kelvo %d: blurred %.2f grey levels away from the drawn tile, restored %.2f\n", (int)version(),
         distance(tile, wanted), distance(heap, wanted));
  return distance(heap, wanted) < distance(tile, wanted) ? 0 : 1;
}
