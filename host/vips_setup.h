// Starting and ending libvips, and its messages.
#ifndef KELVO_HOST_VIPS_SETUP_H
#define KELVO_HOST_VIPS_SETUP_H

#include <string>

namespace kelvo::host {

// libvips for as long as the object lives. Its warnings are kept off standard error: what matters comes as an error.
class VipsSession {
 public:
  // Without `format_modules` only with the formats that are part of libvips itself. Throws HostError.
  VipsSession(const char* program, bool format_modules);
  VipsSession(const VipsSession&) = delete;
  VipsSession& operator=(const VipsSession&) = delete;
  ~VipsSession();
};

// The messages that libvips has gathered since the last call, each once, on one line.
std::string TakeVipsMessages();

}  // namespace kelvo::host

#endif  // KELVO_HOST_VIPS_SETUP_H
