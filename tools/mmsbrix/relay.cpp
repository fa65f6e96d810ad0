#include "relay.h"

#include <mmsbrix/mms/inspector.h>

#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <CLI/Validators.hpp>
#include <algorithm>
#include <charconv>
#include <fstream>
#include <mutex>
#include <ostream>
#include <utility>

#include "command.h"
#include "host.h"
#include "relay_http.h"
#include "relay_server.h"

namespace mmsbrix::tool {
namespace {

constexpr char kUsualAddress[] = "127.0.0.1:8080";

template <class Number>
bool parseNumber(std::string_view text, int base, Number& number) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
  return error == std::errc{} && end == text.data() + text.size() && !text.empty();
}

// A response status by its number, "0x84" or "132", or by its name, "Error-network-problem".
bool parseStatus(const std::string& text, std::uint8_t& status) {
  const bool hex = text.starts_with("0x") || text.starts_with("0X");
  if (parseNumber(std::string_view(text).substr(hex ? 2 : 0), hex ? 16 : 10, status)) {
    return status >= 0x80;
  }
  for (int octet = 0x80; octet <= 0xFF; ++octet) {
    if (responseStatusName(octet) == text) {
      status = static_cast<std::uint8_t>(octet);
      return true;
    }
  }
  return false;
}

// "PERCENT[:SEED]"
bool parseLoss(std::string_view text, RelayWap& wap) {
  const std::size_t colon = text.find(':');
  if (colon != std::string_view::npos && !parseNumber(text.substr(colon + 1), 10, wap.lossSeed)) {
    return false;
  }
  return parseNumber(text.substr(0, colon), 10, wap.lossPercent) && wap.lossPercent <= 100;
}

// An HTTP status that refuses, "403", or a WSP reason to abort with, "0xE4".
bool parseRefusal(std::string_view text, RelayWap& wap) {
  if (text.starts_with("0x") || text.starts_with("0X")) {
    return parseNumber(text.substr(2), 16, wap.abortReason) && wap.abortReason >= 0xE0 &&
           wap.abortReason <= 0xEE;
  }
  return parseNumber(text, 10, wap.refuseStatus) && wap.refuseStatus >= 300 &&
         wap.refuseStatus <= 505;
}

// Where and how the WAP gateway listens.  An exit status, with a line on `err` unless done.
int fillWap(const RelayCommand& command, RelayWap& wap, std::ostream& err) {
  const auto wrong = [&err](const char* option, const char* what, const std::string& value) {
    err << "mmsbrix relay: " << option << ": " << what << ": " << printable(value) << "\n";
    return kWrongUsage;
  };
  if (!parseNumber(command.wap, 10, wap.port) &&
      !parseEndpoint(command.wap, std::nullopt, wap.host, wap.port)) {
    return wrong("--wap", "not [HOST:]PORT", command.wap);
  }
  std::string host;
  std::uint16_t port = 0;
  if (!command.wapRedirect.empty() &&
      !parseEndpoint(command.wapRedirect, std::nullopt, host, port)) {
    return wrong("--wap-redirect", "not HOST:PORT", command.wapRedirect);
  }
  if (!command.wapRefuse.empty() && !parseRefusal(command.wapRefuse, wap)) {
    return wrong("--wap-refuse", "neither a status from 300 to 505 nor a reason from 0xE0 to 0xEE",
                 command.wapRefuse);
  }
  if (!command.wapLoss.empty() && !parseLoss(command.wapLoss, wap)) {
    return wrong("--wap-loss", "not PERCENT[:SEED]", command.wapLoss);
  }
  wap.redirect = command.wapRedirect;
  wap.redirectPermanent = command.wapRedirectPermanent;
  return kDone;
}

// What is asked for, as options of the server.  An exit status, with a line on `err` unless done.
int fillOptions(const RelayCommand& command, RelayOptions& options, std::ostream& err) {
  options.http = command.wap.empty() || !command.listen.empty();
  const std::string listen = command.listen.empty() ? kUsualAddress : command.listen;
  if (!parseEndpoint(listen, std::nullopt, options.host, options.port)) {
    err << "mmsbrix relay: --listen: not HOST:PORT: " << command.listen << "\n";
    return kWrongUsage;
  }
  if (!command.wap.empty()) {
    if (const int failure = fillWap(command, options.wap.emplace(), err); failure != kDone) {
      return failure;
    }
  }
  if (std::uint8_t status = 0; !command.status.empty()) {
    if (!parseStatus(command.status, status)) {
      err << "mmsbrix relay: --status: no response status: " << command.status << "\n";
      return kWrongUsage;
    }
    options.responseStatus = status;
  }
  if (!command.credentialsFile.empty()) {
    std::string error;
    const auto credentials = readCredentials(command.credentialsFile, error);
    if (!credentials) {
      err << "mmsbrix relay: --credentials: " << printable(error) << "\n";
      return kFailed;
    }
    options.credentials = credentials->user + ':' + credentials->password;
  }
  if (!command.tlsCertificateFile.empty()) {
    std::string error;
    std::ifstream none;
    const auto certificate = readAll(command.tlsCertificateFile, none, error);
    const auto key = readAll(command.tlsKeyFile, none, error);
    if (!certificate || !key) {
      err << "mmsbrix relay: " << printable(error) << "\n";
      return kFailed;
    }
    options.tlsCertificate = *certificate;
    options.tlsKey = *key;
  }
  options.storeDirectory = command.storeDirectory;
  options.notifyDirectory = command.notifyDirectory;
  options.responseText = command.text;
  options.httpStatus = command.httpStatus;
  if (!command.contentType.empty()) options.contentType = command.contentType;
  options.delay = std::chrono::milliseconds(command.delayMilliseconds);
  options.slowOctets = command.slowOctets;
  options.chunked = command.chunked;
  if (command.broken) options.fault = ReplyFault::broken;
  if (command.cut) options.fault = ReplyFault::cut;
  if (command.close) options.fault = ReplyFault::closed;
  return kDone;
}

}  // namespace

