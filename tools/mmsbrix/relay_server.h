// RelayServer: an MMS relay for trying out and testing.  It takes messages by HTTP POST, as an
// RelayServer: an MMS relay for trying out and testing.  It takes messages by HTTP POST, as an
// origin server and as a proxy that answers by itself, or as a WAP gateway by WSP; it keeps them,
// and answers as it is told.  What was accepted can be fetched by GET from "/message/" and its
// message id.
#ifndef MMSBRIX_TOOLS_RELAY_SERVER_H
#define MMSBRIX_TOOLS_RELAY_SERVER_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace mmsbrix::tool {

/// What goes wrong on purpose with an answer.
enum class ReplyFault {
  none,
  broken,  ///< the PDU's octets are mangled
  cut,     ///< the connection closes before the announced end; over HTTP only
  closed,  ///< the connection closes without an answer; over WAP the method is aborted
};

/// One exchange, as it was answered.
struct RelayExchange {
  std::uint64_t number = 0;  ///< counts from 1
  std::string method;
  std::string target;  ///< as in the request line, without credentials
  std::string peer;    ///< address of the client
  std::string userAgent;
  bool asProxy = false;  ///< the target was a whole URL
  bool overWap = false;
  unsigned httpStatus = 0;
  std::uint8_t responseStatus = 0;  ///< of the m-send-conf, 0 when there was none
  std::string text;                 ///< response text, or why there was no m-send-conf
  std::string messageId;            ///< of an accepted message
  std::string file;                 ///< where the message was stored, empty for nowhere
  std::string notification;         ///< where its notification was written, empty for nowhere
  std::size_t octets = 0;           ///< of the request body
  std::vector<std::uint8_t> pdu;    ///< the request body, when it was an MMS PDU
};

/// One line for people about an exchange; no credentials, no control characters.
[[nodiscard]] std::string describe(const RelayExchange& exchange);

/// The WAP gateway of a relay.
struct RelayWap {
  std::string host = "127.0.0.1";  ///< address to listen on
  std::uint16_t port = 0;          ///< UDP; 0 takes any that is free
  std::string redirect{};          ///< "HOST:PORT" that every session is sent to; empty for none
  bool redirectPermanent = false;
  unsigned refuseStatus = 0;     ///< as in HTTP: sessions are refused with it; 0 for none
  std::uint8_t abortReason = 0;  ///< 0xE0 to 0xEE: sessions are aborted with it
  unsigned lossPercent = 0;      ///< of the datagrams both ways
  std::uint32_t lossSeed = 1;
};

struct RelayOptions {
  bool http = true;                ///< listen for HTTP
  std::optional<RelayWap> wap{};   ///< listen as a WAP gateway
  std::string host = "127.0.0.1";  ///< address to listen on for HTTP
  std::uint16_t port = 0;          ///< 0 takes any that is free
  std::string storeDirectory{};    ///< every valid message is written here; empty for nowhere
  /// An m-notification-ind for every accepted message is written here; empty for nowhere.
  std::string notifyDirectory{};
  std::optional<std::uint8_t> responseStatus{};  ///< in answer to a valid message; Ok by itself
  std::string responseText{};                    ///< goes with it, UTF-8
  unsigned httpStatus = 200;                     ///< another than 200 carries no PDU
  std::string contentType = "application/vnd.wap.mms-message";  ///< of the answer
  std::chrono::milliseconds delay{0};                           ///< before the answer
  std::size_t slowOctets = 0;  ///< octets of an HTTP body per interval, 0 for all at once
  std::chrono::milliseconds slowInterval{100};
  bool chunked = false;  ///< an HTTP body goes out in chunks, without a length
  ReplyFault fault = ReplyFault::none;
  std::string credentials{};     ///< "user:password" that requests must carry; empty for none
  std::string tlsCertificate{};  ///< PEM text; with it and its key the relay speaks https only
  std::string tlsKey{};          ///< PEM text
  std::size_t maxBodyOctets = std::size_t{64} << 20;  ///< a larger request gets 413
  /// How many `exchanges` hands out, and how many messages can be fetched; the last ones.
  std::size_t keptExchanges = 64;
  /// Called after each exchange, from a thread of the relay, one call at a time.  It must not stop
  /// the relay.
  std::function<void(const RelayExchange&)> onExchange{};
};

class RelayServer {
 public:
  /// Starts to listen.  Null on failure, and `error` says why.
  static std::unique_ptr<RelayServer> start(RelayOptions options, std::string& error);
  RelayServer(const RelayServer&) = delete;
  RelayServer& operator=(const RelayServer&) = delete;
  /// Stops: no connection is taken any more, those that wait end at once.
  ~RelayServer();

  [[nodiscard]] std::uint16_t port() const noexcept;
  /// "host:port" that HTTP clients connect to, an IPv6 address in brackets.
  [[nodiscard]] std::string address() const;
  /// The last exchanges that were answered, oldest first.
  [[nodiscard]] std::vector<RelayExchange> exchanges() const;
  /// "host:port" of the WAP gateway; "" without one.
  [[nodiscard]] std::string wapAddress() const;
  /// HTTP connections taken since the start.
  [[nodiscard]] std::uint64_t connectionCount() const noexcept;

 private:
  struct State;
  explicit RelayServer(std::unique_ptr<State> state) noexcept;
  std::unique_ptr<State> state_;
};

}  // namespace mmsbrix::tool

#endif  // MMSBRIX_TOOLS_RELAY_SERVER_H
