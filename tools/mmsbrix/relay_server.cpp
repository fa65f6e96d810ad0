#include "relay_server.h"

#include <arpa/inet.h>
#include <microhttpd.h>
#include <netdb.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <deque>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <string_view>
#include <utility>

#include <mmsbrix/mms/inspector.h>

#include "relay_answer.h"
#include "relay_timer.h"

namespace mmsbrix::tool {
namespace {

constexpr std::string_view kMmsContentType = "application/vnd.wap.mms-message";
constexpr char kTextContentType[] = "text/plain; charset=utf-8";
constexpr char kRealm[] = "mmsbrix relay";
constexpr unsigned kThreads = 4;
constexpr unsigned kConnectionLimit = 1024;
constexpr unsigned kIdleSeconds = 120;
constexpr std::size_t kBlockOctets = 16384;
/// What a cut answer announces beyond its end.
constexpr std::size_t kMissingOctets = 64;

bool equalsIgnoringCase(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
    return std::tolower(static_cast<unsigned char>(x)) ==
           std::tolower(static_cast<unsigned char>(y));
  });
}

std::string headerOf(MHD_Connection* connection, const char* name) {
  const char* value = MHD_lookup_connection_value(connection, MHD_HEADER_KIND, name);
  return value == nullptr ? std::string() : std::string(value);
}

bool isMmsContentType(std::string_view value) {
  value = value.substr(0, value.find(';'));
  while (!value.empty() && value.back() == ' ') value.remove_suffix(1);
  return equalsIgnoringCase(value, kMmsContentType);
}

// A target for the log: whole URLs lose user name and password.
std::string withoutCredentials(std::string target) {
  const std::size_t scheme = target.find("://");
  if (scheme == std::string::npos) return target;
  const std::size_t authority = scheme + 3;
  const std::size_t at = target.find_last_of('@', target.find('/', authority));
  if (at != std::string::npos && at >= authority) target.erase(authority, at + 1 - authority);
  return target;
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

bool authorized(MHD_Connection* connection, const char* header, const std::string& credentials) {
  const std::string value = headerOf(connection, header);
  constexpr std::string_view kBasic = "Basic ";
  if (!equalsIgnoringCase(std::string_view(value).substr(0, kBasic.size()), kBasic)) return false;
  constexpr std::string_view kDigits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string given;
  unsigned bits = 0;
  int count = 0;
  for (const char c : std::string_view(value).substr(kBasic.size())) {
    const std::size_t digit = kDigits.find(c);
    if (digit == std::string_view::npos) break;
    bits = bits << 6 | static_cast<unsigned>(digit);
    if ((count += 6) < 8) continue;
    count -= 8;
    given += static_cast<char>(bits >> count & 0xFF);
  }
  return given == credentials;
}

// The answer to one request.
struct Answer {
  unsigned httpStatus = MHD_HTTP_OK;
  std::string contentType = kTextContentType;
  std::vector<std::uint8_t> body;
  const char* extraHeader = nullptr;
  std::string extraValue;
};

Answer plainAnswer(unsigned httpStatus, std::string_view text) {
  Answer answer;
  answer.httpStatus = httpStatus;
  answer.body.assign(text.begin(), text.end());
  answer.body.push_back('\n');
  return answer;
}

}  // namespace

struct RelayServer::State {
  // One request while it is under way.
  struct Exchange {
    State* relay = nullptr;
    RelayExchange record;
    bool begun = false;
    bool tooLarge = false;
    bool answered = false;
    bool delayed = false;
    Answer answer;
    MHD_Connection* connection = nullptr;
    std::uint64_t pausedAt = UINT64_MAX;  // body position before which the slow body has waited
  };

  explicit State(RelayOptions given) : options(std::move(given)) {}

  bool listen(std::string& error);
  void close();

  Answer answerTo(MHD_Connection* connection, RelayExchange& record, bool tooLarge);
  Answer answerToPdu(RelayExchange& record);
  std::string storeMessage(const RelayExchange& record);
  void keep(const RelayExchange& record);
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

  const RelayOptions options;
  MHD_Daemon* daemon = nullptr;
  std::uint16_t port = 0;
  std::atomic<std::uint64_t> connections{0};
  std::atomic<std::uint64_t> lastNumber{0};
  std::atomic<std::uint64_t> lastMessage{0};
  mutable std::mutex mutex;  // guards `kept`
  std::deque<RelayExchange> kept;
  std::mutex callbackMutex;  // held while `onExchange` is called
  RelayTimer timer;
};