namespace {

void addWap(CLI::App& relay, RelayCommand& command) {
  const std::string group = "WAP";
  CLI::Option* wap = relay
                         .add_option("--wap", command.wap,
                                     "Listen on this UDP port as a WAP gateway whose every server "
                                     "is this relay; gateways are expected on 9201")
                         ->type_name("[HOST:]PORT")
                         ->group(group);
  CLI::Option* redirect = relay
                              .add_option("--wap-redirect", command.wapRedirect,
                                          "Send every session on to another gateway")
                              ->type_name("HOST:PORT")
                              ->needs(wap)
                              ->group(group);
  relay
      .add_flag("--wap-redirect-permanent", command.wapRedirectPermanent,
                "Clients may remember where they are sent")
      ->needs(redirect)
      ->group(group);
  relay
      .add_option("--wap-refuse", command.wapRefuse,
                  "Refuse sessions with an HTTP status (403), or abort them with a WSP reason "
                  "(0xE4 congestion)")
      ->type_name("CODE")
      ->needs(wap)
      ->excludes(redirect)
      ->group(group);
  relay
      .add_option("--wap-loss", command.wapLoss,
                  "Lose so many percent of the datagrams, both ways; the same seed loses the same")
      ->type_name("PERCENT[:SEED]")
      ->needs(wap)
      ->group(group);
  relay.footer(
      "Examples:\n"
      "  mmsbrix relay --store received\n"
      "  mmsbrix relay --wap 9201 --store received\n"
      "  mmsbrix relay --wap 9201 --wap-loss 10:7 --status Error-network-problem\n"
      "  mmsbrix relay --wap 9202 --wap-redirect 127.0.0.1:9201");
}

}  // namespace

