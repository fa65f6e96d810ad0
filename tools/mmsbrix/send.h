// The subcommand `send`: submits a message to a relay.
#ifndef MMSBRIX_TOOLS_SEND_H
#define MMSBRIX_TOOLS_SEND_H

#include <CLI/App.hpp>
#include <string>

#include "command.h"

namespace mmsbrix::tool {

/// The command line of `send`.
struct SendCommand {
  std::string file;
  std::string url;
  std::string proxy;
  std::string credentialsFile;
  std::string trustedCertificates;  ///< PEM file; empty for the system's
  bool trace = false;
  bool showProgress = false;  ///< told by the terminal, not by an option
};

/// Adds the subcommand to a parser; `command` receives what is given and must outlive it.
CLI::App* addSend(CLI::App& app, SendCommand& command);

/// Submits, and prints code and text: on `out` when the relay has accepted the message, else on
/// `err`.
int runSend(const SendCommand& command, const Streams& streams);

/// The code of a submission with what kind of code it is: "0x80 Ok", "HTTP 404", "error 12029".
[[nodiscard]] std::string resultCodeText(unsigned long code);

}  // namespace mmsbrix::tool

#endif  // MMSBRIX_TOOLS_SEND_H
