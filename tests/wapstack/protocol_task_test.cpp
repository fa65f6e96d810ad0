// The protocol thread, its ports, and the exception log.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <string>
#include <thread>

#include "support/hex.h"
#include "support/temporary_folder.h"
#include "support/wap_phone.h"
#include "wapstack/apidrvvtask.h"
#include "wapstack/exception_log.h"
#include "wapstack/wdpsock.h"
#include "wapstack/wsp_application.h"
#include "wsp/report.h"

namespace mmsbrix {
namespace {

using namespace std::chrono_literals;
using test::hex;
using test::TemporaryFolder;
using test::UdpSocket;

TEST(Wdp, RegisteredPortsHaveTypes) {
  EXPECT_EQ(portType(9201), 9201);
  EXPECT_EQ(portType(2948), 2948);
  EXPECT_EQ(portType(9208), 0);
  EXPECT_EQ(portType(0), 0);
}

TEST(Wdp, AddressesAreFoundByNameAndNumber) {
  struct Case {
    const char* text;
    const char* address;  ///< null for none
  };
  for (const auto& [text, address] : {Case{"127.0.0.1:9201", "127.0.0.1:9201"},
                                      {"::1:9201", "[::1]:9201"},
                                      {"[::1]:9201", "[::1]:9201"},
                                      {":9201", nullptr},
                                      {"127.0.0.1:http", nullptr},
                                      {"no.such.host.invalid:9201", nullptr}}) {
    std::error_code error;
    const auto found = resolveAddress(text, error);
    EXPECT_EQ(found.has_value(), address != nullptr) << text;
    if (found && address != nullptr) {
      EXPECT_EQ(toString(*found), address);
    }
    EXPECT_EQ(static_cast<bool>(error), address == nullptr) << text;
  }
  std::error_code error;
  const WdpAddress loopback = resolveAddress("127.0.0.1:9201", error).value();
  EXPECT_EQ(hostText(selectLocalIPaddress(LocalAddressChoice::byRoute, loopback).value()),
            "127.0.0.1");
  EXPECT_EQ(hostText(selectLocalIPaddress(LocalAddressChoice::any, loopback).value()), "0.0.0.0");
}

TEST(ProtocolTask, UnitSizesStayInRange) {
  ApiDriverTask task;
  EXPECT_EQ(task.unitSize(), 1400u);
  task.setUnitSize(1);
  EXPECT_EQ(task.unitSize(), 1000u);
  task.setUnitSize(70000);
  EXPECT_EQ(task.unitSize(), 65000u);
}

TEST(ProtocolTask, JobsRunInOrderOnItsThreadWhileItRuns) {
  ApiDriverTask task;
  EXPECT_FALSE(task.post([] { FAIL(); }));
  EXPECT_FALSE(task.run([] { FAIL(); }));
  task.release();
  for (int round = 0; round < 3; ++round) {
    ASSERT_TRUE(task.start());
    ASSERT_TRUE(task.start());
    std::vector<int> order;
    for (int i = 0; i < 100; ++i) {
      task.post([&, i] {
        EXPECT_TRUE(task.onThread());
        order.push_back(i);
        task.run([&order, i] { order.push_back(i); });
        task.release();  // nothing, on the thread itself
      });
    }
    EXPECT_TRUE(task.run([&order] { EXPECT_EQ(order.size(), 200u); }));
    EXPECT_TRUE(std::ranges::is_sorted(order));
    EXPECT_FALSE(task.onThread());
    bool last = false;
    task.post([&last] { last = true; });
    task.release();
    EXPECT_TRUE(last);
    EXPECT_FALSE(task.post([] { FAIL(); }));
  }
}

/// A client that notes what becomes of its session.
class Client : public WapStack::WspClientApplication {
 public:
  explicit Client(ApiDriverTask& task) : WspClientApplication(task) {}
  ~Client() override { closeClientPort(); }

  std::uint16_t open(std::uint16_t server) {
    std::error_code error;
    server_ = resolveAddress("127.0.0.1:" + std::to_string(server), error).value();
    const WdpAddress local = selectLocalIPaddress(LocalAddressChoice::byRoute, server_).value();
    return createClientPort(kSessionPort, local, {}, error).value().port;
  }
  void connect(const WapStack::Capabilities& proposed = {}) {
    s_Connect_req(server_, {}, proposed);
  }
  void resume() { s_Resume_req(server_, {}); }
  using WspClientApplication::closeClientPort;
  using WspClientApplication::s_MethodAbort_req;
  using WspClientApplication::s_MethodInvoke_req;
  using WspClientApplication::s_Suspend_req;

  std::promise<void> connected;
  std::promise<std::uint8_t> ended;
  std::promise<void> resumed;
  std::atomic<int> aborts{0};
  std::string told;  ///< on the task's thread
  bool throws = false;

