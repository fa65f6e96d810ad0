/// @file
/// WapGateway: the gateway's side of WAP 1.x over UDP, small and on purpose fallible.  It answers
/// session connects and hands every method to a function of the host, for trying out clients and
/// for testing them; it forwards nothing by itself.  [WAP-230; WAP-224; WAP-259]
#ifndef MMSBRIX_TRANSPORT_WAP_GATEWAY_H
#define MMSBRIX_TRANSPORT_WAP_GATEWAY_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "../export.h"
#include "../wsp/header_block.h"

namespace mmsbrix {

/// A method that a client asks for.
struct WapRequest {
  std::uint32_t id = 0;       ///< names the method, never used twice
  std::uint32_t session = 0;  ///< that it came in
  std::string peer;           ///< "192.0.2.1:40000"
  std::uint8_t code = 0;      ///< of the method on the wire, 0x60 for POST
  std::string method;         ///< "POST", or "0x51" for one without a name
  std::string uri;            ///< as it came
  std::string contentType;    ///< of the body; "" where there is none or it cannot be read
  /// Those of the request, then those of its session that it has none of by the same name.
  std::vector<HeaderField> headers;
  std::vector<std::uint8_t> body;  ///< as it came, "" for a method without one
};

/// What becomes of it.
struct WapResponse {
  unsigned status = 200;               ///< as in HTTP; one without a code in WSP goes out as 500
  std::string contentType{};           ///< "" goes out as application/octet-stream
  std::vector<HeaderField> headers{};  ///< beside the content type
  std::vector<std::uint8_t> body{};    ///< may be empty
  std::chrono::milliseconds delay{0};  ///< before the answer
  /// Other than 0: the method is aborted with this reason, 0xE0 to 0xEE, and not answered.
  std::uint8_t abortReason = 0;
};

/// What is pushed to a client.
struct WapPush {
  std::string contentType{};           ///< "application/vnd.wap.mms-message" for a notification
  std::vector<HeaderField> headers{};  ///< beside the content type
  std::vector<std::uint8_t> body{};    ///< may be empty
};

/// The most that a session is granted; it gets less where its client asks for less.
struct WapLimits {
  std::uint32_t clientSduOctets = 0;        ///< largest answer or push, 0 for any
  std::uint32_t serverSduOctets = 1 << 20;  ///< largest request, 0 for any
  std::uint8_t methods = 8;                 ///< without an answer at a time
  std::uint8_t pushes = 8;                  ///< confirmed ones on their way at a time
  bool confirmedPush = true;                ///< pushes may ask for a confirmation
  bool push = true;                         ///< pushes may be sent
  bool resume = true;                       ///< the session may be suspended and resumed
  bool acknowledgementHeaders = true;       ///< acknowledgements may carry headers
};

/// A datagram on its way, for a trace; the octets live as long as the call.
struct WapDatagram {
  bool sent = false;                     ///< by the gateway, else received
  bool dropped = false;                  ///< on purpose
  std::uint64_t number = 0;              ///< counts from 1, in each direction of its own
  const std::uint8_t* octets = nullptr;  ///< the WTP or WSP PDUs in it
  std::size_t size = 0;                  ///< octets
  std::string peer;                      ///< "192.0.2.1:40000"
};

/// Where a gateway listens, what it calls, and what it does wrong.
struct WapGatewayOptions {
  std::string host = "127.0.0.1";  ///< address to listen on
  std::uint16_t port = 0;          ///< 0 takes any that is free

  /// Called for each method on the gateway's thread, one call at a time; other clients wait
  /// meanwhile.  Without it, or when it throws, the answer is 500.  It must not stop the gateway.
  std::function<WapResponse(const WapRequest&)> onRequest{};
  /// Called when a method is over: its client has acknowledged the answer, or either side has
  /// aborted it.  On the same thread.
  std::function<void(std::uint32_t id, bool answered)> onMethodEnd{};
  /// Called for each datagram, on the same thread.
  std::function<void(const WapDatagram&)> onDatagram{};

