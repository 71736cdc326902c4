#include "width_request.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "stages/stencils/disc.h"

namespace kelvo::host {
namespace {

constexpr double kLeastFactor = 0.05;
constexpr double kGreatestFactor = 20;

template <typename Number>
std::optional<Number> Whole(const std::string& text) {
  Number value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (text.empty() || error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

std::optional<int> WidthIn(const std::string& digits) {
  const auto width = Whole<int>(digits);
  return width && *width >= 0 && *width <= kMaxWidth && digits.front() != '-' ? width : std::nullopt;
}

}  // namespace

int WidthRequest::For(int found) const {
  if (!automatic) return offset;
  if (found == 0) return 0;
  return std::clamp(static_cast<int>(std::lround(found * factor)) + offset, 1, int{kMaxWidth});
}

std::optional<WidthRequest> ParseWidthRequest(const std::string& text) {
  if (text == "auto") return WidthRequest{};
  const bool automatic = text.starts_with("auto");
  const std::string rest = text.substr(automatic ? 5 : 0);
  const char sign = automatic ? text[4] : '+';
  if (sign == '*') {
    const auto factor = Whole<double>(rest);
    if (!factor || !(*factor >= kLeastFactor && *factor <= kGreatestFactor)) return std::nullopt;
    return WidthRequest{true, 0, *factor};
  }
  const auto width = WidthIn(rest);
  if (!width || (sign != '+' && sign != '-')) return std::nullopt;
  return WidthRequest{automatic, sign == '-' ? -*width : *width, 1};
}

}  // namespace kelvo::host
