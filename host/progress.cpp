#include "progress.h"

#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include "interrupt.h"

namespace kelvo::host {
namespace {

constexpr double kSecondsBetweenDraws = 0.1;
constexpr double kSecondsBeforeEstimate = 0.5;
constexpr int kBarCells = 30;

std::string TimeText(int seconds) {
  char text[32];
  if (seconds >= 3600) {
    std::snprintf(text, sizeof text, "%d:%02d:%02d", seconds / 3600, seconds / 60 % 60, seconds % 60);
  } else {
    std::snprintf(text, sizeof text, "%d:%02d", seconds / 60, seconds % 60);
  }
  return text;
}

}  // namespace

Progress::Progress(const vips::VImage& image, std::string label, bool visible)
    : image_(image), label_(std::move(label)), visible_(visible) {
  vips_image_set_progress(image_.get_image(), TRUE);
  handler_ = g_signal_connect(image_.get_image(), "eval", G_CALLBACK(OnEval), this);
}

Progress::~Progress() {
  g_signal_handler_disconnect(image_.get_image(), handler_);
  vips_image_set_progress(image_.get_image(), FALSE);
  Wipe();
}

void Progress::OnEval(VipsImage* image, VipsProgress* progress, Progress* self) {
  if (StopRequested()) vips_image_set_kill(image, TRUE);
  if (self->visible_) self->Draw(*progress);
}

void Progress::Draw(const VipsProgress& progress) {
  const double now = g_timer_elapsed(progress.start, nullptr);
  if (drawn_ && now - last_drawn_seconds_ < kSecondsBetweenDraws) return;
  drawn_ = true;
  last_drawn_seconds_ = now;
  const double share =
      progress.tpels > 0 ? static_cast<double>(progress.npels) / static_cast<double>(progress.tpels) : 0;
  const int filled = static_cast<int>(share * kBarCells);
  const std::string bar = std::string(filled, '#') + std::string(kBarCells - filled, '.');
  const bool estimable = share > 0 && now > kSecondsBeforeEstimate;
  const std::string left =
      estimable ? TimeText(static_cast<int>(std::lround(now * (1 - share) / share))) + " left" : "";
  std::fprintf(stderr, "\r%s [%s] %3d%% %s\033[K", label_.c_str(), bar.c_str(), static_cast<int>(100 * share),
               left.c_str());
  std::fflush(stderr);
}

void Progress::Wipe() {
  if (drawn_) std::fputs("\r\033[K", stderr);
  drawn_ = false;
}

bool TerminalShowsProgress() {
  const char* terminal = std::getenv("TERM");
  return isatty(STDERR_FILENO) != 0 && terminal != nullptr && std::string(terminal) != "dumb";
}

}  // namespace kelvo::host