  WapLimits limits{};                         ///< of every session
  std::vector<HeaderField> sessionHeaders{};  ///< sent when a session is accepted

  // One of these keeps sessions from coming about:
  unsigned refuseStatus = 0;       ///< connects are refused with this status, as in HTTP; 0 for no
  std::uint8_t abortReason = 0;    ///< connects are aborted with this reason, 0xE0 to 0xEE
  std::string redirect{};          ///< "HOST:PORT" that connects are sent to; HOST is an address
  bool redirectPermanent = false;  ///< clients may remember it

  unsigned lossPercent = 0;                   ///< of the datagrams of both directions are dropped
  std::uint32_t lossSeed = 1;                 ///< the same seed drops the same ones
  std::vector<std::uint64_t> dropReceived{};  ///< numbers of datagrams that are dropped as well
  std::vector<std::uint64_t> dropSent{};      ///< the same for those that it sends

  std::size_t segmentOctets = 1400;        ///< user data in one datagram
  std::size_t maxRequestOctets = 1 << 20;  ///< a larger one is aborted while it arrives
  bool segmentation = true;                ///< messages may take several datagrams
  /// Before what has no acknowledgement is sent again; 0 for the times of the standard, 3 to 7 s.
  std::chrono::milliseconds retryInterval{0};
};

/// Counts since the start.
struct WapGatewayCounters {
  std::uint64_t datagramsReceived = 0;  ///< the dropped ones included, here and below
  std::uint64_t datagramsSent = 0;      ///< repetitions included
  std::uint64_t datagramsDropped = 0;   ///< in both directions
  std::uint64_t connects = 0;           ///< asked for
  std::uint64_t sessions = 0;           ///< accepted
  std::uint64_t disconnects = 0;        ///< sessions that ended, by whomever
  std::uint64_t suspends = 0;           ///< sessions that their clients suspended
  std::uint64_t resumes = 0;            ///< and resumed
  std::uint64_t methods = 0;            ///< handed to onRequest
  std::uint64_t methodsAnswered = 0;    ///< whose client acknowledged the answer
  std::uint64_t methodsAborted = 0;     ///< by either side
  std::uint64_t pushesConfirmed = 0;    ///< by their client
  std::uint64_t pushesAborted = 0;      ///< confirmed pushes that were not
};

/// A gateway that runs from `start` until it is destroyed.  Its functions may be called from any
/// thread.
class MMSBRIX_API WapGateway {
 public:
  /// Starts to listen on a thread of its own.  Null on failure, and `error` says why.
  static std::unique_ptr<WapGateway> start(WapGatewayOptions options, std::string& error);
  WapGateway(const WapGateway&) = delete;
  WapGateway& operator=(const WapGateway&) = delete;
  /// Stops without a word to the clients; no function of the host is called any more.
  ~WapGateway();

  /// The UDP port that it listens on.
  [[nodiscard]] std::uint16_t port() const noexcept;
  /// "host:port" that clients connect to, an IPv6 address in brackets.
  [[nodiscard]] std::string address() const;
  /// As they are now.
  [[nodiscard]] WapGatewayCounters counters() const;

  // These may be called from any thread, onRequest included.  They give "", or why nothing is sent.

  /// Pushes to a session, 0 for the one that was accepted last.  A confirmed push ends in one of
  /// the counters.
  std::string push(std::uint32_t session, const WapPush& push, bool confirmed);
  /// Pushes to "HOST:PORT" without a session, where a client listens (2948).
  std::string pushTo(const std::string& address, const WapPush& push);
  /// Ends a session, 0 for the one that was accepted last.
  std::string disconnect(std::uint32_t session);

 private:
  struct State;
  explicit WapGateway(std::unique_ptr<State> state) noexcept;
  std::unique_ptr<State> state_;
};

}  // namespace mmsbrix

#endif  // MMSBRIX_TRANSPORT_WAP_GATEWAY_H
