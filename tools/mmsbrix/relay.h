// The subcommand `relay`: runs the relay until it is told to stop.
#ifndef MMSBRIX_TOOLS_RELAY_H
#define MMSBRIX_TOOLS_RELAY_H

#include <CLI/App.hpp>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>

namespace mmsbrix::tool {

/// The command line of `relay`.
struct RelayCommand {
  std::string listen;  ///< empty for the usual address, or for no HTTP where `wap` is given
  std::string wap;     ///< "[HOST:]PORT"; empty for no WAP gateway
  std::string wapRedirect;
  bool wapRedirectPermanent = false;
  std::string wapRefuse;  ///< an HTTP status, or a WSP reason in hex
  std::string wapLoss;    ///< "PERCENT[:SEED]"
  std::string storeDirectory;
  std::string notifyDirectory;
  std::string status;  ///< octet or name; empty for Ok
  std::string text;
  unsigned httpStatus = 200;
  std::string contentType;
  unsigned delayMilliseconds = 0;
  std::size_t slowOctets = 0;  ///< per 100 milliseconds
  bool chunked = false;
  bool broken = false;
  bool cut = false;
  bool close = false;
  std::string credentialsFile;
  std::string tlsCertificateFile;
  std::string tlsKeyFile;
  std::uint64_t count = 0;  ///< exchanges after which it stops; 0 for none
};

/// Adds the subcommand to a parser; `command` receives what is given and must outlive it.
CLI::App* addRelay(CLI::App& app, RelayCommand& command);

/// Runs the relay until SIGINT, SIGTERM or the given number of exchanges, which it keeps from
/// ending the process meanwhile.  The address goes to `out` first, then a line per exchange.  0, 1
/// when it cannot run, 2 for an argument that means nothing.
int runRelay(const RelayCommand& command, std::ostream& out, std::ostream& err);

}  // namespace mmsbrix::tool

#endif  // MMSBRIX_TOOLS_RELAY_H