 protected:
  void s_Connect_cnf(Octets, const WapStack::Agreement&) override {
    if (throws) throw std::runtime_error("the application's");
    connected.set_value();
  }
  void s_Suspend_ind(std::uint8_t reason) override { tell("suspended", reason); }
  void s_Exception_ind(std::uint8_t reason) override { tell("exception", reason); }
  void s_Resume_cnf(Octets) override { resumed.set_value(); }
  void s_Disconnect_ind(std::uint8_t reason, const std::vector<WdpAddress>&, Octets,
                        Octets) override {
    ended.set_value(reason);
    if (throws) throw 1;
  }
  void s_MethodAbort_ind(WapStack::TransactionId, std::uint8_t reason) override {
    ++aborts;
    tell("aborted", reason);
  }
  [[nodiscard]] const WdpAddress& serverAddress() const override { return server_; }

 private:
  void tell(const char* what, std::uint8_t reason) {
    told += std::string(what) + " " + test::toHex(std::vector{reason}) + "; ";
  }
  WdpAddress server_;
};

// Session 1, no capabilities, no headers.
constexpr char kConnectReply[] = "02 01 00 00";

/// Answers the transaction that comes next.
void answer(UdpSocket& server, std::uint16_t port, const char* pdu) {
  const auto invoke = server.receive(2s).value();
  auto result = hex(pdu);
  const auto low = static_cast<std::uint8_t>(invoke[1] | 0x80);
  result.insert(result.begin(), {0x12, low, invoke[2]});
  server.send(port, result);
}

TEST(ProtocolTask, WhatIsUnderWayEndsByItsCallbackOnRelease) {
  ApiDriverTask task;
  ASSERT_TRUE(task.start());
  const UdpSocket silent;
  Client client(task);
  client.open(silent.port());
  client.connect();
  task.release();
  EXPECT_EQ(client.ended.get_future().get(), 0xEA);
  // Requests end at once where no thread could carry them out.
  client.ended = {};
  client.s_MethodInvoke_req(1, 0x60, {});
  EXPECT_EQ(client.aborts, 1);
  EXPECT_EQ(client.ended.get_future().get(), 0xE1);
  // So does one that comes when the thread runs again, to a port that was shut down.
  ASSERT_TRUE(task.start());
  client.ended = {};
  client.connect();
  auto again = client.ended.get_future();
  EXPECT_EQ(again.wait_for(2s), std::future_status::ready);
  task.release();
  client.closeClientPort();
  std::error_code error;
  WdpAddress local;
  for (const std::uint16_t type : {kSessionPort, std::uint16_t{0}}) {
    error.clear();
    EXPECT_FALSE(client.createClientPort(type, local, {}, error));
    EXPECT_TRUE(error);
  }
}

TEST(ProtocolTask, OnlyTheServerIsHeard) {
  ApiDriverTask task;
  std::atomic<int> received{0};
  task.setDatagramHooks({}, [&received](const WdpAddress&, Octets) { ++received; });
  ASSERT_TRUE(task.start());
  UdpSocket server;
  UdpSocket stranger;
  Client client(task);
  const std::uint16_t port = client.open(server.port());
  client.connect();
  const auto connect = server.receive(2s).value();
  // ConnectReply, session 1, no capabilities, no headers.
  std::vector<std::uint8_t> reply = hex("12 00 00 02 01 00 00");
  reply[1] = connect[1] | 0x80;
  reply[2] = connect[2];
  stranger.send(port, reply);
  // Rubbish of the server's does no harm.
  for (const char* rubbish : {"", "00", "FF FF FF FF", "12 80", "38 00 00 FF"}) {
    server.send(port, hex(rubbish));
  }
  for (int i = 0; i < 400 && received < 5; ++i) std::this_thread::sleep_for(5ms);
  EXPECT_GE(received, 5);
  auto connected = client.connected.get_future();
  EXPECT_EQ(connected.wait_for(20ms), std::future_status::timeout);
  server.send(port, reply);
  EXPECT_EQ(connected.wait_for(2s), std::future_status::ready);
}

TEST(ProtocolTask, RequestsOutOfTurnAreRefusedAndASessionResumes) {
  ApiDriverTask task;
  ASSERT_TRUE(task.start());
  UdpSocket server;
  Client client(task);
  const std::uint16_t port = client.open(server.port());
  client.s_Suspend_req();
  client.resume();
  client.connect({.protocolOptions = std::uint8_t{0xF0}});
  answer(server, port, kConnectReply);
  EXPECT_EQ(client.connected.get_future().wait_for(2s), std::future_status::ready);
  client.connect();
  EXPECT_EQ(client.ended.get_future().get(), 0xE5);
  server.receive(2s);                              // Ack
  server.send(port, hex("0A 00 05 11 07 01 BE"));  // a confirmed push, which nobody takes
  EXPECT_EQ(test::toHex(server.receive(2s).value()), "21 80 05 EB");
  client.s_MethodInvoke_req(1, 0x40, {"u", {}, {}, {}});
  client.s_MethodInvoke_req(2, 0x40, {"u", {}, {}, {}});
  client.s_MethodAbort_req(1);
  client.s_Suspend_req();
  client.resume();
  for (int i = 0; i < 3; ++i) server.receive(2s);  // Get, its Abort, Suspend
  answer(server, port, "04 20 00");
  EXPECT_EQ(client.resumed.get_future().wait_for(2s), std::future_status::ready);
  std::string told;
  task.run([&] { told = client.told; });
  EXPECT_EQ(told, "exception E0; exception E0; aborted E7; aborted EA; suspended EA; ");
}

/// The log while it lives.
class LogFolder {
 public:
  LogFolder() { useExceptionLogFolder(folder_.path()); }
  LogFolder(const LogFolder&) = delete;
  LogFolder& operator=(const LogFolder&) = delete;
  ~LogFolder() { useExceptionLogFolder(""); }
  [[nodiscard]] std::string log() const { return folder_.get("exceptions.log"); }
  [[nodiscard]] const TemporaryFolder& folder() const { return folder_; }

