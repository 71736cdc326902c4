// A file that appears under its name only when it is complete.
#ifndef KELVO_HOST_OUTPUT_FILE_H
#define KELVO_HOST_OUTPUT_FILE_H

#include <string>

namespace kelvo::host {

// Throws HostError if the target exists and `replace` is false, or if it is not a regular file.
void RequireReplaceable(const std::string& target, bool replace);

// Owns an empty temporary file beside the target, with the target's suffix. Commit() renames it into place; without
// that the destructor, or a signal, removes it and the target is as it was. What a killed program left behind is
// removed by the next one that writes into the folder. One object at a time.
class OutputFile {
 public:
  // Throws HostError as RequireReplaceable does, or if the folder is missing or cannot be written. A target that is a
  // symbolic link is followed.
  OutputFile(const std::string& target, bool replace);
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  ~OutputFile();

  const std::string& temporary_path() const { return temporary_; }

  // Throws HostError if the target has come into being meanwhile and must not be replaced, or if renaming fails.
  void Commit();

 private:
  std::string target_;
  std::string temporary_;
  int file_ = -1;  // the temporary file, locked for as long as this program is at work on it
  bool replace_;
  bool committed_ = false;
};

}  // namespace kelvo::host

#endif  // KELVO_HOST_OUTPUT_FILE_H
