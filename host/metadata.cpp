#include "metadata.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

#include "errors.h"
#include "stored_settings.h"
#include "tiff_exif.h"

namespace kelvo::host {
namespace {

// Exiv2 rewrites a file in memory.
constexpr uintmax_t kMostRewritten = 256 << 20;

// Tags of TIFF that tell how its pixels, or other metadata, are stored: of no use in another file.
const std::set<uint16_t> kStorageTags = {0x00FE, 0x0100, 0x0101, 0x0102, 0x0103, 0x0106, 0x0111, 0x0115, 0x0116, 0x0117,
                                         0x011C, 0x013D, 0x0142, 0x0143, 0x0144, 0x0145, 0x014A, 0x0152, 0x0153, 0x015B,
                                         0x0211, 0x0212, 0x0213, 0x0214, 0x02BC, 0x83BB, 0x8649, 0x8773};

bool IsStorage(const Exiv2::Exifdatum& datum) {
  const std::string group = datum.groupName();
  return group.starts_with("SubImage") || (group == "Image" && kStorageTags.contains(datum.tag()));
}

// What EXIF tells of the picture's size: that of the result, and `scale` times the resolution. What it did not tell is
// taken from `written`, which libvips has filled in.
void Scale(Exiv2::ExifData& exif, const Exiv2::ExifData& written, int scale, int columns, int rows) {
  for (const char* key : {"Exif.Image.XResolution", "Exif.Image.YResolution", "Exif.Image.ResolutionUnit",
                          "Exif.Photo.PixelXDimension", "Exif.Photo.PixelYDimension"}) {
    const auto datum = exif.findKey(Exiv2::ExifKey(key));
    const auto other = written.findKey(Exiv2::ExifKey(key));
    if (datum == exif.end()) {
      if (scale != 1 && other != written.end()) exif.add(*other);
    } else if (datum->groupName() == "Photo") {
      *datum = static_cast<uint32_t>(datum->tagName() == "PixelXDimension" ? columns : rows);
    } else if (datum->tagName() != "ResolutionUnit" && datum->toRational().first <= INT32_MAX / scale) {
      const Exiv2::Rational resolution = datum->toRational();
      *datum = Exiv2::URational(resolution.first * scale, resolution.second);
    }
  }
}

// As it stands in a JPEG; empty if it is damaged.
Exiv2::Blob ExifBlock(const Exiv2::ExifData& exif) {
  Exiv2::Blob block = {'E', 'x', 'i', 'f', 0, 0}, tiff;
  try {
    Exiv2::ExifParser::encode(tiff, Exiv2::littleEndian, exif);
  } catch (const Exiv2::Error&) {
    return {};
  }
  block.insert(block.end(), tiff.begin(), tiff.end());
  return block;
}

using Bytes = std::vector<Exiv2::byte>;

Bytes ContentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

bool HoldsExif(const std::string& saver) {
  return saver == "jpegsave" || saver == "pngsave" || saver == "webpsave" || saver == "tiffsave";
}

}  // namespace

std::string XmpOf(const vips::VImage& image) {
  if (image.get_typeof(VIPS_META_XMP_NAME) != VIPS_TYPE_BLOB) return "";
  size_t bytes = 0;
  const void* packet = image.get_blob(VIPS_META_XMP_NAME, &bytes);
  return {static_cast<const char*>(packet), bytes};
}

vips::VImage WithSettingsInXmp(const vips::VImage& image, const StoredSettings& settings) {
  const std::string packet = WithSettings(XmpOf(image), settings);
  vips::VImage copy = image.copy();
  vips_image_set_blob_copy(copy.get_image(), VIPS_META_XMP_NAME, packet.data(), packet.size());
  return copy;
}

Metadata::Metadata(const std::string& input) : input_(input) {
  is_tiff_ = IsTiff(input);
  try {
    const auto image = Exiv2::ImageFactory::open(input);
    image->readMetadata();
    exif_ = image->exifData();
    iptc_ = image->iptcData();
    comment_ = image->comment();
  } catch (const std::exception&) {
    exif_.clear();
    iptc_.clear();
  }
  if (!is_tiff_) return;
  for (auto datum = exif_.begin(); datum != exif_.end();) {
    const auto next = std::next(datum);
    if (IsStorage(*datum)) exif_.erase(datum);
    datum = next;
  }
}

std::vector<std::string> Metadata::LossesIn(const std::string& saver) const {
  std::vector<std::string> losses;
  if (!HoldsExif(saver)) {
    if (!exif_.empty() || !iptc_.empty()) losses.push_back("the output format holds no EXIF or IPTC data");
    return losses;
  }
  if (saver == "webpsave" && !iptc_.empty()) losses.push_back("WebP holds no IPTC data; it is not kept");
  if (is_tiff_ && exif_.empty() && saver != "tiffsave" && HasTiffExif(input_))
    losses.push_back("EXIF data of a BigTIFF file is kept in TIFF only");
  return losses;
}

vips::VImage Metadata::Prepare(const vips::VImage& image, const std::string& saver) const {
  vips::VImage prepared = image.copy();
  const bool to_tiff = saver == "tiffsave";
  // TIFF stores it in another form than the others, and libvips hands it on as it is.
  if (is_tiff_ || to_tiff) vips_image_remove(prepared.get_image(), VIPS_META_IPTC_NAME);
  if (is_tiff_ && !to_tiff && !exif_.empty()) {
    const Exiv2::Blob blob = ExifBlock(exif_);
    if (!blob.empty()) vips_image_set_blob_copy(prepared.get_image(), VIPS_META_EXIF_NAME, blob.data(), blob.size());
  }
  // There would be two copies of it.
  if (NeedsExiv2(saver)) vips_image_remove(prepared.get_image(), VIPS_META_EXIF_NAME);
  return prepared;
}

bool Metadata::NeedsExiv2(const std::string& saver) const {
  const bool text = !(iptc_.empty() && comment_.empty());
  return saver == "pngsave" ? text : (saver == "jpegsave" || saver == "webpsave") && (text || !exif_.empty());
}

std::string Metadata::Complete(const std::string& saver, const std::string& output, int scale) const try {
  if (NeedsExiv2(saver)) {
    CompleteByExiv2(output, scale);
  } else if (saver == "tiffsave" && is_tiff_) {
    CopyTiffTags(input_, output);
  } else if (saver == "tiffsave" && !(exif_.empty() && iptc_.empty())) {
    WriteTiffTags(exif_, iptc_, output);
  }
  return "";
} catch (const DamagedMetadata& error) {
  return std::string("its metadata is damaged and not all of it is kept: ") + error.what();
}

// In memory, since Exiv2 does not notice a full disc.
void Metadata::CompleteByExiv2(const std::string& output, int scale) const {
  if (std::filesystem::file_size(output) > kMostRewritten)
    throw HostError("its metadata cannot be added: files of more than " + std::to_string(kMostRewritten >> 20) +
                    " MiB are written with it only as TIFF");
  Bytes bytes = ContentOf(output);
  try {
    const auto image = Exiv2::ImageFactory::open(bytes.data(), static_cast<long>(bytes.size()));
    image->readMetadata();
    Exiv2::ExifData exif = exif_;
    Scale(exif, image->exifData(), scale, image->pixelWidth(), image->pixelHeight());
    image->setExifData(exif);
    if (!iptc_.empty() && image->checkMode(Exiv2::mdIptc) != Exiv2::amNone) image->setIptcData(iptc_);
    if (!comment_.empty() && image->checkMode(Exiv2::mdComment) != Exiv2::amNone) image->setComment(comment_);
    image->writeMetadata();
    bytes.resize(image->io().size());
    if (image->io().open() != 0 ||
        image->io().read(bytes.data(), static_cast<long>(bytes.size())) != static_cast<long>(bytes.size()))
      throw DamagedMetadata("it cannot be read back");
  } catch (const Exiv2::Error& error) {
    throw DamagedMetadata(error.what());
  }
  std::ofstream file(output, std::ios::binary | std::ios::trunc);
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  file.close();
  if (!file) throw HostError("its metadata cannot be added: the disc is full or cannot be written");
}

}  // namespace kelvo::host
