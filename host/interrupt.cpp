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
std::atomic<size_t> last_words_bytes = 0;
char last_words[500];
constexpr unsigned kSecondsToEnd = 1;
static_assert(std::atomic<int>::is_always_lock_free && std::atomic<bool>::is_always_lock_free &&
              std::atomic<size_t>::is_always_lock_free);

void EndBy(int signal) {
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

void EndAtOnce(int signal) {
  if (file_guarded) unlink(guarded_path);
  const size_t bytes = last_words_bytes;
  if (bytes > 0 && write(STDERR_FILENO, last_words, bytes) < 0) EndBy(signal);  // either way
  EndBy(signal);
}

void OnStopSignal(int signal) {
  if (caught_signal.exchange(signal) != 0) EndAtOnce(signal);
  alarm(kSecondsToEnd);
}

void OnAlarm(int) {
  EndAtOnce(caught_signal);
}

}  // namespace

void CatchStopSignals() {
  std::signal(SIGALRM, OnAlarm);
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

void SetLastWords(const std::string& text) {
  last_words_bytes = 0;
  last_words_bytes = text.copy(last_words, sizeof last_words);
}

void GuardFile(const std::string& path) {
  file_guarded = false;
  if (path.empty() || path.size() >= sizeof guarded_path) return;
  path.copy(guarded_path, path.size());
  guarded_path[path.size()] = '\0';
  file_guarded = true;
}

}  // namespace kelvo::host
