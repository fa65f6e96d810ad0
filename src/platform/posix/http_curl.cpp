#include "platform/http.h"

#include <curl/curl.h>

#include <algorithm>
#include <charconv>
#include <string_view>
#include <utility>

#include "platform/ascii.h"
#include "platform/files.h"
#include "platform/posix/curl_url.h"

namespace mmsbrix::platform {
namespace {

/// Longest header block that is taken, in octets.
constexpr std::size_t kMaxReplyHeaderOctets = std::size_t{256} << 10;
constexpr long kMaxRedirects = 10;
constexpr unsigned kFirstFinalStatus = 200;
constexpr unsigned kUnauthorized = 401;

struct EasyCleanup {
  void operator()(CURL* handle) const noexcept { curl_easy_cleanup(handle); }
};
using EasyHandle = std::unique_ptr<CURL, EasyCleanup>;

/// The header lines handed to libcurl; owns them.
class HeaderList {
 public:
  HeaderList() = default;
  HeaderList(const HeaderList&) = delete;
  HeaderList& operator=(const HeaderList&) = delete;
  ~HeaderList() { curl_slist_free_all(list_); }

  void add(const std::string& line) {
    if (curl_slist* longer = curl_slist_append(list_, line.c_str())) {
      list_ = longer;
    } else {
      failed_ = true;
    }
  }
  [[nodiscard]] curl_slist* get() const noexcept { return list_; }
  [[nodiscard]] bool failed() const noexcept { return failed_; }

 private:
  curl_slist* list_ = nullptr;
  bool failed_ = false;
};

/// Sets options of an easy handle; the first failure sticks.
class Options {
 public:
  explicit Options(CURL* handle) noexcept : handle_(handle) {}

  template <class Value>
  void set(CURLoption option, Value value) {
    const CURLcode code = curl_easy_setopt(handle_, option, value);
    if (first_ == CURLE_OK) first_ = code;
  }
  [[nodiscard]] CURLcode result() const noexcept { return first_; }

 private:
  CURL* handle_;
  CURLcode first_ = CURLE_OK;
};

template <class Value>
Value info(CURL* handle, CURLINFO what) {
  Value value{};
  curl_easy_getinfo(handle, what, &value);
  return value;
}

unsigned internetError(CURLcode code) noexcept {
  switch (code) {
    case CURLE_COULDNT_RESOLVE_PROXY:
    case CURLE_COULDNT_RESOLVE_HOST:
      return kInternetNameNotResolved;
    case CURLE_COULDNT_CONNECT:
      return kInternetCannotConnect;
    case CURLE_OPERATION_TIMEDOUT:
      return kInternetTimeout;
    case CURLE_URL_MALFORMAT:
      return kInternetInvalidUrl;
    case CURLE_GOT_NOTHING:
    case CURLE_PARTIAL_FILE:
    case CURLE_SEND_ERROR:
      return kInternetConnectionAborted;
    case CURLE_RECV_ERROR:
      return kInternetConnectionReset;
    case CURLE_TOO_MANY_REDIRECTS:
      return kHttpRedirectFailed;
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_ISSUER_ERROR:
      return kInternetInvalidCertificate;
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_SSL_ENGINE_NOTFOUND:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CIPHER:
    case CURLE_SSL_CACERT_BADFILE:
      return kInternetSecurityChannelError;
    case CURLE_ABORTED_BY_CALLBACK:
      return kInternetOperationCancelled;
    case CURLE_OUT_OF_MEMORY:
      return kErrorNotEnoughMemory;
    case CURLE_OK:                    // an answer without a whole status line
    case CURLE_UNSUPPORTED_PROTOCOL:  // octets that are no HTTP answer
    case CURLE_WEIRD_SERVER_REPLY:
    case CURLE_WRITE_ERROR:
      return kHttpInvalidServerResponse;
    default:
      return kInternetInternalError;
  }
}

/// Collects one answer: the last one of an exchange, since each status line begins anew.
class Reply {
 public:
  [[nodiscard]] unsigned status() const noexcept { return status_; }
  [[nodiscard]] bool hasFinalStatus() const noexcept { return status_ >= kFirstFinalStatus; }
  [[nodiscard]] bool headersEnded() const noexcept { return headersEnded_; }
  /// The answer sends elsewhere, so what goes wrong from here on is not its own.
  [[nodiscard]] bool redirects() const noexcept { return redirects_; }
  [[nodiscard]] const std::vector<std::string>& lines() const noexcept { return lines_; }
  [[nodiscard]] const std::vector<std::uint8_t>& body() const noexcept { return body_; }

