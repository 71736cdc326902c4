// What restoring needs to know and was not told: found in the picture.
#ifndef KELVO_HOST_AUTO_SETTINGS_H
#define KELVO_HOST_AUTO_SETTINGS_H

#include <optional>
#include <string>

#include "colour.h"
#include "detection.h"
#include "picture_settings.h"

namespace kelvo::host {

struct Findings {
  Wanted measured{false, false};  // what had to be known; nothing else in `detection` counts
  Detection detection;
  std::optional<double> noise;  // standard deviation, grey levels

  bool any() const { return measured.width || measured.grid || noise; }

  // For people, for example "blur of width 4 (votes: 4 61%); no JPEG blocks; noise of 0.3 levels". Empty if nothing was measured.
  std::string Text() const;
};

// Measures what the settings leave open. Throws HostError with `name`, the picture's, or vips::VError.
Findings MeasureFor(const PictureSettings& settings, const ColourPicture& picture, const std::string& name,
                    bool show_progress);

// The settings with what was found in place of what they leave open, and with the phase of the JPEG grid. Width 0: there
// is no blur.
RestoreSettings Completed(const PictureSettings& settings, const Findings& findings);

}  // namespace kelvo::host

#endif  // KELVO_HOST_AUTO_SETTINGS_H
