/* Kelvo restores photographs one tile at a time, in exact integers.
 *
 * A tile is 256 x 256 samples of one channel. The host writes it into the first plane of a work heap of
 * KVDLL_GetHeapSize() four-byte words, fills one TileParams block and calls one of the functions below; the
 * result is the tile's core, rows and columns 64..191 of the same plane. Cell (row, column) of the tile is
 * word 256 * row + column of the heap. Samples are display values: 8-bit grey level times 128, 0..32640 on
 * entry, 0..32767 on exit. What lies around the core is context and should come from the image.
 *
 * No function keeps state, allocates, starts a thread or throws. Calls on distinct blocks and heaps may run
 * at once; two calls must never share a block or a heap. The heap must be aligned to 4 bytes.
 *
 * Plain C (C89 with <stdint.h>) and C++.
 */
#ifndef KELVO_KELVO_H
#define KELVO_KELVO_H

#include <stdint.h>

#if defined(_WIN32)
#define KELVO_CALL __cdecl
#else
#define KELVO_CALL
#endif

#if defined(KELVO_BUILDING) && !defined(_WIN32)
#define KELVO_API __attribute__((visibility("default")))
#else
#define KELVO_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

enum {
  KELVO_TILE_SIZE = 256,          /* rows and columns of a tile */
  KELVO_CORE_START = 64,          /* first row and column of the result */
  KELVO_CORE_SIZE = 128,          /* rows and columns of the result */
  KELVO_HEAP_WORDS = 0x100000,    /* what KVDLL_GetHeapSize() returns: 4,194,304 bytes */
  KELVO_LEVEL = 128,              /* display value of one 8-bit grey level */
  KELVO_DISPLAY_WHITE = 255 * 128 /* display value of level 255 */
};

/* Result codes. Codes 1 and 3 serve two messages each: TileParams::Message tells them apart. */
enum {
  KELVO_OK = 0,
  KELVO_BAD_BLUR = 1,      /* "Invalid Blur Width" or "Invalid Motion Blur Direction" */
  KELVO_BAD_LEVEL = 3,     /* "Invalid RemoveNoise" or "Invalid Accuracy" */
  KELVO_BAD_SIZE = 4,      /* "Invalid Structure Size" */
  KELVO_BAD_JPG_OFFSET = 7 /* "Invalid JPGHorizontalOffset or JPGVerticalOffset" */
};

/* Variants of kelvo_focus_tile_with, to be added up. Bits not listed must be 0.
 *
 * The pair search of round blur leaves its trial moves in the tile, so a result depends on where the tile's
 * border lies and neighbouring tiles do not quite meet. UNDO_ROUND_MOVES takes the moves back before the next
 * pair is searched: tiles meet, and widths from 3 on restore better.
 * SIGNED_MOTION makes the multiply-high of the motion re-blur signed, so that estimates below zero stay small.
 * KEEP_FRACTION evaluates both tone curves between their entries, so that the fraction of a grey level is kept.
 * FIT ends a run with gradient steps that make the blurred estimate agree with the tile as it was given; Accuracy and
 * the width tell how many, RemoveNoise how much smoothness counts. It replaces the extrapolation and the return of
 * detail. FIT_ALONE, with FIT, leaves the search out: the steps start from the tile. */
enum {
  KELVO_VARIANT_UNDO_ROUND_MOVES = 1,
  KELVO_VARIANT_SIGNED_MOTION = 2,
  KELVO_VARIANT_KEEP_FRACTION = 4,
  KELVO_VARIANT_FIT = 8,
  KELVO_VARIANT_FIT_ALONE = 16
};

/* The parameter, result and working block: 1004 bytes, little-endian, a fixed binary interface.
 * in: set by the host; out: set by the library; work: scratch of a call, its content on entry does not matter
 * (but see NoiseFloor). The bytes named Host* are the host's own: never read, never written. */
