#include "vips_setup.h"

#include <algorithm>
#include <sstream>
#include <vector>
#include <vips/vips8>

#include "errors.h"

namespace kelvo::host {

namespace {

// While it lives, libvips looks for its modules where there are none; it has no other way to leave them out.
class WithoutModules {
 public:
  explicit WithoutModules(bool wanted) : set_(wanted && g_getenv(kName) == nullptr) {
    if (set_) g_setenv(kName, "/nonexistent", FALSE);
  }
  WithoutModules(const WithoutModules&) = delete;
  WithoutModules& operator=(const WithoutModules&) = delete;
  ~WithoutModules() {
    if (set_) g_unsetenv(kName);
  }

 private:
  static constexpr const char* kName = "VIPSHOME";
  bool set_;
};

}  // namespace

VipsSession::VipsSession(const char* program, bool format_modules) {
  const auto ignore = [](const gchar*, GLogLevelFlags, const gchar*, gpointer) {};
  g_log_set_handler("VIPS", static_cast<GLogLevelFlags>(G_LOG_LEVEL_WARNING | G_LOG_LEVEL_INFO | G_LOG_LEVEL_DEBUG),
                    ignore, nullptr);
  const WithoutModules without_modules(!format_modules);
  if (vips_init(program) != 0) throw HostError("libvips does not start: " + TakeVipsMessages());
  // Every picture is worked on once, and a file may change between two runs of one program.
  vips_cache_set_max(0);
}

VipsSession::~VipsSession() {
  vips_shutdown();
}

std::string TakeVipsMessages() {
  char* buffer = vips_error_buffer_copy();
  std::istringstream lines(buffer);
  g_free(buffer);
  std::vector<std::string> messages;
  for (std::string line; std::getline(lines, line);) {
    const bool known = std::find(messages.begin(), messages.end(), line) != messages.end();
    if (!line.empty() && !known) messages.push_back(line);
  }
  std::string text;
  for (const std::string& message : messages) text += (text.empty() ? "" : "; ") + message;
  return text;
}

}  // namespace kelvo::host
