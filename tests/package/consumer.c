/* A host's first program: blurs a flat tile with the installed library. */
#include <stdio.h>
#include <stdlib.h>

#include <kelvo/kelvo.h>

int main(void) {
  TileParams params = {0};
  int32_t* heap = calloc(KELVO_HEAP_WORDS, sizeof *heap);
  int32_t cell;
  if (heap == NULL) return 1;
  for (cell = 0; cell < KELVO_TILE_SIZE * KELVO_TILE_SIZE; ++cell) heap[cell] = KELVO_DISPLAY_WHITE;
  params.StructureSize = sizeof params;
  params.BlurSpec = 8;
  if (kelvo_defocus_tile(&params, heap) != KELVO_OK) return 1;
  cell = heap[KELVO_TILE_SIZE * KELVO_CORE_START + KELVO_CORE_START];
  free(heap);
  printf("white stays %ld\n", (long)cell);
  return cell != KELVO_DISPLAY_WHITE;
}
