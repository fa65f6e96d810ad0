// The subcommand `send`: submits a message to a relay.
#ifndef MMSBRIX_TOOLS_SEND_H
#define MMSBRIX_TOOLS_SEND_H

#include <CLI/App.hpp>
#include <cstdint>
#include <string>

#include "command.h"
#include "session.h"

namespace mmsbrix::tool {

/// The command line of `send`.
struct SendCommand : SessionOptions {
  std::string file;
  std::string wap;              ///< HOST[:PORT] of a WAP gateway; empty for HTTP
  std::uint64_t maxOctets = 0;  ///< of the message; 0 for any number
};

/// Adds the subcommand to a parser; `command` receives what is given and must outlive it.
CLI::App* addSend(CLI::App& app, SendCommand& command);

/// Submits, and prints code and text: on `out` when the relay has accepted the message, else on
/// `err`.
int runSend(const SendCommand& command, const Streams& streams);

}  // namespace mmsbrix::tool

#endif  // MMSBRIX_TOOLS_SEND_H
