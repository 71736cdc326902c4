#include "format_modules.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string_view>

namespace kelvo::host {
namespace {

using namespace std::string_view_literals;

// JPEG; PNG; TIFF and BigTIFF of either byte order.
constexpr std::array kSignatures = {"\xFF\xD8\xFF"sv, "\x89PNG\r\n\x1A\n"sv, "II\x2A\0"sv,
                                    "MM\0\x2A"sv,     "II\x2B\0"sv,          "MM\0\x2B"sv};

// Slides are TIFFs to the eye, and some are named so, but a module reads them better. They are larger than this; of a large
// file the start is a small part.
constexpr std::uintmax_t kGreatestPlainSize = 64 << 20;

constexpr std::array kSuffixes = {""sv, ".jpg"sv, ".jpeg"sv, ".png"sv, ".tif"sv, ".tiff"sv, ".html"sv};

bool HasPlainFormat(const std::string& path) {
  std::error_code ignored;
  if (std::filesystem::file_size(path, ignored) > kGreatestPlainSize) return false;  // or no file at all
  std::array<char, 8> start{};
  std::ifstream(path, std::ios::binary).read(start.data(), start.size());
  const std::string_view found(start.data(), start.size());
  return std::any_of(kSignatures.begin(), kSignatures.end(), [&](auto sign) { return found.starts_with(sign); });
}

bool IsPlainSuffix(std::string suffix) {
  std::transform(suffix.begin(), suffix.end(), suffix.begin(), [](unsigned char c) { return std::tolower(c); });
  return std::find(kSuffixes.begin(), kSuffixes.end(), suffix) != kSuffixes.end();
}

std::string SuffixOf(const std::string& path) {
  return std::filesystem::path(path).extension();
}

}  // namespace

bool NeedsFormatModules(const Options& options) {
  if (!options.preset.empty() || !options.like.empty()) return true;  // which may name another format
  const std::string result = options.format.empty() ? SuffixOf(options.output) : "." + options.format;
  // A result without a name of its own has the suffix of its input, which may lie.
  return !IsPlainSuffix(result) || !std::all_of(options.inputs.begin(), options.inputs.end(), [](const auto& input) {
    return IsPlainSuffix(SuffixOf(input)) && HasPlainFormat(input);
  });
}

}  // namespace kelvo::host
