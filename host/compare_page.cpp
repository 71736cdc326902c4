#include "compare_page.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

#include "colour.h"
#include "errors.h"
#include "image_file.h"
#include "output_file.h"
#include "vips_setup.h"

namespace kelvo::host {
namespace fs = std::filesystem;
namespace {

constexpr size_t kMostBytes = size_t{100} << 20;  // of a picture on the page; browsers stop somewhere beyond

// @...@ is filled in. The slider is one element with the role and the keys of one; dragging works anywhere on the fitted
// pictures, and by the handle where they are shown pixel by pixel and may have to be scrolled.
constexpr char kPage[] = R"html(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta http-equiv="Content-Security-Policy"
  content="default-src 'none'; img-src data:; style-src 'unsafe-inline'; script-src 'unsafe-inline'">
<title>@BEFORE_NAME@ and @AFTER_NAME@</title>
<style>
:root { color-scheme: light dark; --share: 50%; }
body { margin: 0; font: 15px/1.4 system-ui, sans-serif; }
header { display: flex; flex-wrap: wrap; gap: .4em 1.2em; align-items: baseline; padding: .6em .9em; }
header span:first-child::before { content: "left: "; opacity: .65; }
header span:nth-child(2)::before { content: "right: "; opacity: .65; }
#frame { overflow: auto; }
#pair { position: relative; width: fit-content; margin: 0 auto; touch-action: pan-y pinch-zoom; cursor: ew-resize;
  user-select: none; }
#pair img { display: block; width: @WIDTH@px; aspect-ratio: @WIDTH@ / @HEIGHT@;
  max-width: min(100vw, calc((100vh - 4em) * @WIDTH@ / @HEIGHT@)); }
#pair.actual img { max-width: none; image-rendering: pixelated; }
#pair.actual { touch-action: auto; cursor: auto; }
#before { position: absolute; inset: 0; clip-path: inset(0 calc(100% - var(--share)) 0 0); }
#slider { position: absolute; top: 0; bottom: 0; left: var(--share); width: 2.75rem; margin-left: -1.375rem;
  touch-action: none; cursor: ew-resize; outline: none; }
#slider::before { content: ""; position: absolute; top: 0; bottom: 0; left: calc(50% - 1px); width: 2px;
  background: #fff; box-shadow: 0 0 0 1px #0008; }
#slider::after { content: "\2194"; position: absolute; top: 50%; left: 50%; width: 1.9rem; height: 1.9rem;
  transform: translate(-50%, -50%); border-radius: 50%; background: #fff; color: #222; text-align: center;
  font-size: 1.15rem; line-height: 1.8rem; box-shadow: 0 1px 4px #000a; }
#slider:focus-visible::after { outline: 3px solid #2a7de1; outline-offset: 2px; }
</style>
</head>
<body>
<header><span>@BEFORE_NAME@</span><span>@AFTER_NAME@</span>
<label><input type="checkbox" id="actual"> pixel by pixel</label></header>
<div id="frame"><div id="pair">
<img id="after" alt="@AFTER_NAME@" draggable="false" src="@AFTER_DATA@">
<img id="before" alt="@BEFORE_NAME@" draggable="false" src="@BEFORE_DATA@">
<div id="slider" role="slider" tabindex="0" aria-label="how much of the left picture is shown"
  aria-valuemin="0" aria-valuemax="100" aria-valuenow="50"></div>
</div></div>
<script>
"use strict";
const pair = document.getElementById("pair"), slider = document.getElementById("slider");
const actual = document.getElementById("actual");
let share = 50;
function show(percent) {
  share = Math.min(100, Math.max(0, percent));
  pair.style.setProperty("--share", share + "%");
  slider.setAttribute("aria-valuenow", Math.round(share));
}
function follow(event) {
  const box = pair.getBoundingClientRect();
  show(100 * (event.clientX - box.left) / box.width);
}
pair.addEventListener("pointerdown", event => {
  if (event.button !== 0 || (actual.checked && event.target !== slider)) return;
  pair.setPointerCapture(event.pointerId);
  slider.focus();
  event.preventDefault();
  follow(event);
});
pair.addEventListener("pointermove", event => {
  if (pair.hasPointerCapture(event.pointerId)) follow(event);
});
const steps = { ArrowLeft: -1, ArrowDown: -1, ArrowRight: 1, ArrowUp: 1, PageDown: -10, PageUp: 10, Home: -100, End: 100 };
slider.addEventListener("keydown", event => {
  const step = steps[event.key];
  if (step === undefined || event.ctrlKey || event.altKey || event.metaKey) return;
  show(share + (event.shiftKey ? 10 * step : step));
  event.preventDefault();
});
actual.addEventListener("change", () => pair.classList.toggle("actual", actual.checked));
</script>
</body>
</html>
)html";

