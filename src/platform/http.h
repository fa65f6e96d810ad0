// Seam: an HTTP client session in the steps of WinINet: open, connect, open a request, send it,
// read status, raw headers and body.  Errors are WinINet numbers on every platform.  Synchronous;
// one session is used by one thread at a time.
#ifndef MMSBRIX_PLATFORM_HTTP_H
#define MMSBRIX_PLATFORM_HTTP_H

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace mmsbrix::platform {

inline constexpr unsigned kErrorInvalidParameter = 87;
inline constexpr unsigned kErrorInsufficientBuffer = 122;
inline constexpr unsigned kErrorFileTooLarge = 223;
inline constexpr unsigned kInternetTimeout = 12002;
inline constexpr unsigned kInternetInternalError = 12004;
inline constexpr unsigned kInternetInvalidUrl = 12005;
inline constexpr unsigned kInternetUnrecognizedScheme = 12006;
inline constexpr unsigned kInternetNameNotResolved = 12007;
inline constexpr unsigned kInternetOperationCancelled = 12017;
inline constexpr unsigned kInternetCannotConnect = 12029;
inline constexpr unsigned kInternetConnectionAborted = 12030;
inline constexpr unsigned kInternetConnectionReset = 12031;
inline constexpr unsigned kInternetInvalidCertificate = 12045;
inline constexpr unsigned kHttpInvalidServerResponse = 12152;
inline constexpr unsigned kHttpRedirectFailed = 12156;
inline constexpr unsigned kInternetSecurityChannelError = 12157;

/// Largest reply body that is taken, in octets; a larger one ends the exchange as one cut short.
inline constexpr std::size_t kMaxReplyOctets = std::size_t{64} << 20;
/// An exchange on which no octet moves for so long, in either direction, ends with 12002; so does
/// an attempt to connect that takes longer.
inline constexpr std::chrono::seconds kStallLimit{60};

/// What an http or https URL is made of.
struct UrlParts {
  bool secure = false;
  std::string host;        ///< without brackets
  std::uint16_t port = 0;  ///< the scheme's own when the URL names none
  std::string path;        ///< path and query as they stand, at least "/"; no fragment
};
/// Splits a URL.  On failure nothing is returned and `error` is 87 for an empty text, 12006 without
/// a known scheme, 12005 for a malformed URL, 122 for a host or path of 256 characters or more.
/// User name and password in a URL are dropped.
std::optional<UrlParts> crackUrl(const std::string& url, unsigned& error);

/// Told how many octets of a request body are sent and how many there are, or for a GET how many of
/// the answer's body have come, 0 for an unknown total: when that changes, and about once a second
/// in between.  False cancels the exchange, as does an exception.
using SendProgress = std::function<bool(std::uint64_t sent, std::uint64_t total)>;

/// The next of the numbers by which a trace tells handles apart: small, and never an address.
[[nodiscard]] inline unsigned newHandleNumber() noexcept {
  static std::atomic<unsigned> last{0};
  return ++last;
}

/// One request on a connection.  Numbers returned by `id` are what the trace shows for a
/// handle.
class HttpRequest {
 public:
  virtual ~HttpRequest() = default;
  [[nodiscard]] virtual unsigned id() const noexcept = 0;
  /// Sends the request with `headers` (lines separated by "\n"; a Content-Length among them is that
  /// of `body`) and `body`, which must live until this returns.  0, or the WinINet error when no
  /// answer came; 12017 when `progress`, which may be empty, cancelled it.
  virtual unsigned send(const std::string& headers, std::span<const std::uint8_t> body,
                        const SendProgress& progress) = 0;
  /// The HTTP status number of the answer.
  [[nodiscard]] virtual unsigned status() const noexcept = 0;
  /// Status line and header lines, each without its line end; empty when there are none.
  [[nodiscard]] virtual std::vector<std::string> rawHeaders() const = 0;
  /// Body octets that can be read now without waiting for more; 0 at the end.
  [[nodiscard]] virtual std::size_t available() const noexcept = 0;
  /// Reads up to `buffer.size()` octets of the body; the octets read, 0 at the end, nothing on
  /// failure.
  virtual std::optional<std::size_t> read(std::span<std::uint8_t> buffer) = 0;
  /// False when header block or body came broken or cut short.
  [[nodiscard]] virtual bool complete() const noexcept = 0;
};

/// A server that requests go to; it need not be connected until a request is sent.
class HttpConnection {
 public:
  virtual ~HttpConnection() = default;
  [[nodiscard]] virtual unsigned id() const noexcept = 0;
  /// A POST request.  Null when it cannot be made.
  virtual std::unique_ptr<HttpRequest> openPost(const std::string& path,
                                                const std::string& acceptType) = 0;
  /// A GET request; it is sent with an empty body.  Null when it cannot be made.
  virtual std::unique_ptr<HttpRequest> openGet(const std::string& path,
                                               const std::string& acceptType) = 0;
};

/// How a session is set up.
struct HttpSessionOptions {
  std::string agent;  ///< of the User-Agent header
  /// "host:port", empty for a direct connection; nothing from the environment changes either.  An
  /// IPv6 address may stand without brackets, numbers of a dotted quad are decimal whatever zeros
  /// they begin with, port 0 is 80.
  std::string proxy;
  std::chrono::seconds stallLimit = kStallLimit;
  /// PEM file of the certificates to trust instead of the system's; empty for the system's.  Where
  /// the platform trusts no others, no session opens with one.
  std::string trustedCertificates = {};
};

/// A session with its proxy, agent name and kept connections.  It outlives its connections, which
/// outlive their requests.
class HttpSession {
 public:
  virtual ~HttpSession() = default;
  [[nodiscard]] virtual unsigned id() const noexcept = 0;
  /// Null when it cannot be made.  `user` and `password` answer a challenge of that server and are
  /// sent to no other.
  virtual std::unique_ptr<HttpConnection> connect(const UrlParts& server, const std::string& user,
                                                  const std::string& password) = 0;
  /// Null when the platform gives none.
  static std::unique_ptr<HttpSession> open(const HttpSessionOptions& options);
};

/// True when the user has put the platform's HTTP component into an offline mode.
bool isOfflineByUser();
void setOnline();
void restoreOfflineByUser();

}  // namespace mmsbrix::platform

#endif  // MMSBRIX_PLATFORM_HTTP_H