std::string describe(const RelayExchange& exchange) {
  std::string line = "#" + std::to_string(exchange.number) + " " + exchange.peer + " " +
                     exchange.method + " " + exchange.target + " (" +
                     std::to_string(exchange.octets) + " octets) -> ";
  line += exchange.httpStatus == 0 ? "no answer" : std::to_string(exchange.httpStatus);
  if (exchange.responseStatus != 0) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    const std::string name = responseStatusName(exchange.responseStatus);
    line += std::string(" 0x") + kDigits[exchange.responseStatus >> 4] +
            kDigits[exchange.responseStatus & 0x0F] + (name.empty() ? "" : " " + name);
  }
  if (!exchange.text.empty()) line += ": " + exchange.text;
  if (!exchange.messageId.empty()) line += ", message " + exchange.messageId;
  if (!exchange.file.empty()) line += ", stored as " + exchange.file;
  std::replace_if(
      line.begin(), line.end(),
      [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }, '?');
  return line;
}

bool RelayServer::State::listen(std::string& error) {
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
            (reason == 0 ? std::string() : std::string(": ") + std::strerror(reason));
    return false;
  }
  if (const MHD_DaemonInfo* info = MHD_get_daemon_info(daemon, MHD_DAEMON_INFO_BIND_PORT)) {
    port = info->port;
  }
  return true;
}

void RelayServer::State::close() {
  timer.stop();
  if (daemon != nullptr) MHD_stop_daemon(std::exchange(daemon, nullptr));
}

void RelayServer::State::keep(const RelayExchange& record) {
  const std::lock_guard lock(mutex);
  kept.push_back(record);
  while (kept.size() > options.keptExchanges) kept.pop_front();
}

Answer RelayServer::State::answerTo(MHD_Connection* connection, RelayExchange& record,
                                    bool tooLarge) {
  if (!options.credentials.empty()) {
    const bool own = authorized(connection, "Authorization", options.credentials);
    if (record.asProxy && !own &&
        !authorized(connection, "Proxy-Authorization", options.credentials)) {
      Answer answer = plainAnswer(MHD_HTTP_PROXY_AUTHENTICATION_REQUIRED,
                                  record.text = "credentials are required");
      answer.extraHeader = MHD_HTTP_HEADER_PROXY_AUTHENTICATE;
      answer.extraValue = std::string("Basic realm=\"") + kRealm + "\"";
      return answer;
    }
    if (!record.asProxy && !own) {
      Answer answer = plainAnswer(MHD_HTTP_UNAUTHORIZED, record.text = "credentials are required");
      answer.extraHeader = MHD_HTTP_HEADER_WWW_AUTHENTICATE;
      answer.extraValue = std::string("Basic realm=\"") + kRealm + "\"";
      return answer;
    }
  }
  if (record.method != MHD_HTTP_METHOD_POST) {
    Answer answer =
        plainAnswer(MHD_HTTP_METHOD_NOT_ALLOWED, record.text = "messages are submitted by POST");
    answer.extraHeader = MHD_HTTP_HEADER_ALLOW;
    answer.extraValue = MHD_HTTP_METHOD_POST;
    return answer;
  }
  if (tooLarge) {
    return plainAnswer(
        MHD_HTTP_CONTENT_TOO_LARGE,
        record.text = "more than " + std::to_string(options.maxBodyOctets) + " octets");
  }
  if (!isMmsContentType(headerOf(connection, MHD_HTTP_HEADER_CONTENT_TYPE))) {
    return plainAnswer(MHD_HTTP_UNSUPPORTED_MEDIA_TYPE,
                       record.text = "the content type is not " + std::string(kMmsContentType));
  }
  if (options.httpStatus != MHD_HTTP_OK) {
    return plainAnswer(options.httpStatus, record.text = "as told");
  }
  return answerToPdu(record);
}

Answer RelayServer::State::answerToPdu(RelayExchange& record) {
  Verdict verdict = judge(record.pdu);
  if (verdict.accepted() && !options.storeDirectory.empty()) {
    record.file = storeMessage(record);
    if (record.file.empty()) {
      verdict.status = static_cast<std::uint8_t>(ResponseStatus::unspecified);
      verdict.text = "the message could not be stored";
    }
  }
  if (verdict.accepted()) {
    verdict.status = options.responseStatus.value_or(verdict.status);
    verdict.text = options.responseText;
  }
  if (verdict.accepted()) {
    record.messageId = std::to_string(std::time(nullptr)) + "-" + std::to_string(::getpid()) + "-" +
                       std::to_string(++lastMessage) + "@mmsbrix-relay";
  }
  record.responseStatus = verdict.status;
  record.text = verdict.text;
  Answer answer;
  answer.contentType = options.contentType;
  answer.body = encodeSendConf(verdict, record.messageId);
  if (options.fault == ReplyFault::broken) {
    for (std::uint8_t& octet : answer.body) octet ^= 0x80;
  }
  return answer;
}

