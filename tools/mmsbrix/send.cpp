#include "send.h"

#include <mmsbrix/mms/inspector.h>
#include <mmsbrix/transport/mmshttp.h>
#include <mmsbrix/transport/trace_log.h>

#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <ostream>

namespace mmsbrix::tool {
namespace {

constexpr std::uint16_t kDefaultProxyPort = 80;

// Credentials from the file, else from MMSBRIX_USER and MMSBRIX_PASSWORD.
bool findCredentials(const SendCommand& command, Credentials& credentials, std::string& error) {
  if (!command.credentialsFile.empty()) {
    auto read = readCredentials(command.credentialsFile, error);
    if (read) credentials = std::move(*read);
    return read.has_value();
  }
  if (const char* user = std::getenv("MMSBRIX_USER")) credentials.user = user;
  if (const char* password = std::getenv("MMSBRIX_PASSWORD")) credentials.password = password;
  return true;
}

// One line that grows while a large body goes out; nothing for what is sent within a second.
class ProgressLine {
 public:
  explicit ProgressLine(std::ostream& out) : out_(out) {}
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;
  ~ProgressLine() {
    if (shown_) out_ << "\r\033[K" << std::flush;
  }
  void tell(std::uint64_t sent, std::uint64_t total) {
    const auto now = std::chrono::steady_clock::now();
    if (now - started_ < std::chrono::seconds(1) || now - last_ < std::chrono::milliseconds(100))
      return;
    last_ = now;
    shown_ = true;
    out_ << '\r' << sent / 1024 << " of " << total / 1024 << " KiB sent"
         << (total == 0 ? "" : " (" + std::to_string(sent * 100 / total) + " %)") << "\033[K"
         << std::flush;
  }

 private:
  std::ostream& out_;
  std::chrono::steady_clock::time_point started_ = std::chrono::steady_clock::now();
  std::chrono::steady_clock::time_point last_{};
  bool shown_ = false;
};

// Traces go to the stream for as long as this lives.
class TraceScope {
 public:
  TraceScope(bool wanted, std::ostream& out) : wanted_(wanted) {
    if (wanted) setTraceSink([&out](std::string_view line) { out << printable(line) << '\n'; });
  }
  TraceScope(const TraceScope&) = delete;
  TraceScope& operator=(const TraceScope&) = delete;
  ~TraceScope() {
    if (wanted_) setTraceSink({});
  }

 private:
  bool wanted_;
};

// Disconnects whatever happens in between.
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

}  // namespace

CLI::App* addSend(CLI::App& app, SendCommand& command) {
  CLI::App* send = app.add_subcommand("send", "Submit a message to an MMS relay by HTTP");
  send->footer(
      "Examples:\n"
      "  mmsbrix send hi.mms --url http://mmsc.example/servlets/mms --proxy 10.1.1.1:8080\n"
      "  MMSBRIX_USER=ann MMSBRIX_PASSWORD=... mmsbrix send hi.mms --url https://mmsc.example/");
  send->add_option("FILE", command.file, "Message, - for standard input")->required();
  send->add_option("--url", command.url, "The relay's URL, http or https")
      ->type_name("URL")
      ->required();
  send->add_option("--proxy", command.proxy,
                   "HTTP proxy; none means a direct connection, port 80 when not given")
      ->type_name("HOST:PORT");
  send->add_option("--credentials", command.credentialsFile,
                   "user:password in the first line of this file, instead of MMSBRIX_USER and "
                   "MMSBRIX_PASSWORD")
      ->type_name("FILE");
  send->add_option("--ca", command.trustedCertificates,
                   "Trust the certificates in this PEM file instead of the system's")
      ->type_name("FILE");
  send->add_flag("--trace", command.trace, "Print each step to standard error");
  return send;
}

std::string resultCodeText(unsigned long code) {
  char text[32];
  if (code == 0) return "no code";
  // Response statuses and HTTP statuses share the range; none of the success codes is assigned
  // twice.
  const bool isHttp = code >= 100 && code <= 599 && (code < 0x80 || code > 0xFF || code / 10 == 20);
  if (isHttp) {
    std::snprintf(text, sizeof text, "HTTP %lu", code);
  } else if (code >= 0x80 && code <= 0xFF) {
    const std::string name = responseStatusName(static_cast<int>(code));
    std::snprintf(text, sizeof text, name.empty() ? "0x%02lX" : "0x%02lX ", code);
    return text + name;
  } else {
    std::snprintf(text, sizeof text, "error %lu", code);
  }
  return text;
}

int runSend(const SendCommand& command, const Streams& streams) {
  std::string host;
  std::uint16_t port = 0;
  if (!command.proxy.empty() && !parseEndpoint(command.proxy, kDefaultProxyPort, host, port)) {
    streams.err << "mmsbrix send: --proxy: not HOST:PORT: " << printable(command.proxy) << '\n';
    return kWrongUsage;
  }
  std::string error;
  Credentials credentials;
  if (!findCredentials(command, credentials, error)) {
    streams.err << "mmsbrix send: " << printable(error) << '\n';
    return kFailed;
  }
  std::optional<TemporaryFile> spooled;
  if (command.file == "-") {
    const auto content = readAll("-", streams.in, error);
    if (content) spooled.emplace(*content);
    if (!spooled || spooled->path().empty()) {
      streams.err << "mmsbrix send: standard input cannot be kept in a temporary file\n";
      return kFailed;
    }
  }
  const TraceScope trace(command.trace, streams.err);
  CMMSHttp transport;
  transport.SetTrustedCertificates(command.trustedCertificates.c_str());
  transport.SetCredentials(credentials.user.c_str(), credentials.password.c_str());
  bool accepted = false;
  unsigned long code = 0;
  std::array<char, 512> text{};
  {
    const Connection connection(transport, host, port);
    std::optional<ProgressLine> progress;
    if (command.showProgress) {
      progress.emplace(streams.err);
      transport.SetProgress([&](std::uint64_t sent, std::uint64_t total) {
        progress->tell(sent, total);
        return true;
      });
    }
    const std::string& file = spooled ? spooled->path() : command.file;
    accepted = connection.open() && transport.SendMMS(command.url.c_str(), file.c_str(), 0);
    code = transport.GetResult(text.data());
  }
  const std::string shown = printable(text.data());
  if (accepted) {
    streams.out << "accepted: " << resultCodeText(code) << (shown.empty() ? "" : ": " + shown)
                << '\n';
    return kDone;
  }
  streams.err << "mmsbrix send: message not sent: " << resultCodeText(code)
              << (shown.empty() ? "" : ": " + shown) << '\n';
  if (code == 2) streams.err << "mmsbrix send: the file is " << printable(command.file) << '\n';
  return kFailed;
}

}  // namespace mmsbrix::tool
