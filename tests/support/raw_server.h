// A server on loopback that says exactly the octets it is told and records exactly the octets it
// gets, for what no real server does.
#ifndef MMSBRIX_TESTS_SUPPORT_RAW_SERVER_H
#define MMSBRIX_TESTS_SUPPORT_RAW_SERVER_H

#include <algorithm>
#include <array>
#include <asio/buffer.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/write.hpp>
#include <cctype>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <list>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "support/waiting.h"

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

  explicit RawServer(Answerer answerer)
      : answerer_(std::move(answerer)),
        // The port is nobody else's, and not shared.
        listener_(accepting_.context(), {asio::ip::address_v4::loopback(), 0}, false),
        port_(listener_.local_endpoint().port()),
        acceptor_([this] { acceptAll(); }) {}
  /// Always the same pieces.
  explicit RawServer(RawReply reply)
      : RawServer([reply = std::move(reply)](const RawRequest&) { return reply; }) {}
  RawServer(const RawServer&) = delete;
  RawServer& operator=(const RawServer&) = delete;
  ~RawServer() {
    accepting_.stop();
    acceptor_.join();
    for (Connection& connection : connections_) connection.waiting.stop();
    for (Connection& connection : connections_) {
      if (connection.thread.joinable()) connection.thread.join();
    }
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
  struct Connection {
    Waiting waiting;
    asio::ip::tcp::socket socket{waiting.context()};
    std::thread thread;
  };

  void acceptAll() {
    for (int number = 1;; ++number) {
      Connection& next = connections_.emplace_back();
      const auto accept = [&](auto done) { listener_.async_accept(next.socket, done); };
      if (!accepting_.run(listener_, accept)) return;
      std::error_code ignored;
      next.socket.set_option(asio::ip::tcp::no_delay(true), ignored);
      next.thread = std::thread([this, &next, number] { serve(next, number); });
    }
  }

  void serve(Connection& connection, int number) {
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
        const auto write = [&](auto done) {
          asio::async_write(connection.socket, asio::buffer(piece), done);
        };
        if (!connection.waiting.run(connection.socket, write)) return;
      }
      if (reply.close) break;
    }
    std::error_code ignored;
    connection.socket.shutdown(asio::socket_base::shutdown_both, ignored);
  }

  static bool readRequest(Connection& connection, std::string& received, RawRequest& request) {
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

  static bool readMore(Connection& connection, std::string& received) {
    std::array<char, 65536> buffer;
    const auto read = [&](auto done) {
      connection.socket.async_read_some(asio::buffer(buffer), done);
    };
    const auto got = connection.waiting.run(connection.socket, read);
    if (got) received.append(buffer.data(), *got);
    return got.has_value();
  }

  const Answerer answerer_;
  mutable std::mutex mutex_;
  std::vector<RawRequest> requests_;
  std::list<Connection> connections_;  // the acceptor's, then the destructor's
  Waiting accepting_;
  asio::ip::tcp::acceptor listener_;
  const std::uint16_t port_;
  std::thread acceptor_;  // the last: it uses the others
};

/// A port of loopback on which nothing listens.
inline std::uint16_t closedPort() {
  return RawServer(RawReply{}).port();
}

}  // namespace mmsbrix::test

#endif  // MMSBRIX_TESTS_SUPPORT_RAW_SERVER_H
