#include "format_modules.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <string_view>

namespace kelvo::host {
namespace {

using namespace std::string_view_literals;

// JPEG; PNG; TIFF and BigTIFF of either byte order.
constexpr std::array kSignatures = {"\xFF\xD8\xFF"sv, "\x89PNG\r\n\x1A\n"sv, "II\x2A\0"sv,
                                    "MM\0\x2A"sv,     "II\x2B\0"sv,          "MM\0\x2B"sv};

constexpr std::array kSuffixes = {""sv, ".jpg"sv, ".jpeg"sv, ".png"sv, ".tif"sv, ".tiff"sv, ".html"sv};

bool HasPlainFormat(const std::string& path) {
  std::error_code ignored;
  if (!std::filesystem::is_regular_file(path, ignored)) return false;
  std::array<char, 8> start{};
  std::ifstream(path, std::ios::binary).read(start.data(), start.size());
  const std::string_view found(start.data(), start.size());
  return std::any_of(kSignatures.begin(), kSignatures.end(), [&](auto sign) { return found.starts_with(sign); });
}

bool HasPlainSuffix(const std::string& path) {
  std::string suffix = std::filesystem::path(path).extension();
  std::transform(suffix.begin(), suffix.end(), suffix.begin(), [](unsigned char c) { return std::tolower(c); });
  return std::find(kSuffixes.begin(), kSuffixes.end(), suffix) != kSuffixes.end();
}

}  // namespace

bool NeedsFormatModules(const Options& options) {
  if (!options.preset.empty() || !options.like.empty()) return true;  // which may name another format
  const std::string result = options.format.empty() ? options.output : "." + options.format;
  // A result without a name of its own has the suffix of its input, which may lie.
  return !HasPlainSuffix(result) || !std::all_of(options.inputs.begin(), options.inputs.end(), [](const auto& input) {
    return HasPlainSuffix(input) && HasPlainFormat(input);
  });
}

}  // namespace kelvo::host
