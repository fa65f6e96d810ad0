// The subcommand `extract`: a message's content as files.
#ifndef MMSBRIX_TOOLS_EXTRACT_H
#define MMSBRIX_TOOLS_EXTRACT_H

#include <CLI/App.hpp>
#include <string>

#include "command.h"

namespace mmsbrix::tool {

/// The command line of `extract`.
struct ExtractCommand {
  std::string file{};
  std::string folder = ".";
  bool all = false;   ///< every part, also when there is a presentation
  bool utf8 = false;  ///< texts as UTF-8
};

/// Adds the subcommand to a parser; `command` receives what is given and must outlive it.
CLI::App* addExtract(CLI::App& app, ExtractCommand& command);

/// Saves the presentation with its media, or every part where there is none; prints a line for each
/// file.  Nothing that exists is overwritten.
int runExtract(const ExtractCommand& command, const Streams& streams);

}  // namespace mmsbrix::tool

#endif  // MMSBRIX_TOOLS_EXTRACT_H
