#include "interrupt.h"

#include <unistd.h>

#include <atomic>
#include <climits>
#include <csignal>

namespace kelvo::host {
namespace {

// Everything the handler touches is lock-free or written only while no file is guarded.
std::atomic<int> caught_signal = 0;
std::atomic<bool> file_guarded = false;
char guarded_path[PATH_MAX];
static_assert(std::atomic<int>::is_always_lock_free && std::atomic<bool>::is_always_lock_free);

void EndBy(int signal) {
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

void OnStopSignal(int signal) {
  if (caught_signal.exchange(signal) == 0) return;
  if (file_guarded) unlink(guarded_path);
  EndBy(signal);
}

}  // namespace

void CatchStopSignals() {
  struct sigaction action {};
  action.sa_handler = OnStopSignal;
  action.sa_flags = SA_RESTART;
  sigemptyset(&action.sa_mask);
  for (int signal : {SIGINT, SIGTERM}) {
    struct sigaction inherited {};
    sigaction(signal, nullptr, &inherited);
    // Programs in the background of a script are started with SIGINT ignored, and keep it so.
    if (inherited.sa_handler != SIG_IGN) sigaction(signal, &action, nullptr);
  }
}

bool StopRequested() {
  return caught_signal != 0;
}

void EndByCaughtSignal() {
  if (const int signal = caught_signal; signal != 0) EndBy(signal);
}

void GuardFile(const std::string& path) {
  file_guarded = false;
  if (path.empty() || path.size() >= sizeof guarded_path) return;
  path.copy(guarded_path, path.size());
  guarded_path[path.size()] = '\0';
  file_guarded = true;
}

}  // namespace kelvo::host
