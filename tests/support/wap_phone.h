// A phone for tests: the stack's client over a UDP socket on loopback, which waits for what comes.
#ifndef MMSBRIX_TESTS_SUPPORT_WAP_PHONE_H
#define MMSBRIX_TESTS_SUPPORT_WAP_PHONE_H

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "support/udp_socket.h"
#include "wapstack/wsp_client.h"

namespace mmsbrix::test {

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
