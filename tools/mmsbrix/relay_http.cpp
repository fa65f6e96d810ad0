#include "relay_http.h"

#include <microhttpd.h>
#include <netdb.h>
#include <sys/socket.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <utility>
#include <vector>

#include "relay_desk.h"
#include "relay_timer.h"

namespace mmsbrix::tool {
namespace {

constexpr unsigned kThreads = 4;
constexpr unsigned kConnectionLimit = 1024;
constexpr unsigned kIdleSeconds = 120;
constexpr std::size_t kBlockOctets = 16384;
/// What a cut answer announces beyond its end.
constexpr std::size_t kMissingOctets = 64;

std::string headerOf(MHD_Connection* connection, const char* name) {
  const char* value = MHD_lookup_connection_value(connection, MHD_HEADER_KIND, name);
  return value == nullptr ? std::string() : std::string(value);
}

std::string peerOf(MHD_Connection* connection) {
  const MHD_ConnectionInfo* info =
      MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CLIENT_ADDRESS);
  if (info == nullptr || info->client_addr == nullptr) return {};
  const sockaddr* address = info->client_addr;
  char host[NI_MAXHOST] = "";
  const socklen_t size =
      address->sa_family == AF_INET6 ? sizeof(sockaddr_in6) : sizeof(sockaddr_in);
  ::getnameinfo(address, size, host, sizeof host, nullptr, 0, NI_NUMERICHOST);
  return host;
}

}  // namespace

struct RelayHttpSide::State {
  // One request while it is under way.
  struct Exchange {
    State* relay = nullptr;
    RelayExchange record;
    bool begun = false;
    bool tooLarge = false;
    bool answered = false;
    bool delayed = false;
    RelayAnswer answer;
    MHD_Connection* connection = nullptr;
    std::uint64_t pausedAt = UINT64_MAX;  // body position before which the slow body has waited
  };

  State(const RelayOptions& given, RelayDesk& its) : options(given), desk(its) {}

  bool listen(std::string& error);
  void close();

  MHD_Result onRequest(MHD_Connection* connection, const char* method, const char* data,
                       std::size_t* size, Exchange& exchange);
  MHD_Result queue(MHD_Connection* connection, Exchange& exchange);

  static void* onUri(void* self, const char* uri, MHD_Connection* connection) noexcept;
  static MHD_Result onAccess(void* self, MHD_Connection* connection, const char* url,
                             const char* method, const char* version, const char* data,
                             std::size_t* size, void** context) noexcept;
  static void onCompleted(void* self, MHD_Connection* connection, void** context,
                          MHD_RequestTerminationCode code) noexcept;
  static void onConnection(void* self, MHD_Connection* connection, void** context,
                           MHD_ConnectionNotificationCode code) noexcept;
  static ssize_t onBody(void* exchange, std::uint64_t position, char* buffer,
                        std::size_t size) noexcept;

  const RelayOptions& options;
  RelayDesk& desk;
  MHD_Daemon* daemon = nullptr;
  std::uint16_t port = 0;
  std::atomic<std::uint64_t> connections{0};
  RelayTimer timer;
};

