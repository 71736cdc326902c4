// What a picture file says about its picture, and how it gets into the result.
#ifndef KELVO_HOST_METADATA_H
#define KELVO_HOST_METADATA_H

#include <exiv2/exiv2.hpp>
#include <string>
#include <vector>
#include <vips/vips8>

namespace kelvo::host {

struct StoredSettings;

// The XMP packet of a picture; empty if there is none.
std::string XmpOf(const vips::VImage& image);

// The picture with the settings of the run in its XMP packet, for formats that hold one.
vips::VImage WithSettingsInXmp(const vips::VImage& image, const StoredSettings& settings);

// libvips carries most metadata from file to file. This carries what it leaves out: EXIF into and out of TIFF, EXIF tags
// that it does not know, comments, IPTC beyond JPEG and TIFF.
class Metadata {
 public:
  // Reads the input file's; never fails. Of a damaged file, or of a format that holds none, there is nothing to carry.
  explicit Metadata(const std::string& input);

  // What cannot be carried into files that this libvips operation writes, one remark each.
  std::vector<std::string> LossesIn(const std::string& saver) const;

  // The picture with what libvips writes by itself into such a file once it is there. To be called before writing.
  vips::VImage Prepare(const vips::VImage& image, const std::string& saver) const;

  // Completes a file that has just been written, `scale` times the input's resolution. Returns what could not be kept
  // because it is damaged, or nothing. Throws HostError with the reason if the file cannot be written.
  std::string Complete(const std::string& saver, const std::string& output, int scale) const;

 private:
  bool NeedsExiv2(const std::string& saver) const;
  void CompleteByExiv2(const std::string& output, int scale) const;

  std::string input_;
  bool is_tiff_ = false;
  Exiv2::ExifData exif_;
  Exiv2::IptcData iptc_;
  std::string comment_;
};

}  // namespace kelvo::host

#endif  // KELVO_HOST_METADATA_H
