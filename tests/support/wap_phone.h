// A phone for tests: the stack's client over a UDP socket on loopback, which waits for what comes.
#ifndef MMSBRIX_TESTS_SUPPORT_WAP_PHONE_H
#define MMSBRIX_TESTS_SUPPORT_WAP_PHONE_H

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "wapstack/wsp_client.h"

namespace mmsbrix::test {

/// A UDP socket on 127.0.0.1.
class UdpSocket {
 public:
  UdpSocket() : descriptor_(::socket(AF_INET, SOCK_DGRAM, 0)) {
    sockaddr_in local = at(0);
    ::bind(descriptor_, reinterpret_cast<sockaddr*>(&local), sizeof local);
    socklen_t size = sizeof local;
    ::getsockname(descriptor_, reinterpret_cast<sockaddr*>(&local), &size);
    port_ = ntohs(local.sin_port);
  }
  UdpSocket(const UdpSocket&) = delete;
  UdpSocket& operator=(const UdpSocket&) = delete;
  ~UdpSocket() { ::close(descriptor_); }

  [[nodiscard]] std::uint16_t port() const noexcept { return port_; }
  void send(std::uint16_t port, Octets octets) const {
    const sockaddr_in to = at(port);
    ::sendto(descriptor_, octets.data(), octets.size(), 0, reinterpret_cast<const sockaddr*>(&to),
             sizeof to);
  }
  /// The next datagram, nothing when none comes in time.
  std::optional<std::vector<std::uint8_t>> receive(std::chrono::milliseconds patience) {
    pollfd readable{descriptor_, POLLIN, 0};
    if (::poll(&readable, 1, static_cast<int>(patience.count())) <= 0) return std::nullopt;
    std::array<std::uint8_t, 65536> buffer;
    const ssize_t size = ::recv(descriptor_, buffer.data(), buffer.size(), 0);
    if (size < 0) return std::nullopt;
    return std::vector(buffer.begin(), buffer.begin() + size);
  }

 private:
  static sockaddr_in at(std::uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    return address;
  }

  int descriptor_;
  std::uint16_t port_ = 0;
};

class WapPhone {
 public:
  using Clock = std::chrono::steady_clock;
  using Kind = session::Event::Kind;

  /// `server` is the gateway's port.
  explicit WapPhone(std::uint16_t server) : client_(settings(), 1) {
    server_.octets = {127, 0, 0, 1};
    server_.port = server;
  }

  void connect(const session::Capabilities& proposed, const std::vector<std::uint8_t>& headers) {
    client_.connect(server_, proposed, headers, Clock::now());
  }
  session::Client& client() noexcept { return client_; }
  [[nodiscard]] std::uint16_t port() const noexcept { return socket_.port(); }
  session::Refusal post(session::Id id, const std::string& uri,
                        const std::vector<std::uint8_t>& headers,
                        const std::vector<std::uint8_t>& body) {
    return client_.invokeMethod(id, 0x60, uri, headers, body, Clock::now());
  }

  /// The next event but those that only confirm, acknowledged where that is due; a disconnection
  /// with the code 0 when none comes within 20 seconds.
  session::Event wait() {
    const auto end = Clock::now() + std::chrono::seconds(20);
    for (;;) {
      while (auto event = client_.takeEvent()) {
        if (event->kind == Kind::methodInvokeConfirm) continue;
        if (event->kind == Kind::methodResultIndication) {
          client_.respondResult(event->id, {}, Clock::now());
        } else if (event->kind == Kind::confirmedPushIndication) {
          client_.respondPush(event->id, {}, Clock::now());
        }
        flush();
        return *event;
      }
      flush();
      auto until = end;
      if (const auto due = client_.deadline()) until = std::min(until, *due);
      const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - Clock::now());
      if (const auto octets = socket_.receive(std::max(left, std::chrono::milliseconds(0)))) {
        client_.receive(server_, *octets, Clock::now());
      }
      if (Clock::now() >= end) break;
      client_.onTimer(Clock::now());
    }
    session::Event silence;
    silence.kind = Kind::disconnectIndication;
    return silence;
  }
  void flush() {
    while (const auto datagram = client_.takeDatagram()) {
      socket_.send(datagram->peer.port, datagram->octets.written());
    }
  }

 private:
  static wtp::Settings settings() {
    wtp::Settings made;
    made.baseRetry = made.groupRetry = made.shortRetry = std::chrono::milliseconds(200);
    made.perKilooctet = std::chrono::milliseconds(0);
    made.nackDelay = std::chrono::milliseconds(50);
    return made;
  }

  UdpSocket socket_;
  session::Client client_;
  WdpAddress server_;
};

}  // namespace mmsbrix::test

#endif  // MMSBRIX_TESTS_SUPPORT_WAP_PHONE_H