  /// A gateway refused the way to the server with this status; there is nothing else of it.
  void setRefusedByProxy(unsigned status) {
    *this = Reply();
    status_ = status;
  }

  /// False ends the exchange.
  bool addHeaderLine(std::string_view line) {
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.remove_suffix(1);
    if ((lines_.empty() || headersEnded_) && line.starts_with("HTTP/")) {
      *this = Reply();
      const std::size_t space = std::min(line.find(' '), line.size() - 1);
      std::from_chars(line.data() + space + 1, line.data() + line.size(), status_);
    } else if (headersEnded_) {
      return true;  // a trailer behind a chunked body
    }
    if (line.empty()) {
      headersEnded_ = true;
      redirects_ = status_ >= 300 && status_ < 400 && hasLocation();
      return true;
    }
    headerOctets_ += line.size();
    if (headerOctets_ > kMaxReplyHeaderOctets) return false;
    if (const bool folded = line.front() == ' ' || line.front() == '\t';
        folded && !lines_.empty()) {
      // Tolerance: old servers fold long values. [RFC 9112 5.2]
      lines_.back().append(" ").append(line.substr(line.find_first_not_of(" \t")));
    } else {
      lines_.emplace_back(line);
    }
    return true;
  }

  bool addBody(std::span<const std::uint8_t> octets) {
    if (octets.size() > kMaxReplyOctets - body_.size()) return false;
    body_.insert(body_.end(), octets.begin(), octets.end());
    return true;
  }

 private:
  [[nodiscard]] bool hasLocation() const noexcept {
    return std::any_of(lines_.begin(), lines_.end(), [](const std::string& line) {
      return startsWithIgnoringCase(line, "location:");
    });
  }

  unsigned status_ = 0;
  bool headersEnded_ = false;
  bool redirects_ = false;
  std::size_t headerOctets_ = 0;
  std::vector<std::string> lines_;
  std::vector<std::uint8_t> body_;
};

/// The proxy and the rest of a session, shared by its requests.
struct SessionState {
  EasyHandle easy;
  std::string agent;
  std::string proxyUrl;  ///< empty for a direct connection
  std::chrono::seconds stallLimit;
  std::string trustedCertificates;  ///< PEM file; empty for the system's
};

/// The server of a connection with the credentials that answer its challenges.
struct Server {
  UrlParts url;
  std::string user;
  std::string password;
};

enum class Method { post, get };

class CurlRequest final : public HttpRequest {
 public:
  CurlRequest(const SessionState& session, Server server, Method method, std::string acceptType)
      : session_(session),
        server_(std::move(server)),
        method_(method),
        acceptType_(std::move(acceptType)) {}

  unsigned id() const noexcept override { return id_; }
  unsigned status() const noexcept override { return reply_.status(); }
  std::vector<std::string> rawHeaders() const override { return reply_.lines(); }
  bool complete() const noexcept override { return complete_; }
  std::size_t available() const noexcept override { return reply_.body().size() - readOctets_; }

  std::optional<std::size_t> read(std::span<std::uint8_t> buffer) override {
    const std::size_t taken = std::min(buffer.size(), available());
    std::copy_n(reply_.body().data() + readOctets_, taken, buffer.data());
    readOctets_ += taken;
    return taken;
  }

  unsigned send(const std::string& headers, std::span<const std::uint8_t> body,
                const SendProgress& progress) override {
    CURL* const easy = session_.easy.get();
    reply_ = Reply();
    readOctets_ = 0;
    complete_ = false;
    progress_ = &progress;
    bodyOctets_ = body.size();

    HeaderList given;
    HeaderList withoutAuthorization;
    const bool authorized = splitHeaders(headers, given, withoutAuthorization);
    if (given.failed() || withoutAuthorization.failed()) return kErrorNotEnoughMemory;

    Options options = configure(body);
    options.set(CURLOPT_HTTPHEADER, given.get());
    CURLcode code = options.result();
    if (code == CURLE_OK) code = curl_easy_perform(easy);
    if (const long scheme = answerableChallenge(code, authorized); scheme != CURLAUTH_NONE) {
      options.set(CURLOPT_HTTPHEADER, withoutAuthorization.get());
      options.set(CURLOPT_HTTPAUTH, scheme);
      options.set(CURLOPT_USERNAME, server_.user.c_str());
      options.set(CURLOPT_PASSWORD, server_.password.c_str());
      code = options.result();
      if (code == CURLE_OK) code = curl_easy_perform(easy);
    }
    return conclude(code);
  }

