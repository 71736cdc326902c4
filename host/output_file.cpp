#include "output_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "errors.h"
#include "interrupt.h"

namespace kelvo::host {
namespace fs = std::filesystem;
namespace {

[[noreturn]] void Refuse(const std::string& target, const std::string& reason) {
  throw HostError("cannot write \"" + target + "\": " + reason);
}

void RequireReplaceable(const std::string& target, bool replace) {
  std::error_code error;
  const fs::file_status status = fs::status(target, error);
  if (!fs::exists(status)) return;
  if (fs::is_directory(status)) Refuse(target, "it is a directory; name a file");
  if (!fs::is_regular_file(status)) Refuse(target, "it is not a regular file");
  if (!replace) Refuse(target, "the file exists already; use --force to replace it");
}

// The permissions a program's new file gets, or those of the file it replaces.
mode_t ModeFor(const std::string& target) {
  struct stat status {};
  if (stat(target.c_str(), &status) == 0) return status.st_mode & 0777;
  const mode_t mask = umask(0);
  umask(mask);
  return 0666 & ~mask;
}

}  // namespace

OutputFile::OutputFile(const std::string& target, bool replace) : target_(target), replace_(replace) {
  RequireReplaceable(target, replace);
  std::error_code error;
  if (fs::is_symlink(target, error)) target_ = fs::weakly_canonical(target, error);
  fs::path folder = fs::path(target_).parent_path();
  if (folder.empty()) folder = ".";
  if (!fs::is_directory(folder, error)) Refuse(target, "there is no directory \"" + folder.string() + "\"");
  const std::string suffix = fs::path(target_).extension();
  std::string path = folder / (".kelvo-XXXXXX" + suffix);
  const int file = mkstemps(path.data(), static_cast<int>(suffix.size()));
  if (file < 0) Refuse(target, std::strerror(errno));
  temporary_ = path;
  GuardFile(temporary_);
  fchmod(file, ModeFor(target_));
  close(file);
}

OutputFile::~OutputFile() {
  GuardFile("");
  if (!committed_) unlink(temporary_.c_str());
}

void OutputFile::Commit() {
  RequireReplaceable(target_, replace_);
  if (std::rename(temporary_.c_str(), target_.c_str()) != 0) Refuse(target_, std::strerror(errno));
  committed_ = true;
}

}  // namespace kelvo::host
