#include <doctest/doctest.h>

#include <array>
#include <optional>

#include "encoding.h"
#include "picture_settings.h"
#include "stored_settings.h"
#include "width_request.h"

namespace kelvo::host {

TEST_CASE("settings: widths made of what was found") {
  const struct {
    const char* text;
    int found, expected;
  } cases[] = {{"7", 4, 7},        {"0", 4, 0},        {"auto", 5, 5},      {"auto", 0, 0},
               {"auto+1", 5, 6},   {"auto+3", 0, 0},   {"auto-2", 2, 1},    {"auto+20", 20, 20},
               {"auto*0.8", 5, 4}, {"auto*0.5", 5, 3}, {"auto*0.05", 1, 1}, {"auto*20", 20, 20}};
  for (const auto& wanted : cases) {
    CAPTURE(wanted.text);
    const auto width = ParseWidthRequest(wanted.text);
    REQUIRE(width);
    CHECK(width->For(wanted.found) == wanted.expected);
  }
  for (const char* text : {"", "21", "-1", "+3", "5.0", "auto+", "auto*", "auto*0", "auto*-1", "auto*nan", "auto*21",
                           "auto+21", "auto+-1", "auto/2", "Auto", "auto 1"}) {
    CAPTURE(text);
    CHECK_FALSE(ParseWidthRequest(text));
  }
}

TEST_CASE("settings: brightness alone is restored after JPEG, unless told otherwise") {
  const struct {
    std::optional<bool> asked;
    int jpeg;
    bool luma;
  } cases[] = {{{}, 0, false}, {{}, 9, false}, {{}, 10, true}, {{}, 80, true}, {true, 0, true}, {false, 80, false}};
  for (const auto& wanted : cases) {
    CAPTURE(wanted.jpeg);
    PictureSettings settings;
    settings.luma = wanted.asked;
    RestoreSettings done;
    done.jpeg = wanted.jpeg;
    CHECK(RestoresLuma(settings, done) == wanted.luma);
  }
}

TEST_CASE("settings: qualities of JPEG tables") {
  std::array<int, 64> steps;
  const struct { int step, quality; } cases[] = {{1, 100}, {255, 1}};
  for (const auto& [step, quality] : cases) {
    steps.fill(step);
    CHECK(JpegQualityOf(steps) == quality);
  }
}

TEST_CASE("settings: an XMP packet takes them up and keeps the rest") {
  const std::string packet =
      "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>"
      "<rdf:Description rdf:about='' xmlns:dc='http://purl.org/dc/elements/1.1/'><dc:source>Obscura</dc:source>"
      "</rdf:Description></rdf:RDF></x:xmpmeta>";
  const StoredSettings settings{"restore", {{"width", "5"}, {"colour", "luma"}}};
  const std::string once = WithSettings(packet, settings);
  CHECK(once.find("Obscura") != std::string::npos);
  CHECK(once.find("luma") != std::string::npos);
  const std::string other = WithSettings(once, {"blur", {{"width", "6"}}});
  CHECK(other.find("luma") == std::string::npos);  // those of the run before are gone
  CHECK(WithSettings("<broken", settings) == "<broken");
  CHECK_FALSE(WithSettings("", settings).empty());
}

}  // namespace kelvo::host
