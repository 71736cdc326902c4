#include "detect_job.h"

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <nlohmann/json.hpp>
#include <optional>
#include <vector>

#include "detection.h"
#include "errors.h"
#include "file_list.h"
#include "interrupt.h"
#include "picture_input.h"
#include "picture_record.h"
#include "progress.h"
#include "vips_setup.h"

namespace kelvo::host {
namespace {

// One picture's line or entry. No detection: `error` tells why.
struct Finding {
  std::string file;
  int columns = 0, rows = 0;
  std::optional<Detection> detection;
  std::string error;
};

void Examine(Finding& finding, bool show_progress, std::vector<std::string>& notes) try {
  const ColourPicture picture = LoadColourPicture(finding.file, show_progress, notes);
  finding.columns = picture.image.width();
  finding.rows = picture.image.height();
  finding.detection = Decide(Measure(picture.image, picture.colour_bands, {}, show_progress));
} catch (const vips::VError&) {
  finding.error = "cannot measure \"" + finding.file + "\": " + TakeVipsMessages();
} catch (const HostError& error) {
  finding.error = error.what();
}

class Table {
 public:
  explicit Table(const std::vector<Finding>& findings) {
    for (const Finding& finding : findings) file_cells_ = std::max(file_cells_, static_cast<int>(finding.file.size()));
  }

  void PrintHead() const {
    std::printf("%-*s  %13s  %5s  %-22s  %4s  %s\n", file_cells_, "file", "pixels", "width", "votes", "JPEG", "grid");
  }

  void Print(const Finding& finding) const {
    const Detection& found = *finding.detection;
    const std::string pixels = std::to_string(finding.columns) + " x " + std::to_string(finding.rows);
    const std::string grid =
        found.jpeg == 0 ? "-" : std::to_string(found.column_phase) + "," + std::to_string(found.row_phase);
    std::printf("%-*s  %13s  %5d  %-22s  %4d  %s\n", file_cells_, finding.file.c_str(), pixels.c_str(), found.width,
                found.Votes().c_str(), found.jpeg, grid.c_str());
    std::fflush(stdout);
  }

 private:
  int file_cells_ = 4;
};

nlohmann::ordered_json Entry(const Finding& finding) {
  nlohmann::ordered_json entry = {{"file", finding.file}};
  if (!finding.detection) {
    entry["error"] = finding.error;
    return entry;
  }
  entry["columns"] = finding.columns;
  entry["rows"] = finding.rows;
  entry.update(JsonOf(*finding.detection, {}));
  return entry;
}

}  // namespace

ExitStatus RunDetectJob(const Options& options) {
  const bool show_progress = !options.quiet && TerminalShowsProgress();
  std::vector<Finding> findings;
  for (const PictureFile& file : ListPictures(options)) findings.push_back({file.path, 0, 0, std::nullopt, file.error});
  const Table table(findings);
  if (!options.json) table.PrintHead();
  ExitStatus status = kSuccess;
  nlohmann::ordered_json entries = nlohmann::ordered_json::array();
  for (Finding& finding : findings) {
    std::vector<std::string> notes;
    if (finding.error.empty()) Examine(finding, show_progress, notes);
    if (StopRequested()) throw HostError("interrupted");
    for (const std::string& note : notes)
      if (!options.quiet) std::cerr << "kelvo: note: " << finding.file << ": " << note << "\n";
    if (!finding.detection) {
      std::cerr << "kelvo: " << finding.error << "\n";
      status = kFailure;
    }
    if (options.json) {
      entries.push_back(Entry(finding));
    } else if (finding.detection) {
      table.Print(finding);
    }
  }
  // File names need not be UTF-8.
  if (options.json)
    std::cout << entries.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << std::endl;
  return status;
}

}  // namespace kelvo::host
