// Over WinINet with synchronous handles: open, connect, open a request, send it, ask for status and
// raw headers, read what is available until there is no more.  Of the component's callbacks one is
// used, to keep credentials from following a redirect to another server.
#include "platform/http.h"

#include <windows.h>

#include <wininet.h>

#include <algorithm>
#include <charconv>
#include <limits>
#include <utility>

#include "platform/ascii.h"
#include "platform/proxy_address.h"
#include "platform/win32/http_watch.h"
#include "platform/win32/internet_handle.h"

namespace mmsbrix::platform {
namespace {

constexpr DWORD kRequestFlags =
    INTERNET_FLAG_RELOAD | INTERNET_FLAG_NO_CACHE_WRITE | INTERNET_FLAG_KEEP_CONNECTION;
static_assert(kRequestFlags == 0x84400000);
/// Octets of a request that are handed over at once when somebody is told of progress.
constexpr std::size_t kChunk = 16384;
/// What a first look at the raw headers has room for.
constexpr DWORD kFirstHeaderRoom = 256;
/// Longest header block that is taken, in octets.
constexpr DWORD kMaxReplyHeaderOctets = DWORD{256} << 10;
/// How often one request is begun anew because the component asks for it.
constexpr int kMaxAttempts = 10;

std::string bracketed(const std::string& host) {
  return host.find(':') == std::string::npos ? host : "[" + host + "]";
}

unsigned lastError() noexcept {
  const DWORD error = ::GetLastError();
  return error == ERROR_SUCCESS ? kInternetInternalError : error;
}

// Told by the component before it follows a redirect with the headers of the first request.
void CALLBACK onStatus(HINTERNET request, DWORD_PTR context, DWORD status, void* information,
                       DWORD) {
  if (status != INTERNET_STATUS_REDIRECT) return;
  const auto& server = *reinterpret_cast<const UrlParts*>(context);
  unsigned error = 0;
  const auto target = crackUrl(static_cast<const char*>(information), error);
  if (target && target->secure == server.secure && target->port == server.port &&
      equalsIgnoringCase(target->host, server.host)) {
    return;
  }
  // Credentials are for the server that they were given for.
  constexpr std::string_view kNone = "Authorization:\r\n";
  ::HttpAddRequestHeadersA(request, kNone.data(), static_cast<DWORD>(kNone.size()),
                           HTTP_ADDREQ_FLAG_REPLACE);
}

// A request of Wine's component does not have those of its session.
void setTimeouts(HINTERNET handle, DWORD milliseconds) noexcept {
  for (const DWORD option : {INTERNET_OPTION_CONNECT_TIMEOUT, INTERNET_OPTION_SEND_TIMEOUT,
                             INTERNET_OPTION_RECEIVE_TIMEOUT}) {
    ::InternetSetOptionA(handle, option, &milliseconds, sizeof milliseconds);
  }
}

/// How long nothing has come from the peer.  Wine's component calls a peer that says nothing for
/// too long one that has closed.
class Silence {
 public:
  explicit Silence(DWORD limitMilliseconds) noexcept : limit_(limitMilliseconds) {}
  void begin() noexcept { since_ = ::GetTickCount64(); }
  [[nodiscard]] bool tooLong() const noexcept {
    return ::GetTickCount64() - since_ + kClockStep >= limit_;
  }
  /// The error that the component's stands for.
  [[nodiscard]] unsigned named(unsigned error) const noexcept {
    return error == kInternetConnectionAborted && tooLong() ? kInternetTimeout : error;
  }

 private:
  /// What the system's clocks are apart at most, in milliseconds.
  static constexpr ULONGLONG kClockStep = 20;
  const ULONGLONG limit_;
  ULONGLONG since_ = ::GetTickCount64();
};

/// What the requests of a session share.
struct SessionState {
  InternetHandle handle;
  DWORD stallMilliseconds = 0;
  bool usable = true;  ///< false when the proxy's text is no name of a host
};

enum class Method { post, get };

class WinInetRequest final : public HttpRequest {
 public:
  WinInetRequest(InternetHandle handle, Method method, UrlParts server, const SessionState& session)
      : handle_(std::move(handle)),
        method_(method),
        server_(std::move(server)),
        usable_(session.usable),
        silence_(session.stallMilliseconds) {}

