#include "relay.h"

#include <mmsbrix/mms/inspector.h>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <CLI/Validators.hpp>
#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <fstream>
#include <mutex>
#include <ostream>
#include <utility>

#include "command.h"
#include "relay_server.h"

namespace mmsbrix::tool {
namespace {

/// Takes SIGINT and SIGTERM from their handlers into a descriptor, for this thread and those that
/// it starts, and gives them back at the end.
class SignalScope {
 public:
  SignalScope() {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGINT);
    sigaddset(&set, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &set, &before_);
    descriptor_ = signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK);
  }
  SignalScope(const SignalScope&) = delete;
  SignalScope& operator=(const SignalScope&) = delete;
  ~SignalScope() {
    // A signal that is still pending is taken, so that unblocking does not end the process.
    signalfd_siginfo taken;
    while (::read(descriptor_, &taken, sizeof taken) > 0) continue;
    ::close(descriptor_);
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
  }
  [[nodiscard]] int descriptor() const noexcept { return descriptor_; }

 private:
  sigset_t before_{};
  int descriptor_ = -1;
};

/// Raised by a thread of the relay when the last exchange is over.
class Event {
 public:
  Event() : descriptor_(eventfd(0, EFD_CLOEXEC)) {}
  Event(const Event&) = delete;
  Event& operator=(const Event&) = delete;
  ~Event() { ::close(descriptor_); }
  void raise() noexcept {
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t put = ::write(descriptor_, &one, sizeof one);
  }
  [[nodiscard]] int descriptor() const noexcept { return descriptor_; }

 private:
  int descriptor_;
};

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

// What is asked for, as options of the server.  An exit status, with a line on `err` unless done.
int fillOptions(const RelayCommand& command, RelayOptions& options, std::ostream& err) {
  if (!parseEndpoint(command.listen, std::nullopt, options.host, options.port)) {
    err << "mmsbrix relay: --listen: not HOST:PORT: " << command.listen << "\n";
    return kWrongUsage;
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

CLI::App* addRelay(CLI::App& app, RelayCommand& command) {
  CLI::App* relay = app.add_subcommand(
      "relay", "Run an MMS relay for trying out and testing: an origin server and a proxy at once");
  relay->add_option("--listen", command.listen, "Address to listen on; port 0 takes a free one")
      ->type_name("HOST:PORT")
      ->capture_default_str();
  relay->add_option("--store", command.storeDirectory, "Write every valid message here")
      ->type_name("DIR");
  relay
      ->add_option("--status", command.status,
                   "Response status of the answer: 0x84, 132 or a name such as "
                   "Error-network-problem")
      ->type_name("STATUS");
  relay->add_option("--text", command.text, "Response text of the answer")->type_name("TEXT");
  relay->add_option("--http-status", command.httpStatus, "HTTP status of the answer")
      ->type_name("CODE")
      ->check(CLI::Range(200, 599))
      ->capture_default_str();
  relay->add_option("--content-type", command.contentType, "Content type of the answer")
      ->type_name("TYPE");
  relay->add_option("--delay", command.delayMilliseconds, "Wait before the answer")
      ->type_name("MILLISECONDS");
  relay->add_option("--slow", command.slowOctets, "Octets of the answer per 100 milliseconds")
      ->type_name("OCTETS");
  relay->add_flag("--chunked", command.chunked, "Send the answer in chunks, without a length");
  CLI::Option* broken =
      relay->add_flag("--broken", command.broken, "Answer with a PDU whose octets are mangled");
  CLI::Option* cut =
      relay->add_flag("--cut", command.cut, "Close the connection before the answer's end");
  CLI::Option* close =
      relay->add_flag("--close", command.close, "Close the connection without an answer");
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

  const SignalScope signals;  // before the relay's threads, which inherit it
  Event finished;
  std::mutex outMutex;
  std::uint64_t exchanges = 0;
  options.onExchange = [&](const RelayExchange& exchange) {
    const std::lock_guard lock(outMutex);
    if (command.count != 0 && exchanges >= command.count) return;
    out << describe(exchange) << std::endl;
    if (++exchanges == command.count) finished.raise();
  };
  std::string error;
  std::unique_lock addressFirst(outMutex);
  const std::unique_ptr<RelayServer> relay = RelayServer::start(std::move(options), error);
  if (relay == nullptr) {
    err << "mmsbrix relay: " << error << "\n";
    return kFailed;
  }
  out << "listening on " << (command.tlsCertificateFile.empty() ? "http" : "https") << "://"
      << relay->address() << "/" << std::endl;
  addressFirst.unlock();

  std::array<pollfd, 2> events = {pollfd{signals.descriptor(), POLLIN, 0},
                                  pollfd{finished.descriptor(), POLLIN, 0}};
  while (::poll(events.data(), events.size(), -1) < 0 && errno == EINTR) continue;
  return kDone;
}

}  // namespace mmsbrix::tool
