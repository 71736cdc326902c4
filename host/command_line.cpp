#include "command_line.h"

#include <array>
#include <charconv>
#include <utility>

#include "help_texts.h"

namespace kelvo::host {
namespace {

constexpr int kMaxThreads = 1024;
constexpr int kMaxDirection = 359;  // degrees
constexpr int kMaxJpeg = 80;
constexpr int kMaxShards = 1'000'000;

std::optional<int> WholeIn(const std::string& text, int low, int high) {
  int value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  const bool whole = error == std::errc() && end == text.data() + text.size();
  return whole && value >= low && value <= high ? std::optional(value) : std::nullopt;
}

// Accepts whole numbers of a range, and says which one when it refuses.
CLI::Validator WholeNumber(int low, int high) {
  const std::string range = std::to_string(low) + ".." + std::to_string(high);
  const auto check = [low, high, range](const std::string& text) {
    return WholeIn(text, low, high) ? "" : "\"" + text + "\" is not a whole number in " + range;
  };
  return CLI::Validator(check, range);
}

// The last one counts, so that what stands on the command line overrides what is stored. `store` returns false for a
// text that it refuses.
template <typename Store>
CLI::Option* AddText(CLI::App& command, const std::string& name, const std::string& type, const std::string& right,
                     Store store, const std::string& description) {
  const auto check = [store, right](const std::string& text) {
    return store(text) ? "" : "\"" + text + "\" is not " + right;
  };
  const auto keep = [store](const std::string& text) { store(text); };
  return command.add_option_function<std::string>(name, keep, description)
      ->check(CLI::Validator(check, ""))
      ->type_name(type)
      ->take_last();
}

void AddNumber(CLI::App& command, const std::string& name, int& number, int low, int high,
               const std::string& description) {
  const CLI::Validator range = WholeNumber(low, high);
  command.add_option(name, number, description)
      ->check(CLI::Validator(range).description(""))
      ->type_name(range.get_description())
      ->take_last();
}

void AddWidth(CLI::App& command, PictureSettings& picture, bool automatic) {
  const std::string range = "0.." + std::to_string(kMaxWidth);
  const auto store = [&picture, automatic](const std::string& text) {
    const auto width = ParseWidthRequest(text);
    if (!width || (width->automatic && !automatic)) return false;
    picture.width = *width;
    return true;
  };
  const std::string right = "a whole number in " + range;
  AddText(command, "-w,--width", automatic ? "auto|auto*F|auto+N|" + range : range,
          automatic ? right + " and not \"auto\", \"auto*FACTOR\" or \"auto+NUMBER\"" : right, store,
          automatic ? "Width of the blur in pixels; 0 changes nothing (default: auto)"
                    : "Width of the blur in pixels; 0 changes nothing");
}

void AddDirection(CLI::App& command, RestoreSettings& settings) {
  AddNumber(command, "-d,--direction", settings.direction, 1, kMaxDirection,
            "Direction of a motion blur in degrees; without it the blur is round");
}

void AddJpeg(CLI::App& command, PictureSettings& picture) {
  const auto store = [&picture](const std::string& text) {
    picture.jpeg = WholeIn(text, 0, kMaxJpeg);
    return picture.jpeg || text == "auto";
  };
  const std::string range = "0.." + std::to_string(kMaxJpeg);
  AddText(command, "--jpeg", "auto|" + range, "a whole number in " + range + " and not \"auto\"", store,
          "Strength of the JPEG compression the picture went through, 0 none (default: auto)");
}

void AddNoise(CLI::App& command, PictureSettings& picture) {
  const auto store = [&picture](const std::string& text) {
    picture.noise = WholeIn(text, -1, 3);
    return picture.noise || text == "auto";
  };
  AddText(command, "--noise", "auto|-1..3", "a whole number in -1..3 and not \"auto\"", store,
          "Noise suppression: -1 least, 3 most (default: auto, by the noise of the picture)");
}

void AddColour(CLI::App& command, PictureSettings& picture) {
  const auto store = [&picture](const std::string& text) {
    picture.luma = text == "auto" ? std::nullopt : std::optional<bool>(text == "luma");
    return text == "auto" || text == "luma" || text == "channels";
  };
  AddText(command, "--colour", "auto|luma|channels", "\"luma\" or \"channels\" and not \"auto\"", store,
          "What of a colour picture is restored: brightness alone, or each channel (default: auto, luma after JPEG)");
}

// LEFT,TOP,WIDTH,HEIGHT.
std::optional<Area> ParseArea(const std::string& text) {
  std::array<int, 4> numbers{};
  const char* position = text.data();
  const char* const text_end = text.data() + text.size();
  for (size_t i = 0; i < numbers.size(); ++i) {
    const auto [end, error] = std::from_chars(position, text_end, numbers[i]);
    const bool last = i + 1 == numbers.size();
    if (error != std::errc() || numbers[i] < 0 || (last ? end != text_end : end == text_end || *end != ','))
      return std::nullopt;
    position = end + 1;
  }
  const auto [left, top, width, height] = numbers;
  return width > 0 && height > 0 ? std::optional(Area{left, top, width, height}) : std::nullopt;
}

void AddRegion(CLI::App& command, PictureSettings& picture, const std::string& description) {
  const auto store = [&picture](const std::string& text) { return (picture.region = ParseArea(text)).has_value(); };
  AddText(command, "--region", "X,Y,W,H", "four whole numbers X,Y,W,H, the last two at least 1", store, description);
}

void AddShard(CLI::App& command, Shard& shard) {
  const auto store = [&shard](const std::string& text) {
    const size_t slash = text.find('/');
    if (slash == std::string::npos) return false;
    const auto count = WholeIn(text.substr(slash + 1), 1, kMaxShards);
    const auto number = WholeIn(text.substr(0, slash), 1, count.value_or(1));
    if (count && number) shard = {*number, *count};
    return count && number;
  };
  AddText(command, "--shard", "I/N", "I/N with 1 <= I <= N <= " + std::to_string(kMaxShards), store,
          "Every N-th picture only, starting with the I-th: one of N jobs");
}

void AddRunning(CLI::App& command, Options& options) {
  command.add_flag("-q,--quiet", options.quiet, "No progress bar, no notes, nothing but failures");
  AddNumber(command, "--threads", options.threads, 1, kMaxThreads, "Number of worker threads (default: one per core)");
}

void AddForce(CLI::App& command, Options& options) {
  command.add_flag("-f,--force", options.force, "Replace an existing output file");
}

void AddRecursive(CLI::App& command, Options& options) {
  command.add_flag("-r,--recursive", options.recursive, "Pictures in folders of folders too");
}

CLI::Option* AddOutput(CLI::App& command, Options& options, const std::string& description) {
  return command.add_option("-o,--output", options.output, description)->type_name("FILE");
}

// What the subcommands share that turn pictures into pictures. `suffix` is appended to the names of results.
CLI::App* AddPictureCommand(CLI::App& app, Options& options, const char* name, const char* description) {
  CLI::App* command = app.add_subcommand(name, description);
  command->add_option("input", options.inputs, "Pictures and folders of pictures")->type_name("FILE");
  CLI::Option* output = AddOutput(*command, options,
                                  "Picture to write, of one input; the suffix chooses the format (default: beside it)");
  command->add_option("-O,--output-dir", options.output_dir, "Folder for results, which keep their names in it")
      ->type_name("DIR")
      ->excludes(output);
  AddRecursive(*command, options);
  command->add_flag("--skip-existing", options.skip_existing, "Pass over pictures whose result exists");
  AddForce(*command, options);
  command->get_option("--force")->excludes("--skip-existing");
  AddShard(*command, options.shard);
  command->add_flag("-n,--dry-run", options.dry_run, "Tell what would be done, write nothing");
  command->add_flag("--json", options.json, "Print one line of JSON per picture instead of text");
  command
      ->add_option("--format", options.format,
                   "Format of results that the program names: jpg, png, tif, webp and others")
      ->type_name("SUFFIX")
      ->take_last();
  AddText(
      *command, "--quality", "1..100", "a whole number in 1..100",
      [&options](const std::string& text) { return (options.picture.quality = WholeIn(text, 1, 100)).has_value(); },
      "Quality of lossy formats (default: that of a JPEG input, else 95)");
  AddRunning(*command, options);
  return command;
}

// Settings that a picture's own result can repeat, and names for sets of them.
void AddStored(CLI::App& command, Options& options) {
  command.add_option("--preset", options.preset, "Start from the settings saved under this name")->type_name("NAME");
  command.add_option("--like", options.like, "Start from the settings that this result of the program was made with")
      ->type_name("FILE")
      ->excludes("--preset");
  command.add_option("--save-preset", options.save_preset, "Save these settings under a name")->type_name("NAME");
}

void AddRaw(CLI::App& command, Options& options) {
  command.add_flag("--raw", options.picture.tile.raw_values,
                   "The library's own values, not original plus change: coarser, above all in shadows");
}

void AddTreatment(CLI::App& command, Options& options) {
  PictureSettings& picture = options.picture;
  AddWidth(command, picture, true);
  AddDirection(command, picture.tile);
  AddNoise(command, picture);
  AddNumber(command, "--accuracy", picture.tile.accuracy, -2, 2, "Effort: -2 fastest, 2 best (default: 0)");
  AddJpeg(command, picture);
  AddColour(command, picture);
  command.add_flag("--classic", picture.tile.classic,
                   "The result of the library's exports: search without fit; tiles do not quite meet");
  AddRaw(command, options);
}

void AddRestore(CLI::App& app, Options& options) {
  CLI::App* command = AddPictureCommand(app, options, "restore", "Restore blurred pictures");
  AddTreatment(*command, options);
  command->add_flag("--enlarge", options.picture.enlarge, "Enlarge twofold what has been restored");
  AddRegion(*command, options.picture, "Restore only this part: column and row of its corner, columns, rows");
  AddStored(*command, options);
  command->footer(std::string(kWidthText) + kDirectionText + kFilesText + kRestoreExamples);
}

void AddBlur(CLI::App& app, Options& options) {
  CLI::App* command = AddPictureCommand(app, options, "blur", "Blur pictures");
  AddWidth(*command, options.picture, false);
  AddDirection(*command, options.picture.tile);
  AddColour(*command, options.picture);
  AddRaw(*command, options);
  AddRegion(*command, options.picture, "Blur only this part: column and row of its corner, columns, rows");
  AddStored(*command, options);
  command->footer(std::string(kWidthText) + kDirectionText + kFilesText + kBlurExamples);
}

void AddEnlarge(CLI::App& app, Options& options) {
  CLI::App* command = AddPictureCommand(app, options, "enlarge", "Enlarge pictures twofold");
  AddRegion(*command, options.picture, "Enlarge only this part: column and row of its corner, columns, rows");
  command->footer(std::string(kFilesText) + kEnlargeExamples);
}

void AddDetect(CLI::App& app, Options& options) {
  CLI::App* command = app.add_subcommand("detect", "Measure the blur and the JPEG compression of pictures");
  command->add_option("input", options.inputs, "Pictures and folders of pictures")->type_name("FILE");
  AddRecursive(*command, options);
  AddShard(*command, options.shard);
  command->add_flag("--json", options.json, "Print JSON instead of a table");
  AddRunning(*command, options);
  command->footer(kDetectExamples);
}

void AddSheet(CLI::App& app, Options& options) {
  CLI::App* command = app.add_subcommand("sheet", "Show one part of a picture restored in several ways");
  command->add_option("input", options.inputs, "Picture")->type_name("FILE");
  AddOutput(*command, options, "Picture to write (default: INPUT-sheet.png, beside the input)");
  command->add_option("--widths", options.widths, "Widths of the blur to try")
      ->delimiter(',')
      ->check(WholeNumber(1, kMaxWidth))
      ->type_name("N,N,...");
  command->add_option("--directions", options.directions, "Directions of a motion to try, with --width")
      ->delimiter(',')
      ->check(WholeNumber(0, kMaxDirection))
      ->type_name("N,N,...");
  AddTreatment(*command, options);
  AddRegion(*command, options.picture, "The part to show: column and row of its corner, columns, rows");
  AddForce(*command, options);
  AddRunning(*command, options);
  command->footer(kSheetExamples);
}

void AddCompare(CLI::App& app, Options& options) {
  CLI::App* command = app.add_subcommand("compare", "Make a page with a slider between two pictures");
  command->add_option("pictures", options.inputs, "The picture before, and after")->type_name("BEFORE AFTER");
  AddOutput(*command, options, "Page to write, .html");
  AddForce(*command, options);
  AddRunning(*command, options);
  command->footer(kCompareExamples);
}

void AddDemo(CLI::App& app, Options& options) {
  CLI::App* command = app.add_subcommand("demo", "Draw a test picture, defocus and restore it");
  command->add_option("directory", options.output, "Where to write; created if missing")->required()->type_name("DIR");
  AddNumber(*command, "-w,--width", options.picture.tile.width, 1, kMaxWidth,
            "Width of the blur in pixels (default: 5)");
  AddForce(*command, options);
  AddRunning(*command, options);
  command->footer(kDemoExamples);
}

void AddMembers(CLI::App& app, Options& options) {
  CLI::App* command = app.add_subcommand("members", "Print what the library's model of a blur is made of");
  AddNumber(*command, "-w,--width", options.picture.tile.width, 1, kMaxWidth, "Width of the blur in pixels");
  command->get_option("--width")->required();
  AddDirection(*command, options.picture.tile);
  command->add_flag("--json", options.json, "As JSON");
  command->footer(kMembersExamples);
}

std::string VersionText() {
  return "kelvo " KELVO_PROJECT_VERSION " (library " + std::to_string(KVDLL_GetVersionNumber()) + ")";
}

struct Subcommand {
  const char* name;
  Command command;
  void (*add)(CLI::App& app, Options& options);
};

constexpr Subcommand kSubcommands[] = {
    {"restore", Command::kRestore, AddRestore}, {"blur", Command::kBlur, AddBlur},
    {"enlarge", Command::kEnlarge, AddEnlarge}, {"detect", Command::kDetect, AddDetect},
    {"sheet", Command::kSheet, AddSheet},       {"compare", Command::kCompare, AddCompare},
    {"demo", Command::kDemo, AddDemo},          {"members", Command::kMembers, AddMembers},
};

}  // namespace

std::unique_ptr<CLI::App> DescribeCommandLine(Options& options) {
  auto app = std::make_unique<CLI::App>(kOverview, "kelvo");
  app->footer(kExamples);
  app->set_version_flag("--version", VersionText());
  app->require_subcommand(1);
  for (const Subcommand& subcommand : kSubcommands) subcommand.add(*app, options);
  return app;
}

Command CommandNamed(const std::string& name) {
  for (const Subcommand& subcommand : kSubcommands)
    if (subcommand.name == name) return subcommand.command;
  return Command::kMembers;
}

}  // namespace kelvo::host
