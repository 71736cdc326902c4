// What is done to a picture.
#ifndef KELVO_HOST_PICTURE_SETTINGS_H
#define KELVO_HOST_PICTURE_SETTINGS_H

#include <optional>

#include "tile_task.h"
#include "width_request.h"

namespace kelvo::host {

// Pixels of the picture as it is stored, before its orientation is applied.
struct Area {
  int left = 0, top = 0, width = 0, height = 0;
};

struct PictureSettings {
  WidthRequest width;          // of the blur that is restored or made
  std::optional<int> jpeg;     // strength 0..80; nothing: to be detected
  std::optional<int> noise;    // suppression -1..3; nothing: to be measured
  RestoreSettings tile;        // the rest; its width, JPEG strength and noise are filled in from those above
  std::optional<bool> luma;    // restore brightness alone instead of each channel; nothing: by JPEG strength
  bool enlarge = false;        // twofold, after restoring
  std::optional<Area> region;  // only this part is written
  std::optional<int> quality;  // of lossy formats, 1..100; nothing: that of the input where it has one
};

// Whether brightness alone is restored. JPEG keeps colours at half the resolution and coarser, so that each channel by
// itself gains less than what the colours lose (docs/program.md).
inline bool RestoresLuma(const PictureSettings& settings, const RestoreSettings& done) {
  return settings.luma.value_or(done.jpeg >= 10);
}

}  // namespace kelvo::host

#endif  // KELVO_HOST_PICTURE_SETTINGS_H
