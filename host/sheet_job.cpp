#include "sheet_job.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <iostream>
#include <vector>

#include "auto_settings.h"
#include "errors.h"
#include "image_file.h"
#include "output_file.h"
#include "picture_input.h"
#include "progress.h"
#include "test_picture.h"
#include "treatment.h"
#include "vips_setup.h"

namespace kelvo::host {
namespace fs = std::filesystem;
namespace {

constexpr int kPartColumns = 320, kPartRows = 240;
constexpr int kMostPart = 4096;       // columns and rows of a part
constexpr int kMostPixels = 1 << 18;  // that are searched for detail; larger pictures are looked at smaller
constexpr int kBackground = 32;       // grey level between cells

constexpr int kAlongRow = 180;  // degrees; 0 would be a round blur

struct Cell {
  std::string label;
  RestoreSettings settings;
};

std::vector<Cell> CellsOf(const Options& options, const RestoreSettings& base) {
  std::vector<Cell> cells;
  for (const int width : options.widths) {
    cells.push_back({"width " + std::to_string(width), base});
    cells.back().settings.width = width;
  }
  for (const int direction : options.directions) {
    cells.push_back({"width " + std::to_string(base.width) + ", direction " + std::to_string(direction), base});
    cells.back().settings.direction = direction == 0 ? kAlongRow : direction;
  }
  return cells;
}

// For a sheet of its own: 8-bit sRGB, upright.
vips::VImage ForSheet(const vips::VImage& part) {
  vips::VImage shown = part.autorot();
  if (shown.has_alpha()) shown = shown.flatten();
  return shown.colourspace(VIPS_INTERPRETATION_sRGB).cast(VIPS_FORMAT_UCHAR).copy_memory();
}

std::string OutputOf(const Options& options) {
  if (!options.output.empty()) return options.output;
  const fs::path input = options.inputs.front();
  return input.parent_path() / (input.stem().string() + "-sheet.png");
}

// In about as many columns as rows.
vips::VImage Arranged(const std::vector<vips::VImage>& cells, const std::vector<std::string>& labels) {
  const auto columns = static_cast<size_t>(std::ceil(std::sqrt(static_cast<double>(cells.size()))));
  std::vector<vips::VImage> rows;
  for (size_t start = 0; start < cells.size(); start += columns) {
    const size_t end = std::min(cells.size(), start + columns);
    const auto from = static_cast<std::ptrdiff_t>(start), to = static_cast<std::ptrdiff_t>(end);
    rows.push_back(
        SideBySide({cells.begin() + from, cells.begin() + to}, {labels.begin() + from, labels.begin() + to}));
  }
  const auto background = vips::VImage::option()->set("across", 1)->set("background", std::vector<double>{kBackground});
  return vips::VImage::arrayjoin(rows, background);
}

Area PartOf(const Options& options, const ColourPicture& picture) {
  const Area area = options.picture.region.value_or(Area{});
  if (area.width == 0) return MostDetailedPart(picture.image, kPartColumns, kPartRows);
  if (area.width > kMostPart || area.height > kMostPart)
    throw HostError("a sheet shows parts of at most " + std::to_string(kMostPart) + " columns and rows");
  return area;
}

}  // namespace

Area MostDetailedPart(const vips::VImage& image, int columns, int rows) {
  const Area part = {0, 0, std::min(columns, image.width()), std::min(rows, image.height())};
  const int step = std::max(1, static_cast<int>(std::sqrt(1.0 * image.width() * image.height() / kMostPixels)));
  const vips::VImage small = image.extract_band(image.bands() < 3 ? 0 : 1).shrink(step, step);
  const int wide = std::max(1, std::min(part.width / step, small.width()));
  const int high = std::max(1, std::min(part.height / step, small.height()));
  if (small.width() < 3 || small.height() < 3) return part;
  // The sum over a part at each place is that over its row, then over its column.
  const vips::VImage detail = small.sobel().cast(VIPS_FORMAT_FLOAT);
  const vips::VImage across = vips::VImage::new_matrix(wide, 1) + 1.0, down = vips::VImage::new_matrix(1, high) + 1.0;
  const vips::VImage sums = detail.conv(across).conv(down);
  // Places where the whole part lies inside.
  const vips::VImage inner = sums.crop(wide / 2, high / 2, small.width() - wide + 1, small.height() - high + 1);
  double left = 0, top = 0;
  inner.max(vips::VImage::option()->set("x", &left)->set("y", &top));
  return {std::min(static_cast<int>(left) * step, image.width() - part.width),
          std::min(static_cast<int>(top) * step, image.height() - part.height), part.width, part.height};
}

void RunSheetJob(const Options& options) {
  const std::string& input = options.inputs.front();
  const std::string target = OutputOf(options);
  const std::string saver = SaverFor(target);
  OutputFile output(target, options.force);
  const bool show_progress = !options.quiet && TerminalShowsProgress();
  std::vector<std::string> notes;
  const ColourPicture picture = LoadColourPicture(input, show_progress, notes);
  PictureSettings settings = options.picture;
  if (!options.widths.empty()) settings.width = {false, options.widths.front(), 1};
  const Findings findings = MeasureFor(settings, picture, input, show_progress);
  try {
    settings.region = PartOf(options, picture);
    RestoreSettings base = Completed(settings, findings);
    std::vector<std::string> labels = {"as it is"};
    base.width = 0;
    std::vector<vips::VImage> cells = {ForSheet(TreatPicture(picture, Command::kRestore, settings, base))};
    base.width = settings.width.For(0);
    for (const Cell& cell : CellsOf(options, base)) {
      const vips::VImage part = TreatPicture(picture, Command::kRestore, settings, cell.settings);
      const Progress progress(part, cell.label, show_progress);
      cells.push_back(ForSheet(part));
      labels.push_back(cell.label);
    }
    SavePicture(Arranged(cells, labels), saver, output.temporary_path());
  } catch (const vips::VError&) {
    throw HostError("cannot make a sheet of \"" + input + "\": " + TakeVipsMessages());
  } catch (const HostError& error) {
    throw HostError("cannot make a sheet of \"" + input + "\": " + error.what());
  }
  output.Commit();
  const Area& part = *settings.region;
  if (!options.quiet)
    std::cout << input << ": " << part.width << " x " << part.height << " pixels from column " << part.left << ", row "
              << part.top << ", into " << target << "\n";
}

}  // namespace kelvo::host
