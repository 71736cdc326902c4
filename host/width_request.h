// The width that the user asks for: a number, or one made of what is detected.
#ifndef KELVO_HOST_WIDTH_REQUEST_H
#define KELVO_HOST_WIDTH_REQUEST_H

#include <optional>
#include <string>

namespace kelvo::host {

// N, auto, auto*FACTOR, auto+N or auto-N.
struct WidthRequest {
  bool automatic = true;
  int offset = 0;     // the width itself if it is not automatic, pixels
  double factor = 1;  // 0.05..20

  // The width to restore with. `found` is what was detected, 0..kMaxWidth, and not looked at if a number was given.
  // 0 stays 0: what is sharp is not restored; else 1..kMaxWidth.
  int For(int found) const;

  bool IsZero() const { return !automatic && offset == 0; }
};

// Nothing if the text is none of the above; a number is 0..kMaxWidth.
std::optional<WidthRequest> ParseWidthRequest(const std::string& text);

}  // namespace kelvo::host

#endif  // KELVO_HOST_WIDTH_REQUEST_H