// Writes a message under a name of its own, complete before it has that name.  The path, empty on
// failure.
std::string RelayServer::State::storeMessage(const RelayExchange& record) {
  namespace fs = std::filesystem;
  const fs::path folder = options.storeDirectory;
  const std::string name = std::to_string(std::time(nullptr)) + "-" + std::to_string(::getpid()) +
                           "-" + std::to_string(record.number);
  const fs::path temporary = folder / (name + ".part");
  const fs::path file = folder / (name + ".mms");
  std::error_code failure;
  {
    std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(record.pdu.data()),
              static_cast<std::streamsize>(record.pdu.size()));
    out.close();
    if (!out) {
      fs::remove(temporary, failure);
      return {};
    }
  }
  fs::rename(temporary, file, failure);
  return failure ? std::string() : file.string();
}

// Called with the headers, with each piece of the body, at its end, and after each suspension.
MHD_Result RelayServer::State::onRequest(MHD_Connection* connection, const char* method,
                                         const char* data, std::size_t* size, Exchange& exchange) {
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
    record.number = ++lastNumber;
    exchange.answer = answerTo(connection, record, exchange.tooLarge);
    record.httpStatus = options.fault == ReplyFault::closed ? 0 : exchange.answer.httpStatus;
    keep(record);
  }
  if (options.fault == ReplyFault::closed) return MHD_NO;
  return queue(connection, exchange);
}

MHD_Result RelayServer::State::queue(MHD_Connection* connection, Exchange& exchange) {
  const Answer& answer = exchange.answer;
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

ssize_t RelayServer::State::onBody(void* context, std::uint64_t position, char* buffer,
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

void* RelayServer::State::onUri(void* self, const char* uri, MHD_Connection*) noexcept {
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

MHD_Result RelayServer::State::onAccess(void* self, MHD_Connection* connection, const char*,
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

void RelayServer::State::onCompleted(void* self, MHD_Connection*, void** context,
                                     MHD_RequestTerminationCode) noexcept {
  const std::unique_ptr<Exchange> exchange(
      static_cast<Exchange*>(std::exchange(*context, nullptr)));
  State& relay = *static_cast<State*>(self);
  if (exchange == nullptr || !exchange->answered || !relay.options.onExchange) return;
  try {
    const std::lock_guard lock(relay.callbackMutex);
    relay.options.onExchange(exchange->record);
  } catch (...) {  // the host's own; the relay goes on
  }
}

void RelayServer::State::onConnection(void* self, MHD_Connection*, void**,
                                      MHD_ConnectionNotificationCode code) noexcept {
  if (code == MHD_CONNECTION_NOTIFY_STARTED) ++static_cast<State*>(self)->connections;
}

std::unique_ptr<RelayServer> RelayServer::start(RelayOptions options, std::string& error) {
  if (!options.storeDirectory.empty()) {
    std::error_code failure;
    std::filesystem::create_directories(options.storeDirectory, failure);
    if (failure) {
      error = options.storeDirectory + ": " + failure.message();
      return nullptr;
    }
  }
  auto state = std::make_unique<State>(std::move(options));
  if (!state->listen(error)) return nullptr;
  return std::unique_ptr<RelayServer>(new RelayServer(std::move(state)));
}

RelayServer::RelayServer(std::unique_ptr<State> state) noexcept : state_(std::move(state)) {}

RelayServer::~RelayServer() {
  state_->close();
}

std::uint16_t RelayServer::port() const noexcept {
  return state_->port;
}

std::string RelayServer::address() const {
  const std::string& host = state_->options.host;
  const bool ipv6 = host.find(':') != std::string::npos;
  return (ipv6 ? "[" + host + "]" : host) + ":" + std::to_string(state_->port);
}

std::vector<RelayExchange> RelayServer::exchanges() const {
  const std::lock_guard lock(state_->mutex);
  return {state_->kept.begin(), state_->kept.end()};
}

std::uint64_t RelayServer::connectionCount() const noexcept {
  return state_->connections;
}

}  // namespace mmsbrix::tool