CLI::App* addRelay(CLI::App& app, RelayCommand& command) {
  CLI::App* relay = app.add_subcommand(
      "relay",
      "Run an MMS relay for trying out and testing: an origin server and a proxy at once, a WAP "
      "gateway, or all of them");
  relay
      ->add_option("--listen", command.listen,
                   "Address to listen on for HTTP; port 0 takes a free one")
      ->type_name("HOST:PORT")
      ->default_str(kUsualAddress + std::string(", none with --wap"));
  addWap(*relay, command);
  relay->add_option("--store", command.storeDirectory, "Write every valid message here")
      ->type_name("DIR");
  relay
      ->add_option("--notify", command.notifyDirectory,
                   "Write the notification of every accepted message here; 'fetch' takes it")
      ->type_name("DIR");
  relay
      ->add_option("--status", command.status,
                   "Response status of the answer: 0x84, 132 or a name such as "
                   "Error-network-problem")
      ->type_name("STATUS");
  relay->add_option("--text", command.text, "Response text of the answer")->type_name("TEXT");
  relay->add_option("--http-status", command.httpStatus, "Status of the answer, as in HTTP")
      ->type_name("CODE")
      ->check(CLI::Range(200, 599))
      ->capture_default_str();
  relay->add_option("--content-type", command.contentType, "Content type of the answer")
      ->type_name("TYPE");
  relay->add_option("--delay", command.delayMilliseconds, "Wait before the answer")
      ->type_name("MILLISECONDS");
  relay
      ->add_option("--slow", command.slowOctets, "Octets of the answer per 100 milliseconds (HTTP)")
      ->type_name("OCTETS");
  relay->add_flag("--chunked", command.chunked,
                  "Send the answer in chunks, without a length (HTTP)");
  CLI::Option* broken =
      relay->add_flag("--broken", command.broken, "Answer with a PDU whose octets are mangled");
  CLI::Option* cut =
      relay->add_flag("--cut", command.cut, "Close the connection before the answer's end (HTTP)");
  CLI::Option* close =
      relay->add_flag("--close", command.close,
                      "Close the connection without an answer; over WAP, abort the method");
  broken->excludes(cut)->excludes(close);
  cut->excludes(close);
  relay
      ->add_option("--credentials", command.credentialsFile,
                   "Require the user:password in the first line of this file")
      ->type_name("FILE");
  CLI::Option* certificate = relay
                                 ->add_option("--tls-certificate", command.tlsCertificateFile,
                                              "Speak https with the certificate in this PEM file")
                                 ->type_name("FILE");
  CLI::Option* key =
      relay->add_option("--tls-key", command.tlsKeyFile, "Its private key, PEM")->type_name("FILE");
  certificate->needs(key);
  key->needs(certificate);
  relay->add_option("--count", command.count, "Stop after so many exchanges")->type_name("N");
  return relay;
}

int runRelay(const RelayCommand& command, std::ostream& out, std::ostream& err) {
  RelayOptions options;
  if (const int failure = fillOptions(command, options, err); failure != kDone) return failure;

  if (options.http && !RelayHttpSide::isThere()) {
    err << "mmsbrix relay: " << kNoHttpRelay << "\n";
    return kWrongUsage;
  }
  host::Interruption end;  // before the relay's threads, which inherit it
  std::mutex outMutex;
  std::uint64_t exchanges = 0;
  options.onExchange = [&](const RelayExchange& exchange) {
    const std::lock_guard lock(outMutex);
    if (command.count != 0 && exchanges >= command.count) return;
    out << describe(exchange) << std::endl;
    if (++exchanges == command.count) end.wake();
  };
  const bool http = options.http;
  std::string error;
  std::unique_lock addressFirst(outMutex);
  const std::unique_ptr<RelayServer> relay = RelayServer::start(std::move(options), error);
  if (relay == nullptr) {
    err << "mmsbrix relay: " << error << "\n";
    return kFailed;
  }
  if (http) {
    out << "listening on " << (command.tlsCertificateFile.empty() ? "http" : "https") << "://"
        << relay->address() << "/" << std::endl;
  }
  if (!relay->wapAddress().empty()) {
    out << "listening on wap://" << relay->wapAddress() << std::endl;
  }
  addressFirst.unlock();

  end.wait();
  return kDone;
}

}  // namespace mmsbrix::tool
