// A UDP socket for tests, which waits for what comes.
#ifndef MMSBRIX_TESTS_SUPPORT_UDP_SOCKET_H
#define MMSBRIX_TESTS_SUPPORT_UDP_SOCKET_H

#include <array>
#include <asio/buffer.hpp>
#include <asio/ip/udp.hpp>
#include <chrono>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "support/waiting.h"

namespace mmsbrix::test {

/// A UDP socket on 127.0.0.1.
class UdpSocket {
 public:
  UdpSocket() : socket_(waiting_.context(), at(0)), port_(socket_.local_endpoint().port()) {}

  [[nodiscard]] std::uint16_t port() const noexcept { return port_; }
  void send(std::uint16_t port, std::span<const std::uint8_t> octets) {
    std::error_code ignored;
    socket_.send_to(asio::buffer(octets.data(), octets.size()), at(port), 0, ignored);
  }
  /// The next datagram, nothing when none comes in time.
  std::optional<std::vector<std::uint8_t>> receive(std::chrono::milliseconds patience) {
    std::array<std::uint8_t, 65536> buffer;
    asio::ip::udp::endpoint from;
    const auto start = [&](auto done) {
      socket_.async_receive_from(asio::buffer(buffer), from, done);
    };
    const auto size = waiting_.run(socket_, start, patience);
    if (!size) return std::nullopt;
    return std::vector(buffer.begin(), buffer.begin() + static_cast<std::ptrdiff_t>(*size));
  }

 private:
  static asio::ip::udp::endpoint at(std::uint16_t port) {
    return {asio::ip::address_v4::loopback(), port};
  }

  Waiting waiting_;
  asio::ip::udp::socket socket_;
  std::uint16_t port_;
};

}  // namespace mmsbrix::test

#endif  // MMSBRIX_TESTS_SUPPORT_UDP_SOCKET_H
