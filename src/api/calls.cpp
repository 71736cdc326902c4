#include "api/calls.h"

#include <cstring>

#include "analysis/blur_width.h"
#include "analysis/jpeg_grid.h"
#include "api/dispatch.h"
#include "api/validate.h"
#include "enlarge/enlarge.h"

namespace kelvo {
namespace {

// The message is copied with its own length and NUL; bytes behind it stay.
bool Refused(TileParams& params, const Verdict& verdict) {
  std::memcpy(params.Message, verdict.message, std::strlen(verdict.message) + 1);
  return verdict.code != KELVO_OK;
}

template <class Check, class Process>
int32_t Run(TileParams& params, Check check, Process process, const Tile& tile) {
  const Verdict verdict = check(params);
  if (!Refused(params, verdict)) process(tile);
  return verdict.code;
}

}  // namespace

int32_t Call(Operation operation, TileParams& params, int32_t* heap, const Routines& routines, uint32_t variant) {
  const Tile tile(params, heap, routines, operation == Operation::kFocus ? variant : 0);
  switch (operation) {
    case Operation::kDefocus:
      return Run(params, CheckDefocus, Defocus, tile);
    case Operation::kFocus:
      return Run(params, CheckFocus, Focus, tile);
    case Operation::kDetectBlurWidth:
      return Run(params, CheckSize, DetectBlurWidth, tile);
    case Operation::kDetectJpegGrid:
      return Run(params, CheckJpgDetection, DetectJpegGrid, tile);
    case Operation::kEnlarge:
      return Run(params, CheckSize, Enlarge, tile);
  }
  return KELVO_OK;
}

}  // namespace kelvo