 private:
  // Distributes header lines over the list to send first and the one that answers a challenge, with
  // what the request must not have switched off.  True when an Authorization header is given.
  bool splitHeaders(std::string_view headers, HeaderList& given, HeaderList& withoutAuthorization) {
    bool authorized = false;
    while (!headers.empty()) {
      const std::string_view line = headers.substr(0, headers.find('\n'));
      headers.remove_prefix(std::min(line.size() + 1, headers.size()));
      // libcurl states the body's own size, and none on a redirect that becomes a GET.
      if (line.empty() || startsWithIgnoringCase(line, "content-length:")) continue;
      const std::string text(line);
      given.add(text);
      if (startsWithIgnoringCase(line, "authorization:")) {
        authorized = true;
      } else {
        withoutAuthorization.add(text);
      }
    }
    for (HeaderList* list : {&given, &withoutAuthorization}) {
      list->add("Accept: " + acceptType_);
      list->add("Expect:");  // relays that know nothing of it would let the request wait
    }
    return authorized;
  }

  Options configure(std::span<const std::uint8_t> body) {
    CURL* const easy = session_.easy.get();
    curl_easy_reset(easy);  // options only: connections stay
    Options options(easy);
    options.set(CURLOPT_NOSIGNAL, 1L);
    options.set(CURLOPT_URL, urlOf(server_.url).c_str());
    options.set(CURLOPT_PATH_AS_IS, 1L);
    options.set(CURLOPT_PROTOCOLS_STR, "http,https");
    options.set(CURLOPT_HTTP_VERSION, long{CURL_HTTP_VERSION_1_1});
    options.set(CURLOPT_USERAGENT, session_.agent.c_str());
    // An empty text, other than none, keeps the environment's proxies out.
    options.set(CURLOPT_PROXY, session_.proxyUrl.c_str());
    options.set(CURLOPT_NOPROXY, "");
    if (!session_.trustedCertificates.empty()) {
      options.set(CURLOPT_CAINFO, session_.trustedCertificates.c_str());
    }
    options.set(CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
    options.set(CURLOPT_FOLLOWLOCATION, 1L);
    options.set(CURLOPT_MAXREDIRS, kMaxRedirects);
    options.set(CURLOPT_REDIR_PROTOCOLS_STR, "http,https");

    const auto stallSeconds = static_cast<long>(session_.stallLimit.count());
    options.set(CURLOPT_CONNECTTIMEOUT, stallSeconds);
    options.set(CURLOPT_LOW_SPEED_LIMIT, 1L);
    options.set(CURLOPT_LOW_SPEED_TIME, stallSeconds);

    if (method_ == Method::get) {
      options.set(CURLOPT_HTTPGET, 1L);
    } else {
      options.set(CURLOPT_POST, 1L);
      options.set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
      // Null would mean a read callback, not an empty body.
      options.set(CURLOPT_POSTFIELDS, body.empty() ? "" : static_cast<const void*>(body.data()));
    }

    options.set(CURLOPT_HEADERFUNCTION, &CurlRequest::onHeader);
    options.set(CURLOPT_HEADERDATA, this);
    options.set(CURLOPT_WRITEFUNCTION, &CurlRequest::onBody);
    options.set(CURLOPT_WRITEDATA, this);
    options.set(CURLOPT_NOPROGRESS, *progress_ ? 0L : 1L);
    options.set(CURLOPT_XFERINFOFUNCTION, &CurlRequest::onProgress);
    options.set(CURLOPT_XFERINFODATA, this);
    return options;
  }

  // The scheme that answers the server's challenge, CURLAUTH_NONE without a challenge or answer.
  // libcurl's own answering would repeat a given Authorization header beside the answer, and post
  // the whole message again with credentials that were just refused.
  [[nodiscard]] long answerableChallenge(CURLcode code, bool authorized) const {
    CURL* const easy = session_.easy.get();
    const bool challenged = code == CURLE_OK && reply_.status() == kUnauthorized &&
                            info<long>(easy, CURLINFO_REDIRECT_COUNT) == 0;
    if (!challenged || (server_.user.empty() && server_.password.empty())) return CURLAUTH_NONE;
    const auto offered = static_cast<unsigned long>(info<long>(easy, CURLINFO_HTTPAUTH_AVAIL));
    if ((offered & CURLAUTH_DIGEST) != 0) return static_cast<long>(CURLAUTH_DIGEST);
    if ((offered & CURLAUTH_BASIC) != 0 && !authorized) return static_cast<long>(CURLAUTH_BASIC);
    return CURLAUTH_NONE;
  }

  // What came of the exchange: 0 with a status to show, or the error.
  unsigned conclude(CURLcode code) {
    if (code == CURLE_ABORTED_BY_CALLBACK) return kInternetOperationCancelled;
    if (code == CURLE_OPERATION_TIMEDOUT) return kInternetTimeout;  // whatever had come by then
    if (code != CURLE_OK && reply_.redirects()) {
      return code == CURLE_UNSUPPORTED_PROTOCOL ? kHttpRedirectFailed : internetError(code);
    }
    const auto tunnelStatus =
        static_cast<unsigned>(info<long>(session_.easy.get(), CURLINFO_HTTP_CONNECTCODE));
    if (code != CURLE_OK && tunnelStatus >= 300) {
      reply_.setRefusedByProxy(tunnelStatus);
      return 0;
    }
    if (!reply_.hasFinalStatus()) return internetError(code);
    complete_ = code == CURLE_OK && reply_.headersEnded();
    return 0;
  }

  static std::size_t onHeader(char* data, std::size_t, std::size_t octets, void* self) noexcept {
    try {
      return static_cast<CurlRequest*>(self)->reply_.addHeaderLine({data, octets}) ? octets : 0;
    } catch (...) {  // out of memory: the exchange ends here
      return 0;
    }
  }

  static std::size_t onBody(char* data, std::size_t, std::size_t octets, void* self) noexcept {
    try {
      const auto* first = reinterpret_cast<const std::uint8_t*>(data);
      const bool taken = static_cast<CurlRequest*>(self)->reply_.addBody({first, octets});
      return taken ? octets : CURL_WRITEFUNC_ERROR;
    } catch (...) {
      return CURL_WRITEFUNC_ERROR;
    }
  }

  static int onProgress(void* self, curl_off_t announced, curl_off_t received, curl_off_t,
                        curl_off_t sent) noexcept {
    constexpr int kGoOn = 0;
    constexpr int kCancel = 1;
    constexpr curl_off_t kNone = 0;
    try {
      const auto* request = static_cast<CurlRequest*>(self);
      const bool get = request->method_ == Method::get;
      const auto octets = static_cast<std::uint64_t>(std::max(get ? received : sent, kNone));
      const auto total =
          get ? static_cast<std::uint64_t>(std::max(announced, kNone)) : request->bodyOctets_;
      return (*request->progress_)(octets, total) ? kGoOn : kCancel;
    } catch (...) {
      return kCancel;
    }
  }

  const SessionState& session_;
  const Server server_;
  const Method method_;
  const std::string acceptType_;
  const unsigned id_ = newHandleNumber();
  const SendProgress* progress_ = nullptr;
  std::uint64_t bodyOctets_ = 0;
  Reply reply_;
  std::size_t readOctets_ = 0;
  bool complete_ = false;
};

class CurlConnection final : public HttpConnection {
 public:
  CurlConnection(const SessionState& session, Server server)
      : session_(session), server_(std::move(server)) {}

