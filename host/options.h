// What the command line asks for.
#ifndef KELVO_HOST_OPTIONS_H
#define KELVO_HOST_OPTIONS_H

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "picture_settings.h"

namespace kelvo::host {

// An interruption ends the program by the signal itself, which a shell sees as 130 or 143.
enum ExitStatus { kSuccess = 0, kFailure = 1, kWrongUsage = 2 };

enum class Command { kRestore, kBlur, kEnlarge, kDetect, kSheet, kCompare, kDemo, kMembers };

// Every count-th picture, starting with this number.
struct Shard {
  int number = 1;  // 1..count
  int count = 1;
};

struct Options {
  Command command = Command::kRestore;
  std::vector<std::string> inputs;  // files and folders
  std::string output;               // file, of the demo a folder; empty: the program chooses
  std::string output_dir;           // where results keep their names
  std::string format;               // suffix of results without the dot; empty: that of the input
  bool recursive = false;
  bool skip_existing = false;
  bool force = false;
  bool dry_run = false;
  Shard shard;

  PictureSettings picture;

  std::vector<int> widths, directions;  // of a contact sheet

  std::string preset, save_preset, like;  // names and a file; see stored_settings.h
  bool json = false;
  bool quiet = false;
  int threads = 0;  // 0: one per core
};

// Fills `options`. Returns the exit status if the program is to end here: help or version has been printed, a preset
// was saved and there is nothing else to do, or the command line was wrong and standard error says how. Throws HostError
// if stored settings cannot be read or written. `begin` is called with what the command line itself says, before any file
// is read.
std::optional<ExitStatus> ParseOptions(int argc, char** argv, Options& options,
                                       const std::function<void(const Options&)>& begin);

}  // namespace kelvo::host

#endif  // KELVO_HOST_OPTIONS_H
