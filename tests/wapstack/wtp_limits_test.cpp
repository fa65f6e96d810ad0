// What a transaction layer keeps for peers, with the limits that are in use: at them and above.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "wapstack/wtp.h"
#include "wapstack/wtp_tid.h"

namespace mmsbrix::wtp::test {
namespace {

WdpAddress peer(std::size_t number) {
  return {.port = static_cast<std::uint16_t>(number)};
}

// The octets that reach the user of a message that comes in packets, as an invoke or a result.
std::size_t delivered(Settings settings, bool result, std::size_t total) {
  settings.acceptClass2 = true;
  Endpoint endpoint(settings, 5);
  if (result) endpoint.invoke({}, {Class::result}, {}, {});
  constexpr std::size_t kPacket = 65000;
  for (std::size_t from = 0; from < total; from += kPacket) {
    const std::size_t size = std::min(kPacket, total - from);
    int type = result ? 0x10 : 0x08;
    if (from > 0) type |= 0x20;
    if (from + size == total) type |= 0x02;
    std::vector<std::uint8_t> packet = {static_cast<std::uint8_t>(type),
                                        static_cast<std::uint8_t>(result ? 0x80 : 0), 5};
    if (from > 0) packet.push_back(static_cast<std::uint8_t>(from / kPacket));
    if (from == 0 && !result) packet.push_back(2);
    packet.resize(packet.size() + size);
    endpoint.receive({}, packet, {});
  }
  std::size_t most = 0;
  while (const auto event = endpoint.takeEvent()) most = std::max(most, event->data.size());
  return most;
}

TEST(WtpLimits, MessagesArePutTogetherToALimit) {
  Settings large;
  large.maxInvoke = large.maxMessage = 16U << 20;
  struct Case {
    const char* name;
    Settings settings;
    bool result;
    std::size_t most;
  };
  for (const Case& test : {Case{"an invoke", {}, false, 64U << 10},
                           {"a result", {}, true, 4U << 20},
                           {"an invoke whatever is set", large, false, 4U << 20},
                           {"a result whatever is set", large, true, 4U << 20}}) {
    EXPECT_EQ(delivered(test.settings, test.result, test.most), test.most) << test.name;
    EXPECT_EQ(delivered(test.settings, test.result, test.most + 1), 0U) << test.name;
  }
}

TEST(WtpLimits, PeersAndTidsAreRememberedToALimit) {
  constexpr std::size_t kPeers = 256;
  constexpr std::size_t kTids = 1024;
  for (const std::size_t more : {0, 1, 1000}) {
    TidCache cache;
    for (std::size_t i = 0; i < kPeers + more; ++i) {
      EXPECT_EQ(cache.judge(peer(i), 7, false, {}), TidVerdict::believed);
    }
    std::size_t known = 0;
    for (std::size_t i = 0; i < kPeers + more; ++i) {
      if (TidCache(cache).judge(peer(i), 7, false, {}) == TidVerdict::doubted) ++known;
    }
    EXPECT_EQ(known, kPeers) << more;

    const auto remembered = [&cache, more](TimePoint now) {
      std::size_t old = 0;
      for (std::size_t i = 0; i < kTids + more; ++i) {
        const auto tid = static_cast<std::uint16_t>(i);
        if (cache.judge({}, tid, true, now) == TidVerdict::old) ++old;
      }
      return old;
    };
    for (std::size_t i = 0; i < kTids + more; ++i) {
      cache.served({}, static_cast<std::uint16_t>(i), {});
    }
    EXPECT_EQ(remembered({}), kTids) << more;
    EXPECT_EQ(remembered(TimePoint() + kPacketLifetime), 0U) << more;
    cache.served({}, 0x7000, TimePoint() + kPacketLifetime);  // there is room again
    EXPECT_EQ(cache.judge({}, 0x7000, true, TimePoint() + kPacketLifetime), TidVerdict::old);
  }
}

// Of so many that ask about our TIDs, again and again, it is told that they begin anew.
TEST(WtpLimits, DoubtersAreRememberedToALimit) {
  Endpoint endpoint(Settings{}, 1);
  const auto invoke = [&endpoint](std::size_t i) {
    endpoint.invoke(peer(i), {Class::reliablePush}, {}, {});
    const auto sent = endpoint.takeDatagram();
    const Octets octets = sent->octets.written();
    return std::vector(octets.begin(), octets.end());
  };
  std::size_t told = 0;
  for (std::size_t i = 0; i < 300; ++i) {
    for (unsigned doubt = 0; doubt < kDoubtsBeforeNewTid; ++doubt) {
      const auto sent = invoke(i);
      for (const std::uint8_t ack : {std::uint8_t{0x1C}, std::uint8_t{0x18}}) {
        const std::vector<std::uint8_t> answer = {ack, static_cast<std::uint8_t>(sent[1] | 0x80),
                                                  sent[2]};
        endpoint.receive(peer(i), answer, {});
      }
      while (endpoint.takeDatagram()) continue;
    }
    if ((invoke(i)[3] & 0x20) != 0) ++told;
  }
  EXPECT_EQ(told, 256U);
}

}  // namespace
}  // namespace mmsbrix::wtp::test
