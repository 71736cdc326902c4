#include "treatment.h"

#include <string>

#include "enlarging.h"
#include "errors.h"
#include "luma.h"
#include "tiling.h"

namespace kelvo::host {
namespace {

vips::VImage InFocus(const ColourPicture& picture, Command command, bool luma, const RestoreSettings& done) {
  if (done.width == 0) return picture.image;
  const TileTask task =
      command == Command::kBlur ? BlurTask(done.width, done.raw_values, done.direction) : RestoreTask(done);
  if (luma && picture.colour_bands == 3) return ProcessLuma(picture.image, task);
  return ProcessTiles(picture.image, picture.colour_bands, task);
}

vips::VImage CutTo(const Area& area, const vips::VImage& image, int scale) {
  const int columns = image.width() / scale, rows = image.height() / scale;
  if (area.left >= columns || area.top >= rows || area.width > columns - area.left || area.height > rows - area.top)
    throw HostError("the region " + std::to_string(area.left) + "," + std::to_string(area.top) + "," +
                    std::to_string(area.width) + "," + std::to_string(area.height) + " is not inside its " +
                    std::to_string(columns) + " x " + std::to_string(rows) + " pixels");
  vips::VImage part = image.crop(scale * area.left, scale * area.top, scale * area.width, scale * area.height).copy();
  // The height of one page; a writer would cut the picture into pages by it.
  if (part.get_typeof(VIPS_META_PAGE_HEIGHT) != 0) part.set(VIPS_META_PAGE_HEIGHT, part.height());
  return part;
}

}  // namespace

vips::VImage TreatPicture(const ColourPicture& picture, Command command, const PictureSettings& settings,
                          const RestoreSettings& done) {
  vips::VImage result = InFocus(picture, command, RestoresLuma(settings, done), done);
  if (settings.enlarge) result = EnlargePicture(result, picture.colour_bands);
  return settings.region ? CutTo(*settings.region, result, settings.enlarge ? 2 : 1) : result;
}

}  // namespace kelvo::host
