// The subcommand `wsp`: header blocks of the WAP Session Protocol to text and back.
#ifndef MMSBRIX_TOOLS_WSP_HEADERS_H
#define MMSBRIX_TOOLS_WSP_HEADERS_H

#include <CLI/App.hpp>
#include <string>

#include "command.h"

namespace mmsbrix::tool {

/// The command lines of `wsp decode` and `wsp encode`.
struct WspCommand {
  std::string input{};   ///< hex octets or a file to decode; a file of header lines to encode
  std::string output{};  ///< octets go here instead of as hex to standard output
  std::string version = "1.2";
  bool json = false;
  bool split = false;    ///< elements of comma lists each as it travels
  bool secrets = false;  ///< credentials are shown, not masked
  bool encode = false;
};

/// Adds the subcommand to a parser; `command` receives what is given and must outlive it.
CLI::App* addWsp(CLI::App& app, WspCommand& command);

/// Decodes to "Name: value" lines, or encodes them.  1 when a header had to be left out, the others
/// being printed, and the reason on the error stream.
int runWsp(const WspCommand& command, const Streams& streams);

}  // namespace mmsbrix::tool

#endif  // MMSBRIX_TOOLS_WSP_HEADERS_H
