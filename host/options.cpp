#include "options.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <filesystem>
#include <iostream>

namespace kelvo::host {
namespace {

constexpr int kMaxThreads = 1024;
constexpr int kDefaultDemoWidth = 5;
constexpr int kMaxDirection = 359;  // degrees
constexpr int kMaxJpeg = 80;

constexpr char kOverview[] =
    "Restores the sharpness of photographs that are out of focus or blurred by a straight motion.\n"
    "Reads and writes what libvips does: JPEG, PNG, TIFF, WebP and more, 8 and 16 bit, gray and RGB. Metadata, colour\n"
    "profile and transparency are carried over. Lossy formats are written with quality 95.";

constexpr char kExamples[] =
    "Examples:\n"
    "  kelvo restore photo.jpg\n"
    "  kelvo restore photo.jpg -o sharp.jpg --width 5\n"
    "  kelvo restore photo.jpg -o sharp.jpg --width 8 --direction 30\n"
    "  kelvo detect photo.jpg pictures/\n"
    "  kelvo blur sharp.png -o soft.png --width 5\n"
    "  kelvo enlarge small.png -o large.png\n"
    "  kelvo demo pictures\n"
    "kelvo SUBCOMMAND --help tells more about each.";

constexpr char kDirectionText[] =
    "With --direction the blur is a motion: a point of light has become a straight line of width + 1 pixels.\n"
    "The direction is counted in degrees, counter-clockwise from the row: at 45 the line joins a pixel with its\n"
    "upper right neighbour, at 90 it is upright, at 135 it goes to the upper left, at 180 it lies along the row.\n"
    "Half a turn more is the same line: 30 and 210 do the same, and 180 stands for 0. Directions are rounded to\n"
    "multiples of 5 degrees, for widths 1 to 4 of 15 degrees.\n"
    "\n";

constexpr char kWidthText[] =
    "The width is that of the blur: a point of light has become a disc of so many pixels across.\n";

constexpr char kRestoreExamples[] =
    "What is not given is detected over the whole picture, and the result is written beside it: photo-restored.jpg.\n"
    "Where no blur is found nothing is written; with --output, the picture as it is. The width of a motion is not\n"
    "detected.\n"
    "\n"
    "Examples:\n"
    "  kelvo restore photo.jpg                                               writes photo-restored.jpg\n"
    "  kelvo restore photo.jpg -o sharp.png --width 4\n"
    "  kelvo restore photo.jpg -o sharp.png --width 8 --direction 30         a line of 9 pixels\n"
    "  kelvo restore photo.jpg -o sharp.jpg --width 6 --noise 1 --jpeg 30    noisy, strongly compressed\n"
    "  kelvo restore scan.tif -o scan.tif --force --width 3 --accuracy 2     in place, with more effort\n"
    "  kelvo restore photo.jpg -o large.png --width 4 --enlarge              twice the columns and rows\n"
    "  kelvo restore --output=-odd-.png --width 3 -- -name-.png              names with a leading dash";

constexpr char kBlurExamples[] =
    "Examples:\n"
    "  kelvo blur sharp.png -o soft.png --width 5\n"
    "  kelvo blur sharp.png -o soft.png --width 8 --direction 30\n"
    "  kelvo blur sharp.tif -o soft.tif --width 12 --threads 2";

constexpr char kDetectExamples[] =
    "Prints for each picture the width of its blur (0: sharp), the three widths with most votes, the strength of JPEG\n"
    "compression 0..80, and the column and row phase of the 8 x 8 grid, 0..7. Of a folder every picture in it counts.\n"
    "With --json a list of objects, with the votes of all widths; a file that failed has \"error\".\n"
    "\n"
    "Examples:\n"
    "  kelvo detect photo.jpg\n"
    "  kelvo detect holiday/ scan.tif\n"
    "  kelvo detect --json holiday/ > holiday.json";

constexpr char kEnlargeExamples[] =
    "Every pixel becomes 2 x 2; corners and thin diagonal lines are reshaped. The picture prints at its size: the\n"
    "resolution doubles. To restore and enlarge at once: kelvo restore --enlarge.\n"
    "\n"
    "Examples:\n"
    "  kelvo enlarge drawing.png -o large.png\n"
    "  kelvo enlarge large.png -o larger.png                                 fourfold in all";

constexpr char kDemoExamples[] =
    "Writes sharp.png, blurred.png, restored.png and side-by-side.png.\n"
    "\n"
    "Examples:\n"
    "  kelvo demo pictures\n"
    "  kelvo demo pictures --width 7 --force";

constexpr char kMembersExamples[] =
    "The library blurs and restores with one member of a family: a width, and for motion an angle. This prints its\n"
    "margins, weights, operators and iterations.\n"
    "\n"
    "Examples:\n"
    "  kelvo members --width 7 --direction 30\n"
    "  kelvo members --width 12 --json";

// Accepts whole numbers of a range, and says which one when it refuses.
CLI::Validator WholeNumber(int low, int high) {
  const std::string range = std::to_string(low) + ".." + std::to_string(high);
  const auto check = [low, high, range](const std::string& text) {
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool whole = error == std::errc() && end == text.data() + text.size();
    return whole && value >= low && value <= high ? "" : "\"" + text + "\" is not a whole number in " + range;
  };
  return CLI::Validator(check, range);
}

void AddWidth(CLI::App& command, Options& options, int low, int high) {
  command.add_option("-w,--width", options.settings.width, "Width of the blur in pixels; 0 changes nothing")
      ->check(WholeNumber(low, high));
}

void AddDirection(CLI::App& command, Options& options) {
  command
      .add_option("-d,--direction", options.settings.direction,
                  "Direction of a motion blur in degrees; without it the blur is round")
      ->check(WholeNumber(1, kMaxDirection));
}

// A number, or nothing for "auto".
CLI::Option* AddNumberOrAuto(CLI::App& command, const char* name, std::optional<int>& number, int high,
                             const std::string& description) {
  const CLI::Validator whole = WholeNumber(0, high);
  const std::string range = "auto|0.." + std::to_string(high);
  const auto check = [whole](const std::string& text) {
    const std::string reason = text == "auto" ? "" : whole(text);
    return reason.empty() ? "" : reason + " and not \"auto\"";
  };
  const auto store = [&number](const std::string& text) {
    number = text == "auto" ? std::nullopt : std::optional<int>(std::stoi(text));
  };
  return command.add_option_function<std::string>(name, store, description + " (default: auto)")
      ->check(CLI::Validator(check, ""))
      ->type_name(range);
}

void AddRunning(CLI::App& command, Options& options) {
  command.add_flag("-q,--quiet", options.quiet, "No progress bar, no notes");
  command.add_option("--threads", options.threads, "Number of worker threads (default: one per core)")
      ->check(WholeNumber(1, kMaxThreads));
}

void AddForce(CLI::App& command, Options& options) {
  command.add_flag("-f,--force", options.force, "Replace an existing output file");
  AddRunning(command, options);
}

CLI::App* AddPictureCommand(CLI::App& app, Options& options, const char* name, const char* description) {
  CLI::App* command = app.add_subcommand(name, description);
  command->add_option("input", options.input, "Picture to read")->required()->type_name("FILE");
  command->add_option("-o,--output", options.output, "Picture to write; the suffix chooses the format")
      ->required()
      ->type_name("FILE");
  AddForce(*command, options);
  return command;
}

void AddRaw(CLI::App& command, Options& options) {
  command.add_flag("--raw", options.settings.raw_values,
                   "The library's own values, not original plus change: coarser, above all in shadows");
}

void AddRestore(CLI::App& app, Options& options) {
  CLI::App* command = AddPictureCommand(app, options, "restore", "Restore a blurred picture");
  RestoreSettings& settings = options.settings;
  AddRaw(*command, options);
  command->get_option("--output")
      ->required(false)
      ->description("Picture to write; the suffix chooses the format (default: INPUT-restored, beside the input)");
  AddNumberOrAuto(*command, "-w,--width", options.width, kMaxWidth, "Width of the blur in pixels; 0 changes nothing");
  AddDirection(*command, options);
  command->add_option("--noise", settings.noise, "Noise suppression: -1 least, 3 most")
      ->check(WholeNumber(-1, 3))
      ->capture_default_str();
  command->add_option("--accuracy", settings.accuracy, "Effort: -2 fastest, 2 best")
      ->check(WholeNumber(-2, 2))
      ->capture_default_str();
  AddNumberOrAuto(*command, "--jpeg", options.jpeg, kMaxJpeg,
                  "Strength of the JPEG compression the picture went through, 0 none");
  command->add_flag("--classic", settings.classic, "Leave the trial moves of the search in; tiles do not quite meet");
  command->add_flag("--enlarge", options.enlarge, "Enlarge twofold what has been restored");
  command->footer(std::string(kWidthText) + kDirectionText + kRestoreExamples);
}

void AddBlur(CLI::App& app, Options& options) {
  CLI::App* command = AddPictureCommand(app, options, "blur", "Blur a picture");
  AddRaw(*command, options);
  AddWidth(*command, options, 0, kMaxWidth);
  command->get_option("--width")->required();
  AddDirection(*command, options);
  command->footer(std::string(kWidthText) + kDirectionText + kBlurExamples);
}

void AddEnlarge(CLI::App& app, Options& options) {
  CLI::App* command = AddPictureCommand(app, options, "enlarge", "Enlarge a picture twofold");
  command->footer(kEnlargeExamples);
}

void AddDetect(CLI::App& app, Options& options) {
  CLI::App* command = app.add_subcommand("detect", "Measure the blur and the JPEG compression of pictures");
  command->add_option("input", options.inputs, "Pictures and folders of pictures")->required()->type_name("FILE");
  command->add_flag("--json", options.json, "Print JSON instead of a table");
  AddRunning(*command, options);
  command->footer(kDetectExamples);
}

void AddDemo(CLI::App& app, Options& options) {
  CLI::App* command = app.add_subcommand("demo", "Draw a test picture, defocus and restore it");
  command->add_option("directory", options.output, "Where to write; created if missing")->required()->type_name("DIR");
  AddWidth(*command, options, 1, kMaxWidth);
  AddForce(*command, options);
  command->footer(kDemoExamples);
}

void AddMembers(CLI::App& app, Options& options) {
  CLI::App* command = app.add_subcommand("members", "Print what the library's model of a blur is made of");
  command->add_option("-w,--width", options.settings.width, "Width of the blur in pixels")
      ->check(WholeNumber(1, kMaxWidth))
      ->required();
  AddDirection(*command, options);
  command->add_flag("--json", options.json, "As JSON");
  command->footer(kMembersExamples);
}

Command CommandNamed(const std::string& name) {
  if (name == "restore") return Command::kRestore;
  if (name == "blur") return Command::kBlur;
  if (name == "members") return Command::kMembers;
  if (name == "detect") return Command::kDetect;
  return name == "enlarge" ? Command::kEnlarge : Command::kDemo;
}

// The file beside `input` that restoring writes by itself: photo.jpg becomes photo-restored.jpg.
std::string RestoredName(const std::string& input) {
  const std::filesystem::path path = input;
  return path.parent_path() / (path.stem().string() + "-restored" + path.extension().string());
}

// What restoring was told; the rest is for detection.
void FillSettings(Options& options) {
  options.output_named = !options.output.empty();
  if (!options.output_named) options.output = RestoredName(options.input);
  options.settings.width = options.width.value_or(0);
  options.settings.jpeg = options.jpeg.value_or(0);
}

std::string VersionText() {
  return "kelvo " KELVO_PROJECT_VERSION " (library " + std::to_string(KVDLL_GetVersionNumber()) + ")";
}

ExitStatus TellError(const std::string& reason, const std::string& command) {
  std::cerr << "kelvo: " << reason << "\nTry: kelvo " << command << (command.empty() ? "" : " ") << "--help\n";
  return kWrongUsage;
}

// The parser would only say that a subcommand is missing.
std::optional<ExitStatus> CheckSubcommand(int argc, char** argv, const CLI::App& app) {
  if (argc < 2 || argv[1][0] == '-') return std::nullopt;
  std::string names;
  for (const CLI::App* subcommand : app.get_subcommands(nullptr)) {
    if (subcommand->check_name(argv[1])) return std::nullopt;
    names += (names.empty() ? "" : ", ") + subcommand->get_name();
  }
  return TellError("there is no subcommand \"" + std::string(argv[1]) + "\"; there are " + names, "");
}

}  // namespace

std::optional<ExitStatus> ParseOptions(int argc, char** argv, Options& options) {
  CLI::App app(kOverview, "kelvo");
  app.footer(kExamples);
  app.set_version_flag("--version", VersionText());
  app.require_subcommand(1);
  AddRestore(app, options);
  AddBlur(app, options);
  AddDetect(app, options);
  AddEnlarge(app, options);
  AddDemo(app, options);
  AddMembers(app, options);
  if (const auto status = CheckSubcommand(argc, argv, app)) return status;
  std::string command;
  try {
    app.parse(argc, argv);
    command = app.get_subcommands().front()->get_name();
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) {
      app.exit(error);
      return kSuccess;
    }
    const auto parsed = app.get_subcommands();
    return TellError(error.what(), parsed.empty() ? "" : parsed.front()->get_name());
  }
  options.command = CommandNamed(command);
  if (options.command == Command::kEnlarge) options.enlarge = true;
  if (options.command == Command::kRestore) {
    if (options.settings.direction != 0 && !options.width)
      return TellError("--direction needs --width: the width of a motion is not detected", command);
    FillSettings(options);
  }
  if (options.command == Command::kDemo && options.settings.width == 0) options.settings.width = kDefaultDemoWidth;
  return std::nullopt;
}

}  // namespace kelvo::host
