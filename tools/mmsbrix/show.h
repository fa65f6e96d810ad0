// The subcommand `show`: all that is in a PDU.
#ifndef MMSBRIX_TOOLS_SHOW_H
#define MMSBRIX_TOOLS_SHOW_H

#include <mmsbrix/mms/inspector.h>

#include <CLI/App.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "command.h"

namespace mmsbrix::tool {

/// The command line of `show`.
struct ShowCommand {
  std::vector<std::string> files;
  bool json = false;
  bool hex = false;
};

/// Adds the subcommand to a parser; `command` receives what is given and must outlive it.
CLI::App* addShow(CLI::App& app, ShowCommand& command);

/// Shows each file.  1 when one cannot be read or is no MMS PDU at all.
int runShow(const ShowCommand& command, const Streams& streams);

/// The people's table of a PDU, with its octets in hex when wanted.
void printInspection(const Inspection& inspection, std::string_view pdu, bool hex,
                     std::ostream& out);

}  // namespace mmsbrix::tool

#endif  // MMSBRIX_TOOLS_SHOW_H
