#include "colour.h"

#include <optional>

#include "errors.h"
#include "tile_operation.h"

namespace kelvo::host {
namespace {

std::string Nick(GType enumeration, int value) {
  return vips_enum_nick(enumeration, value);
}

bool HasKnownDepth(const vips::VImage& image) {
  return image.coding() == VIPS_CODING_NONE &&
         (image.format() == VIPS_FORMAT_UCHAR || image.format() == VIPS_FORMAT_USHORT);
}

// The number of colour bands if the picture can be worked on as it is. Gray and RGB are told apart by the number of
// bands where the picture does not say what it is; beyond four bands it has to say.
std::optional<int> ColourBands(const vips::VImage& image) {
  if (!HasKnownDepth(image)) return std::nullopt;
  switch (image.interpretation()) {
    case VIPS_INTERPRETATION_sRGB:
    case VIPS_INTERPRETATION_RGB16:
    case VIPS_INTERPRETATION_RGB:
      return image.bands() < 3 ? 1 : 3;
    case VIPS_INTERPRETATION_B_W:
    case VIPS_INTERPRETATION_GREY16:
    case VIPS_INTERPRETATION_MULTIBAND:
      if (image.bands() > 4) return std::nullopt;
      return image.bands() < 3 ? 1 : 3;
    default:
      return std::nullopt;
  }
}

// The name of the picture's space, so that writers and colour conversions take its bands for what they are.
VipsInterpretation NameOf(int colour_bands, VipsBandFormat format) {
  if (format == VIPS_FORMAT_UCHAR) return colour_bands == 1 ? VIPS_INTERPRETATION_B_W : VIPS_INTERPRETATION_sRGB;
  return colour_bands == 1 ? VIPS_INTERPRETATION_GREY16 : VIPS_INTERPRETATION_RGB16;
}

// Spaces whose values mean a colour whatever their number format.
bool IsConvertible(const vips::VImage& image) {
  switch (image.interpretation()) {
    case VIPS_INTERPRETATION_CMYK:
    case VIPS_INTERPRETATION_XYZ:
    case VIPS_INTERPRETATION_LAB:
    case VIPS_INTERPRETATION_LABQ:
    case VIPS_INTERPRETATION_LABS:
    case VIPS_INTERPRETATION_LCH:
    case VIPS_INTERPRETATION_CMC:
    case VIPS_INTERPRETATION_YXY:
    case VIPS_INTERPRETATION_HSV:
    case VIPS_INTERPRETATION_scRGB:
      return image.bands() >= 3 || image.coding() != VIPS_CODING_NONE;
    default:
      return false;
  }
}

vips::VImage WithoutProfile(const vips::VImage& image) {
  vips::VImage copy = image.copy();
  vips_image_remove(copy.get_image(), VIPS_META_ICC_NAME);
  return copy;
}

vips::VImage ConvertToSrgb(const vips::VImage& image) {
  if (image.interpretation() == VIPS_INTERPRETATION_CMYK) {
    // Ends with the profile of its new space.
    return image.icc_transform("srgb", vips::VImage::option()->set("embedded", true)->set("input_profile", "cmyk"));
  }
  const bool eight_bits = image.coding() == VIPS_CODING_NONE && image.format() == VIPS_FORMAT_UCHAR;
  const vips::VImage plain = image.coding() == VIPS_CODING_RAD ? image.rad2float() : image;
  return WithoutProfile(plain).colourspace(eight_bits ? VIPS_INTERPRETATION_sRGB : VIPS_INTERPRETATION_RGB16);
}

}  // namespace

ColourPicture AsColourPicture(const vips::VImage& image) {
  if (const auto colour_bands = ColourBands(image)) {
    const VipsInterpretation name = NameOf(*colour_bands, image.format());
    return {image.copy(vips::VImage::option()->set("interpretation", name)), *colour_bands, ""};
  }
  const std::string space = Nick(VIPS_TYPE_INTERPRETATION, image.interpretation());
  const std::string format = Nick(VIPS_TYPE_BAND_FORMAT, image.format());
  if (vips_band_format_iscomplex(image.format()) || !IsConvertible(image)) {
    throw HostError(
        "its samples are " + format + " in " + std::to_string(image.bands()) + " bands (" + space +
        "); supported are gray and RGB of 8 or 16 bits with or without alpha, and colour spaces that can be "
        "converted to sRGB: CMYK, Lab, LCh, XYZ, Yxy, HSV and scRGB");
  }
  const vips::VImage converted = ConvertToSrgb(image);
  const auto colour_bands = ColourBands(converted);
  if (!colour_bands) throw HostError("its colour space " + space + " could not be converted to sRGB");
  const std::string depth = converted.format() == VIPS_FORMAT_UCHAR ? "8" : "16";
  // Windows of tiles overlap, and conversion is dear.
  return {InCache(converted), *colour_bands, "converted from " + space + " to sRGB with " + depth + " bits per sample"};
}

}  // namespace kelvo::host