  unsigned id() const noexcept override { return id_; }
  unsigned status() const noexcept override { return status_; }
  std::vector<std::string> rawHeaders() const override { return lines_; }
  bool complete() const noexcept override { return complete_; }
  std::size_t available() const noexcept override { return body_.size() - readOctets_; }

  std::optional<std::size_t> read(std::span<std::uint8_t> buffer) override {
    const std::size_t taken = std::min(buffer.size(), available());
    std::copy_n(body_.data() + readOctets_, taken, buffer.data());
    readOctets_ += taken;
    return taken;
  }

  unsigned send(const std::string& headers, std::span<const std::uint8_t> body,
                const SendProgress& progress) override {
    status_ = 0;
    lines_.clear();
    body_.clear();
    readOctets_ = 0;
    complete_ = false;
    if (!usable_) return kInternetNameNotResolved;
    if (headers.find("Authorization:") != std::string::npos) watchRedirects();
    if (!progress) {
      silence_.begin();
      const BOOL sent = ::HttpSendRequestA(
          handle_.get(), headers.empty() ? nullptr : headers.c_str(),
          headers.empty() ? 0 : static_cast<DWORD>(-1), const_cast<std::uint8_t*>(body.data()),
          static_cast<DWORD>(body.size()));
      return sent == FALSE ? silence_.named(lastError()) : receive(nullptr);
    }
    return watchExchange(
        [&](ExchangeCounts& counts) {
          if (const unsigned error = sendCounting(headers, body, counts); error != 0) return error;
          return receive(method_ == Method::get ? &counts : nullptr);
        },
        [this] { handle_.close(); }, method_ == Method::get ? 0 : body.size(), progress);
  }

 private:
  void watchRedirects() noexcept {
    auto context = reinterpret_cast<DWORD_PTR>(&server_);
    ::InternetSetOptionA(handle_.get(), INTERNET_OPTION_CONTEXT_VALUE, &context, sizeof context);
    ::InternetSetStatusCallbackA(handle_.get(), onStatus);
  }

  // In pieces, so that their number can be told.
  unsigned sendCounting(const std::string& headers, std::span<const std::uint8_t> body,
                        ExchangeCounts& counts) {
    for (int attempt = 0; attempt < kMaxAttempts; ++attempt) {
      if (method_ == Method::post) counts.set(0, body.size());
      INTERNET_BUFFERSA buffers{};
      buffers.dwStructSize = sizeof buffers;
      buffers.lpcszHeader = headers.empty() ? nullptr : headers.c_str();
      buffers.dwHeadersLength = headers.empty() ? 0 : static_cast<DWORD>(headers.size());
      buffers.dwBufferTotal = static_cast<DWORD>(body.size());
      if (::HttpSendRequestExA(handle_.get(), &buffers, nullptr, 0, 0) == FALSE) return lastError();
      for (std::size_t done = 0; done < body.size();) {
        DWORD put = 0;
        const std::size_t piece = std::min(kChunk, body.size() - done);
        if (::InternetWriteFile(handle_.get(), body.data() + done, static_cast<DWORD>(piece),
                                &put) == FALSE) {
          return lastError();
        }
        if (put == 0) return kInternetConnectionAborted;
        done += put;
        counts.set(done, body.size());
      }
      silence_.begin();
      if (::HttpEndRequestA(handle_.get(), nullptr, 0, 0) != FALSE) return 0;
      // An answer to a challenge, or another address, means the same request once more.
      if (::GetLastError() != ERROR_INTERNET_FORCE_RETRY) return silence_.named(lastError());
    }
    return kHttpRedirectFailed;
  }

