#include "auto_settings.h"

#include <cmath>

#include "errors.h"
#include "noise.h"
#include "vips_setup.h"

namespace kelvo::host {
namespace {

// The strength may be given, but not the phase of the grid: a picture may have been cut.
Wanted WantedFor(const PictureSettings& settings) {
  return {settings.width.automatic, !settings.width.IsZero() && settings.jpeg != 0};
}

bool WantsNoise(const PictureSettings& settings) {
  return !settings.noise && !settings.tile.classic && !settings.width.IsZero();
}

std::string DetectionText(const Detection& detection, Wanted measured) {
  std::string text;
  if (measured.width) {
    text = detection.width != 0 ? "blur of width " + std::to_string(detection.width) : "no blur";
    text += detection.HasEdges() ? " (votes: " + detection.Votes() + ")" : " (there are no edges to tell it by)";
  }
  if (!measured.grid) return text;
  text += text.empty() ? "" : "; ";
  if (detection.jpeg == 0) return text + "no JPEG blocks";
  return text + "JPEG compression of strength " + std::to_string(detection.jpeg) + ", grid at " +
         std::to_string(detection.column_phase) + "," + std::to_string(detection.row_phase);
}

std::string NoiseText(double sigma) {
  const int tenths = static_cast<int>(std::lround(sigma * 10));
  return "noise of " + std::to_string(tenths / 10) + "." + std::to_string(tenths % 10) + " levels";
}

}  // namespace

std::string Findings::Text() const {
  const std::string text = DetectionText(detection, measured);
  return noise ? text + (text.empty() ? "" : "; ") + NoiseText(*noise) : text;
}

Findings MeasureFor(const PictureSettings& settings, const ColourPicture& picture, const std::string& name,
                    bool show_progress) {
  Findings findings{WantedFor(settings), {}, {}};
  try {
    if (findings.any())
      findings.detection = Decide(Measure(picture.image, picture.colour_bands, findings.measured, show_progress));
    const bool sharp = settings.width.automatic && settings.width.For(findings.detection.width) == 0;
    if (WantsNoise(settings) && !sharp) findings.noise = NoiseOf(picture.image, picture.colour_bands, show_progress);
  } catch (const vips::VError&) {
    throw HostError("cannot measure \"" + name + "\": " + TakeVipsMessages());
  }
  return findings;
}

// A grid that leaves no trace is taken for that of a whole file.
RestoreSettings Completed(const PictureSettings& settings, const Findings& findings) {
  const Detection& found = findings.detection;
  RestoreSettings completed = settings.tile;
  completed.width = settings.width.For(found.width);
  completed.jpeg = settings.jpeg.value_or(completed.width != 0 ? found.jpeg : 0);
  completed.noise = settings.noise.value_or(findings.noise ? NoiseLevel(*findings.noise, completed.jpeg) : 0);
  if (found.jpeg != 0) {
    completed.jpeg_column = found.column_phase;
    completed.jpeg_row = found.row_phase;
  }
  return completed;
}

}  // namespace kelvo::host
