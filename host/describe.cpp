// kelvo_describe FOLDER VERSION: writes manual pages and shell completions, all made from the description of the command
// line, into FOLDER/man1, FOLDER/bash, FOLDER/zsh and FOLDER/fish.
#include <cctype>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <vector>

#include "command_line.h"

namespace kelvo::host {
namespace {
namespace fs = std::filesystem;

using OptionList = std::vector<const CLI::Option*>;

constexpr char kExamplesHead[] = "Examples:\n";

std::string Replaced(std::string text, const std::string& what, const std::string& by) {
  for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + by.size()))
    text.replace(at, what.size(), by);
  return text;
}

std::vector<const CLI::App*> Subcommands(const CLI::App& app) {
  const auto all = app.get_subcommands([](const CLI::App*) { return true; });
  return {all.begin(), all.end()};
}

OptionList OptionsOf(const CLI::App& command, bool positional) {
  OptionList options;
  for (const CLI::Option* option : command.get_options())
    if (option->get_positional() == positional) options.push_back(option);
  return options;
}

bool TakesValue(const CLI::Option& option) {
  return option.get_items_expected_max() > 0;
}

// "-w", "--width"
std::vector<std::string> NamesOf(const CLI::Option& option) {
  std::vector<std::string> names;
  for (const std::string& name : option.get_snames()) names.push_back("-" + name);
  for (const std::string& name : option.get_lnames()) names.push_back("--" + name);
  return names;
}

// Words among the values that the type tells, for example "luma" and "channels".
std::vector<std::string> WordsOf(const CLI::Option& option) {
  std::vector<std::string> words;
  std::istringstream parts(option.get_type_name());
  for (std::string part; std::getline(parts, part, '|');)
    if (!part.empty() && std::all_of(part.begin(), part.end(), [](unsigned char c) { return std::islower(c) != 0; }))
      words.push_back(part);
  return words;
}

std::string Joined(const std::vector<std::string>& words, const std::string& between) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : between) + word;
  return text;
}

// Text as troff shows it.
std::string Roff(const std::string& text) {
  std::string escaped = Replaced(Replaced(text, "\\", "\\e"), "-", "\\-");
  if (escaped.starts_with('.') || escaped.starts_with('\'')) escaped = "\\&" + escaped;
  return Replaced(Replaced(escaped, "\n.", "\n\\&."), "\n'", "\n\\&'");
}

void WriteOptions(std::ostream& page, const CLI::App& command) {
  page << ".SH OPTIONS\n";
  for (const bool positional : {true, false})
    for (const CLI::Option* option : OptionsOf(command, positional)) {
      const std::vector<std::string> names = NamesOf(*option);
      const std::string name = positional ? "" : "\\fB" + Roff(Joined(names, ", ")) + "\\fR";
      page << ".TP\n" << name;
      if (TakesValue(*option)) page << (positional ? "" : " ") << "\\fI" << Roff(option->get_type_name()) << "\\fR";
      page << "\n" << Roff(option->get_description()) << ".\n";
    }
}

void WriteFooter(std::ostream& page, const std::string& footer) {
  const size_t examples = footer.find(kExamplesHead);
  std::string text = footer.substr(0, examples);
  while (text.ends_with('\n')) text.pop_back();
  if (!text.empty()) page << ".SH DESCRIPTION\n" << Replaced(Roff(text), "\n\n", "\n.PP\n") << "\n";
  if (examples == std::string::npos) return;
  page << ".SH EXAMPLES\n.nf\n" << Roff(footer.substr(examples + sizeof kExamplesHead - 1)) << "\n.fi\n";
}

void WriteHead(std::ostream& page, const std::string& name, const std::string& version, const std::string& what) {
  page << ".TH " << Replaced(name, "-", "\\-") << " 1 \"\" \"kelvo " << version << "\" \"User Commands\"\n.SH NAME\n"
       << Roff(name) << " \\- " << Roff(what) << "\n";
}

void WriteManual(const CLI::App& app, const std::string& version, const fs::path& folder) {
  std::ofstream main(folder / "kelvo.1");
  WriteHead(main, "kelvo", version, "restores blurred photographs");
  main << ".SH SYNOPSIS\n\\fBkelvo\\fR \\fIsubcommand\\fR [\\fIoption\\fR...] \\fIfile\\fR...\n.SH DESCRIPTION\n"
       << Roff(app.get_description()) << "\n.SH SUBCOMMANDS\n";
  for (const CLI::App* command : Subcommands(app)) {
    const std::string name = "kelvo-" + command->get_name();
    main << ".TP\n\\fB" << Roff(name) << "\\fR(1)\n" << Roff(command->get_description()) << ".\n";
    std::ofstream page(folder / (name + ".1"));
    WriteHead(page, name, version, command->get_description());
    page << ".SH SYNOPSIS\n\\fBkelvo " << command->get_name() << "\\fR [\\fIoption\\fR...]";
    for (const CLI::Option* option : OptionsOf(*command, true)) page << " \\fI" << option->get_type_name() << "\\fR...";
    page << "\n";
    WriteOptions(page, *command);
    WriteFooter(page, command->get_footer());
    page << ".SH SEE ALSO\n\\fBkelvo\\fR(1)\n";
  }
  main << ".SH EXIT STATUS\n0 if all is done or was done before, 1 if something failed, 2 for wrong usage, 130 if "
          "interrupted.\n"
       << ".SH FILES\n.TP\n\\fI$XDG_CONFIG_HOME/kelvo/presets/NAME.json\\fR\nPresets; \\fI~/.config\\fR where the "
          "variable is not set. They are looked for in \\fI$XDG_CONFIG_DIRS\\fR too.\n";
  WriteFooter(main, app.get_footer());
}