  // Takes the answer; 0 or the error when there is none.  Octets of its body are counted, if
  // wanted.
  unsigned receive(ExchangeCounts* counts) {
    DWORD status = 0;
    DWORD octets = sizeof status;
    if (::HttpQueryInfoA(handle_.get(), HTTP_QUERY_STATUS_CODE | HTTP_QUERY_FLAG_NUMBER, &status,
                         &octets, nullptr) == FALSE) {
      return kHttpInvalidServerResponse;
    }
    if (status == 0) return silence_.named(kInternetConnectionAborted);  // there is no answer
    queryHeaders();
    const std::optional<std::uint64_t> announced = announcedOctets();
    const unsigned error = readBody(announced.value_or(0), counts);
    if (error == kInternetTimeout) return error;
    complete_ = error == 0 && !lines_.empty() && (!announced || *announced == body_.size());
    status_ = status;
    return 0;
  }

  void queryHeaders() {
    std::string block(kFirstHeaderRoom, '\0');
    auto octets = static_cast<DWORD>(block.size());
    BOOL known =
        ::HttpQueryInfoA(handle_.get(), HTTP_QUERY_RAW_HEADERS, block.data(), &octets, nullptr);
    if (known == FALSE && ::GetLastError() == ERROR_INSUFFICIENT_BUFFER &&
        octets <= kMaxReplyHeaderOctets) {
      block.resize(octets);
      known =
          ::HttpQueryInfoA(handle_.get(), HTTP_QUERY_RAW_HEADERS, block.data(), &octets, nullptr);
    }
    if (known == FALSE) return;
    for (std::size_t at = 0; at < block.size() && block[at] != '\0';) {
      lines_.emplace_back(block.c_str() + at);
      at += lines_.back().size() + 1;
    }
  }

  // The size that the answer states for its body; none when it comes in pieces of their own sizes.
  [[nodiscard]] std::optional<std::uint64_t> announcedOctets() const {
    constexpr std::string_view kLength = "content-length:";
    std::optional<std::uint64_t> octets;
    for (const std::string& line : lines_) {
      if (startsWithIgnoringCase(line, "transfer-encoding:")) return std::nullopt;
      if (!startsWithIgnoringCase(line, kLength)) continue;
      std::string_view text = std::string_view(line).substr(kLength.size());
      text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
      std::uint64_t number = 0;
      const auto parsed = std::from_chars(text.data(), text.data() + text.size(), number);
      // No body has the size that is no number.
      octets = parsed.ec == std::errc{} ? number : std::numeric_limits<std::uint64_t>::max();
    }
    return octets;
  }

  // 0 at the end of the body; the error when it broke off, is too large or goes on too slowly.
  unsigned readBody(std::uint64_t announced, ExchangeCounts* counts) {
    for (;;) {
      silence_.begin();
      DWORD ready = 0;
      if (::InternetQueryDataAvailable(handle_.get(), &ready, 0, 0) == FALSE) {
        return silence_.named(lastError());
      }
      const std::size_t before = body_.size();
      if (ready > kMaxReplyOctets - before) return kHttpInvalidServerResponse;
      body_.resize(before + ready);
      DWORD got = 0;
      const BOOL read =
          ready == 0 || ::InternetReadFile(handle_.get(), body_.data() + before, ready, &got);
      const unsigned error = read == FALSE ? lastError() : 0;
      body_.resize(before + got);
      if (error != 0) return silence_.named(error);
      if (got == 0) return silence_.tooLong() ? kInternetTimeout : 0;
      if (counts != nullptr) counts->set(body_.size(), announced);
    }
  }

  InternetHandle handle_;
  const Method method_;
  const UrlParts server_;
  const bool usable_;
  Silence silence_;
  const unsigned id_ = newHandleNumber();
  unsigned status_ = 0;
  std::vector<std::string> lines_;
  std::vector<std::uint8_t> body_;
  std::size_t readOctets_ = 0;
  bool complete_ = false;
};

class WinInetConnection final : public HttpConnection {
 public:
  WinInetConnection(InternetHandle handle, UrlParts server, const SessionState& session)
      : handle_(std::move(handle)), server_(std::move(server)), session_(session) {}

