#include "restore_job.h"

#include <iostream>
#include <vector>

#include "colour.h"
#include "enlarging.h"
#include "errors.h"
#include "image_file.h"
#include "output_file.h"
#include "progress.h"
#include "tiling.h"
#include "vips_setup.h"

namespace kelvo::host {
namespace {

ColourPicture LoadColourPicture(const Options& options, bool show_progress, std::vector<std::string>& notes) {
  const vips::VImage image = OpenPicture(options.input, notes);
  {
    const Progress progress(image, "reading", show_progress);
    DecodePicture(image, options.input);
  }
  try {
    ColourPicture picture = AsColourPicture(image);
    if (!picture.note.empty()) notes.push_back(picture.note);
    return picture;
  } catch (const HostError& error) {
    throw HostError("cannot use \"" + options.input + "\": " + error.what());
  } catch (const vips::VError&) {
    throw HostError("cannot use \"" + options.input + "\": " + TakeVipsMessages());
  }
}

vips::VImage Treated(const ColourPicture& picture, const Options& options) {
  const RestoreSettings& settings = options.settings;
  if (settings.width == 0) return picture.image;
  const TileTask task = options.command == Command::kBlur
                            ? BlurTask(settings.width, settings.raw_values, settings.direction)
                            : RestoreTask(settings);
  return ProcessTiles(picture.image, picture.colour_bands, task);
}

vips::VImage Processed(const ColourPicture& picture, const Options& options) {
  const vips::VImage treated = Treated(picture, options);
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
  const ColourPicture picture = LoadColourPicture(options, show_progress, notes);
  for (const std::string& loss : LossesIn(saver, picture.image)) notes.push_back(loss);
  if (!options.quiet) {
    for (const std::string& note : notes) std::cerr << "kelvo: note: " << options.input << ": " << note << "\n";
  }
  const vips::VImage result = Processed(picture, options);
  try {
    const Progress progress(result, Activity(options), show_progress);
    SavePicture(result, saver, output.temporary_path());
  } catch (const HostError& error) {
    throw HostError("cannot write \"" + options.output + "\" from \"" + options.input + "\": " + error.what());
  }
  output.Commit();
}

}  // namespace kelvo::host
