// The subcommand `manual`: manual pages and shell completion, made from the same options that the
// command line is parsed with.
#ifndef MMSBRIX_TOOLS_MANUAL_H
#define MMSBRIX_TOOLS_MANUAL_H

#include <CLI/App.hpp>
#include <string>

#include "command.h"

namespace mmsbrix::tool {

/// The command line of `manual`.
struct ManualCommand {
  std::string subcommand;  ///< empty for the page of the program
  std::string folder;      ///< write everything here instead
  bool completion = false;
};

/// Adds the subcommand to a parser; `command` receives what is given and must outlive it.
CLI::App* addManual(CLI::App& app, ManualCommand& command);

/// Prints a page in the man macros of roff, or bash completion; or writes all pages and the
/// completion into a folder.  `app` is the whole program's parser.
int runManual(const CLI::App& app, const ManualCommand& command, const Streams& streams);

}  // namespace mmsbrix::tool

#endif  // MMSBRIX_TOOLS_MANUAL_H
