// Submission through a real WAP gateway, an independent program, over networks good and bad.
#include <gtest/gtest.h>
#include <mmsbrix/mmsbrix.h>

#include <chrono>
#include <cstdint>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "relay_server.h"
#include "support/child_process.h"
#include "support/counterparty.h"
#include "support/dissector.h"
#include "support/pcap.h"
#include "support/raw_server.h"
#include "support/send_req.h"
#include "support/temporary_folder.h"
#include "support/udp_path.h"

namespace mmsbrix::test {
namespace {

constexpr std::uint16_t kSessions = 9201;
constexpr unsigned kUdp = 17;

/// The gateway, whose UDP ports are fixed, at a loopback address of this process's own.
class Gateway {
 public:
  Gateway() {
    if (!boxes_[0]->started()) return;
    waitFor([this] { return accepts(boxPort_); });
    boxes_[1] = std::make_unique<ChildProcess>(
        std::vector<std::string>{"/usr/sbin/wapbox", "-v", "4", configuration_},
        folder_.path("wapbox.out"));
    ready_ =
        waitFor([this] { return folder_.get("wapbox.log").find(kReady) != std::string::npos; });
  }
  Gateway(const Gateway&) = delete;
  Gateway& operator=(const Gateway&) = delete;
  ~Gateway() { boxes_[1].reset(); }  // before the box that it talks to

  [[nodiscard]] bool installed() const { return boxes_[0]->started(); }
  [[nodiscard]] bool ready() const noexcept { return ready_; }
  [[nodiscard]] const std::string& host() const noexcept { return host_; }
  [[nodiscard]] std::string log() const {
    return folder_.get("bearerbox.out") + folder_.get("wapbox.out") + folder_.get("wapbox.log");
  }

 private:
  static constexpr const char* kReady = "Connected to bearerbox";

  static std::string ownAddress() {
    const auto id = static_cast<unsigned>(::getpid());
    return "127." + std::to_string(16 + (id >> 16) % 200) + "." + std::to_string(id >> 8 & 0xFF) +
           "." + std::to_string(1 + id % 254);
  }
  static bool accepts(std::uint16_t port) {
    const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in to{};
    to.sin_family = AF_INET;
    to.sin_port = htons(port);
    to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const bool accepted = ::connect(socket, reinterpret_cast<sockaddr*>(&to), sizeof to) == 0;
    ::close(socket);
    return accepted;
  }
  template <typename Condition>
  static bool waitFor(Condition condition) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!condition()) {
      if (std::chrono::steady_clock::now() > deadline) return false;
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return true;
  }
  std::string configure() const {
    const auto log = [this](const char* name) {
      return "log-file = \"" + folder_.path(name) + "\"\nlog-level = 1\n";
    };
    return folder_.put(
        "gateway.conf",
        "group = core\nadmin-port = " + std::to_string(closedPort()) +
            "\nadmin-interface = 127.0.0.1\nadmin-password = test\nstatus-password = test\n"
            "wapbox-port = " +
            std::to_string(boxPort_) +
            "\nbox-deny-ip = \"*.*.*.*\"\nbox-allow-ip = \"127.0.0.1\"\n"
            "wdp-interface-name = \"" +
            host_ + "\"\n" + log("bearerbox.log") +
            "\ngroup = wapbox\nbearerbox-host = 127.0.0.1\ntimer-freq = 1\n" + log("wapbox.log"));
  }

  TemporaryFolder folder_;
  const std::string host_ = ownAddress();
  const std::uint16_t boxPort_ = closedPort();
  const std::string configuration_ = configure();
  std::unique_ptr<ChildProcess> boxes_[2] = {
      std::make_unique<ChildProcess>(
          std::vector<std::string>{"/usr/sbin/bearerbox", "-v", "4", configuration_},
          folder_.path("bearerbox.out")),
      nullptr};
  bool ready_ = false;
};

class RealWapGateway : public testing::Test {
 protected:
  static void SetUpTestSuite() { gateway_ = new Gateway; }
  static void TearDownTestSuite() {
    delete gateway_;
    gateway_ = nullptr;
  }
  void SetUp() override {
    if (!gateway_->installed() && !mustBeInstalled()) GTEST_SKIP() << "kannel is not installed";
    ASSERT_TRUE(gateway_->ready()) << gateway_->log();
  }
  static std::unique_ptr<tool::RelayServer> relay(tool::RelayOptions options = {}) {
    std::string error;
    auto started = tool::RelayServer::start(std::move(options), error);
    EXPECT_TRUE(started) << error;
    return started;
  }

