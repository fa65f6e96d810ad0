// A stretch of network between a client and a server on loopback that loses, repeats and delays
// datagrams as it is told, and records what it saw.
#ifndef MMSBRIX_TESTS_SUPPORT_UDP_PATH_H
#define MMSBRIX_TESTS_SUPPORT_UDP_PATH_H

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace mmsbrix::test {

/// What happens to one datagram.
enum class Fate : std::uint8_t { arrives, lost, twice, late };

class UdpPath {
 public:
  struct Passed {
    bool up;  ///< from the client to the server
    Fate fate;
    std::string octets;
  };
  /// Decides on each datagram, in the order in which they come; called on one thread.
  using Decide = std::function<Fate(bool up, std::string_view octets)>;

  /// To `server` ("127.0.0.1") and its port; `late` datagrams follow the next one or 30 ms.
  UdpPath(const std::string& server, std::uint16_t port, Decide decide)
      : decide_(std::move(decide)), server_(addressOf(server, port)) {
    sockaddr_in local = addressOf("127.0.0.1", 0);
    near_ = bound(local);
    sockaddr_in any = addressOf("127.0.0.1", 0);
    far_ = bound(any);
    port_ = ntohs(local.sin_port);
    thread_ = std::thread([this] { run(); });
  }
  UdpPath(const UdpPath&) = delete;
  UdpPath& operator=(const UdpPath&) = delete;
  ~UdpPath() {
    stop_ = true;
    thread_.join();
    ::close(near_);
    ::close(far_);
  }

  /// Where the client sends to, on 127.0.0.1.
  [[nodiscard]] std::uint16_t port() const noexcept { return port_; }
  [[nodiscard]] std::vector<Passed> passed() {
    const std::lock_guard lock(mutex_);
    return passed_;
  }

 private:
  static sockaddr_in addressOf(const std::string& host, std::uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    ::inet_pton(AF_INET, host.c_str(), &address.sin_addr);
    return address;
  }
  static int bound(sockaddr_in& address) {
    const int socket = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const int room = 1 << 20;
    ::setsockopt(socket, SOL_SOCKET, SO_RCVBUF, &room, sizeof room);
    socklen_t size = sizeof address;
    if (::bind(socket, reinterpret_cast<sockaddr*>(&address), size) != 0) return -1;
    ::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size);
    return socket;
  }

  void run() {
    while (!stop_) {
      pollfd waiting[] = {{near_, POLLIN, 0}, {far_, POLLIN, 0}};
      const int ready = ::poll(waiting, 2, held_ ? 30 : 50);
      if (ready <= 0) release();
      if ((waiting[0].revents & POLLIN) != 0) pass(true);
      if ((waiting[1].revents & POLLIN) != 0) pass(false);
    }
  }
  void pass(bool up) {
    std::string octets(65536, '\0');
    sockaddr_in from{};
    socklen_t size = sizeof from;
    const auto got = ::recvfrom(up ? near_ : far_, octets.data(), octets.size(), 0,
                                reinterpret_cast<sockaddr*>(&from), &size);
    if (got < 0) return;
    octets.resize(static_cast<std::size_t>(got));
    if (up) client_ = from;
    const Fate fate = decide_ ? decide_(up, octets) : Fate::arrives;
    {
      const std::lock_guard lock(mutex_);
      passed_.push_back({up, fate, octets});
    }
    if (fate == Fate::late && !held_) {
      held_.emplace(up, octets);
      return;
    }
    if (fate != Fate::lost) send(up, octets);
    if (fate == Fate::twice) send(up, octets);
    release();
  }
  void release() {
    if (const auto held = std::exchange(held_, std::nullopt)) send(held->first, held->second);
  }
  void send(bool up, const std::string& octets) {
    const sockaddr_in& to = up ? server_ : client_;
    ::sendto(up ? far_ : near_, octets.data(), octets.size(), 0,
             reinterpret_cast<const sockaddr*>(&to), sizeof to);
  }

  const Decide decide_;
  const sockaddr_in server_;
  sockaddr_in client_{};
  int near_ = -1;
  int far_ = -1;
  std::uint16_t port_ = 0;
  std::optional<std::pair<bool, std::string>> held_;
  std::mutex mutex_;
  std::vector<Passed> passed_;
  std::atomic<bool> stop_{false};
  std::thread thread_;
};

}  // namespace mmsbrix::test

#endif  // MMSBRIX_TESTS_SUPPORT_UDP_PATH_H
