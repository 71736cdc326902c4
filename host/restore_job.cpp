#include "restore_job.h"

#include <iostream>
#include <vector>

#include "auto_settings.h"
#include "colour.h"
#include "enlarging.h"
#include "errors.h"
#include "image_file.h"
#include "output_file.h"
#include "picture_input.h"
#include "progress.h"
#include "tiling.h"

namespace kelvo::host {
namespace {

vips::VImage Treated(const ColourPicture& picture, Command command, const RestoreSettings& settings) {
  if (settings.width == 0) return picture.image;
  const TileTask task = command == Command::kBlur ? BlurTask(settings.width, settings.raw_values, settings.direction)
                                                  : RestoreTask(settings);
  return ProcessTiles(picture.image, picture.colour_bands, task);
}

vips::VImage Processed(const ColourPicture& picture, const Options& options, const RestoreSettings& settings) {
  const vips::VImage treated = Treated(picture, options.command, settings);
  try {
    return options.enlarge ? EnlargePicture(treated, picture.colour_bands) : treated;
  } catch (const HostError& error) {
    throw HostError("cannot enlarge \"" + options.input + "\": " + error.what());
  }
}

const char* Activity(const Options& options) {
  if (options.command == Command::kBlur) return "blurring";
  return options.command == Command::kEnlarge ? "enlarging" : "restoring";
}

}  // namespace

void RunPictureJob(const Options& options) {
  const std::string saver = SaverFor(options.output);
  OutputFile output(options.output, options.force);
  const bool show_progress = !options.quiet && TerminalShowsProgress();
  std::vector<std::string> notes;
  const ColourPicture picture = LoadColourPicture(options.input, show_progress, notes);
  for (const std::string& loss : LossesIn(saver, picture.image)) notes.push_back(loss);
  if (!options.quiet) {
    for (const std::string& note : notes) std::cerr << "kelvo: note: " << options.input << ": " << note << "\n";
  }
  RestoreSettings settings = options.settings;
  if (options.command == Command::kRestore) {
    settings = CompleteSettings(options, picture, show_progress);
    if (settings.width == 0 && !WritesUnblurred(options)) return;
  }
  const vips::VImage result = Processed(picture, options, settings);
  try {
    const Progress progress(result, Activity(options), show_progress);
    SavePicture(result, saver, output.temporary_path());
  } catch (const HostError& error) {
    throw HostError("cannot write \"" + options.output + "\" from \"" + options.input + "\": " + error.what());
  }
  output.Commit();
}

}  // namespace kelvo::host