  static Gateway* gateway_;
  TemporaryFolder folder_;
};
Gateway* RealWapGateway::gateway_ = nullptr;

std::string randomOctets(std::size_t size) {
  std::mt19937 random(static_cast<unsigned>(size));
  std::string octets(size, '\0');
  for (char& octet : octets) octet = static_cast<char>(random());
  return octets;
}

std::string received(const tool::RelayServer& relay) {
  const auto exchanges = relay.exchanges();
  if (exchanges.empty()) return "nothing";
  return {exchanges.back().pdu.begin(), exchanges.back().pdu.end()};
}

/// True for the packets of a request whose loss this gateway notices: the first of a message and
/// those that end a group.  Others it leaves out of the message without a word.
bool noticedWhenLost(std::string_view packet) {
  const auto first = static_cast<std::uint8_t>(packet[0]);
  const unsigned type = first >> 3 & 0x0F;
  const bool endsGroup = (first & 0x06) != 0;
  return type != 5 || endsGroup;
}

TEST_F(RealWapGateway, MessagesOfAllSizesArriveOctetByOctet) {
  const auto mmsc = relay({.responseText = "by wap"});
  const std::string url = "http://" + mmsc->address() + "/mms?a=b";
  CMMSWap wap;
  ASSERT_TRUE(wap.ConnectGtw(gateway_->host().c_str(), kSessions, 0)) << wap.GetFailureDetail();
  char text[512];
  for (const std::size_t octets : {500u, 30'000u, 100'000u, 300'000u}) {
    const std::string pdu = encodeSendReq({.content = randomOctets(octets)});
    EXPECT_TRUE(wap.SendMMS(url.c_str(), folder_.put("m.mms", pdu).c_str(), 0))
        << wap.GetFailureDetail();
    EXPECT_EQ(wap.GetResult(text), 0x80u);
    EXPECT_STREQ(text, "by wap");
    EXPECT_EQ(wap.GetOutcome(), CMMSWap::Outcome::accepted);
    EXPECT_TRUE(received(*mmsc) == pdu) << octets;
  }
  EXPECT_EQ(mmsc->exchanges().back().target, "/mms?a=b");
  EXPECT_EQ(mmsc->exchanges().back().userAgent, "Tarvik Mmsbrix 1.0");
  wap.DisconnectGtw();
}

TEST_F(RealWapGateway, AnswersInManySegmentsArrive) {
  // The decoder keeps 1023 characters of a text; the whole of it comes in 30 segments.
  const auto mmsc = relay({.responseText = std::string(40'000, 'x')});
  CMMSWap wap;
  ASSERT_TRUE(wap.ConnectGtw(gateway_->host().c_str(), kSessions, 0)) << wap.GetFailureDetail();
  const std::string file = folder_.put("m.mms", encodeSendReq());
  EXPECT_TRUE(wap.SendMMS(("http://" + mmsc->address() + "/").c_str(), file.c_str(), 0))
      << wap.GetFailureDetail();
  char text[512];
  wap.GetResult(text);
  EXPECT_EQ(std::string(text), std::string(511, 'x'));
  wap.DisconnectGtw();
}

TEST_F(RealWapGateway, RefusalsNameTheLayerThatRefused) {
  struct Case {
    tool::RelayOptions options;
    CMMSWap::Outcome outcome;
    unsigned code;
    const char* text;
  };
  const Case cases[] = {
      {{.responseStatus = 0x84, .responseText = "no such user"},
       CMMSWap::Outcome::relayStatus,
       0x84,
       "no such user"},
      {{.httpStatus = 404}, CMMSWap::Outcome::gatewayStatus, 0x44, "Not Found"},
      {{.httpStatus = 503}, CMMSWap::Outcome::gatewayStatus, 0x63, "Service Unavailable"},
      {{.contentType = "text/plain"}, CMMSWap::Outcome::relayStatus, 0x81, ""},
  };
  const std::string file = folder_.put("m.mms", encodeSendReq());
  for (const Case& expected : cases) {
    const auto mmsc = relay(expected.options);
    CMMSWap wap;
    ASSERT_TRUE(wap.ConnectGtw(gateway_->host().c_str(), kSessions, 0)) << wap.GetFailureDetail();
    EXPECT_FALSE(wap.SendMMS(("http://" + mmsc->address() + "/").c_str(), file.c_str(), 0));
    char text[512];
    EXPECT_EQ(wap.GetResult(text), expected.code);
    EXPECT_STREQ(text, expected.text);
    EXPECT_EQ(wap.GetOutcome(), expected.outcome) << wap.GetFailureDetail();
    wap.DisconnectGtw();
  }
}

/// One message over a bad stretch of network; what went wrong, or "".
std::string submitOverBadNetwork(const std::string& gateway, const std::string& relay,
                                 unsigned seed, std::size_t octets) {
  std::mt19937 random(seed);
  UdpPath path(gateway, kSessions, [&random](bool up, std::string_view packet) {
    const auto dice = random() % 100;
    if (dice < 10) return up && !noticedWhenLost(packet) ? Fate::arrives : Fate::lost;
    if (dice < 20) return Fate::twice;
    if (dice < 30 && !up) return Fate::late;  // on the way up the last packet must stay the last
    return Fate::arrives;
  });
  const TemporaryFolder folder;
  const std::string pdu = encodeSendReq(
      {.transactionId = "seed" + std::to_string(seed), .content = randomOctets(octets)});
  WapTiming timing;
  timing.retryInterval = std::chrono::milliseconds(700);
  timing.maxRetries = 30;  // the gateway repeats a lost result after 7 seconds
  CMMSWap wap;
  wap.SetTiming(timing);
  std::string fault;
  if (!wap.ConnectGtw("127.0.0.1", path.port(), 0) ||
      !wap.SendMMS(("http://" + relay + "/").c_str(), folder.put("m.mms", pdu).c_str(), 0)) {
    fault = wap.GetFailureDetail();
  }
  wap.DisconnectGtw();
  return fault;
}

TEST_F(RealWapGateway, LossDuplicatesAndReorderingAreOvercome) {
  constexpr unsigned kSeeds = 50;
  tool::RelayOptions options;
  options.keptExchanges = 1000;
  options.responseText = std::string(3000, 'x');  // three segments back
  const auto mmsc = relay(options);
  std::vector<std::string> faults(kSeeds);
  std::vector<std::thread> clients;
  for (unsigned seed = 0; seed < kSeeds; ++seed) {
    clients.emplace_back([&, seed] {
      faults[seed] = submitOverBadNetwork(gateway_->host(), mmsc->address(), seed,
                                          400 + std::size_t{seed} * 500);
    });
  }
  for (std::thread& client : clients) client.join();
  for (unsigned seed = 0; seed < kSeeds; ++seed) EXPECT_EQ(faults[seed], "") << "seed " << seed;
  // Each message once, as it was sent.
  std::vector<unsigned> times(kSeeds);
  for (const tool::RelayExchange& exchange : mmsc->exchanges()) {
    CMMsg message;
    MMS_LoadFromMemory(exchange.pdu.data(), static_cast<unsigned>(exchange.pdu.size()), &message,
                       0);
    const std::string id = message.GetTransactionId();
    ASSERT_EQ(id.substr(0, 4), "seed");
    const auto seed = static_cast<unsigned>(std::stoul(id.substr(4)));
    ++times.at(seed);
    const std::string pdu = encodeSendReq(
        {.transactionId = id, .content = randomOctets(400 + std::size_t{seed} * 500)});
    EXPECT_TRUE(std::string(exchange.pdu.begin(), exchange.pdu.end()) == pdu) << "seed " << seed;
  }
  for (unsigned seed = 0; seed < kSeeds; ++seed) EXPECT_EQ(times[seed], 1u) << "seed " << seed;
}

class RealWapGatewayCapture : public DissectorTest {};

TEST_F(RealWapGatewayCapture, TheDissectorFindsNothingMalformed) {
  const Gateway gateway;
  if (!gateway.installed() && !mustBeInstalled()) GTEST_SKIP() << "kannel is not installed";
  ASSERT_TRUE(gateway.ready()) << gateway.log();
  std::string error;
  const auto mmsc = tool::RelayServer::start({.responseText = std::string(3000, 'x')}, error);
  ASSERT_TRUE(mmsc) << error;
  UdpPath path(gateway.host(), kSessions, {});
  CMMSWap wap;
  ASSERT_TRUE(wap.ConnectGtw("127.0.0.1", path.port(), 0)) << wap.GetFailureDetail();
  const std::string pdu = encodeSendReq({.content = randomOctets(20'000)});
  EXPECT_TRUE(wap.SendMMS(("http://" + mmsc->address() + "/").c_str(),
                          folder_.put("m.mms", pdu).c_str(), 0))
      << wap.GetFailureDetail();
  wap.DisconnectGtw();
  // The Disconnect has no answer that one could wait for.
  const auto disconnected = [&path] {
    const auto passed = path.passed();
    const std::string& last = passed.back().octets;
    return last.size() > 4 && last[4] == 0x05;
  };
  for (int i = 0; i < 1000 && !disconnected(); ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }

  std::vector<std::string> packets;
  for (const UdpPath::Passed& one : path.passed()) {
    packets.push_back(one.up ? udpDatagram(40000, kSessions, one.octets)
                             : udpDatagram(kSessions, 40000, one.octets));
  }
  const std::string file = folder_.put("wap.pcap", captureOf(packets, kUdp));
  EXPECT_EQ(run(file, "-Y '_ws.malformed || _ws.expert.severity >= 6291456' -V"), "");
  const std::string seen =
      run(file, "-Y 'wsp || mmse' -T fields -e wsp.pdu_type -e mmse.message_type");
  for (const char* expected : {"0x01\t", "0x02\t", "0x60\t0x80", "0x04\t0x81", "0x05\t"}) {
    EXPECT_NE(seen.find(expected), std::string::npos) << expected << " in\n" << seen;
  }
}

}  // namespace
}  // namespace mmsbrix::test
