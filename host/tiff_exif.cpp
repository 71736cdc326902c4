#include "tiff_exif.h"

#include <sys/mman.h>
#include <tiffio.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <memory>
#include <optional>
#include <set>
#include <vector>

#include "errors.h"

namespace kelvo::host {
namespace {

using Tiff = std::unique_ptr<TIFF, decltype(&TIFFClose)>;

// Written by libvips, pointers to other directories, or pairs of numbers that tell of pages and inks.
const std::set<uint32_t> kLeftAlone = {
    TIFFTAG_PREDICTOR,        TIFFTAG_SUBIFD,     TIFFTAG_XMLPACKET,  TIFFTAG_ICCPROFILE,         TIFFTAG_PHOTOSHOP,
    TIFFTAG_EXIFIFD,          TIFFTAG_GPSIFD,     TIFFTAG_PAGENUMBER, TIFFTAG_DOTRANGE,           TIFFTAG_HALFTONEHINTS,
    TIFFTAG_YCBCRSUBSAMPLING, TIFFTAG_JPEGTABLES, TIFFTAG_INKNAMES,   TIFFTAG_INTEROPERABILITYIFD};

Tiff Opened(const std::string& path, const char* mode) {
  return {TIFFOpen(path.c_str(), mode), TIFFClose};
}

// A tag that `to` does not know is declared there as it was found.
void Declare(TIFF* to, const TIFFField* field, uint32_t tag) {
  if (TIFFFindField(to, tag, TIFF_ANY) != nullptr) return;
  char name[] = "unknown";
  const TIFFFieldInfo info = {tag, TIFF_VARIABLE2, TIFF_VARIABLE2, TIFFFieldDataType(field), FIELD_CUSTOM, 1, 1, name};
  TIFFMergeFieldInfo(to, &info, 1);
}

bool CopyNumber(TIFF* from, TIFF* to, uint32_t tag, const TIFFField* field) {
  union {
    uint8_t byte;
    uint16_t word;
    uint32_t number;
    uint64_t large;
    float fraction;
    double exact;
  } value{};
  if (TIFFGetField(from, tag, &value) != 1) return false;
  const int bytes = TIFFFieldSetGetSize(field);
  switch (TIFFFieldDataType(field)) {
    case TIFF_RATIONAL:
    case TIFF_SRATIONAL:
    case TIFF_FLOAT:
    case TIFF_DOUBLE:
      return TIFFSetField(to, tag, bytes == 4 ? double{value.fraction} : value.exact) == 1;
    default:
      break;
  }
  if (bytes == 1) return TIFFSetField(to, tag, value.byte) == 1;
  if (bytes == 2) return TIFFSetField(to, tag, value.word) == 1;
  return bytes == 4 ? TIFFSetField(to, tag, value.number) == 1 : TIFFSetField(to, tag, value.large) == 1;
}

// The number of values of a tag that comes with its count; nothing if there is none.
std::optional<uint32_t> CountOf(TIFF* from, uint32_t tag, const TIFFField* field, void** values) {
  if (TIFFFieldReadCount(field) == TIFF_VARIABLE2) {
    uint32_t count = 0;
    return TIFFGetField(from, tag, &count, values) == 1 ? std::optional(count) : std::nullopt;
  }
  uint16_t count = 0;
  return TIFFGetField(from, tag, &count, values) == 1 ? std::optional<uint32_t>(count) : std::nullopt;
}

// The library passes one number by itself, several behind a pointer, with their count where that is not fixed.
bool CopyTag(TIFF* from, TIFF* to, uint32_t tag) {
  const TIFFField* field = TIFFFindField(from, tag, TIFF_ANY);
  if (field == nullptr) return false;
  Declare(to, field, tag);
  const TIFFField* target = TIFFFindField(to, tag, TIFF_ANY);
  if (target == nullptr || TIFFFieldDataType(target) != TIFFFieldDataType(field)) return false;
  void* values = nullptr;
  if (TIFFFieldPassCount(field) != 0) {
    const auto count = CountOf(from, tag, field, &values);
    if (!count) return false;
    if (TIFFFieldPassCount(target) != 0) return TIFFSetField(to, tag, *count, values) == 1;
    // Known to one side only, as text is that has no other tag of its kind around it.
    return TIFFFieldDataType(field) == TIFF_ASCII && TIFFSetField(to, tag, values) == 1;
  }
  if (TIFFFieldPassCount(target) != 0) return false;
  if (TIFFFieldDataType(field) != TIFF_ASCII && TIFFFieldReadCount(field) == 1) return CopyNumber(from, to, tag, field);
  return TIFFGetField(from, tag, &values) == 1 && TIFFSetField(to, tag, values) == 1;
}

int CopyTags(TIFF* from, TIFF* to) {
  int copied = 0;
  for (int i = 0; i < TIFFGetTagListCount(from); ++i) {
    const uint32_t tag = TIFFGetTagListEntry(from, i);
    uint64_t unused[4];
    const bool present = TIFFFindField(to, tag, TIFF_ANY) != nullptr && TIFFGetField(to, tag, unused, unused + 1) == 1;
    if (!present && !kLeftAlone.contains(tag) && CopyTag(from, to, tag)) ++copied;
  }
  return copied;
}

// Counted in bytes or, by some versions of libtiff, in 32-bit words.
int SetIptc(TIFF* to, const Exiv2::IptcData& iptc) {
  if (iptc.empty()) return 0;
  const Exiv2::DataBuf bytes = Exiv2::IptcParser::encode(iptc);
  std::vector<uint32_t> words((static_cast<size_t>(bytes.size_) + 3) / 4);
  std::copy_n(bytes.pData_, bytes.size_, reinterpret_cast<Exiv2::byte*>(words.data()));
  const bool in_words = TIFFFieldDataType(TIFFFieldWithTag(to, TIFFTAG_RICHTIFFIPTC)) == TIFF_LONG;
  const auto count = static_cast<uint32_t>(in_words ? words.size() : static_cast<size_t>(bytes.size_));
  return TIFFSetField(to, TIFFTAG_RICHTIFFIPTC, count, words.data());
}

struct Size {
  uint32_t columns = 0, rows = 0;
};

// EXIF repeats the size. It is set, not copied: libtiff passes over it where it is stored in 16 bits.
int SetSize(TIFF* to, const Size& size) {
  return TIFFSetField(to, EXIFTAG_PIXELXDIMENSION, size.columns) + TIFFSetField(to, EXIFTAG_PIXELYDIMENSION, size.rows);
}

struct Directory {
  uint32_t pointer;
  int (*read)(TIFF*, toff_t);
  int (*create)(TIFF*);
};
constexpr Directory kDirectories[] = {{TIFFTAG_EXIFIFD, TIFFReadEXIFDirectory, TIFFCreateEXIFDirectory},
                                      {TIFFTAG_GPSIFD, TIFFReadGPSDirectory, TIFFCreateGPSDirectory}};

// The places of a file's directories; 0: there is none.
struct Places {
  uint64_t main = 0;  // 0: the first picture's
  uint64_t others[std::size(kDirectories)] = {};
};

// Appends a copy of the directory at `place`. Its place in the file written, or 0 if there is none.
uint64_t AppendDirectory(TIFF* from, uint64_t place, TIFF* to, const Directory& directory, const Size& size) {
  if (place == 0 || directory.read(from, place) != 1) return 0;
  TIFFFreeDirectory(to);  // libtiff forgets the one before without freeing it
  if (directory.create(to) != 0) return 0;
  int copied = CopyTags(from, to);
  if (directory.pointer == TIFFTAG_EXIFIFD) copied += SetSize(to, size);
  uint64_t written = 0;
  return copied > 0 && TIFFWriteCustomDirectory(to, &written) == 1 ? written : 0;
}

void Copy(TIFF* from, const Places& places, const Exiv2::IptcData& iptc, const std::string& output) {
  const Tiff to = Opened(output, "r+");
  const auto require = [](bool done) {
    if (!done) throw HostError("its EXIF data cannot be added");
  };
  require(to != nullptr);
  Size size;
  TIFFGetField(to.get(), TIFFTAG_IMAGEWIDTH, &size.columns);
  TIFFGetField(to.get(), TIFFTAG_IMAGELENGTH, &size.rows);
  uint64_t written[std::size(kDirectories)] = {};
  for (size_t i = 0; i < std::size(kDirectories); ++i)
    written[i] = AppendDirectory(from, places.others[i], to.get(), kDirectories[i], size);
  if (places.main != 0) {
    if (TIFFReadEXIFDirectory(from, places.main) != 1) throw DamagedMetadata("EXIF");
  } else if (TIFFSetDirectory(from, 0) != 1) {
    throw DamagedMetadata("EXIF");
  }
  require(TIFFSetDirectory(to.get(), 0) == 1);
  int changed = CopyTags(from, to.get());
  for (size_t i = 0; i < std::size(kDirectories); ++i)
    if (written[i] != 0) changed += TIFFSetField(to.get(), kDirectories[i].pointer, written[i]);
  changed += SetIptc(to.get(), iptc);
  if (changed > 0) require(TIFFRewriteDirectory(to.get()) == 1);
}

// A tag that points to a directory, where libtiff knows it as a number only.
uint64_t PointerIn(TIFF* tiff, uint32_t tag) {
  const TIFFField* field = TIFFFindField(tiff, tag, TIFF_ANY);
  void* values = nullptr;
  if (field == nullptr || TIFFFieldPassCount(field) == 0 || TIFFFieldDataType(field) != TIFF_LONG) return 0;
  const auto count = CountOf(tiff, tag, field, &values);
  return count == 1u ? *static_cast<const uint32_t*>(values) : 0;
}

// A file in memory that holds these bytes; -1 if there is none to be had.
int MemoryFile(const Exiv2::Blob& bytes) {
  const int file = memfd_create("kelvo", MFD_CLOEXEC);
  if (file < 0) return -1;
  if (write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()) && lseek(file, 0, SEEK_SET) == 0)
    return file;
  close(file);
  return -1;
}

}  // namespace

