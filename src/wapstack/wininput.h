// Datagram input: one receive is outstanding while a socket is open, whatever came of the last.
#ifndef MMSBRIX_WAPSTACK_WININPUT_H
#define MMSBRIX_WAPSTACK_WININPUT_H

#include <array>
#include <asio/ip/udp.hpp>
#include <cstdint>
#include <functional>
#include <memory>

#include "wapstack/wdp_address.h"
#include "wsp/octets.h"

namespace mmsbrix {

class DatagramInput : public std::enable_shared_from_this<DatagramInput> {
 public:
  using Receiver = std::function<void(const WdpAddress& peer, Octets datagram)>;

  explicit DatagramInput(asio::io_context& context) : socket(context) {}

  /// Begins to receive.  The object lives on while a receive is outstanding.
  void start(Receiver receiver);
  /// Nothing is handed on from here on.
  void stop() noexcept;

  asio::ip::udp::socket socket;

 private:
  void receiveNext();

  /// The largest datagram that UDP can carry.
  std::array<std::uint8_t, 65535> buffer_;
  asio::ip::udp::endpoint from_;
  Receiver receiver_;
  // Not the socket's own state: whoever drops a stopped input may do so on another thread, while
  // the last handler still asks.
  bool stopped_ = false;
};

}  // namespace mmsbrix

#endif  // MMSBRIX_WAPSTACK_WININPUT_H
