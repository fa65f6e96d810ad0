#include "send.h"

#include <mmsbrix/transport/mmswap.h>

#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <CLI/Validators.hpp>
#include <array>
#include <chrono>
#include <filesystem>
#include <optional>
#include <ostream>

#include "host.h"

namespace mmsbrix::tool {
namespace {

constexpr std::uint16_t kDefaultWapPort = 9201;

/// How a submission went.
struct Submission {
  int status = kFailed;  ///< exit status
  std::string result;    ///< code, text and detail; empty when all was said
};

Submission sendByHttp(const SendCommand& command, const std::string& file, const Streams& streams) {
  HttpSession session(command, "send", "sent", streams);
  if (session.status() != kDone) return {session.status(), {}};
  session.transport().SetSizeLimit(command.maxOctets);
  const bool accepted = session.transport().SendMMS(command.url.c_str(), file.c_str(), 0);
  session.endProgress();
  return {accepted ? kDone : kFailed, session.result()};
}

std::string wapCodeText(CMMSWap::Outcome outcome, unsigned long code) {
  switch (outcome) {
    case CMMSWap::Outcome::accepted:
    case CMMSWap::Outcome::relayStatus:
      return resultCodeText(CMMSHttp::ResultKind::responseStatus, code);
    case CMMSWap::Outcome::gatewayStatus:
      return "WSP status";
    case CMMSWap::Outcome::noAnswer:
      return "no answer";
    case CMMSWap::Outcome::refused:
      return "refused";
    case CMMSWap::Outcome::aborted:
      return "aborted";
    case CMMSWap::Outcome::disconnected:
      return "disconnected";
    default:
      return "no code";
  }
}

Submission sendByWap(const SendCommand& command, const std::string& file, const Streams& streams) {
  std::string host;
  std::uint16_t port = 0;
  if (!parseEndpoint(command.wap, kDefaultWapPort, host, port)) {
    streams.err << "mmsbrix send: --wap: not HOST:PORT: " << printable(command.wap) << '\n';
    return {kWrongUsage, {}};
  }
  std::error_code error;
  const std::uintmax_t octets = std::filesystem::file_size(host::pathOf(file), error);
  if (command.maxOctets != 0 && !error && octets > command.maxOctets) {
    return {kFailed, "the message has " + octetCount(octets) + ", the limit is " +
                         std::to_string(command.maxOctets)};
  }
  const TraceScope trace(command.trace, streams.err);
  CMMSWap transport;
  if (command.timeoutSeconds != 0) {
    transport.SetTiming(WapTiming::within(std::chrono::seconds(command.timeoutSeconds)));
  }
  const Connection connection(transport, host, port);
  const bool accepted =
      connection.open() && transport.SendMMS(command.url.c_str(), file.c_str(), 0);
  std::array<char, 512> text{};
  const unsigned long code = transport.GetResult(text.data());
  // The texts of statuses stand in the detail, with their numbers.
  const char* shown = code >= 0x80 ? text.data() : "";
  return {accepted ? kDone : kFailed, resultLine(wapCodeText(transport.GetOutcome(), code), shown,
                                                 transport.GetFailureDetail())};
}

}  // namespace

CLI::App* addSend(CLI::App& app, SendCommand& command) {
  CLI::App* send = app.add_subcommand(
      "send", "Submit a message to an MMS relay, by HTTP or through a WAP gateway");
  send->footer(
      "Examples:\n"
      "  mmsbrix send hi.mms --url http://mmsc.example/servlets/mms --proxy 10.1.1.1:8080\n"
      "  mmsbrix send hi.mms --url http://mmsc.example/servlets/mms --wap 10.1.1.1\n"
      "  mmsbrix send hi.mms --operator fi/DNA\n"
      "  MMSBRIX_USER=ann MMSBRIX_PASSWORD=... mmsbrix send hi.mms --url https://mmsc.example/");
  send->add_option("FILE", command.file, "Message, - for standard input")->required();
  send->add_option("--url", command.url, "The relay's URL, http or https")->type_name("URL");
  addSessionOptions(*send, command);
  CLI::Option* wap =
      send->add_option(
              "--wap", command.wap,
              "WAP gateway: submit by WSP over UDP instead of HTTP, port 9201 when not given")
          ->type_name("HOST[:PORT]");
  for (const char* http :
       {"--proxy", "--header", "--user-agent", "--profile-url", "--profile", "--operator"}) {
    wap->excludes(http);
  }
  send->get_option("--timeout")
      ->description(
          "Give up after so long without an octet, by default 60 seconds; with a gateway after so "
          "long in all, by default 45 seconds of silence to a request, 10 minutes for an answer");
  send->add_option("--max-size", command.maxOctets,
                   "Refuse a larger message before anything is uploaded: octets, or 300k, 1m")
      ->transform(CLI::AsSizeValue(false).description(""))
      ->type_name("SIZE");
  return send;
}

int runSend(const SendCommand& given, const Streams& streams) {
  SendCommand command = given;
  if (const int status = completeOptions(command, "send", streams); status != kDone) return status;
  if (command.url.empty()) {
    streams.err << "mmsbrix send: --url, --operator or a profile is required\n";
    return kWrongUsage;
  }
  std::string error;
  std::optional<TemporaryFile> spooled;
  if (command.file == "-") {
    const auto content = readAll("-", streams.in, error);
    if (content) spooled.emplace(*content);
    if (!spooled || spooled->path().empty()) {
      streams.err << "mmsbrix send: standard input cannot be kept in a temporary file\n";
      return kFailed;
    }
  }
  const std::string& file = spooled ? spooled->path() : command.file;
  const Submission sent =
      command.wap.empty() ? sendByHttp(command, file, streams) : sendByWap(command, file, streams);
  if (sent.status == kDone) {
    streams.out << "accepted: " << sent.result << '\n';
  } else if (!sent.result.empty()) {
    streams.err << "mmsbrix send: " << printable(command.file) << " not sent: " << sent.result
                << '\n';
  }
  return sent.status;
}

}  // namespace mmsbrix::tool
