// The subcommand `listen`: shows the pushes that come, message notifications above all.
#ifndef MMSBRIX_TOOLS_LISTEN_H
#define MMSBRIX_TOOLS_LISTEN_H

#include <mmsbrix/transport/push_listener.h>

#include <CLI/App.hpp>
#include <string>

#include "command.h"

namespace mmsbrix::tool {

/// The command line of `listen`.
struct ListenCommand {
  std::string address = "0.0.0.0";
  unsigned port = PushListener::kDefaultPort;
  unsigned count = 0;       ///< pushes after which it ends; 0 for none
  std::string storeFolder;  ///< where the bodies are written; empty for nowhere
  bool trace = false;
};

/// Adds the subcommand to a parser; `command` receives what is given and must outlive it.
CLI::App* addListen(CLI::App& app, ListenCommand& command);

/// Listens until SIGINT, SIGTERM or the last push that was asked for.
int runListen(const ListenCommand& command, const Streams& streams);

}  // namespace mmsbrix::tool

#endif  // MMSBRIX_TOOLS_LISTEN_H