bool RelayHttpSide::State::listen(std::string& error) {
  addrinfo hints{};
  hints.ai_socktype = SOCK_STREAM;
  hints.ai_flags = AI_PASSIVE;
  addrinfo* found = nullptr;
  const int failure =
      ::getaddrinfo(options.host.c_str(), std::to_string(options.port).c_str(), &hints, &found);
  if (failure != 0) {
    error = options.host + ": " + ::gai_strerror(failure);
    return false;
  }
  unsigned flags = MHD_USE_AUTO_INTERNAL_THREAD | MHD_ALLOW_SUSPEND_RESUME;
  if (found->ai_family == AF_INET6) flags |= MHD_USE_IPv6;
  std::vector<MHD_OptionItem> tls;
  if (!options.tlsCertificate.empty()) {
    flags |= MHD_USE_TLS;
    tls.push_back(
        {MHD_OPTION_HTTPS_MEM_CERT, 0, const_cast<char*>(options.tlsCertificate.c_str())});
    tls.push_back({MHD_OPTION_HTTPS_MEM_KEY, 0, const_cast<char*>(options.tlsKey.c_str())});
  }
  tls.push_back({MHD_OPTION_END, 0, nullptr});
  errno = 0;
  daemon = MHD_start_daemon(flags, 0, nullptr, nullptr, &State::onAccess, this,        //
                            MHD_OPTION_SOCK_ADDR, found->ai_addr,                      //
                            MHD_OPTION_URI_LOG_CALLBACK, &State::onUri, this,          //
                            MHD_OPTION_NOTIFY_COMPLETED, &State::onCompleted, this,    //
                            MHD_OPTION_NOTIFY_CONNECTION, &State::onConnection, this,  //
                            MHD_OPTION_ARRAY, tls.data(),                              //
                            MHD_OPTION_THREAD_POOL_SIZE, kThreads,                     //
                            MHD_OPTION_CONNECTION_LIMIT, kConnectionLimit,             //
                            MHD_OPTION_CONNECTION_TIMEOUT, kIdleSeconds, MHD_OPTION_END);
  const int reason = errno;
  ::freeaddrinfo(found);
  if (daemon == nullptr) {
    error = "cannot listen on " + options.host + " port " + std::to_string(options.port) +
            (reason != 0                       ? std::string(": ") + std::strerror(reason)
             : !options.tlsCertificate.empty() ? std::string(": certificate or key cannot be used")
                                               : std::string());
    return false;
  }
  if (const MHD_DaemonInfo* info = MHD_get_daemon_info(daemon, MHD_DAEMON_INFO_BIND_PORT)) {
    port = info->port;
  }
  return true;
}

void RelayHttpSide::State::close() {
  timer.stop();
  if (daemon != nullptr) MHD_stop_daemon(std::exchange(daemon, nullptr));
}

// Called with the headers, with each piece of the body, at its end, and after each suspension.
MHD_Result RelayHttpSide::State::onRequest(MHD_Connection* connection, const char* method,
                                           const char* data, std::size_t* size,
                                           Exchange& exchange) {
  RelayExchange& record = exchange.record;
  if (!exchange.begun) {
    exchange.begun = true;
    exchange.connection = connection;
    record.method = method;
    record.peer = peerOf(connection);
    record.userAgent = headerOf(connection, MHD_HTTP_HEADER_USER_AGENT);
    return MHD_YES;
  }
  if (*size > 0) {
    // A body that is too large is still read to its end: an answer before that may be lost when
    // the connection closes on unread octets.
    record.octets += *size;
    exchange.tooLarge = exchange.tooLarge || record.octets > options.maxBodyOctets;
    if (exchange.tooLarge) {
      record.pdu = {};
    } else {
      record.pdu.insert(record.pdu.end(), data, data + *size);
    }
    *size = 0;
    return MHD_YES;
  }
  if (!exchange.delayed && options.delay.count() > 0) {
    exchange.delayed = true;
    if (timer.suspend(connection, options.delay)) return MHD_YES;
  }
  if (!exchange.answered) {
    exchange.answered = true;
    exchange.answer = desk.answer(
        record, [connection](const char* name) { return headerOf(connection, name); },
        exchange.tooLarge);
  }
  if (options.fault == ReplyFault::closed) return MHD_NO;
  return queue(connection, exchange);
}