  unsigned id() const noexcept override { return id_; }
  std::unique_ptr<HttpRequest> openPost(const std::string& path,
                                        const std::string& acceptType) override {
    return open("POST", Method::post, path, acceptType);
  }
  std::unique_ptr<HttpRequest> openGet(const std::string& path,
                                       const std::string& acceptType) override {
    return open("GET", Method::get, path, acceptType);
  }

 private:
  std::unique_ptr<HttpRequest> open(const char* verb, Method method, const std::string& path,
                                    const std::string& acceptType) const {
    const char* acceptTypes[] = {acceptType.c_str(), nullptr};
    const DWORD flags = kRequestFlags | (server_.secure ? INTERNET_FLAG_SECURE : 0);
    InternetHandle request(::HttpOpenRequestA(handle_.get(), verb, path.c_str(), nullptr, nullptr,
                                              acceptTypes, flags, 0));
    if (!request) return nullptr;
    setTimeouts(request.get(), session_.stallMilliseconds);
    return std::make_unique<WinInetRequest>(std::move(request), method, server_, session_);
  }

  const InternetHandle handle_;
  const UrlParts server_;
  const SessionState& session_;
  const unsigned id_ = newHandleNumber();
};

class WinInetSession final : public HttpSession {
 public:
  explicit WinInetSession(SessionState state) : state_(std::move(state)) {}

  unsigned id() const noexcept override { return id_; }
  std::unique_ptr<HttpConnection> connect(const UrlParts& server, const std::string& user,
                                          const std::string& password) override {
    InternetHandle connection(
        ::InternetConnectA(state_.handle.get(), bracketed(server.host).c_str(), server.port,
                           user.c_str(), password.c_str(), INTERNET_SERVICE_HTTP, 0, 0));
    if (!connection) return nullptr;
    return std::make_unique<WinInetConnection>(std::move(connection), server, state_);
  }

 private:
  const SessionState state_;
  const unsigned id_ = newHandleNumber();
};

void setConnectedState(DWORD state, DWORD flags) noexcept {
  INTERNET_CONNECTED_INFO info{};
  info.dwConnectedState = state;
  info.dwFlags = flags;
  ::InternetSetOptionA(nullptr, INTERNET_OPTION_CONNECTED_STATE, &info, sizeof info);
}

}  // namespace

std::unique_ptr<HttpSession> HttpSession::open(const HttpSessionOptions& options) {
  // The component trusts the system's certificates and no others.
  if (!options.trustedCertificates.empty()) return nullptr;
  SessionState state;
  DWORD access = INTERNET_OPEN_TYPE_DIRECT;
  std::string proxy;
  if (!options.proxy.empty()) {
    access = INTERNET_OPEN_TYPE_PROXY;
    const std::optional<ProxyAddress> address = parseProxy(options.proxy);
    state.usable = address.has_value();
    proxy =
        address ? bracketed(address->host) + ":" + std::to_string(address->port) : options.proxy;
  }
  state.handle = InternetHandle(::InternetOpenA(options.agent.c_str(), access,
                                                options.proxy.empty() ? nullptr : proxy.c_str(),
                                                nullptr, INTERNET_FLAG_NO_CACHE_WRITE));
  if (!state.handle) return nullptr;
  state.stallMilliseconds =
      static_cast<DWORD>(std::chrono::milliseconds(options.stallLimit).count());
  setTimeouts(state.handle.get(), state.stallMilliseconds);
  return std::make_unique<WinInetSession>(std::move(state));
}

bool isOfflineByUser() {
  DWORD state = 0;
  DWORD octets = sizeof state;
  return ::InternetQueryOptionA(nullptr, INTERNET_OPTION_CONNECTED_STATE, &state, &octets) !=
             FALSE &&
         (state & INTERNET_STATE_DISCONNECTED_BY_USER) != 0;
}

void setOnline() {
  setConnectedState(INTERNET_STATE_CONNECTED, 0);
}

void restoreOfflineByUser() {
  setConnectedState(INTERNET_STATE_DISCONNECTED_BY_USER, ISO_FORCE_DISCONNECTED);
}

}  // namespace mmsbrix::platform
