// A server on loopback that says exactly the octets it is told and records exactly the octets it
// gets, for what no real server does.
#ifndef MMSBRIX_TESTS_SUPPORT_RAW_SERVER_H
#define MMSBRIX_TESTS_SUPPORT_RAW_SERVER_H

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace mmsbrix::test {

/// What is said to a request.
struct RawReply {
  std::vector<std::string> pieces;     ///< one send each
  bool close = false;                  ///< closes the connection behind them
  std::chrono::milliseconds pause{0};  ///< before each piece but the first
};

/// A request, head and body as they came.
struct RawRequest {
  std::string head;  ///< with the empty line
  std::string body;
  int connection = 0;  ///< counts from 1

  [[nodiscard]] std::string line() const { return head.substr(0, head.find("\r\n")); }
  /// All values of a header, joined by ", "; "" without one.
  [[nodiscard]] std::string header(std::string name) const {
    const auto lower = [](std::string text) {
      for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
      return text;
    };
    std::string values;
    name = "\r\n" + lower(std::move(name)) + ":";
    const std::string folded = lower(head);
    for (std::size_t at = 0; (at = folded.find(name, at)) != std::string::npos; at += 2) {
      std::size_t from = at + name.size();
      while (head[from] == ' ') ++from;
      values += (values.empty() ? "" : ", ") + head.substr(from, head.find("\r\n", from) - from);
    }
    return values;
  }
};

class RawServer {
 public:
  using Answerer = std::function<RawReply(const RawRequest&)>;

  explicit RawServer(Answerer answerer) : answerer_(std::move(answerer)) {
    listener_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    if (::bind(listener_, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
        ::listen(listener_, SOMAXCONN) != 0 ||
        ::getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
      throw std::runtime_error("no listening socket");
    }
    port_ = ntohs(address.sin_port);
    acceptor_ = std::thread([this] { acceptAll(); });
  }
  /// Always the same pieces.
  explicit RawServer(RawReply reply)
      : RawServer([reply = std::move(reply)](const RawRequest&) { return reply; }) {}
  RawServer(const RawServer&) = delete;
  RawServer& operator=(const RawServer&) = delete;
  ~RawServer() {
    ::shutdown(listener_, SHUT_RDWR);
    acceptor_.join();
    ::close(listener_);
    for (const int connection : sockets_) ::shutdown(connection, SHUT_RDWR);
    for (std::thread& thread : threads_) thread.join();
    for (const int connection : sockets_) ::close(connection);
  }

  [[nodiscard]] std::uint16_t port() const noexcept { return port_; }
  [[nodiscard]] std::string address() const { return "127.0.0.1:" + std::to_string(port_); }
  [[nodiscard]] std::string url(const std::string& path = "/mms") const {
    return "http://" + address() + path;
  }
  [[nodiscard]] std::vector<RawRequest> requests() const {
    const std::lock_guard lock(mutex_);
    return requests_;
  }

 private:
  void acceptAll() {
    int connection = -1;
    while ((connection = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC)) >= 0) {
      const int on = 1;
      ::setsockopt(connection, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
      sockets_.push_back(connection);
      threads_.emplace_back([this, connection, number = static_cast<int>(sockets_.size())] {
        serve(connection, number);
      });
    }
  }

  void serve(int connection, int number) {
    std::string received;
    RawRequest request;
    while (readRequest(connection, received, request)) {
      request.connection = number;
      {
        const std::lock_guard lock(mutex_);
        requests_.push_back(request);
      }
      const RawReply reply = answerer_(request);
      for (const std::string& piece : reply.pieces) {
        if (&piece != &reply.pieces.front()) std::this_thread::sleep_for(reply.pause);
        for (std::size_t sent = 0; sent < piece.size();) {
          const ssize_t put =
              ::send(connection, piece.data() + sent, piece.size() - sent, MSG_NOSIGNAL);
          if (put <= 0) return;
          sent += static_cast<std::size_t>(put);
        }
      }
      if (reply.close) break;
    }
    ::shutdown(connection, SHUT_RDWR);
  }

  static bool readRequest(int connection, std::string& received, RawRequest& request) {
    std::size_t end = 0;
    while ((end = received.find("\r\n\r\n")) == std::string::npos) {
      if (!readMore(connection, received)) return false;
    }
    request.head = received.substr(0, end + 4);
    received.erase(0, end + 4);
    const std::size_t length = std::strtoul(request.header("Content-Length").c_str(), nullptr, 10);
    while (received.size() < length) {
      if (!readMore(connection, received)) return false;
    }
    request.body = received.substr(0, length);
    received.erase(0, length);
    return true;
  }

  static bool readMore(int connection, std::string& received) {
    char buffer[65536];
    const ssize_t got = ::recv(connection, buffer, sizeof buffer, 0);
    if (got <= 0) return false;
    received.append(buffer, static_cast<std::size_t>(got));
    return true;
  }

  const Answerer answerer_;
  int listener_ = -1;
  std::uint16_t port_ = 0;
  std::thread acceptor_;
  std::vector<int> sockets_;  // the acceptor's, then the destructor's
  std::vector<std::thread> threads_;
  mutable std::mutex mutex_;
  std::vector<RawRequest> requests_;
};

/// A port of loopback on which nothing listens.
inline std::uint16_t closedPort() {
  return RawServer(RawReply{}).port();
}

}  // namespace mmsbrix::test

#endif  // MMSBRIX_TESTS_SUPPORT_RAW_SERVER_H