 private:
  TemporaryFolder folder_;
};

TEST(ExceptionLog, EntriesHaveTheirForm) {
  const LogFolder folder;
  logException("wtp", 7, "one");
  logAssertion("wtp", 8, "two");
  logCriticalAssertion("wdpsock", 9, "three");
  const std::string time = "[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}";
  EXPECT_THAT(folder.log(),
              testing::MatchesRegex(
                  "\nEXCEPTION: file 'wtp', line 7, system time " + time +
                  "\n 'one'\n\nEXCEPTION: file 'wtp', line 8, system time " + time +
                  "\n 'Assertion failed. two'\n\nEXCEPTION: file 'wdpsock', line 9, system time " +
                  time + "\n 'Critical assertion failed. three'\n"));
}

TEST(ExceptionLog, WhatAnApplicationThrowsEndsItsSession) {
  const LogFolder folder;
  ApiDriverTask task;
  ASSERT_TRUE(task.start());
  UdpSocket server;
  Client client(task);
  client.throws = true;
  const std::uint16_t port = client.open(server.port());
  client.connect();
  answer(server, port, kConnectReply);
  EXPECT_EQ(client.ended.get_future().get(), 0xE4);
  EXPECT_TRUE(task.run([] {}));
  EXPECT_THAT(folder.log(), testing::HasSubstr("'Critical assertion failed. the application's'"));
  EXPECT_THAT(folder.log(), testing::HasSubstr("'Critical assertion failed. unknown exception'"));
}

TEST(ExceptionLog, ReportsOfTheProtocolThreadGoThere) {
  const LogFolder folder;
  ApiDriverTask task;
  ASSERT_TRUE(task.start());
  MMSBRIX_REPORT_WARNING("wsp_header_coding", "on the host's thread");
  task.run([] {
    MMSBRIX_REPORT_ASSERTION("wsp_header_coding", "on its own");
    MMSBRIX_REPORT_WARNING("wsp_header_coding", "a warning");
  });
  task.post([] { throw std::runtime_error("thrown by a job"); });
  std::this_thread::sleep_for(50ms);  // so that nothing else is queued when it is thrown
  EXPECT_TRUE(task.run([] {}));       // it goes on
  EXPECT_THAT(folder.log(), testing::HasSubstr("'Assertion failed. on its own'"));
  EXPECT_THAT(folder.log(), testing::HasSubstr("'a warning'"));
  EXPECT_THAT(folder.log(), testing::HasSubstr("'Critical assertion failed. thrown by a job'"));
  EXPECT_THAT(folder.log(), testing::Not(testing::HasSubstr("host's thread")));
}

TEST(ExceptionLog, ALongOneIsPutAsideAndOneThatCannotBeWrittenIsNone) {
  const LogFolder folder;
  logException("wtp", 1, std::string(kMaxExceptionLog + 1, 'x'));
  logException("wtp", 2, "next");
  EXPECT_GT(folder.folder().get("exceptions.log.old").size(), kMaxExceptionLog);
  EXPECT_LT(folder.log().size(), 200u);
  useExceptionLogFolder(folder.folder().path("exceptions.log"));  // a file, no folder
  logException("wtp", 3, "lost");
  useExceptionLogFolder(folder.folder().path("new/er"));
  logException("wtp", 4, "kept");
  EXPECT_THAT(folder.folder().get("new/er/exceptions.log"), testing::HasSubstr("'kept'"));
}

}  // namespace
}  // namespace mmsbrix
