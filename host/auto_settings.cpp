#include "auto_settings.h"

#include <filesystem>
#include <iostream>

#include "detection.h"
#include "errors.h"
#include "vips_setup.h"

namespace kelvo::host {
namespace {

// The strength may be given, but not the phase of the grid: a picture may have been cut.
Wanted WantedFor(const Options& options) {
  return {!options.width.has_value(), options.width != 0 && options.jpeg != 0};
}

Detection DetectIn(const Options& options, const ColourPicture& picture, Wanted wanted, bool show_progress) {
  try {
    return Decide(Measure(picture.image, picture.colour_bands, wanted, show_progress));
  } catch (const vips::VError&) {
    throw HostError("cannot measure \"" + options.input + "\": " + TakeVipsMessages());
  }
}

std::string Phase(int column, int row) {
  return std::to_string(column) + "," + std::to_string(row);
}

std::string WhatWasFound(const Detection& found, Wanted wanted) {
  std::string text;
  if (wanted.width) {
    text = found.width != 0 ? "blur of width " + std::to_string(found.width) : "no blur";
    text += found.HasEdges() ? " (votes: " + found.Votes() + ")" : " (there are no edges to tell it by)";
  }
  if (!wanted.grid) return text;
  text += text.empty() ? "" : "; ";
  if (found.jpeg == 0) return text + "no JPEG blocks";
  return text + "JPEG compression of strength " + std::to_string(found.jpeg) + ", grid at " +
         Phase(found.column_phase, found.row_phase);
}

std::string WhatIsDone(const RestoreSettings& settings, const Options& options) {
  if (settings.width == 0 && !WritesUnblurred(options))
    return "nothing to restore, nothing written; to restore all the same give --width";
  if (settings.width == 0) return (options.enlarge ? "enlarged only, to " : "written as it is, to ") + options.output;
  std::string text = "restoring with width " + std::to_string(settings.width);
  if (settings.direction != 0) text += " in direction " + std::to_string(settings.direction);
  if (settings.jpeg != 0)
    text +=
        ", JPEG strength " + std::to_string(settings.jpeg) + " at " + Phase(settings.jpeg_column, settings.jpeg_row);
  return text + (options.enlarge ? ", enlarging, into " : ", into ") + options.output;
}

// What has been found where the user said nothing. A grid that leaves no trace is taken for that of a whole file.
RestoreSettings Completed(const Options& options, const Detection& found) {
  RestoreSettings settings = options.settings;
  if (!options.width) settings.width = found.width;
  if (!options.jpeg) settings.jpeg = settings.width != 0 ? found.jpeg : 0;
  if (found.jpeg != 0) {
    settings.jpeg_column = found.column_phase;
    settings.jpeg_row = found.row_phase;
  }
  return settings;
}

}  // namespace

RestoreSettings CompleteSettings(const Options& options, const ColourPicture& picture, bool show_progress) {
  const Wanted wanted = WantedFor(options);
  Detection found;
  if (wanted.width || wanted.grid) found = DetectIn(options, picture, wanted, show_progress);
  const RestoreSettings settings = Completed(options, found);
  if (!options.quiet) {
    if (wanted.width || wanted.grid) std::cout << options.input << ": " << WhatWasFound(found, wanted) << "\n";
    std::cout << options.input << ": " << WhatIsDone(settings, options) << std::endl;
  }
  return settings;
}

bool WritesUnblurred(const Options& options) {
  return options.output_named || options.width == 0 || options.enlarge;
}

}  // namespace kelvo::host
