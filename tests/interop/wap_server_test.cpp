// What our gateway says to clients, read by the dissector.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <mmsbrix/mmsbrix.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "support/dissector.h"
#include "support/hex.h"
#include "support/pcap.h"

namespace mmsbrix::test {
namespace {

using testing::HasSubstr;

constexpr unsigned kSessions = 9201;
constexpr unsigned kClient = 40000;
constexpr unsigned kUdp = 17;

/// The gateway's datagrams, as if at its registered port.
class Recorder {
 public:
  void record(const WapDatagram& datagram) {
    const std::string_view octets(reinterpret_cast<const char*>(datagram.octets), datagram.size);
    packets_.push_back(datagram.sent ? udpDatagram(kSessions, kClient, octets)
                                     : udpDatagram(kClient, kSessions, octets));
  }
  [[nodiscard]] std::string capture() const { return captureOf(packets_, kUdp); }

 private:
  std::vector<std::string> packets_;
};

class WapServerDissector : public DissectorTest {
 protected:
  /// What happens to a submission through a gateway of these options; `during` before it ends.
  template <typename During>
  std::string dissect(WapGatewayOptions options, const std::string& fields, During during) {
    Recorder recorder;
    options.onDatagram = [&recorder](const WapDatagram& shown) { recorder.record(shown); };
    options.onRequest = [](const WapRequest&) {
      return WapResponse{.status = 404, .contentType = "text/plain", .body = hex("'none'")};
    };
    std::string error;
    auto gateway = WapGateway::start(std::move(options), error);
    EXPECT_NE(gateway, nullptr) << error;
    CMMSWap wap;
    wap.SetTiming({.retryInterval = std::chrono::milliseconds(1000), .maxRetries = 2});
    wap.SetNotificationHandler([](const CMMsg&) {});
    if (wap.ConnectGtw("127.0.0.1", gateway->port(), 0)) {
      wap.SendMMS("http://m/", folder_.put("m.mms", std::string(9000, 'x')).c_str(), 0);
      during(*gateway);
    }
    wap.DisconnectGtw();
    gateway.reset();
    const std::string file = folder_.put("wap.pcap", recorder.capture());
    EXPECT_EQ(
        run(file,
            "-Y 'udp.srcport == 9201 && (_ws.malformed || _ws.expert.severity >= 6291456)' -V"),
        "");
    return run(file, "-Y 'wsp && udp.srcport == 9201' -T fields -e wsp.pdu_type " + fields);
  }
};

TEST_F(WapServerDissector, ReadsSessionsAnswersAndPushes) {
  const WapPush push{
      .contentType = "application/vnd.wap.mms-message",
      .body = hex("8C 82 98 'N' 00 8D 90 8A 80 8E 02 10 00 88 05 81 03 01 51 80 83 'http://m' 00")};
  const std::string seen = dissect(
      {.limits = {.serverSduOctets = 20000, .methods = 2}, .sessionHeaders = {{"Server", "S"}}},
      "-e wsp.capability.server_sdu_size -e wsp.capability.method_mor -e wsp.header.server "
      "-e wsp.reply.status -e mmse.message_type",
      [&push](WapGateway& gateway) {
        EXPECT_EQ(gateway.push(0, push, false), "");
        EXPECT_EQ(gateway.push(0, push, true), "");
        for (int i = 0; i < 500 && gateway.counters().pushesConfirmed == 0; ++i) {
          std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        EXPECT_EQ(gateway.disconnect(0), "");
      });
  EXPECT_THAT(seen, HasSubstr("0x02\t20000\t2\tS\t\t\n"));
  EXPECT_THAT(seen, HasSubstr("0x04\t\t\t\t0x44\t\n"));
  EXPECT_THAT(seen, HasSubstr("0x06\t\t\t\t\t0x82\n"));
  EXPECT_THAT(seen, HasSubstr("0x07\t\t\t\t\t0x82\n"));
  EXPECT_THAT(seen, HasSubstr("0x05\t\t\t\t\t\n"));
}

TEST_F(WapServerDissector, ReadsRedirectsAndRefusals) {
  const auto nothing = [](WapGateway&) {};
  EXPECT_EQ(dissect({.redirect = "127.0.0.1:50123", .redirectPermanent = true},
                    "-e wsp.redirect.flags.permanent -e wsp.address.port -e wsp.address.unknown",
                    nothing),
            "0x03\t1\t50123\t7f000001\n");
  EXPECT_EQ(dissect({.refuseStatus = 403}, "-e wsp.reply.status", nothing), "0x04\t0x43\n");
}

}  // namespace
}  // namespace mmsbrix::test
