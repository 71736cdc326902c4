#include "output_file.h"

#include <fcntl.h>
#include <sys/file.h>
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

constexpr char kTemporaryName[] = ".kelvo-";

[[noreturn]] void Refuse(const std::string& target, const std::string& reason) {
  throw HostError("cannot write \"" + target + "\": " + reason);
}

// The permissions a program's new file gets, or those of the file it replaces.
mode_t ModeFor(const std::string& target) {
  struct stat status {};
  if (stat(target.c_str(), &status) == 0) return status.st_mode & 0777;
  const mode_t mask = umask(0);
  umask(mask);
  return 0666 & ~mask;
}

// The file may be another one than was made: a writer may have put its own in its place.
bool FlushToDisc(const std::string& path) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  const bool flushed = file >= 0 && fsync(file) == 0;
  const int error = errno;
  if (file >= 0) close(file);
  errno = error;
  return flushed;
}

bool Lock(int file) {
  return flock(file, LOCK_EX | LOCK_NB) == 0;
}

// A lock on the folder keeps others from taking a file that has just been made, and is not locked yet, for a leftover.
class FolderLock {
 public:
  explicit FolderLock(const fs::path& folder) : folder_(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {}
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;
  ~FolderLock() {
    if (folder_ >= 0) close(folder_);
  }

  // False if the file system knows no locks.
  bool Take() const { return folder_ >= 0 && flock(folder_, LOCK_EX) == 0; }

 private:
  int folder_;
};

void RemoveLeftovers(const fs::path& folder) {
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
    if (!entry->path().filename().string().starts_with(kTemporaryName)) continue;
    const int file = open(entry->path().c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (file < 0) continue;
    if (Lock(file)) unlink(entry->path().c_str());
    close(file);
  }
}

}  // namespace

void RequireReplaceable(const std::string& target, bool replace) {
  std::error_code error;
  const fs::file_status status = fs::status(target, error);
  if (!fs::exists(status)) return;
  if (fs::is_directory(status)) Refuse(target, "it is a directory; name a file");
  if (!fs::is_regular_file(status)) Refuse(target, "it is not a regular file");
  if (!replace) Refuse(target, "the file exists already; use --force to replace it");
}

OutputFile::OutputFile(const std::string& target, bool replace) : target_(target), replace_(replace) {
  RequireReplaceable(target, replace);
  std::error_code error;
  if (fs::is_symlink(target, error)) target_ = fs::weakly_canonical(target, error);
  fs::path folder = fs::path(target_).parent_path();
  if (folder.empty()) folder = ".";
  if (!fs::is_directory(folder, error)) Refuse(target, "there is no directory \"" + folder.string() + "\"");
  const std::string suffix = fs::path(target_).extension();
  std::string path = folder / (kTemporaryName + std::string("XXXXXX") + suffix);
  const FolderLock lock(folder);
  if (lock.Take()) RemoveLeftovers(folder);
  file_ = mkostemps(path.data(), static_cast<int>(suffix.size()), O_CLOEXEC);
  if (file_ < 0) Refuse(target, std::strerror(errno));
  Lock(file_);
  temporary_ = path;
  GuardFile(temporary_);
  fchmod(file_, ModeFor(target_));
}

OutputFile::~OutputFile() {
  GuardFile("");
  if (!committed_) unlink(temporary_.c_str());
  close(file_);
}

// Without leave to replace, the renaming itself refuses if the target has come into being meanwhile.
void OutputFile::Commit() {
  RequireReplaceable(target_, replace_);
  if (!FlushToDisc(temporary_)) Refuse(target_, std::strerror(errno));
  const unsigned flags = replace_ ? 0 : RENAME_NOREPLACE;
  bool renamed = renameat2(AT_FDCWD, temporary_.c_str(), AT_FDCWD, target_.c_str(), flags) == 0;
  if (!renamed && errno == EINVAL) renamed = std::rename(temporary_.c_str(), target_.c_str()) == 0;
  if (!renamed) Refuse(target_, std::strerror(errno));
  committed_ = true;
}

}  // namespace kelvo::host
