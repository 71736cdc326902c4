#include "image_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "errors.h"
#include "tile_operation.h"
#include "vips_setup.h"

namespace kelvo::host {
namespace {

// Classic TIFF holds 4 GiB; from here on the picture is written as BigTIFF. Leaves room for metadata.
constexpr double kBigTiffBytes = 3.9e9;

[[noreturn]] void RefuseToRead(const std::string& path, const std::string& reason) {
  throw HostError("cannot read \"" + path + "\": " + (reason.empty() ? "it is damaged or cut off" : reason));
}

void RequireReadableFile(const std::string& path) {
  const int file = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (file < 0) RefuseToRead(path, std::strerror(errno));
  struct stat status {};
  const bool regular = fstat(file, &status) == 0 && S_ISREG(status.st_mode);
  close(file);
  if (!regular) RefuseToRead(path, "not a regular file");
  if (status.st_size == 0) RefuseToRead(path, "the file is empty");
}

// vips_foreign_map() visits the loaders in the order of their priority; the first non-null result ends it.
void* LoaderOfFile(void* candidate, void* path_pointer, void*) {
  const auto* path = static_cast<const char*>(path_pointer);
  auto* loader = static_cast<VipsForeignLoadClass*>(candidate);
  const VipsObjectClass* object = VIPS_OBJECT_CLASS(loader);
  if (g_str_has_suffix(object->nickname, "_buffer") || g_str_has_suffix(object->nickname, "_source")) return nullptr;
  if (loader->is_a != nullptr) return loader->is_a(path) ? loader : nullptr;
  const char** suffixes = VIPS_FOREIGN_CLASS(loader)->suffs;
  for (; suffixes != nullptr && *suffixes != nullptr; ++suffixes) {
    if (g_str_has_suffix(path, *suffixes)) return loader;
  }
  return nullptr;
}

void* LoaderByContent(void* candidate, void* path_pointer, void*) {
  auto* loader = static_cast<VipsForeignLoadClass*>(candidate);
  return loader->is_a != nullptr ? LoaderOfFile(candidate, path_pointer, nullptr) : nullptr;
}

// The load operation for the content of the file. vips_foreign_find_load() would take "[...]" off the name.
std::string LoaderFor(const std::string& path) {
  std::string copy = path;
  void* loader = vips_foreign_map("VipsForeignLoad", LoaderOfFile, copy.data(), nullptr);
  TakeVipsMessages();  // what the loaders that did not match had to say
  if (loader == nullptr) {
    RefuseToRead(path, "not a picture in a known format (JPEG, PNG, TIFF, WebP and what else libvips reads)");
  }
  return VIPS_OBJECT_CLASS(loader)->nickname;
}

const VipsForeignSaveClass& SaverClass(const std::string& saver) {
  return *VIPS_FOREIGN_SAVE_CLASS(vips_class_find("VipsForeignSave", saver.c_str()));
}

bool HasArgument(const std::string& operation, const char* name) {
  auto* object_class = VIPS_OBJECT_CLASS(vips_class_find("VipsOperation", operation.c_str()));
  return g_object_class_find_property(G_OBJECT_CLASS(object_class), name) != nullptr;
}

// Chroma in fewer samples only where the input's was; a JPEG's loader leaves word of it. Halved in both directions is
// the one way in which libvips writes that.
void SetJpegOptions(vips::VOption* options, const vips::VImage& image) {
  constexpr char kSubsampling[] = "jpeg-chroma-subsample", kProgressive[] = "jpeg-multiscan";
  if (image.get_typeof(kSubsampling) != 0) {
    const bool halved = std::string(image.get_string(kSubsampling)) == "4:2:0";
    options->set("subsample_mode", halved ? VIPS_FOREIGN_SUBSAMPLE_ON : VIPS_FOREIGN_SUBSAMPLE_OFF);
  }
  if (image.get_typeof(kProgressive) != 0 && image.get_int(kProgressive) != 0) options->set("interlace", true);
}

void SetTiffOptions(vips::VOption* options, const vips::VImage& image, const Encoding& like) {
  const double bytes = VIPS_IMAGE_SIZEOF_PEL(image.get_image()) * 1.0 * image.width() * image.height();
  if (like.big_tiff || bytes > kBigTiffBytes) options->set("bigtiff", true);
  if (like.tiff_compression) options->set("compression", *like.tiff_compression);
  options->set("predictor",
               like.tiff_predictor ? VIPS_FOREIGN_TIFF_PREDICTOR_HORIZONTAL : VIPS_FOREIGN_TIFF_PREDICTOR_NONE);
  if (like.tile_columns > 0)
    options->set("tile", true)->set("tile_width", like.tile_columns)->set("tile_height", like.tile_rows);
}

}  // namespace

vips::VImage OpenPicture(const std::string& path, std::vector<std::string>& notes) {
  RequireReadableFile(path);
  const std::string loader = LoaderFor(path);
  vips::VImage image;
  try {
    vips::VImage::call(loader.c_str(), vips::VImage::option()
                                           ->set("filename", path.c_str())
                                           ->set("out", &image)
                                           ->set("access", VIPS_ACCESS_RANDOM)
                                           ->set("fail_on", VIPS_FAIL_ON_ERROR));
    // Others are decoded as a whole when they are first asked for a pixel.
    const bool decoded_in_parts = (vips_foreign_flags(loader.c_str(), path.c_str()) & VIPS_FOREIGN_PARTIAL) != 0;
    if (decoded_in_parts) image = InCache(image);
  } catch (const vips::VError&) {
    RefuseToRead(path, TakeVipsMessages());
  }
  const int pages = vips_image_get_n_pages(image.get_image());
  if (pages > 1) notes.push_back("only the first of " + std::to_string(pages) + " pages is used");
  return image;
}

bool IsPictureFile(const std::string& path) {
  std::string copy = path;
  const bool known = vips_foreign_map("VipsForeignLoad", LoaderByContent, copy.data(), nullptr) != nullptr;
  TakeVipsMessages();
  return known;
}

void DecodePicture(const vips::VImage& image, const std::string& path) {
  try {
    image.getpoint(0, 0);
  } catch (const vips::VError&) {
    RefuseToRead(path, TakeVipsMessages());
  }
}

std::string SaverFor(const std::string& path) {
  const std::string suffix = std::filesystem::path(path).extension();
  const bool plain = suffix.size() > 1 && suffix.find_first_of("[]") == std::string::npos;
  const char* type = plain ? vips_foreign_find_save(suffix.c_str()) : nullptr;
  std::string saver = type != nullptr ? vips_nickname_find(g_type_from_name(type)) : "";
  TakeVipsMessages();
  // Deep zoom writes a whole folder of files.
  if (saver.empty() || saver == "dzsave") {
    throw HostError(
        "cannot write \"" + path + "\": its suffix \"" + suffix +
        "\" stands for no format that can be written; use .png, .jpg, .tif, .webp or another one of libvips");
  }
  return saver;
}

std::vector<std::string> LossesIn(const std::string& saver, const vips::VImage& image) {
  const VipsForeignSaveClass& format = SaverClass(saver);
  std::vector<std::string> losses;
  if (image.format() == VIPS_FORMAT_USHORT && format.format_table[VIPS_FORMAT_USHORT] == VIPS_FORMAT_UCHAR) {
    losses.push_back("the output format holds 8 bits per sample; the 16-bit picture is reduced to that");
  }
  const bool no_alpha = format.saveable == VIPS_SAVEABLE_MONO || format.saveable == VIPS_SAVEABLE_RGB ||
                        format.saveable == VIPS_SAVEABLE_RGB_CMYK;
  if (no_alpha && image.has_alpha()) {
    losses.push_back("the output format holds no transparency; the picture is laid on black");
  }
  return losses;
}

void SavePicture(const vips::VImage& image, const std::string& saver, const std::string& path, const Encoding& like,
                 std::optional<int> quality) {
  vips::VOption* options = vips::VImage::option()->set("in", image)->set("filename", path.c_str());
  if (HasArgument(saver, "Q")) {
    const int likewise = saver == "jpegsave" ? like.jpeg_quality.value_or(kLossyQuality) : kLossyQuality;
    options->set("Q", quality.value_or(likewise));
  }
  if (saver == "jpegsave") SetJpegOptions(options, image);
  if (saver == "webpsave" && like.webp_lossless && !quality) options->set("lossless", true);
  if (saver == "tiffsave") SetTiffOptions(options, image, like);
  try {
    vips::VImage::call(saver.c_str(), options);
  } catch (const vips::VError&) {
    throw HostError(TakeVipsMessages());
  }
}

}  // namespace kelvo::host
