#include "xmp_size.h"

#include <charconv>
#include <cstdint>
#include <optional>

namespace kelvo::host {
namespace {

// Where a property's value starts, if its name ends at `position`: name="value" or <name>value</name>.
std::optional<size_t> ValueAfterName(const std::string& text, size_t position) {
  const auto skip_spaces = [&] { position = text.find_first_not_of(" \t\r\n", position); };
  const auto at = [&](const char* one_of) {
    return position < text.size() && std::string(one_of).find(text[position]) != std::string::npos;
  };
  skip_spaces();
  if (at("=")) {
    ++position;
    skip_spaces();
    if (!at("\"'")) return std::nullopt;
  } else if (!at(">")) {
    return std::nullopt;
  }
  return position + 1;
}

// Doubles the whole number that starts at `position`, if it is `expected` or that is 0.
void DoubleNumber(std::string& text, size_t position, int expected) {
  int64_t number = 0;
  const char* start = text.data() + position;
  const auto [end, error] = std::from_chars(start, text.data() + text.size(), number);
  if (error != std::errc() || number <= 0 || number > INT32_MAX) return;
  if (expected != 0 && number != expected) return;
  text.replace(position, static_cast<size_t>(end - start), std::to_string(2 * number));
}

}  // namespace

std::string WithDoubledSize(const std::string& xmp, int width, int height) {
  const struct {
    const char* name;
    int expected;
  } properties[] = {{"tiff:ImageWidth", width},       {"tiff:ImageLength", height}, {"exif:PixelXDimension", width},
                    {"exif:PixelYDimension", height}, {"tiff:XResolution", 0},      {"tiff:YResolution", 0}};
  std::string text = xmp;
  for (const auto& [name, expected] : properties)
    for (size_t found = text.find(name); found != std::string::npos; found = text.find(name, found + 1))
      if (const auto value = ValueAfterName(text, found + std::string(name).size()))
        DoubleNumber(text, *value, expected);
  return text;
}

}  // namespace kelvo::host
