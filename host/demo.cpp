#include "demo.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <vector>

#include "errors.h"
#include "image_file.h"
#include "output_file.h"
#include "progress.h"
#include "test_picture.h"
#include "tiling.h"

namespace kelvo::host {
namespace fs = std::filesystem;
namespace {

constexpr int kBestAccuracy = 2;
constexpr int kIgnoredBorder = 16;  // pixels; there the surround is a mirror image, not the scene
constexpr int kColourBands = 3;
constexpr std::array<const char*, 4> kFileNames = {"sharp.png", "blurred.png", "restored.png", "side-by-side.png"};

void PrepareFolder(const fs::path& folder, bool force) {
  std::error_code error;
  fs::create_directories(folder, error);
  if (error) throw HostError("cannot create the directory \"" + folder.string() + "\": " + error.message());
  for (const char* name : kFileNames) {
    if (!force && fs::exists(folder / name)) {
      throw HostError("\"" + (folder / name).string() + "\" exists already; use --force to replace the demo's files");
    }
  }
}

vips::VImage Evaluate(const vips::VImage& image, const char* label, bool show_progress) {
  const Progress progress(image, label, show_progress);
  return image.copy_memory();
}

void Write(const vips::VImage& image, const fs::path& path, bool force) {
  OutputFile file(path, force);
  try {
    SavePicture(image, SaverFor(path), file.temporary_path());
  } catch (const HostError& error) {
    throw HostError("cannot write \"" + path.string() + "\": " + error.what());
  }
  file.Commit();
}

// Peak signal to noise ratio in dB over all samples but those of the border. Both pictures are 8-bit.
double Psnr(const vips::VImage& picture, const vips::VImage& reference) {
  const vips::VImage difference = picture - reference;
  const int width = picture.width() - 2 * kIgnoredBorder;
  const int height = picture.height() - 2 * kIgnoredBorder;
  const vips::VImage inner = difference.crop(kIgnoredBorder, kIgnoredBorder, width, height);
  return 10 * std::log10(255.0 * 255.0 / (inner * inner).avg());
}

}  // namespace

void RunDemo(const Options& options) {
  const fs::path folder = options.output;
  PrepareFolder(folder, options.force);
  const bool show_progress = !options.quiet && TerminalShowsProgress();
  RestoreSettings settings = options.picture.tile;
  settings.accuracy = kBestAccuracy;

  const vips::VImage sharp = DrawTestPicture();
  const TileTask blur = BlurTask(settings.width, false);
  const vips::VImage blurred = Evaluate(ProcessTiles(sharp, kColourBands, blur), "blurring", show_progress);
  const vips::VImage restoring = ProcessTiles(blurred, kColourBands, RestoreTask(settings));
  const vips::VImage restored = Evaluate(restoring, "restoring", show_progress);
  const double before = Psnr(blurred, sharp);
  const double after = Psnr(restored, sharp);

  char blurred_label[64];
  char restored_label[64];
  std::snprintf(blurred_label, sizeof blurred_label, "blurred, width %d: %.2f dB", settings.width, before);
  std::snprintf(restored_label, sizeof restored_label, "restored: %.2f dB", after);
  const vips::VImage comparison = SideBySide({sharp, blurred, restored}, {"sharp", blurred_label, restored_label});
  const std::array<vips::VImage, 4> pictures = {sharp, blurred, restored, comparison};
  for (size_t i = 0; i < pictures.size(); ++i) Write(pictures[i], folder / kFileNames[i], options.force);

  std::printf("test picture of %d x %d pixels, defocused with width %d, restored with accuracy %d\n", sharp.width(),
              sharp.height(), settings.width, settings.accuracy);
  std::printf("PSNR of the 8-bit pictures, a border of %d pixels left out:\n", kIgnoredBorder);
  std::printf("  blurred  %6.2f dB\n  restored %6.2f dB\n", before, after);
  std::printf("written to %s: sharp.png, blurred.png, restored.png, side-by-side.png\n", folder.c_str());
}

}  // namespace kelvo::host
