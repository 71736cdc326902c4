// The functions of kelvo.h: each makes its call with the routines of the best level that the machine has.
#include "api/calls.h"
#include "kelvo/kelvo.h"
#include "stages/routines.h"

namespace kelvo {
namespace {

int32_t Run(Operation operation, TileParams* params, int32_t* work_heap, uint32_t variant = 0) {
  return Call(operation, *params, work_heap, BestRoutines(), variant);
}

int32_t* HeapOf(const TileParams* params) {
  // NOLINTNEXTLINE(performance-no-int-to-ptr): the block carries an address by definition
  return reinterpret_cast<int32_t*>(static_cast<uintptr_t>(params->WorkHeap));
}

}  // namespace
}  // namespace kelvo

extern "C" {

int32_t KELVO_CALL KVDLL_GetHeapSize(void) {
  return KELVO_HEAP_WORDS;
}

int32_t KELVO_CALL KVDLL_GetVersionNumber(void) {
  return 5000;
}

int32_t KELVO_CALL kelvo_defocus_tile(TileParams* params, int32_t* work_heap) {
  return kelvo::Run(kelvo::Operation::kDefocus, params, work_heap);
}

int32_t KELVO_CALL kelvo_focus_tile_with(TileParams* params, int32_t* work_heap, uint32_t variant) {
  return kelvo::Run(kelvo::Operation::kFocus, params, work_heap, variant);
}

int32_t KELVO_CALL kelvo_focus_tile(TileParams* params, int32_t* work_heap) {
  return kelvo_focus_tile_with(params, work_heap, 0);
}

int32_t KELVO_CALL kelvo_detect_blur_width_for_tile(TileParams* params, int32_t* work_heap) {
  return kelvo::Run(kelvo::Operation::kDetectBlurWidth, params, work_heap);
}

int32_t KELVO_CALL kelvo_detect_jpg_compression_for_tile(TileParams* params, int32_t* work_heap) {
  return kelvo::Run(kelvo::Operation::kDetectJpegGrid, params, work_heap);
}

int32_t KELVO_CALL kelvo_increase_resolution(TileParams* params, int32_t* work_heap) {
  return kelvo::Run(kelvo::Operation::kEnlarge, params, work_heap);
}

int32_t KELVO_CALL KVDLL_DefocusTile(TileParams* params) {
  return kelvo_defocus_tile(params, kelvo::HeapOf(params));
}

int32_t KELVO_CALL KVDLL_FocusTile(TileParams* params) {
  return kelvo_focus_tile(params, kelvo::HeapOf(params));
}

int32_t KELVO_CALL KVDLL_DetectBlurWidthForTile(TileParams* params) {
  return kelvo_detect_blur_width_for_tile(params, kelvo::HeapOf(params));
}

int32_t KELVO_CALL KVDLL_DetectJPGCompressionForTile(TileParams* params) {
  return kelvo_detect_jpg_compression_for_tile(params, kelvo::HeapOf(params));
}

int32_t KELVO_CALL KVDLL_IncreaseResolution(TileParams* params) {
  return kelvo_increase_resolution(params, kelvo::HeapOf(params));
}

}  // extern "C"
