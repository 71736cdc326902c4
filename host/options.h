// The command line.
#ifndef KELVO_HOST_OPTIONS_H
#define KELVO_HOST_OPTIONS_H

#include <optional>
#include <string>
#include <vector>

#include "tile_task.h"

namespace kelvo::host {

enum ExitStatus { kSuccess = 0, kFailure = 1, kWrongUsage = 2 };

enum class Command { kRestore, kBlur, kDetect, kEnlarge, kDemo, kMembers };

struct Options {
  Command command = Command::kRestore;
  std::string input;                // file
  std::string output;               // file; for the demo a folder
  bool output_named = true;         // false: restoring has chosen it
  RestoreSettings settings;         // blurring uses width, direction and raw_values only
  std::optional<int> width;         // restore: as given; nothing: to be detected. settings.width is then 0
  std::optional<int> jpeg;          // likewise
  bool enlarge = false;             // twofold, after restoring
  std::vector<std::string> inputs;  // detect: files and folders
  bool force = false;
  bool quiet = false;
  int threads = 0;  // 0: one per core
  bool json = false;
};

// Fills `options`. Returns the exit status if the program is to end here: help or version has been printed, or the
// command line was wrong and standard error says how.
std::optional<ExitStatus> ParseOptions(int argc, char** argv, Options& options);

}  // namespace kelvo::host

#endif  // KELVO_HOST_OPTIONS_H
