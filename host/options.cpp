#include "options.h"

#include <iostream>

#include "command_line.h"
#include "stored_settings.h"

namespace kelvo::host {
namespace {

constexpr int kDefaultDemoWidth = 5;

ExitStatus TellError(const std::string& reason, const std::string& command) {
  std::cerr << "kelvo: " << reason << "\nTry: kelvo " << command << (command.empty() ? "" : " ") << "--help\n";
  return kWrongUsage;
}

// The parser would only say that a subcommand is missing.
std::optional<ExitStatus> CheckSubcommand(const std::vector<std::string>& arguments, const CLI::App& app) {
  if (arguments.empty() || arguments.front().starts_with('-')) return std::nullopt;
  std::string names;
  for (const CLI::App* subcommand : app.get_subcommands(nullptr)) {
    if (subcommand->check_name(arguments.front())) return std::nullopt;
    names += (names.empty() ? "" : ", ") + subcommand->get_name();
  }
  return TellError("there is no subcommand \"" + arguments.front() + "\"; there are " + names, "");
}

// What this command line sets of a picture's treatment.
StoredSettings GivenSettings(const CLI::App& command) {
  StoredSettings settings{command.get_name(), {}};
  for (const char* name : kStorableOptions) {
    const CLI::Option* option = command.get_option_no_throw(std::string("--") + name);
    if (option != nullptr && option->count() > 0) settings.values.emplace_back(name, option->results().back());
  }
  return settings;
}

struct Parsed {
  std::optional<ExitStatus> status;  // the program is to end here
  StoredSettings given;
};

Parsed Parse(const std::vector<std::string>& arguments, Options& options) {
  options = {};
  const auto app = DescribeCommandLine(options);
  if (const auto status = CheckSubcommand(arguments, *app)) return {status, {}};
  try {
    app->parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));  // as CLI11 wants them
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) {
      app->exit(error);
      return {kSuccess, {}};
    }
    const auto commands = app->get_subcommands();
    return {TellError(error.what(), commands.empty() ? "" : commands.front()->get_name()), {}};
  }
  const CLI::App& command = *app->get_subcommands().front();
  options.command = CommandNamed(command.get_name());
  return {std::nullopt, GivenSettings(command)};
}

// The arguments with those of the stored settings in front, where later ones override them.
std::vector<std::string> WithStored(const std::vector<std::string>& arguments, const StoredSettings& stored) {
  std::vector<std::string> all = {arguments.front()};
  for (const auto& [name, value] : stored.values)
    all.push_back(std::string("--").append(name).append("=").append(value));
  all.insert(all.end(), arguments.begin() + 1, arguments.end());
  return all;
}

// What the parser cannot say: which options need each other. Empty if all is well.
std::string Contradiction(const Options& options) {
  const PictureSettings& picture = options.picture;
  const bool nothing_to_do = options.inputs.empty() && options.save_preset.empty();
  switch (options.command) {
    case Command::kRestore:
      if (picture.tile.direction != 0 && picture.width.automatic)
        return "--direction needs --width: the width of a motion is not detected";
      break;
    case Command::kBlur:
      if (picture.width.automatic) return "--width is required";
      break;
    case Command::kSheet:
      if (options.inputs.size() != 1) return "one input is required";
      if (options.widths.empty() == options.directions.empty())
        return "either --widths N,N,... or --directions N,N,... is required";
      if (!options.directions.empty() && (picture.width.automatic || picture.width.IsZero()))
        return "--directions needs --width: the width of a motion is not detected";
      return "";
    case Command::kCompare:
      if (options.inputs.size() != 2) return "two pictures are required, BEFORE and AFTER";
      return options.output.empty() ? "--output is required" : "";
    case Command::kDetect:
    case Command::kEnlarge:
      break;
    case Command::kDemo:
    case Command::kMembers:
      return "";
  }
  if (nothing_to_do) return "input is required";
  if (!options.output.empty() && options.inputs.size() > 1)
    return "--output names one file, but there are " + std::to_string(options.inputs.size()) +
           " inputs; use --output-dir";
  return "";
}

std::string ForeignSettings(const StoredSettings& stored, const std::string& command) {
  if (stored.command.empty() || stored.command == command) return "";
  return "the stored settings are those of \"" + stored.command + "\"";
}

// Empty if there is nothing wrong with the stored settings that options ask for.
Parsed ParseWithStored(const std::vector<std::string>& arguments, Options& options) {
  const StoredSettings stored = options.like.empty() ? ReadPreset(options.preset) : SettingsInFile(options.like);
  const std::string foreign = ForeignSettings(stored, arguments.front());
  if (!foreign.empty()) return {TellError(foreign, arguments.front()), {}};
  return Parse(WithStored(arguments, stored), options);
}

}  // namespace

std::optional<ExitStatus> ParseOptions(int argc, char** argv, Options& options,
                                       const std::function<void(const Options&)>& begin) {
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  Parsed parsed = Parse(arguments, options);
  if (!parsed.status) begin(options);
  if (!parsed.status && !(options.preset.empty() && options.like.empty())) parsed = ParseWithStored(arguments, options);
  if (parsed.status) return parsed.status;
  const std::string wrong = Contradiction(options);
  if (!wrong.empty()) return TellError(wrong, arguments.front());
  if (options.command == Command::kEnlarge) options.picture.enlarge = true;
  if (options.command == Command::kDemo && options.picture.tile.width == 0)
    options.picture.tile.width = kDefaultDemoWidth;
  if (options.save_preset.empty()) return std::nullopt;
  const std::string file = WritePreset(options.save_preset, parsed.given, options.force);
  if (!options.quiet) std::cerr << "kelvo: saved \"" << file << "\"\n";
  return options.inputs.empty() ? std::optional(kSuccess) : std::nullopt;
}

}  // namespace kelvo::host
