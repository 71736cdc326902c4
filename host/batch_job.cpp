#include "batch_job.h"

#include <array>
#include <filesystem>
#include <iostream>

#include "errors.h"
#include "file_list.h"
#include "interrupt.h"
#include "picture_job.h"
#include "progress.h"

namespace kelvo::host {
namespace {

class Batch {
 public:
  Batch(const Options& options, size_t pictures) : options_(options), pictures_(pictures) {}

  void Run(const std::vector<PictureFile>& files) {
    for (const PictureFile& file : files) {
      if (StopRequested()) break;
      ++begun_;
      const std::string label = pictures_ > 1 ? std::to_string(begun_) + " of " + std::to_string(pictures_) + ", " : "";
      if (pictures_ > 1 && !options_.quiet) SetLastWords(WordsIfInterrupted());
      Report(RunPictureJob(file, options_, label));
    }
    SetLastWords("");
  }

  int Count(Outcome outcome) const { return counts_[static_cast<size_t>(outcome)]; }

  void PrintSummary() const { std::cerr << Summary(counts_); }

 private:
  std::string Summary(const std::array<int, kOutcomes>& counts) const {
    std::string text;
    for (int i = 0; i < kOutcomes; ++i)
      if (counts[i] > 0)
        text += (text.empty() ? "" : ", ") + std::to_string(counts[i]) + " " + NameOf(static_cast<Outcome>(i));
    if (begun_ < pictures_) text += (text.empty() ? "" : ", ") + std::to_string(pictures_ - begun_) + " not begun";
    return "kelvo: " + std::to_string(pictures_) + " pictures: " + (text.empty() ? "nothing to do" : text) + "\n";
  }

  // The one at work counts as interrupted.
  std::string WordsIfInterrupted() const {
    std::array<int, kOutcomes> counts = counts_;
    ++counts[static_cast<size_t>(Outcome::kInterrupted)];
    return (TerminalShowsProgress() ? "\r\033[K" : "") + Summary(counts);
  }

  void Report(const PictureRecord& record) {
    ++counts_[static_cast<size_t>(record.outcome)];
    if (!options_.quiet)
      for (const std::string& note : record.notes) std::cerr << "kelvo: note: " << record.input << ": " << note << "\n";
    if (record.outcome == Outcome::kFailed) std::cerr << "kelvo: " << record.error << "\n";
    // File names need not be UTF-8.
    if (options_.json)
      std::cout << JsonOf(record, options_).dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace)
                << std::endl;
    else if (!options_.quiet && record.outcome != Outcome::kFailed && record.outcome != Outcome::kInterrupted)
      std::cout << LineOf(record, options_) << std::endl;
  }

  const Options& options_;
  size_t pictures_;
  size_t begun_ = 0;
  std::array<int, kOutcomes> counts_{};
};

}  // namespace

ExitStatus RunBatch(const Options& options) {
  std::error_code ignored;
  if (!options.output.empty() && std::filesystem::is_directory(options.inputs.front(), ignored)) {
    std::cerr << "kelvo: --output names one file, but \"" << options.inputs.front()
              << "\" is a folder; use --output-dir\n";
    return kWrongUsage;
  }
  std::vector<PictureFile> files;
  try {
    files = ListPictures(options);
  } catch (const HostError& error) {
    std::cerr << "kelvo: " << error.what() << "\n";
    return kWrongUsage;
  }
  const bool one_file = files.size() == 1 && options.inputs.size() == 1 && !files.front().in_folder;
  Batch batch(options, files.size());
  batch.Run(files);
  if (!one_file && !options.quiet) batch.PrintSummary();
  return batch.Count(Outcome::kFailed) > 0 ? kFailure : kSuccess;
}

}  // namespace kelvo::host
