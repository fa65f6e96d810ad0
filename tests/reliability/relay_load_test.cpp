// The relay as a program of its own, under load and killed: what it acknowledged is in its folder.
#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "support/child_process.h"
#include "support/mms_http.h"
#include "support/send_req.h"
#include "support/temporary_folder.h"

namespace mmsbrix::test {
namespace {

/// A relay that stores into a folder.
class RelayProgram {
 public:
  RelayProgram()
      : child_({MMSBRIX_PROGRAM, "relay", "--listen", "127.0.0.1:0", "--store", store()},
               folder_.path("log")) {
    const std::string begin = "listening on http://127.0.0.1:";
    for (int tries = 0; port_ == 0 && tries < 3000; ++tries) {
      const std::string log = folder_.get("log");
      if (log.starts_with(begin) && log.find('\n') != std::string::npos) {
        port_ = static_cast<std::uint16_t>(std::stoi(log.substr(begin.size())));
      } else {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
      }
    }
    EXPECT_NE(port_, 0);
  }

  void kill() { child_.kill(); }
  [[nodiscard]] std::string store() const { return folder_.path("store"); }

  /// Submits a message of that number; true when the relay said Ok.
  [[nodiscard]] bool submit(int number) const {
    const int connection = connected();
    if (connection < 0) return false;
    const bool ok = say(connection, request(number)) && saysOk(hear(connection));
    ::close(connection);
    return ok;
  }
  [[nodiscard]] int connected() const {
    const int connection = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port_);
    if (::connect(connection, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0) {
      return connection;
    }
    ::close(connection);
    return -1;
  }
  static bool say(int connection, const std::string& octets) {
    return ::send(connection, octets.data(), octets.size(), MSG_NOSIGNAL) ==
           static_cast<ssize_t>(octets.size());
  }
  static std::string hear(int connection) {
    std::string heard;
    char buffer[1024];
    ssize_t got = 0;
    while ((got = ::recv(connection, buffer, sizeof buffer, 0)) > 0) {
      heard.append(buffer, static_cast<std::size_t>(got));
    }
    return heard;
  }
  static bool saysOk(const std::string& answer) {
    return answer.starts_with("HTTP/1.1 200 ") &&
           answer.find("\x8D\x90\x92\x80") != std::string::npos;
  }
  static std::string request(int number) {
    const std::string pdu = encodeSendReq({.transactionId = transaction(number)});
    return "POST / HTTP/1.1\r\nHost: relay\r\nConnection: close\r\nContent-Type: " +
           std::string(kMmsType) + "\r\nContent-Length: " + std::to_string(pdu.size()) +
           "\r\n\r\n" + pdu;
  }
  static std::string transaction(int number) { return "T" + std::to_string(number); }

  /// The transaction ids of the messages in the folder; one that is not whole counts as "broken".
  [[nodiscard]] std::multiset<std::string> stored() const {
    std::multiset<std::string> ids;
    for (const auto& entry : std::filesystem::directory_iterator(store())) {
      if (entry.path().extension() != ".mms") continue;
      const std::string pdu = folder_.get("store/" + entry.path().filename().string());
      const std::string id = pdu.size() > 3 ? pdu.substr(3, pdu.find('\0') - 3) : "";
      ids.insert(pdu == encodeSendReq({.transactionId = id}) ? id : "broken");
    }
    return ids;
  }

 private:
  TemporaryFolder folder_;
  ChildProcess child_;
  std::uint16_t port_ = 0;
};

TEST(RelayLoad, TenThousandConnectionsInSequenceLoseNoMessage) {
  const RelayProgram relay;
  constexpr int kMessages = 10000;
  for (int i = 0; i < kMessages; ++i) ASSERT_TRUE(relay.submit(i)) << i;
  const auto stored = relay.stored();
  EXPECT_EQ(stored.size(), static_cast<std::size_t>(kMessages));
  for (int i = 0; i < kMessages; ++i) {
    ASSERT_EQ(stored.count(RelayProgram::transaction(i)), 1U) << i;
  }
}

TEST(RelayLoad, TwoHundredConnectionsAtOnceLoseNoMessage) {
  const RelayProgram relay;
  constexpr int kConnections = 200;
  std::vector<int> open;
  for (int i = 0; i < kConnections; ++i) {
    open.push_back(relay.connected());
    ASSERT_GE(open.back(), 0);
    // Half of it now, so that all of them wait for each other.
    const std::string request = RelayProgram::request(i);
    ASSERT_TRUE(RelayProgram::say(open.back(), request.substr(0, request.size() / 2)));
  }
  for (int i = 0; i < kConnections; ++i) {
    const std::string request = RelayProgram::request(i);
    ASSERT_TRUE(
        RelayProgram::say(open[static_cast<std::size_t>(i)], request.substr(request.size() / 2)));
  }
  for (const int connection : open) {
    EXPECT_TRUE(RelayProgram::saysOk(RelayProgram::hear(connection)));
    ::close(connection);
  }
  EXPECT_EQ(relay.stored().size(), static_cast<std::size_t>(kConnections));
}

TEST(RelayLoad, WhatAKilledRelayAcknowledgedIsThere) {
  constexpr int kThreads = 8;
  for (const int enough : {50, 300, 1000}) {
    RelayProgram relay;
    std::mutex mutex;
    std::set<std::string> acknowledged;
    std::atomic<bool> over{false};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
      threads.emplace_back([&, t] {
        for (int i = t; !over; i += kThreads) {
          if (!relay.submit(i)) continue;
          const std::lock_guard lock(mutex);
          acknowledged.insert(RelayProgram::transaction(i));
        }
      });
    }
    for (bool reached = false; !reached;) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
      const std::lock_guard lock(mutex);
      reached = acknowledged.size() >= static_cast<std::size_t>(enough);
    }
    relay.kill();
    over = true;
    for (std::thread& thread : threads) thread.join();
    const auto stored = relay.stored();
    EXPECT_EQ(stored.count("broken"), 0U);
    for (const std::string& id : acknowledged) EXPECT_EQ(stored.count(id), 1U) << id;
  }
}

}  // namespace
}  // namespace mmsbrix::test
