// The subcommand `smil`: looks at SMIL files.
#ifndef MMSBRIX_TOOLS_SMIL_COMMAND_H
#define MMSBRIX_TOOLS_SMIL_COMMAND_H

#include <mmsbrix/smil/smil.h>

#include <CLI/App.hpp>
#include <string>

#include "command.h"

namespace mmsbrix::tool {

/// The command lines of `smil check` and `smil format`.
struct SmilCommand {
  std::string file{};
  std::string output = "-";
  bool format = false;
};

/// Adds the subcommand to a parser; `command` receives what is given and must outlive it.
CLI::App* addSmil(CLI::App& app, SmilCommand& command);

/// Checks or formats a file; line, position and reason of what is wrong go to the error stream.
int runSmil(const SmilCommand& command, const Streams& streams);

/// Reads a SMIL file, or `in` for "-"; false, with `error` saying where and why, when it is none.
bool loadSmil(const std::string& file, std::istream& in, CSMIL& smil, std::string& error);

}  // namespace mmsbrix::tool

#endif  // MMSBRIX_TOOLS_SMIL_COMMAND_H
