#include "file_list.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>

#include "errors.h"
#include "image_file.h"
#include "interrupt.h"

namespace kelvo::host {
namespace fs = std::filesystem;
namespace {

const std::set<std::string> kPictureSuffixes = {".jpg", ".jpeg", ".png", ".tif", ".tiff", ".webp", ".heic", ".avif"};

// What the names of results end with that stand beside their inputs.
std::string NameEnding(Command command) {
  switch (command) {
    case Command::kRestore:
      return "-restored";
    case Command::kBlur:
      return "-blurred";
    case Command::kEnlarge:
      return "-enlarged";
    default:
      return "";
  }
}

bool HasPictureSuffix(const fs::path& path) {
  std::string suffix = path.extension();
  std::transform(suffix.begin(), suffix.end(), suffix.begin(), [](unsigned char c) { return std::tolower(c); });
  return kPictureSuffixes.contains(suffix);
}

bool IsHidden(const fs::path& path) {
  return path.filename().string().starts_with('.');
}

class Lister {
 public:
  explicit Lister(const Options& options) : options_(options), ending_(NameEnding(options.command)) {
    std::error_code ignored;
    if (!options.output_dir.empty()) output_dir_ = fs::weakly_canonical(options.output_dir, ignored);
  }

  void Add(const std::string& input) {
    std::error_code ignored;
    if (!fs::is_directory(input, ignored)) {
      Append({input, fs::path(input).filename(), "", false, ""});
      return;
    }
    const size_t before = files_.size();
    try {
      if (options_.recursive) {
        Walk<fs::recursive_directory_iterator>(input);
      } else {
        Walk<fs::directory_iterator>(input);
      }
      if (files_.size() == before) throw HostError("there is no picture in the folder \"" + input + "\"");
    } catch (const fs::filesystem_error& error) {
      Fail(input, error.path1(), error.code().message());
    } catch (const HostError& error) {
      files_.push_back({input, "", "", false, error.what()});
    }
    std::sort(files_.begin() + static_cast<std::ptrdiff_t>(before), files_.end(),
              [](const PictureFile& a, const PictureFile& b) { return a.path < b.path; });
  }

  std::vector<PictureFile> Take() { return std::move(files_); }

 private:
  void Fail(const std::string& input, const fs::path& folder, const std::string& reason) {
    const std::string name = folder.empty() ? input : folder.string();
    files_.push_back({name, "", "", false, "cannot read the folder \"" + name + "\": " + reason});
  }

  // A folder inside that cannot be opened is one more failure; the others go on.
  template <typename Iterator>
  void Walk(const std::string& folder) {
    for (Iterator entry(folder), end; entry != end && !StopRequested(); ++entry) {
      const fs::path& path = entry->path();
      std::error_code error;
      const bool is_folder = entry->is_directory(error);
      if constexpr (std::same_as<Iterator, fs::recursive_directory_iterator>) {
        if (is_folder && !MayEnter(path, entry->is_symlink(error))) entry.disable_recursion_pending();
      }
      if (is_folder || IsHidden(path) || !entry->is_regular_file(error) || IsResult(path)) continue;
      if (HasPictureSuffix(path) || IsPictureFile(path)) Append({path, path.lexically_relative(folder), "", true, ""});
    }
  }

  bool MayEnter(const fs::path& folder, bool is_link) {
    std::error_code error;
    if (is_link || IsHidden(folder)) return false;
    if (!output_dir_.empty() && fs::weakly_canonical(folder, error) == output_dir_) return false;
    const fs::directory_iterator trial(folder, error);
    if (error) Fail("", folder, error.message());
    return !error;
  }

  bool IsResult(const fs::path& path) const {
    return options_.output_dir.empty() && !ending_.empty() && path.stem().string().ends_with(ending_);
  }

  void Append(PictureFile file) {
    if (!ending_.empty()) file.output = OutputFor(file);
    files_.push_back(std::move(file));
  }

  std::string OutputFor(const PictureFile& file) const {
    if (!options_.output.empty()) return options_.output;
    const fs::path input = file.path;
    const fs::path suffix = options_.format.empty() ? input.extension() : fs::path("." + options_.format);
    if (options_.output_dir.empty()) return input.parent_path() / (input.stem().string() + ending_ + suffix.string());
    const fs::path below = fs::path(options_.output_dir) / file.relative;
    return below.parent_path() / (below.stem().string() + suffix.string());
  }

  const Options& options_;
  const std::string ending_;
  fs::path output_dir_;
  std::vector<PictureFile> files_;
};

// Drops files that are named twice. Throws HostError if two different ones have one output.
void RequireDistinct(std::vector<PictureFile>& files) {
  std::map<std::string, std::string> inputs;  // by output
  std::set<std::string> known;
  std::erase_if(files, [&](const PictureFile& file) {
    if (!file.error.empty()) return false;
    const std::string path = fs::absolute(file.path).lexically_normal();
    if (!known.insert(path).second) return true;
    if (file.output.empty()) return false;
    const auto [other, fresh] = inputs.emplace(fs::absolute(file.output).lexically_normal(), file.path);
    if (!fresh)
      throw HostError("\"" + other->second + "\" and \"" + file.path + "\" would both be written to \"" + file.output +
                      "\"; write them to different folders");
    return false;
  });
}

}  // namespace

std::vector<PictureFile> ListPictures(const Options& options) {
  Lister lister(options);
  for (const std::string& input : options.inputs) lister.Add(input);
  std::vector<PictureFile> files = lister.Take();
  RequireDistinct(files);
  std::vector<PictureFile> shard;
  for (size_t i = options.shard.number - 1; i < files.size(); i += options.shard.count) shard.push_back(files[i]);
  return shard;
}

}  // namespace kelvo::host
