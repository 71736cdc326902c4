#include "restore_job.h"

#include <iostream>
#include <vector>

#include "auto_settings.h"
#include "colour.h"
#include "errors.h"
#include "image_file.h"
#include "output_file.h"
#include "picture_input.h"
#include "progress.h"
#include "tiling.h"

namespace kelvo::host {
namespace {

vips::VImage Processed(const ColourPicture& picture, Command command, const RestoreSettings& settings) {
  if (settings.width == 0) return picture.image;
  const TileTask task =
      command == Command::kBlur ? BlurTask(settings.width, settings.raw_values) : RestoreTask(settings);
  return ProcessTiles(picture.image, picture.colour_bands, task);
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
    if (settings.width == 0 && !WritesUnchanged(options)) return;
  }
  const vips::VImage result = Processed(picture, options.command, settings);
  try {
    const Progress progress(result, options.command == Command::kBlur ? "blurring" : "restoring", show_progress);
    SavePicture(result, saver, output.temporary_path());
  } catch (const HostError& error) {
    throw HostError("cannot write \"" + options.output + "\" from \"" + options.input + "\": " + error.what());
  }
  output.Commit();
}

}  // namespace kelvo::host
