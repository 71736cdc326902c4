// Pictures from and to files. Paths are taken literally: brackets at the end of a name are part of the name.
#ifndef KELVO_HOST_IMAGE_FILE_H
#define KELVO_HOST_IMAGE_FILE_H

#include <optional>
#include <string>
#include <vector>
#include <vips/vips8>

#include "encoding.h"

namespace kelvo::host {

// Quality of lossy formats, 1..100. High, since restoring sharpens what a codec leaves behind.
constexpr int kLossyQuality = 95;

// Opens the file for access in any order. Truncated and damaged files are errors, here or while pixels are asked for.
// Appends remarks to `notes`. Throws HostError with the path and the reason.
vips::VImage OpenPicture(const std::string& path, std::vector<std::string>& notes);

// Whether the content of a file is that of a picture format that can be read. Names do not count.
bool IsPictureFile(const std::string& path);

// Decodes an opened picture whose format cannot be read in any order, into memory or beyond libvips' disc threshold
// into a temporary file; for other formats it reads one pixel. `path` is for the message of the HostError.
void DecodePicture(const vips::VImage& image, const std::string& path);

// The libvips operation that writes files with this name's suffix, for example "pngsave". Throws HostError if no such
// format can be written.
std::string SaverFor(const std::string& path);

// What the format of `saver` cannot hold of the picture, one remark each.
std::vector<std::string> LossesIn(const std::string& saver, const vips::VImage& image);

// Evaluates the picture and writes it with its metadata, stored `like` another file where the format is the same.
// `quality` is that of lossy formats, 1..100; nothing: that of `like`, or kLossyQuality. Throws HostError with the reason.
void SavePicture(const vips::VImage& image, const std::string& saver, const std::string& path,
                 const Encoding& like = {}, std::optional<int> quality = {});

}  // namespace kelvo::host

#endif  // KELVO_HOST_IMAGE_FILE_H
