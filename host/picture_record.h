// What became of a picture, for people and for programs.
#ifndef KELVO_HOST_PICTURE_RECORD_H
#define KELVO_HOST_PICTURE_RECORD_H

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "auto_settings.h"
#include "options.h"

namespace kelvo::host {

enum class Outcome {
  kWritten,
  kSharp,        // no blur was found, nothing was written
  kSkipped,      // the result exists
  kPlanned,      // by a dry run
  kFailed,       // `error` tells why
  kInterrupted,  // the user stopped it; nothing was written
};
inline constexpr int kOutcomes = 6;

// "written", "sharp", ...
const char* NameOf(Outcome outcome);

struct PictureRecord {
  std::string input, output;
  Outcome outcome = Outcome::kFailed;
  int columns = 0, rows = 0;  // of the input
  Findings findings;
  RestoreSettings settings;        // with what was found filled in
  std::vector<std::string> notes;  // what was converted or could not be kept
  std::string error;
  double seconds = 0;
};

// One line, for example "a.jpg: blur of width 4 (votes: 4 61%); no JPEG blocks; restored with width 4 into b.jpg".
std::string LineOf(const PictureRecord& record, const Options& options);

// {"input": ..., "output": ..., "outcome": ..., "columns", "rows", "settings", "detection", "notes", "error", "seconds"},
// each where there is one.
nlohmann::ordered_json JsonOf(const PictureRecord& record, const Options& options);

// What was measured, as part of a JSON object.
nlohmann::ordered_json JsonOf(const Detection& found, Wanted measured);

}  // namespace kelvo::host

#endif  // KELVO_HOST_PICTURE_RECORD_H
