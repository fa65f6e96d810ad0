// The subcommands of a receiver: `fetch` gets a message from its relay and answers, `report` tells
// its sender that it was read.
#ifndef MMSBRIX_TOOLS_FETCH_H
#define MMSBRIX_TOOLS_FETCH_H

#include <CLI/App.hpp>
#include <string>

#include "command.h"
#include "session.h"

namespace mmsbrix::tool {

/// The command line of `fetch`; answers go to the relay's URL, or without one where the message is.
struct FetchCommand : SessionOptions {
  std::string location;          ///< URL of the message, or ...
  std::string notificationFile;  ///< ... the m-notification-ind that has it
  std::string output;
  bool noAnswer = false;
  bool defer = false;   ///< answer that the message is fetched later, and do not fetch it
  bool reject = false;  ///< answer that it is not wanted, and do not fetch it
  std::string reportAllowed;
};

/// The command line of `report`.
struct ReportCommand : SessionOptions {
  std::string file;
  std::string from;
  bool deleted = false;
  bool force = false;
};

/// Add the subcommands to a parser; `command` receives what is given and must outlive it.
CLI::App* addFetch(CLI::App& app, FetchCommand& command);
CLI::App* addReport(CLI::App& app, ReportCommand& command);

/// Fetches, stores, and only then answers, so that a message is never lost to a full disk.
int runFetch(const FetchCommand& command, const Streams& streams);
/// Sends an m-read-rec-ind for a received message whose sender asked for one.
int runReport(const ReportCommand& command, const Streams& streams);

}  // namespace mmsbrix::tool

#endif  // MMSBRIX_TOOLS_FETCH_H