MHD_Result RelayHttpSide::State::queue(MHD_Connection* connection, Exchange& exchange) {
  const RelayAnswer& answer = exchange.answer;
  std::uint64_t size = answer.body.size();
  if (options.fault == ReplyFault::cut) size += kMissingOctets;
  if (options.chunked) size = MHD_SIZE_UNKNOWN;
  const std::size_t block =
      options.slowOctets == 0 ? kBlockOctets : std::min(options.slowOctets, kBlockOctets);
  MHD_Response* response =
      MHD_create_response_from_callback(size, block, &State::onBody, &exchange, nullptr);
  if (response == nullptr) return MHD_NO;
  MHD_add_response_header(response, MHD_HTTP_HEADER_CONTENT_TYPE, answer.contentType.c_str());
  if (answer.extraHeader != nullptr) {
    MHD_add_response_header(response, answer.extraHeader, answer.extraValue.c_str());
  }
  const MHD_Result queued = MHD_queue_response(connection, answer.httpStatus, response);
  MHD_destroy_response(response);
  return queued;
}

ssize_t RelayHttpSide::State::onBody(void* context, std::uint64_t position, char* buffer,
                                     std::size_t size) noexcept {
  Exchange& exchange = *static_cast<Exchange*>(context);
  const RelayOptions& options = exchange.relay->options;
  const std::vector<std::uint8_t>& body = exchange.answer.body;
  if (position >= body.size()) {
    return options.fault == ReplyFault::cut ? MHD_CONTENT_READER_END_WITH_ERROR
                                            : MHD_CONTENT_READER_END_OF_STREAM;
  }
  std::size_t length = std::min(size, body.size() - static_cast<std::size_t>(position));
  if (options.slowOctets > 0) {
    if (exchange.pausedAt != position) {
      exchange.pausedAt = position;
      if (exchange.relay->timer.suspend(exchange.connection, options.slowInterval)) return 0;
    }
    length = std::min(length, options.slowOctets);
  }
  std::memcpy(buffer, body.data() + position, length);
  return static_cast<ssize_t>(length);
}

void* RelayHttpSide::State::onUri(void* self, const char* uri, MHD_Connection*) noexcept {
  try {
    auto exchange = std::make_unique<Exchange>();
    exchange->relay = static_cast<State*>(self);
    exchange->record.target = withoutCredentials(uri);
    exchange->record.asProxy = exchange->record.target.find("://") != std::string::npos &&
                               !exchange->record.target.starts_with('/');
    return exchange.release();
  } catch (...) {
    return nullptr;
  }
}

MHD_Result RelayHttpSide::State::onAccess(void* self, MHD_Connection* connection, const char*,
                                          const char* method, const char*, const char* data,
                                          std::size_t* size, void** context) noexcept {
  if (*context == nullptr) return MHD_NO;
  try {
    return static_cast<State*>(self)->onRequest(connection, method, data, size,
                                                *static_cast<Exchange*>(*context));
  } catch (...) {  // out of memory: this exchange ends, the others go on
    return MHD_NO;
  }
}

void RelayHttpSide::State::onCompleted(void* self, MHD_Connection*, void** context,
                                       MHD_RequestTerminationCode) noexcept {
  const std::unique_ptr<Exchange> exchange(
      static_cast<Exchange*>(std::exchange(*context, nullptr)));
  State& relay = *static_cast<State*>(self);
  if (exchange == nullptr || !exchange->answered) return;
  try {
    relay.desk.tell(exchange->record);
  } catch (...) {  // the host's own; the relay goes on
  }
}

void RelayHttpSide::State::onConnection(void* self, MHD_Connection*, void**,
                                        MHD_ConnectionNotificationCode code) noexcept {
  if (code == MHD_CONNECTION_NOTIFY_STARTED) ++static_cast<State*>(self)->connections;
}

bool RelayHttpSide::isThere() noexcept {
  return true;
}

RelayHttpSide::RelayHttpSide(const RelayOptions& options, RelayDesk& desk)
    : state_(std::make_unique<State>(options, desk)) {}

RelayHttpSide::~RelayHttpSide() {
  stop();
}

bool RelayHttpSide::start(std::string& error) {
  return state_->listen(error);
}

void RelayHttpSide::stop() {
  state_->close();
}

std::uint16_t RelayHttpSide::port() const noexcept {
  return state_->port;
}

std::uint64_t RelayHttpSide::connectionCount() const noexcept {
  return state_->connections;
}

}  // namespace mmsbrix::tool
