// A progress bar on standard error.
#ifndef KELVO_HOST_PROGRESS_H
#define KELVO_HOST_PROGRESS_H

#include <string>
#include <vips/vips8>

namespace kelvo::host {

// Shows a bar with the time left while an image is evaluated, if `visible`, and stops the evaluation when the user
// asks for it. The bar is wiped when it is finished or when the object goes away.
class Progress {
 public:
  // `label` is what is being done, for example "restoring".
  Progress(const vips::VImage& image, std::string label, bool visible);
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress();

 private:
  static void OnEval(VipsImage* image, VipsProgress* progress, Progress* self);
  void Draw(const VipsProgress& progress);
  void Wipe();

  vips::VImage image_;
  std::string label_;
  bool visible_;
  gulong handler_;
  bool drawn_ = false;
  double last_drawn_seconds_ = 0;
};

// True if standard error is a terminal that can show a bar.
bool TerminalShowsProgress();

}  // namespace kelvo::host

#endif  // KELVO_HOST_PROGRESS_H
