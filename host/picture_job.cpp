#include "picture_job.h"

#include <chrono>
#include <filesystem>
#include <new>

#include "colour.h"
#include "errors.h"
#include "image_file.h"
#include "interrupt.h"
#include "metadata.h"
#include "output_file.h"
#include "picture_input.h"
#include "progress.h"
#include "stored_settings.h"
#include "treatment.h"
#include "vips_setup.h"

namespace kelvo::host {
namespace fs = std::filesystem;
namespace {

const char* Activity(Command command) {
  if (command == Command::kBlur) return "blurring";
  return command == Command::kEnlarge ? "enlarging" : "restoring";
}

// A picture without blur is written all the same if the user has named an output, asked for width 0 or wants it
// enlarged.
bool WritesUnblurred(const Options& options) {
  return !options.output.empty() || options.picture.width.IsZero() || options.picture.enlarge;
}

bool Exists(const std::string& path) {
  std::error_code ignored;
  return fs::exists(path, ignored);
}

void CreateFolderOf(const std::string& path) {
  const fs::path folder = fs::path(path).parent_path();
  std::error_code error;
  if (!folder.empty()) fs::create_directories(folder, error);
  if (error) throw HostError("cannot create the folder \"" + folder.string() + "\": " + error.message());
}

class Job {
 public:
  Job(const PictureFile& file, const Options& options, const std::string& label, PictureRecord& record)
      : file_(file), options_(options), label_(label), record_(record) {}

  void Run() {
    if (!file_.error.empty()) throw HostError(file_.error);
    const std::string saver = SaverFor(file_.output);
    if (options_.skip_existing && Exists(file_.output)) {
      record_.outcome = Outcome::kSkipped;
    } else if (options_.dry_run) {
      Plan();
    } else {
      if (!options_.output_dir.empty()) CreateFolderOf(file_.output);
      OutputFile output(file_.output, options_.force);
      Write(saver, output);
    }
  }

 private:
  bool show_progress() const { return !options_.quiet && TerminalShowsProgress(); }

  void Note(const vips::VImage& image) {
    record_.columns = image.width();
    record_.rows = image.height();
  }

  void Plan() {
    Note(OpenPicture(file_.path, record_.notes));
    RequireReplaceable(file_.output, options_.force);
    record_.outcome = Outcome::kPlanned;
    record_.settings = Completed(options_.picture, {});
  }

  void Write(const std::string& saver, OutputFile& output) {
    const ColourPicture picture = LoadColourPicture(file_.path, show_progress(), record_.notes);
    Note(picture.image);
    const Metadata metadata(file_.path);
    for (const std::string& loss : LossesIn(saver, picture.image)) record_.notes.push_back(loss);
    for (const std::string& loss : metadata.LossesIn(saver)) record_.notes.push_back(loss);
    Complete(picture);
    if (record_.settings.width == 0 && options_.command == Command::kRestore && !WritesUnblurred(options_)) {
      record_.outcome = Outcome::kSharp;
      return;
    }
    const vips::VImage result = Treated(picture);
    Save(metadata.Prepare(result, saver), saver, output.temporary_path());
    CompleteMetadata(metadata, saver, output.temporary_path());
    output.Commit();
    record_.outcome = Outcome::kWritten;
  }

  void Complete(const ColourPicture& picture) {
    if (options_.command == Command::kRestore)
      record_.findings = MeasureFor(options_.picture, picture, file_.path, show_progress());
    if (options_.command != Command::kEnlarge) record_.settings = Completed(options_.picture, record_.findings);
  }

  vips::VImage Treated(const ColourPicture& picture) {
    try {
      const vips::VImage result = TreatPicture(picture, options_.command, options_.picture, record_.settings);
      return WithSettingsInXmp(result, SettingsOf(options_.command, options_.picture, record_.settings));
    } catch (const HostError& error) {
      throw HostError("cannot use \"" + file_.path + "\": " + error.what());
    }
  }

  void Save(const vips::VImage& result, const std::string& saver, const std::string& path) {
    try {
      const Progress progress(result, label_ + Activity(options_.command), show_progress());
      SavePicture(result, saver, path, EncodingOf(file_.path), options_.picture.quality);
    } catch (const HostError& error) {
      throw HostError("cannot write \"" + file_.output + "\" from \"" + file_.path + "\": " + error.what());
    }
  }

  void CompleteMetadata(const Metadata& metadata, const std::string& saver, const std::string& path) {
    try {
      const std::string loss = metadata.Complete(saver, path, options_.picture.enlarge ? 2 : 1);
      if (!loss.empty()) record_.notes.push_back(loss);
    } catch (const HostError& error) {
      throw HostError("cannot write \"" + file_.output + "\" from \"" + file_.path + "\": " + error.what());
    }
  }

  const PictureFile& file_;
  const Options& options_;
  const std::string& label_;
  PictureRecord& record_;
};

}  // namespace

PictureRecord RunPictureJob(const PictureFile& file, const Options& options, const std::string& label) {
  PictureRecord record;
  record.input = file.path;
  record.output = file.output;
  const auto start = std::chrono::steady_clock::now();
  try {
    Job(file, options, label, record).Run();
  } catch (const vips::VError&) {
    record.error = "cannot use \"" + file.path + "\": " + TakeVipsMessages();
  } catch (const std::bad_alloc&) {
    record.error = "cannot use \"" + file.path + "\": out of memory";
  } catch (const std::exception& error) {
    record.error = error.what();
  }
  if (StopRequested() && !record.error.empty()) {
    record.outcome = Outcome::kInterrupted;
    record.error = "interrupted";
  }
  record.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  return record;
}

}  // namespace kelvo::host
