// Peers that do everything but answer: every exchange ends, as a failure with the right number.
#include <gtest/gtest.h>

#include <array>
#include <asio/buffer.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/read.hpp>
#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "support/mms_http.h"
#include "support/raw_server.h"
#include "support/send_req.h"
#include "support/temporary_folder.h"
#include "support/waiting.h"
#include "transport/mmshttp.h"

namespace mmsbrix::test {
namespace {

struct Result {
  bool accepted = false;
  unsigned long code = 0;
};

Result submit(const std::string& url, const std::string& file, unsigned timeoutSeconds = 20) {
  CMMSHttp http;
  http.SetTimeout(timeoutSeconds);
  http.ConnectGtw(nullptr, 0, 0);
  Result result;
  result.accepted = http.SendMMS(url.c_str(), file.c_str(), 0);
  result.code = http.GetResult(nullptr);
  http.DisconnectGtw();
  return result;
}

TEST(PeerFaults, ClosingAtEveryStageOfTheAnswer) {
  const TemporaryFolder folder;
  const std::string file = folder.put("m.mms", encodeSendReq());
  const std::string answer = httpAnswer(kSendConfOk);
  std::atomic<std::size_t> octets = 0;  // the server answers on a thread of its own
  RawServer server([&](const RawRequest&) -> RawReply {
    return {{answer.substr(0, octets)}, true};
  });
  for (octets = 0; octets <= answer.size(); ++octets) {
    const Result result = submit(server.url(), file);
    EXPECT_EQ(result.accepted, octets == answer.size()) << octets;
    EXPECT_NE(result.code, 0U) << octets;
  }
}

// Takes some octets of each request and closes on the rest.
TEST(PeerFaults, ClosingWhileTheMessageIsOnItsWay) {
  const TemporaryFolder folder;
  const std::string file = folder.put("m.mms", std::string(4 << 20, 'm'));
  Waiting waiting;
  asio::ip::tcp::acceptor listener(waiting.context(), {asio::ip::address_v4::loopback(), 0}, false);
  const std::string url =
      "http://127.0.0.1:" + std::to_string(listener.local_endpoint().port()) + "/";
  for (const std::size_t wanted : {0, 1, 100, 100000}) {
    std::thread peer([&] {
      // A client that lost a connection without an answer may try a second one.
      for (const auto patience :
           {std::chrono::milliseconds(10000), std::chrono::milliseconds(200)}) {
        asio::ip::tcp::socket connection(waiting.context());
        const auto accept = [&](auto done) { listener.async_accept(connection, done); };
        if (!waiting.run(listener, accept, patience)) return;
        std::error_code ignored;
        std::vector<char> octets(wanted);
        asio::read(connection, asio::buffer(octets), ignored);
      }
    });
    const Result result = submit(url, file);
    peer.join();
    EXPECT_FALSE(result.accepted) << wanted;
    EXPECT_TRUE(result.code == 12030 || result.code == 12031) << wanted << ": " << result.code;
  }
}

TEST(PeerFaults, AStallEndsByTheTimeoutWhereverItComes) {
  const TemporaryFolder folder;
  const std::string file = folder.put("m.mms", encodeSendReq());
  const std::string answer = httpAnswer(kSendConfOk);
  const std::size_t body = answer.size() - kSendConfOk.size();
  std::vector<std::thread> threads;  // at once, since each of them waits
  for (const std::size_t octets : {std::size_t{0}, std::size_t{9}, body - 2, body, body + 3}) {
    threads.emplace_back([&, octets] {
      RawServer server(RawReply{{answer.substr(0, octets)}});
      const Result result = submit(server.url(), file, 1);
      EXPECT_FALSE(result.accepted) << octets;
      EXPECT_EQ(result.code, 12002U) << octets;
    });
  }
  for (std::thread& thread : threads) thread.join();
}

TEST(PeerFaults, ATrickleIsNoStall) {
  const TemporaryFolder folder;
  const std::string file = folder.put("m.mms", encodeSendReq());
  RawReply reply{.pieces = {}, .close = true, .pause = std::chrono::milliseconds(20)};
  for (const char c : httpAnswer(kSendConfOk)) reply.pieces.emplace_back(1, c);
  RawServer server(reply);
  const Result result = submit(server.url(), file, 2);
  EXPECT_TRUE(result.accepted);
  EXPECT_EQ(result.code, 0x80U);
}

TEST(PeerFaults, MoreThanAnybodyAskedFor) {
  const TemporaryFolder folder;
  const std::string file = folder.put("m.mms", encodeSendReq());
  const std::string type = std::string("Content-Type: ") + kMmsType + "\r\n";
  struct Case {
    const char* name;
    std::string answer;
    bool accepted;
    unsigned long code;
  };
  std::string huge = kSendConfOk;
  huge.resize(50U << 20);
  std::string headers;
  while (headers.size() < (1U << 20)) headers += "X-Filler: " + std::string(1000, 'x') + "\r\n";
  const Case cases[] = {
      // The answer stands in front; what follows it is somebody else's matter.
      {"50 MB behind an answer", httpAnswer(huge), true, 0x80},
      {"50 MB of nothing", httpAnswer(std::string(50U << 20, '\0')), false, 200},
      {"1 MB of headers", httpAnswer(kSendConfOk, kMmsType, "200 OK", headers), false, 200},
      {"less than stated",
       "HTTP/1.1 200 OK\r\n" + type + "Content-Length: 4294967297\r\n\r\n" + kSendConfOk, false,
       200},
      {"more than stated", "HTTP/1.1 200 OK\r\n" + type + "Content-Length: 3\r\n\r\n" + kSendConfOk,
       false, 200},
      {"less than nothing",
       "HTTP/1.1 200 OK\r\n" + type + "Content-Length: -1\r\n\r\n" + kSendConfOk, false, 200},
  };
  for (const Case& c : cases) {
    RawServer server(RawReply{{c.answer}, true});
    const Result result = submit(server.url(), file);
    EXPECT_EQ(result.accepted, c.accepted) << c.name;
    EXPECT_EQ(result.code, c.code) << c.name;
  }
}

}  // namespace
}  // namespace mmsbrix::test
