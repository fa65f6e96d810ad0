// The subcommand `demo`: the whole way of a message, against the embedded relay.
#ifndef MMSBRIX_TOOLS_DEMO_H
#define MMSBRIX_TOOLS_DEMO_H

#include <CLI/App.hpp>
#include <string>

#include "command.h"

namespace mmsbrix::tool {

/// The command line of `demo`.
struct DemoCommand {
  std::string keep;  ///< folder that the files stay in; a temporary one when empty
  bool wap = false;  ///< submits through a WAP gateway instead of an HTTP proxy
};

/// Adds the subcommand to a parser; `command` receives what is given and must outlive it.
CLI::App* addDemo(CLI::App& app, DemoCommand& command);

/// Composes, shows, sends and shows again.  0 when the relay accepted and stored the same octets.
int runDemo(const DemoCommand& command, const Streams& streams);

}  // namespace mmsbrix::tool

#endif  // MMSBRIX_TOOLS_DEMO_H