  unsigned id() const noexcept override { return id_; }
  std::unique_ptr<HttpRequest> openPost(const std::string& path,
                                        const std::string& acceptType) override {
    return open(Method::post, path, acceptType);
  }
  std::unique_ptr<HttpRequest> openGet(const std::string& path,
                                       const std::string& acceptType) override {
    return open(Method::get, path, acceptType);
  }

 private:
  std::unique_ptr<HttpRequest> open(Method method, const std::string& path,
                                    const std::string& acceptType) const {
    Server target = server_;
    target.url.path = path;
    return std::make_unique<CurlRequest>(session_, std::move(target), method, acceptType);
  }

  const SessionState& session_;
  const Server server_;
  const unsigned id_ = newHandleNumber();
};

class CurlSession final : public HttpSession {
 public:
  explicit CurlSession(SessionState state) : state_(std::move(state)) {}

  unsigned id() const noexcept override { return id_; }
  std::unique_ptr<HttpConnection> connect(const UrlParts& server, const std::string& user,
                                          const std::string& password) override {
    return std::make_unique<CurlConnection>(state_, Server{server, user, password});
  }

 private:
  const SessionState state_;
  const unsigned id_ = newHandleNumber();
};

}  // namespace

std::unique_ptr<HttpSession> HttpSession::open(const HttpSessionOptions& options) {
  static const CURLcode kInitialized = curl_global_init(CURL_GLOBAL_DEFAULT);
  if (kInitialized != CURLE_OK) return nullptr;
  EasyHandle easy(curl_easy_init());
  if (easy == nullptr) return nullptr;
  return std::make_unique<CurlSession>(SessionState{std::move(easy), options.agent,
                                                    proxyUrlOf(options.proxy), options.stallLimit,
                                                    options.trustedCertificates});
}

// No such mode here.
bool isOfflineByUser() {
  return false;
}

void setOnline() {}

void restoreOfflineByUser() {}

}  // namespace mmsbrix::platform