void WriteBash(const CLI::App& app, const fs::path& folder) {
  std::ofstream script(folder / "kelvo");
  std::vector<std::string> names;
  for (const CLI::App* command : Subcommands(app)) names.push_back(command->get_name());
  script << "# Completion of kelvo for bash.\n_kelvo() {\n  local cur=${COMP_WORDS[COMP_CWORD]} "
            "prev=${COMP_WORDS[COMP_CWORD-1]}\n"
         << "  if [ \"$COMP_CWORD\" = 1 ]; then\n    COMPREPLY=($(compgen -W '" << Joined(names, " ")
         << " --help --version' -- \"$cur\"))\n    return\n  fi\n  local options= words=\n  case ${COMP_WORDS[1]} in\n";
  for (const CLI::App* command : Subcommands(app)) {
    std::vector<std::string> options;
    script << "    " << command->get_name() << ")\n      case $prev in\n";
    for (const CLI::Option* option : OptionsOf(*command, false)) {
      for (const std::string& name : NamesOf(*option)) options.push_back(name);
      if (!WordsOf(*option).empty())
        script << "        " << Joined(NamesOf(*option), "|") << ") words='" << Joined(WordsOf(*option), " ")
               << "' ;;\n";
    }
    script << "      esac\n      options='" << Joined(options, " ") << "' ;;\n";
  }
  script << "  esac\n  if [ -n \"$words\" ]; then\n    COMPREPLY=($(compgen -W \"$words\" -- \"$cur\"))\n"
         << "  elif [[ $cur == -* ]]; then\n    COMPREPLY=($(compgen -W \"$options\" -- \"$cur\"))\n  fi\n}\n"
         << "complete -o default -F _kelvo kelvo\n";
}

// Text in single quotes, for zsh's _arguments, where brackets and colons have a meaning.
std::string ZshText(const std::string& text) {
  std::string escaped = text;
  for (const char* special : {"[", "]", ":"}) escaped = Replaced(escaped, special, std::string("\\") + special);
  return Replaced(escaped, "'", "'\\''");
}

std::string ZshValue(const CLI::Option& option) {
  if (!TakesValue(option)) return "";
  const std::vector<std::string> words = WordsOf(option);
  const std::string type = option.get_type_name();
  const bool files = type.find("FILE") != std::string::npos || type == "DIR";
  return ":" + ZshText(type) + ":" + (files ? "_files" : words.empty() ? " " : "(" + Joined(words, " ") + ")");
}

void WriteZsh(const CLI::App& app, const fs::path& folder) {
  std::ofstream script(folder / "_kelvo");
  script << "#compdef kelvo\n# Completion of kelvo for zsh.\nlocal -a subcommands\nsubcommands=(\n";
  for (const CLI::App* command : Subcommands(app))
    script << "  '" << command->get_name() << ":" << ZshText(command->get_description()) << "'\n";
  script << ")\nif (( CURRENT == 2 )); then\n  _describe subcommand subcommands\n  return\nfi\nlocal "
            "subcommand=$words[2]\n"
         << "shift words\n(( CURRENT-- ))\ncase $subcommand in\n";
  for (const CLI::App* command : Subcommands(app)) {
    script << "  " << command->get_name() << ") _arguments -S";
    for (const CLI::Option* option : OptionsOf(*command, false))
      for (const std::string& name : NamesOf(*option)) {
        const char* joint = !TakesValue(*option) ? "" : name.starts_with("--") ? "=" : "+";
        script << " \\\n    '" << name << joint << "[" << ZshText(option->get_description()) << "]" << ZshValue(*option)
               << "'";
      }
    script << (OptionsOf(*command, true).empty() ? "" : " \\\n    '*:file:_files'") << " ;;\n";
  }
  script << "esac\n";
}

std::string FishText(const std::string& text) {
  return "'" + Replaced(Replaced(text, "\\", "\\\\"), "'", "\\'") + "'";
}

void WriteFish(const CLI::App& app, const fs::path& folder) {
  std::ofstream script(folder / "kelvo.fish");
  script << "# Completion of kelvo for fish.\n";
  for (const CLI::App* command : Subcommands(app)) {
    script << "complete -c kelvo -f -n __fish_use_subcommand -a " << command->get_name() << " -d "
           << FishText(command->get_description()) << "\n";
    for (const CLI::Option* option : OptionsOf(*command, false)) {
      script << "complete -c kelvo -n '__fish_seen_subcommand_from " << command->get_name() << "'";
      for (const std::string& name : option->get_snames()) script << " -s " << name;
      for (const std::string& name : option->get_lnames()) script << " -l " << name;
      if (TakesValue(*option)) script << (WordsOf(*option).empty() ? " -r" : " -x");
      if (!WordsOf(*option).empty()) script << " -a " << FishText(Joined(WordsOf(*option), " "));
      script << " -d " << FishText(option->get_description()) << "\n";
    }
  }
}

int Describe(const fs::path& folder, const std::string& version) {
  Options options;
  const auto app = DescribeCommandLine(options);
  for (const char* part : {"man1", "bash", "zsh", "fish"}) fs::create_directories(folder / part);
  WriteManual(*app, version, folder / "man1");
  WriteBash(*app, folder / "bash");
  WriteZsh(*app, folder / "zsh");
  WriteFish(*app, folder / "fish");
  return 0;
}

}  // namespace
}  // namespace kelvo::host

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: kelvo_describe FOLDER VERSION\n";
    return 2;
  }
  return kelvo::host::Describe(argv[1], argv[2]);
}