typedef struct TileParams {
  uint32_t StructureSize; /* in: 1004 */
  uint32_t BlurSpec;      /* in: bits 0..7 blur width 0..20; bits 8..31, signed, the direction: 0 round
                             (defocus) blur, 1..359 straight motion blur at that angle in degrees */
  uint8_t Host8[8];
  int32_t RemoveNoise; /* in: -1..3, noise suppression of KVDLL_FocusTile */
  uint8_t Host20[8];
  int32_t Accuracy;  /* in: -2..2, effort of KVDLL_FocusTile */
  uint32_t WorkHeap; /* in: 32-bit address of the work heap; ignored by the kelvo_ functions */
  char Message[49];  /* out: English text of a failed check, else empty; always ends with a NUL */
  uint8_t Host85[207];
  int32_t ImageWidth;  /* in: columns of the whole image, pixels (detection, FIT; 0: the tile shows nothing else) */
  int32_t ImageHeight; /* in: rows of the whole image, pixels (likewise) */
  int32_t TileTop;     /* in: image row of the tile's first core row */
  int32_t TileLeft;    /* in: image column of the tile's first core column */
  uint8_t Host308[4];
  int32_t BlurWidthVotes[21];    /* in/out: votes for widths 0..20 over the tiles of an image; host zeroes */
  int32_t DetectedBlurWidth;     /* out: 0..20 */
  int32_t JPGColumnPhaseSums[8]; /* in/out: sums of horizontal differences by column mod 8; host zeroes */
  int32_t JPGRowPhaseSums[8];    /* in/out: sums of vertical differences by row mod 8; host zeroes */
  int32_t JPGTileCount;          /* in/out: tiles measured; host zeroes */
  uint8_t Host468[4];
  int32_t JPGHorizontalOffset; /* in/out: 0..7, column phase of the JPEG 8 x 8 grid */
  int32_t JPGVerticalOffset;   /* in/out: 0..7, row phase of the grid */
  int32_t JPGCompression;      /* in/out: strength of JPEG compression, 0 (none) .. 80 */
  uint8_t Host484[8];
  int32_t SmoothedBlurWidthVotes[21]; /* out: smoothed copy of BlurWidthVotes */
  uint8_t Host576[304];
  int32_t ShortcutMode; /* work: 0 full run, 1..3 shortened runs of round widths 1..6 */
  int32_t RefineCount;  /* work: refinement passes of the current iteration */
  int32_t ScaleShift;   /* work: left shift of a decoded step, bits */
  int32_t Pass;         /* work: 1 or 2 */
  uint8_t Host896[20];
  int32_t HalfStep;   /* work: Step >> 1 */
  int32_t NoiseFloor; /* work: threshold of the pre-filter; KVDLL_IncreaseResolution reads it as it is */
  int32_t JPGLevel;   /* work: JPGCompression / 10, at most 6 */
  int32_t CurveIndex; /* work: tone curve, always 2 */
  uint8_t Host932[4];
  uint32_t ModelFlags;     /* work: 4 axis pairs, 8 diagonal pairs */
  int32_t IterationCount;  /* work: iterations of pass 1 */
  int32_t ExtraIterations; /* work: iterations of pass 2 */
  int32_t StepDivisor;     /* work: divisor of the pass */
  uint8_t Host952[12];
  int32_t Step;        /* work: 40000 / StepDivisor / Iteration */
  int32_t Iteration;   /* work: from 1 */
  float Strength;      /* work: weight of smoothness against data */
  float GradientScale; /* work: linear units of one step */
  uint8_t Host980[8];
  float GainA;         /* work: 1.0 */
  float GainB;         /* work: 1.0 */
  int32_t MotionState; /* work: angle of the motion member, degrees */
  int32_t RefineIndex; /* work: 1..RefineCount */
} TileParams;

typedef char KelvoTileParamsIs1004Bytes[sizeof(TileParams) == 1004 ? 1 : -1];

/* The seven exports of the 32-bit binary interface (ordinals 1..7). The heap is the one whose 32-bit address stands
 * in TileParams::WorkHeap; a 64-bit build takes that address zero-extended, for hosts that keep the heap below 4 GiB.
 *
 * Every tile function first empties Message, then checks the block and returns the first failing code with its
 * message; a refused call touches nothing else. A call whose checks pass returns 0.
 *
 * KVDLL_IncreaseResolution enlarges the centre twofold: the core becomes the enlargement of rows and columns 96..159,
 * so a host steps its tiles by 64 pixels of the picture. */
KELVO_API int32_t KELVO_CALL KVDLL_GetHeapSize(void);      /* size of the work heap in four-byte words: 1048576 */
KELVO_API int32_t KELVO_CALL KVDLL_GetVersionNumber(void); /* 5000 */
KELVO_API int32_t KELVO_CALL KVDLL_DefocusTile(TileParams* params); /* blurs; checks size, width, direction */
KELVO_API int32_t KELVO_CALL KVDLL_FocusTile(TileParams* params);   /* restores; checks size, RemoveNoise, Accuracy,
                                                                       width, direction */
KELVO_API int32_t KELVO_CALL KVDLL_DetectBlurWidthForTile(TileParams* params);      /* checks size */
KELVO_API int32_t KELVO_CALL KVDLL_DetectJPGCompressionForTile(TileParams* params); /* checks the two offsets only */
KELVO_API int32_t KELVO_CALL KVDLL_IncreaseResolution(TileParams* params);          /* enlarges; checks size */

/* The same for hosts of any word size: the heap is an argument of its own and TileParams::WorkHeap is ignored. */
KELVO_API int32_t KELVO_CALL kelvo_defocus_tile(TileParams* params, int32_t* work_heap);
KELVO_API int32_t KELVO_CALL kelvo_focus_tile(TileParams* params, int32_t* work_heap);
KELVO_API int32_t KELVO_CALL kelvo_detect_blur_width_for_tile(TileParams* params, int32_t* work_heap);
KELVO_API int32_t KELVO_CALL kelvo_detect_jpg_compression_for_tile(TileParams* params, int32_t* work_heap);
KELVO_API int32_t KELVO_CALL kelvo_increase_resolution(TileParams* params, int32_t* work_heap);

/* kelvo_focus_tile with a variant (KELVO_VARIANT_*); 0 is exactly kelvo_focus_tile. */
KELVO_API int32_t KELVO_CALL kelvo_focus_tile_with(TileParams* params, int32_t* work_heap, uint32_t variant);

#ifdef __cplusplus
}
#endif

#endif /* KELVO_KELVO_H */
