#include "picture_input.h"

#include "errors.h"
#include "image_file.h"
#include "progress.h"
#include "vips_setup.h"

namespace kelvo::host {

ColourPicture LoadColourPicture(const std::string& path, bool show_progress, std::vector<std::string>& notes) {
  const vips::VImage image = OpenPicture(path, notes);
  {
    const Progress progress(image, "reading", show_progress);
    DecodePicture(image, path);
  }
  try {
    ColourPicture picture = AsColourPicture(image);
    if (!picture.note.empty()) notes.push_back(picture.note);
    return picture;
  } catch (const HostError& error) {
    throw HostError("cannot use \"" + path + "\": " + error.what());
  } catch (const vips::VError&) {
    throw HostError("cannot use \"" + path + "\": " + TakeVipsMessages());
  }
}

}  // namespace kelvo::host
