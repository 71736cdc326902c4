#include "colour.h"

#include <doctest/doctest.h>

#include "errors.h"
#include "pictures.h"

namespace kelvo::host {
namespace {

vips::VImage Named(VipsInterpretation name, VipsBandFormat format, int bands) {
  const vips::VImage picture = PictureOf(Scene<uint8_t>(8, 8, bands, 1), 8, 8, bands).cast(format);
  return picture.copy(vips::VImage::option()->set("interpretation", name));
}

TEST_CASE("gray and RGB of 8 and 16 bits are used as they are, whatever they are called") {
  struct Case {
    VipsInterpretation name;
    VipsBandFormat format;
    int bands;
    int colour_bands;
    VipsInterpretation expected;
  };
  const Case cases[] = {
      {VIPS_INTERPRETATION_B_W, VIPS_FORMAT_UCHAR, 1, 1, VIPS_INTERPRETATION_B_W},
      {VIPS_INTERPRETATION_MULTIBAND, VIPS_FORMAT_UCHAR, 2, 1, VIPS_INTERPRETATION_B_W},
      {VIPS_INTERPRETATION_RGB, VIPS_FORMAT_USHORT, 1, 1, VIPS_INTERPRETATION_GREY16},
      {VIPS_INTERPRETATION_MULTIBAND, VIPS_FORMAT_USHORT, 3, 3, VIPS_INTERPRETATION_RGB16},
      {VIPS_INTERPRETATION_MULTIBAND, VIPS_FORMAT_UCHAR, 4, 3, VIPS_INTERPRETATION_sRGB},
      {VIPS_INTERPRETATION_sRGB, VIPS_FORMAT_UCHAR, 6, 3, VIPS_INTERPRETATION_sRGB},
  };
  for (const Case& c : cases) {
    CAPTURE(c.bands);
    const vips::VImage picture = Named(c.name, c.format, c.bands);
    const ColourPicture seen = AsColourPicture(picture);
    CHECK(seen.colour_bands == c.colour_bands);
    CHECK(seen.image.interpretation() == c.expected);
    CHECK(seen.note.empty());
    CHECK((seen.image - picture).abs().max() == 0);
  }
}

TEST_CASE("other colour spaces are converted, with a note and without their profile") {
  struct Case {
    VipsInterpretation name;
    VipsBandFormat format;
    int bands;
    VipsBandFormat expected;
  };
  const Case cases[] = {
      {VIPS_INTERPRETATION_CMYK, VIPS_FORMAT_UCHAR, 4, VIPS_FORMAT_UCHAR},
      {VIPS_INTERPRETATION_HSV, VIPS_FORMAT_UCHAR, 3, VIPS_FORMAT_UCHAR},
      {VIPS_INTERPRETATION_LAB, VIPS_FORMAT_FLOAT, 3, VIPS_FORMAT_USHORT},
      {VIPS_INTERPRETATION_scRGB, VIPS_FORMAT_FLOAT, 4, VIPS_FORMAT_USHORT},
  };
  for (const Case& c : cases) {
    vips::VImage picture = Named(c.name, c.format, c.bands);
    static char profile[] = "no profile at all";
    if (c.name != VIPS_INTERPRETATION_CMYK) picture.set(VIPS_META_ICC_NAME, nullptr, profile, sizeof profile);
    const ColourPicture seen = AsColourPicture(picture);
    CAPTURE(seen.note);
    CHECK(seen.colour_bands == 3);
    CHECK(seen.image.format() == c.expected);
    CHECK(seen.note.find("to sRGB") != std::string::npos);
    const bool has_profile = vips_image_get_typeof(seen.image.get_image(), VIPS_META_ICC_NAME) != 0;
    CHECK(has_profile == (c.name == VIPS_INTERPRETATION_CMYK));
  }
}

TEST_CASE("pictures without a sensible conversion are refused") {
  CHECK_THROWS_AS(AsColourPicture(Named(VIPS_INTERPRETATION_FOURIER, VIPS_FORMAT_COMPLEX, 1)), HostError);
  CHECK_THROWS_AS(AsColourPicture(Named(VIPS_INTERPRETATION_MULTIBAND, VIPS_FORMAT_UCHAR, 5)), HostError);
  CHECK_THROWS_AS(AsColourPicture(Named(VIPS_INTERPRETATION_B_W, VIPS_FORMAT_FLOAT, 1)), HostError);
  CHECK_THROWS_AS(AsColourPicture(Named(VIPS_INTERPRETATION_sRGB, VIPS_FORMAT_INT, 3)), HostError);
  CHECK_THROWS_AS(AsColourPicture(Named(VIPS_INTERPRETATION_LAB, VIPS_FORMAT_FLOAT, 1)), HostError);
}

}  // namespace
}  // namespace kelvo::host
