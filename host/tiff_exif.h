// Tags of TIFF files beyond what libvips writes: camera, EXIF, GPS and IPTC data, also in BigTIFF and in files of any size.
#ifndef KELVO_HOST_TIFF_EXIF_H
#define KELVO_HOST_TIFF_EXIF_H

#include <exiv2/exiv2.hpp>
#include <stdexcept>
#include <string>

namespace kelvo::host {

// Metadata of an input cannot be understood. The output is left in order.
class DamagedMetadata : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

bool IsTiff(const std::string& path);

// Whether the TIFF file has an EXIF directory.
bool HasTiffExif(const std::string& path);

// Appends the tags of the first picture of a TIFF file, or those given, to another one where it has none of them. Its
// pixels stay where they are. Throw HostError with the reason if the output cannot be written, DamagedMetadata.
void CopyTiffTags(const std::string& input, const std::string& output);
void WriteTiffTags(const Exiv2::ExifData& exif, const Exiv2::IptcData& iptc, const std::string& output);

}  // namespace kelvo::host

#endif  // KELVO_HOST_TIFF_EXIF_H