bool IsTiff(const std::string& path) {
  char start[4] = {};
  std::ifstream(path, std::ios::binary).read(start, sizeof start);
  const std::string text(start, sizeof start);
  return text.substr(0, 3) == std::string("II*\0", 3) || text == std::string("MM\0*", 4) ||
         text.substr(0, 3) == "II+" || text == std::string("MM\0+", 4);
}

bool HasTiffExif(const std::string& path) {
  const Tiff tiff = Opened(path, "r");
  uint64_t place = 0;
  return tiff && TIFFGetField(tiff.get(), TIFFTAG_EXIFIFD, &place) == 1;
}

void CopyTiffTags(const std::string& input, const std::string& output) {
  const Tiff from = Opened(input, "r");
  if (!from) return;
  Places places;
  for (size_t i = 0; i < std::size(kDirectories); ++i)
    TIFFGetField(from.get(), kDirectories[i].pointer, &places.others[i]);
  Copy(from.get(), places, {}, output);
}

// The tags are laid out in memory as a TIFF file without a picture.
void WriteTiffTags(const Exiv2::ExifData& exif, const Exiv2::IptcData& iptc, const std::string& output) {
  Exiv2::Blob bytes;
  try {
    Exiv2::ExifParser::encode(bytes, Exiv2::littleEndian, exif);
  } catch (const Exiv2::Error& error) {
    throw DamagedMetadata(error.what());
  }
  const int file = MemoryFile(bytes);
  if (file < 0) throw HostError("out of memory");
  const Tiff from(TIFFFdOpen(file, "metadata", "rh"), TIFFClose);
  if (!from) {
    close(file);
    throw DamagedMetadata("EXIF");
  }
  TIFFFreeDirectory(from.get());
  TIFFCreateDirectory(from.get());  // what is read next lands in it
  constexpr uint64_t kFirst = 8;    // behind the header
  Places places;
  places.main = kFirst;
  if (TIFFReadEXIFDirectory(from.get(), kFirst) == 1)
    for (size_t i = 0; i < std::size(kDirectories); ++i)
      places.others[i] = PointerIn(from.get(), kDirectories[i].pointer);
  Copy(from.get(), places, iptc, output);
}

}  // namespace kelvo::host
