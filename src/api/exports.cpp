// The functions of kelvo.h: empty the message, validate, call, return.
#include <cstring>

#include "analysis/blur_width.h"
#include "analysis/jpeg_grid.h"
#include "api/dispatch.h"
#include "api/validate.h"
#include "enlarge/enlarge.h"
#include "kelvo/kelvo.h"
#include "stages/routines.h"

namespace kelvo {
namespace {

// The message is copied with its own length and NUL; bytes behind it stay.
bool Refused(TileParams& params, const Verdict& verdict) {
  std::memcpy(params.Message, verdict.message, std::strlen(verdict.message) + 1);
  return verdict.code != KELVO_OK;
}

template <class Check, class Process>
int32_t Run(TileParams* params, int32_t* work_heap, Check check, Process process, uint32_t variant = 0) {
  const Verdict verdict = check(*params);
  if (!Refused(*params, verdict)) process(Tile(*params, work_heap, BestRoutines(), variant));
  return verdict.code;
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
  return kelvo::Run(params, work_heap, kelvo::CheckDefocus, kelvo::Defocus);
}

int32_t KELVO_CALL kelvo_focus_tile_with(TileParams* params, int32_t* work_heap, uint32_t variant) {
  return kelvo::Run(params, work_heap, kelvo::CheckFocus, kelvo::Focus, variant);
}

int32_t KELVO_CALL kelvo_focus_tile(TileParams* params, int32_t* work_heap) {
  return kelvo_focus_tile_with(params, work_heap, 0);
}

int32_t KELVO_CALL kelvo_detect_blur_width_for_tile(TileParams* params, int32_t* work_heap) {
  return kelvo::Run(params, work_heap, kelvo::CheckSize, kelvo::DetectBlurWidth);
}

int32_t KELVO_CALL kelvo_detect_jpg_compression_for_tile(TileParams* params, int32_t* work_heap) {
  return kelvo::Run(params, work_heap, kelvo::CheckJpgDetection, kelvo::DetectJpegGrid);
}

int32_t KELVO_CALL kelvo_increase_resolution(TileParams* params, int32_t* work_heap) {
  return kelvo::Run(params, work_heap, kelvo::CheckSize, kelvo::Enlarge);
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
