/// @file
/// PushListener: hears pushes that come without a session, on UDP port 2948, as gateways and push
/// proxies send them to clients that they reach by IP.  [WAP-235 8.2; WAP-230 7.2]
#ifndef MMSBRIX_TRANSPORT_PUSH_LISTENER_H
#define MMSBRIX_TRANSPORT_PUSH_LISTENER_H

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "../export.h"
#include "../model/mmsg.h"
#include "../wsp/header_block.h"

namespace mmsbrix {

/// A push as it came.
struct Push {
  std::string from;                  ///< "10.1.2.3:9200"
  std::string contentType;           ///< of the body, without parameters
  std::vector<HeaderField> headers;  ///< the others
  std::vector<std::uint8_t> body;    ///< as it came
  /// The message when the body is an m-notification-ind, else null; it lives as long as the call.
  const CMMsg* notification = nullptr;
};

/// Listens from Start to Stop.  One object, one thread at a time.
class MMSBRIX_API PushListener {
 public:
  /// The registered port of connectionless pushes.
  static constexpr std::uint16_t kDefaultPort = 2948;
  /// Called on the WAP stack's thread, one push at a time.  It must not stop the listener; what it
  /// throws is logged.
  using Handler = std::function<void(const Push& push)>;

  PushListener();
  PushListener(const PushListener&) = delete;
  PushListener& operator=(const PushListener&) = delete;
  /// Stops.
  ~PushListener();

  /// Listens at a local IPv4 or IPv6 address, empty for all IPv4 ones, and a UDP port, 0 for a free
  /// one.  A push that comes twice within a minute is handed over once.  False, with the reason in
  /// GetFailureDetail, when the port cannot be had.
  bool Start(const char* address, unsigned port, Handler handler);
  /// The handler is not called any more when this has returned.
  void Stop();
  /// The port that Start bound, 0 when it does not listen.
  [[nodiscard]] std::uint16_t GetPort() const noexcept;
  /// Why the last Start failed, in words; "" after success.  Valid until the next one.
  [[nodiscard]] const char* GetFailureDetail() const noexcept;

 private:
  struct Impl;
  std::shared_ptr<Impl> impl_;
  std::string detail_;
};

}  // namespace mmsbrix

#endif  // MMSBRIX_TRANSPORT_PUSH_LISTENER_H