struct Shown {
  int width = 0, height = 0;
  std::string data;  // a data: URL
};

std::string DataUrl(const char* type, const void* bytes, size_t count) {
  const std::unique_ptr<char, decltype(&g_free)> text(g_base64_encode(static_cast<const guchar*>(bytes), count),
                                                      g_free);
  return std::string("data:") + type + ";base64," + text.get();
}

// The type of files that every browser shows, by their first bytes; nullptr for others.
const char* BrowserType(const std::string& bytes) {
  if (bytes.starts_with("\xff\xd8\xff")) return "image/jpeg";
  if (bytes.starts_with("\x89PNG\r\n\x1a\n")) return "image/png";
  return bytes.starts_with("RIFF") && bytes.substr(8, 4) == "WEBP" ? "image/webp" : nullptr;
}

std::string AsPng(const vips::VImage& image) {
  vips::VImage upright = AsColourPicture(image).image.autorot();
  if (upright.format() == VIPS_FORMAT_USHORT) upright = (upright >> 8).cast(VIPS_FORMAT_UCHAR);
  const bool gray = upright.bands() < 3;
  upright = upright.copy(
      vips::VImage::option()->set("interpretation", gray ? VIPS_INTERPRETATION_B_W : VIPS_INTERPRETATION_sRGB));
  VipsBlob* blob = upright.pngsave_buffer();
  size_t bytes = 0;
  const void* data = vips_blob_get(blob, &bytes);
  std::string url = DataUrl("image/png", data, bytes);
  vips_area_unref(VIPS_AREA(blob));
  return url;
}

Shown Load(const std::string& path) try {
  std::vector<std::string> notes;
  const vips::VImage image = OpenPicture(path, notes);
  DecodePicture(image, path);
  const int orientation = vips_image_get_orientation(image.get_image());
  const bool turned = orientation > 4;  // a quarter or three
  Shown shown{turned ? image.height() : image.width(), turned ? image.width() : image.height(), ""};
  std::ifstream file(path, std::ios::binary);
  const std::string bytes((std::istreambuf_iterator<char>(file)), {});
  const char* type = BrowserType(bytes);
  const bool as_it_is = type != nullptr && orientation == 1 && bytes.size() <= kMostBytes;
  shown.data = as_it_is ? DataUrl(type, bytes.data(), bytes.size()) : AsPng(image);
  if (shown.data.size() > kMostBytes * 4 / 3 + 100)
    throw HostError("cannot show \"" + path + "\": it takes more than " + std::to_string(kMostBytes >> 20) +
                    " MiB on a page; compare a part of it, made with --region");
  return shown;
} catch (const vips::VError&) {
  throw HostError("cannot show \"" + path + "\": " + TakeVipsMessages());
}

// A file name as text of a page; bytes that are no UTF-8 become question marks.
std::string PageText(const std::string& path) {
  const std::unique_ptr<char, decltype(&g_free)> valid(g_utf8_make_valid(fs::path(path).filename().c_str(), -1),
                                                       g_free);
  const std::unique_ptr<char, decltype(&g_free)> escaped(g_markup_escape_text(valid.get(), -1), g_free);
  return escaped.get();
}

std::string FilledPage(const std::vector<std::pair<std::string, std::string>>& fields) {
  const std::string page = kPage;
  std::string filled;
  size_t start = 0;
  for (size_t mark = page.find('@'); mark != std::string::npos; mark = page.find('@', start)) {
    filled.append(page, start, mark - start);
    const size_t end = page.find('@', mark + 1);
    const std::string name = page.substr(mark + 1, end - mark - 1);
    for (const auto& [field, value] : fields)
      if (field == name) filled += value;
    start = end + 1;
  }
  return filled.append(page, start);
}

}  // namespace

void WriteComparePage(const Options& options) {
  const std::string &before = options.inputs[0], &after = options.inputs[1];
  if (fs::path(options.output).extension() != ".html")
    throw HostError("cannot write \"" + options.output + "\": a page is an .html file");
  OutputFile output(options.output, options.force);
  const Shown left = Load(before), right = Load(after);
  std::ofstream page(output.temporary_path(), std::ios::binary);
  page << FilledPage({{"BEFORE_NAME", PageText(before)},
                      {"AFTER_NAME", PageText(after)},
                      {"WIDTH", std::to_string(left.width)},
                      {"HEIGHT", std::to_string(left.height)},
                      {"BEFORE_DATA", left.data},
                      {"AFTER_DATA", right.data}});
  page.close();
  if (!page) throw HostError("cannot write \"" + options.output + "\": the disc is full or cannot be written");
  output.Commit();
  if (!options.quiet) std::cout << before << " and " << after << ": compared in " << options.output << "\n";
}

}  // namespace kelvo::host
