// The one description of the command line: parser, help, manual pages and shell completions all come from it.
#ifndef KELVO_HOST_COMMAND_LINE_H
#define KELVO_HOST_COMMAND_LINE_H

#include <CLI/CLI.hpp>
#include <memory>
#include <string>

#include "options.h"

namespace kelvo::host {

// A parser that fills `options`, which must outlive it.
std::unique_ptr<CLI::App> DescribeCommandLine(Options& options);

// The subcommand of this name, one of the parser's.
Command CommandNamed(const std::string& name);

// Options of one picture that a preset or a result can hold, by long name; those that a subcommand has count for it.
inline constexpr const char* kStorableOptions[] = {"width",   "direction", "noise",   "accuracy", "jpeg",  "colour",
                                                   "classic", "raw",       "enlarge", "quality",  "format"};

}  // namespace kelvo::host

#endif  // KELVO_HOST_COMMAND_LINE_H
