#include "session.h"

#include <mmsbrix/mms/inspector.h>

#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <array>
#include <cstdio>
#include <ostream>

#include "host.h"

namespace mmsbrix::tool {
namespace {

constexpr std::uint16_t kDefaultProxyPort = 80;

// Credentials from the file, else from MMSBRIX_USER and MMSBRIX_PASSWORD.
bool findCredentials(const SessionOptions& options, Credentials& credentials, std::string& error) {
  if (!options.credentialsFile.empty()) {
    auto read = readCredentials(options.credentialsFile, error);
    if (read) credentials = std::move(*read);
    return read.has_value();
  }
  credentials = options.stored;
  if (const auto user = host::environment("MMSBRIX_USER")) credentials.user = *user;
  if (const auto password = host::environment("MMSBRIX_PASSWORD")) {
    credentials.password = *password;
  }
  if (!credentials.password.empty()) host::keepOutOfCores();
  return true;
}

bool addHeader(CMMSHttp& transport, const std::string& header) {
  const std::size_t colon = std::min(header.find(':'), header.size());
  const std::size_t value = std::min(header.find_first_not_of(" \t", colon + 1), header.size());
  return transport.AddHeader(header.substr(0, colon).c_str(), header.substr(value).c_str());
}

}  // namespace

void addSessionOptions(CLI::App& subcommand, SessionOptions& options) {
  CLI::Option* profile =
      subcommand
          .add_option("--profile", options.profile, "Settings kept by 'config' under this name")
          ->type_name("NAME");
  subcommand
      .add_option("--operator", options.operatorName,
                  "Settings of this operator, as 'operators' lists them")
      ->type_name("COUNTRY/NAME")
      ->excludes(profile);
  subcommand.add_option("--database", options.database, "Another database of operators")
      ->type_name("FILE")
      ->group("");
  subcommand
      .add_option("--proxy", options.proxy,
                  "HTTP proxy; none means a direct connection, port 80 when not given")
      ->type_name("HOST[:PORT]");
  subcommand
      .add_option("--credentials", options.credentialsFile,
                  "user:password in the first line of this file, instead of MMSBRIX_USER and "
                  "MMSBRIX_PASSWORD")
      ->type_name("FILE");
  subcommand
      .add_option("--ca", options.trustedCertificates,
                  "Trust the certificates in this PEM file instead of the system's")
      ->type_name("FILE");
  subcommand.add_option("--header", options.headers, "Header of the request, repeatable")
      ->type_name("NAME:VALUE")
      ->expected(1)
      ->take_all();
  subcommand.add_option("--user-agent", options.userAgent, "User-Agent instead of the tool's own")
      ->type_name("TEXT");
  subcommand
      .add_option("--profile-url", options.profileUrl,
                  "Where the device's capabilities are described; sent as x-wap-profile")
      ->type_name("URL");
  subcommand
      .add_option("--timeout", options.timeoutSeconds,
                  "Give up after so long without an octet, by default 60 seconds")
      ->type_name("SECONDS");
  subcommand.add_flag("--trace", options.trace, "Print each step to standard error");
}

int completeOptions(SessionOptions& options, const char* verb, const Streams& streams) {
  const bool byDefault =
      options.profile.empty() && options.operatorName.empty() && options.url.empty();
  if (options.profile.empty() && options.operatorName.empty() && !byDefault) return kDone;
  std::string error;
  std::optional<Profile> found;
  if (!options.operatorName.empty()) {
    found = operatorProfile(options.operatorName, options.database, error);
  } else if (const auto profiles = loadProfiles(error)) {
    const std::string name = byDefault ? "default" : options.profile;
    if (const auto named = profiles->find(name); named != profiles->end()) {
      found = named->second;
    } else if (byDefault) {
      return kDone;
    } else {
      error = "there is no profile " + name + " ('mmsbrix config' lists them)";
    }
  }
  if (!found) {
    streams.err << "mmsbrix " << verb << ": " << printable(error) << '\n';
    return kFailed;
  }
  const auto fill = [](std::string& option, const std::string& value) {
    if (option.empty()) option = value;
  };
  fill(options.url, found->url);
  fill(options.proxy, found->proxy);
  fill(options.userAgent, found->userAgent);
  fill(options.profileUrl, found->profileUrl);
  fill(options.trustedCertificates, found->ca);
  options.stored = {found->user, found->password};
  return kDone;
}

ProgressLine::~ProgressLine() {
  if (shown_) out_ << "\r\033[K" << std::flush;
}

void ProgressLine::tell(std::uint64_t done, std::uint64_t total) {
  const auto now = std::chrono::steady_clock::now();
  if (now - started_ < std::chrono::seconds(1) || now - last_ < std::chrono::milliseconds(100)) {
    return;
  }
  last_ = now;
  shown_ = true;
  out_ << '\r' << done / 1024;
  if (total != 0) out_ << " of " << total / 1024;
  out_ << " KiB " << what_;
  if (total != 0) out_ << " (" << done * 100 / total << " %)";
  out_ << "\033[K" << std::flush;
}

HttpSession::HttpSession(const SessionOptions& options, const char* verb, const char* what,
                         const Streams& streams)
    : trace_(options.trace, streams.err), status_(setUp(options, verb, streams)) {
  if (status_ != kDone) return;
  if (options.showProgress) {
    progress_.emplace(streams.err, what);
    transport_.SetProgress([this](std::uint64_t done, std::uint64_t total) {
      progress_->tell(done, total);
      return true;
    });
  }
  connection_.emplace(transport_, proxyHost_, proxyPort_);
}

int HttpSession::setUp(const SessionOptions& options, const char* verb, const Streams& streams) {
  const auto refuse = [&](int status, const std::string& why) {
    streams.err << "mmsbrix " << verb << ": " << printable(why) << '\n';
    return status;
  };
  if (!options.proxy.empty() &&
      !parseEndpoint(options.proxy, kDefaultProxyPort, proxyHost_, proxyPort_)) {
    return refuse(kWrongUsage, "--proxy: not HOST:PORT: " + options.proxy);
  }
  for (const std::string& header : options.headers) {
    if (!addHeader(transport_, header)) {
      return refuse(kWrongUsage, "--header: not NAME:VALUE of a header that may be set: " + header);
    }
  }
  if (!options.profileUrl.empty() &&
      !transport_.AddHeader("x-wap-profile", ("\"" + options.profileUrl + "\"").c_str())) {
    return refuse(kWrongUsage, "--profile-url: no URL: " + options.profileUrl);
  }
  if (!transport_.SetUserAgent(options.userAgent.c_str())) {
    return refuse(kWrongUsage, "--user-agent: has control characters");
  }
  std::string error;
  Credentials credentials;
  if (!findCredentials(options, credentials, error)) return refuse(kFailed, error);
  transport_.SetTimeout(options.timeoutSeconds);
  transport_.SetTrustedCertificates(options.trustedCertificates.c_str());
  transport_.SetCredentials(credentials.user.c_str(), credentials.password.c_str());
  return kDone;
}

void HttpSession::endProgress() {
  transport_.SetProgress({});
  progress_.reset();
}

std::string HttpSession::result() {
  std::array<char, 512> text{};
  const unsigned long code = transport_.GetResult(text.data());
  return resultLine(resultCodeText(transport_.GetResultKind(), code), text.data(),
                    transport_.GetFailureDetail());
}

std::string resultLine(const std::string& code, std::string text, const std::string& detail) {
  // The texts may have lines of their own; here they stand in one.
  std::ranges::replace(text, '\n', ' ');
  std::string result = code;
  if (!text.empty()) result += ": " + printable(text);
  if (!detail.empty()) result += " (" + printable(detail) + ")";
  return result;
}

std::string resultCodeText(CMMSHttp::ResultKind kind, unsigned long code) {
  using Kind = CMMSHttp::ResultKind;
  char text[32];
  switch (kind) {
    case Kind::none:
      return "no code";
    case Kind::httpStatus:
    case Kind::error:
      std::snprintf(text, sizeof text, kind == Kind::httpStatus ? "HTTP %lu" : "error %lu", code);
      return text;
    case Kind::responseStatus:
    case Kind::retrieveStatus:
      break;
  }
  const int octet = static_cast<int>(code);
  const std::string name =
      kind == Kind::responseStatus ? responseStatusName(octet) : retrieveStatusName(octet);
  std::snprintf(text, sizeof text, name.empty() ? "0x%02lX" : "0x%02lX ", code);
  return text + name;
}

}  // namespace mmsbrix::tool
