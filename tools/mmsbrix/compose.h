// The subcommand `compose`: a message from options or from JSON.
#ifndef MMSBRIX_TOOLS_COMPOSE_H
#define MMSBRIX_TOOLS_COMPOSE_H

#include <mmsbrix/model/mmsg.h>

#include <CLI/App.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "command.h"

namespace mmsbrix::tool {

/// How the parts are put together.
enum class Container { automatic, single, mixed, related };

/// The command line of `compose`.
struct ComposeCommand {
  std::string output;
  std::string jsonFile;
  bool force = false;
  std::vector<std::string> to;
  std::vector<std::string> cc;
  std::vector<std::string> bcc;
  std::string from;
  std::string replyTo;           ///< received message whose people the message goes to
  std::vector<std::string> own;  ///< own addresses, which are left out of them
  std::string subject;
  bool hasSubject = false;
  std::vector<std::string> texts;
  std::vector<std::string> attachments;  ///< FILE[;type=...][;name=...][;id=...][;charset=...]
  std::vector<std::string> slides;       ///< text=...,image=...,audio=...,dur=...
  std::string smilFile;                  ///< presentation whose media go with it
  std::string charset = "utf-8";
  std::string date;
  std::string expiry;
  std::string deliveryTime;
  std::string messageClass;
  std::string priority;
  std::string deliveryReport;
  std::string readReply;
  std::string visibility;
  std::string version = "1.2";
  std::string transactionId;
  Container container = Container::automatic;
  std::string start;  ///< Content-ID of the start part of a related container
};

/// Adds the subcommand to a parser; `command` receives what is given and must outlive it.
CLI::App* addCompose(CLI::App& app, ComposeCommand& command);

/// Composes and writes.  Nothing is written when it is refused.
int runCompose(const ComposeCommand& command, const Streams& streams);

/// Fills a message as the options say; false, with one line for each reason in `problems`, when it
/// cannot.  With `force`, what could be done is done and the reasons are warnings.
bool composeMessage(const ComposeCommand& command, CMMsg& message,
                    std::vector<std::string>& problems);

}  // namespace mmsbrix::tool

#endif  // MMSBRIX_TOOLS_COMPOSE_H
