// WDP over UDP: where a port lives, how a gateway's name becomes an address, and the socket of one
// local port.  On a bearer that routes IP a WDP datagram is a UDP datagram.  [WAP-259 5.3, 6.4]
#ifndef MMSBRIX_WAPSTACK_WDPSOCK_H
#define MMSBRIX_WAPSTACK_WDPSOCK_H

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include "wapstack/wdp_address.h"
#include "wsp/octets.h"

namespace asio {
class io_context;
}

namespace mmsbrix {

class DatagramInput;

inline constexpr std::uint16_t kPushPort = 2948;            ///< where clients hear pushes
inline constexpr std::uint16_t kConnectionlessPort = 9200;  ///< of a gateway, without sessions
inline constexpr std::uint16_t kSessionPort = 9201;         ///< of a gateway, sessions over WTP

/// The type of a registered port, which is its number; 0 for any other.  [WAP-259 B]
[[nodiscard]] std::uint16_t portType(std::uint16_t port) noexcept;

/// Finds the address of "HOST:PORT", where HOST is a name, an IPv4 address or an IPv6 address with
/// or without brackets.  May ask the name service and then blocks.  Nothing, with `error` set, when
/// there is none.
[[nodiscard]] std::optional<WdpAddress> resolveAddress(std::string_view hostAndPort,
                                                       std::error_code& error);

/// How the address of a client port is chosen.
enum class LocalAddressChoice : std::uint8_t {
  any = 0,
  byRoute = 1,  ///< the one from which the system routes to the peer
};
/// The local address for a port towards `peer`, its port 0.  Nothing when no route leads there.
[[nodiscard]] std::optional<WdpAddress> selectLocalIPaddress(LocalAddressChoice choice,
                                                             const WdpAddress& peer);

/// The UDP socket of one local port.  All calls from the thread that runs the context, or before it
/// runs.  Nothing is delivered after close() or the destructor.
class WdpSocket {
 public:
  using Receiver = std::function<void(const WdpAddress& peer, Octets datagram)>;

  explicit WdpSocket(asio::io_context& context);
  WdpSocket(const WdpSocket&) = delete;
  WdpSocket& operator=(const WdpSocket&) = delete;
  ~WdpSocket();

  /// Binds to an address; port 0 takes a free one.
  std::error_code open(const WdpAddress& local);
  /// Hands every datagram from now on to `receiver`.
  void receive(Receiver receiver);
  /// Never waits: a datagram that the system has no room for is lost, as any other may be.
  std::error_code send(const WdpAddress& peer, Octets datagram);
  void close() noexcept;
  /// The address that open() bound.
  [[nodiscard]] const WdpAddress& local() const noexcept { return local_; }

 private:
  std::shared_ptr<DatagramInput> input_;
  WdpAddress local_;
};

}  // namespace mmsbrix

#endif  // MMSBRIX_WAPSTACK_WDPSOCK_H
