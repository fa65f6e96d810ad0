// What the subcommands that talk to a relay share: options, connection, trace, progress, results.
#ifndef MMSBRIX_TOOLS_SESSION_H
#define MMSBRIX_TOOLS_SESSION_H

#include <mmsbrix/transport/mmshttp.h>
#include <mmsbrix/transport/operators.h>

#include <CLI/App.hpp>
#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "command.h"
#include "profiles.h"
#include "trace_scope.h"

namespace mmsbrix::tool {

/// The part of their command lines that they have in common.
struct SessionOptions {
  std::string url;           ///< of the relay
  std::string profile;       ///< name of the settings to take from the configuration
  std::string operatorName;  ///< whose settings to take, "fi/DNA"
  std::string database = kOperatorDatabase;
  std::string proxy;
  std::string credentialsFile;
  std::string trustedCertificates;   ///< PEM file; empty for the system's
  std::vector<std::string> headers;  ///< "Name: value"
  std::string userAgent;
  std::string profileUrl;       ///< of the device's capabilities, for the header x-wap-profile
  unsigned timeoutSeconds = 0;  ///< 0 for the default
  bool trace = false;
  bool showProgress = false;  ///< told by the terminal, not by an option
  Credentials stored;         ///< found with profile or operator
};

/// Adds the options to a subcommand, without `url`; `options` must outlive it.
void addSessionOptions(CLI::App& subcommand, SessionOptions& options);

/// Fills in what is not given from profile or operator, or from the profile "default" where neither
/// of them nor a URL is given.  An exit status; other than kDone it has been said on behalf of
/// `verb`.
int completeOptions(SessionOptions& options, const char* verb, const Streams& streams);

/// Disconnects whatever happens in between.
class Connection {
 public:
  Connection(CMMSComm& transport, const std::string& host, unsigned port) : transport_(transport) {
    open_ = transport.ConnectGtw(host.empty() ? nullptr : host.c_str(), port, 0);
  }
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection() { transport_.DisconnectGtw(); }
  [[nodiscard]] bool open() const noexcept { return open_; }

 private:
  CMMSComm& transport_;
  bool open_ = false;
};

/// One line that grows while a large body moves; nothing for what is over within a second.
class ProgressLine {
 public:
  /// `what` says what happens to the octets, "sent" or "received".
  ProgressLine(std::ostream& out, const char* what) : out_(out), what_(what) {}
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;
  ~ProgressLine();
  void tell(std::uint64_t done, std::uint64_t total);

 private:
  std::ostream& out_;
  const char* what_;
  std::chrono::steady_clock::time_point started_ = std::chrono::steady_clock::now();
  std::chrono::steady_clock::time_point last_{};
  bool shown_ = false;
};

/// An HTTP transport set up as the options say, connected for as long as this lives.
class HttpSession {
 public:
  /// `verb` is the subcommand on whose behalf errors are said, `what` what its progress shows.
  HttpSession(const SessionOptions& options, const char* verb, const char* what,
              const Streams& streams);

  /// The exit status when the options are of no use, which has been said; kDone otherwise.
  [[nodiscard]] int status() const noexcept { return status_; }
  [[nodiscard]] CMMSHttp& transport() noexcept { return transport_; }
  /// Takes the progress from the terminal, before something else is said there.
  void endProgress();
  /// The result of the last operation in one line, as `resultLine` puts it together.
  [[nodiscard]] std::string result();

 private:
  int setUp(const SessionOptions& options, const char* verb, const Streams& streams);

  TraceScope trace_;
  CMMSHttp transport_;
  std::string proxyHost_;
  std::uint16_t proxyPort_ = 0;
  int status_ = kDone;
  std::optional<ProgressLine> progress_;
  std::optional<Connection> connection_;
};

/// Code, text and detail in one line, "0x80 Ok: text (detail)"; texts may be empty.
[[nodiscard]] std::string resultLine(const std::string& code, std::string text,
                                     const std::string& detail);

/// The code of an operation with what kind of code it is: "0x80 Ok", "HTTP 404", "error 12029".
[[nodiscard]] std::string resultCodeText(CMMSHttp::ResultKind kind, unsigned long code);

}  // namespace mmsbrix::tool

#endif  // MMSBRIX_TOOLS_SESSION_H
