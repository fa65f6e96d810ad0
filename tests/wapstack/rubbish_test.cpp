// Datagrams that nobody means well: random octets and good PDUs with octets changed, into an
// endpoint and a client in every stage of their exchanges.  All must still come to an end.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "support/hex.h"
#include "wapstack/wsp_client.h"
#include "wapstack/wsp_server.h"

namespace mmsbrix {
namespace {

using test::hex;
using wtp::TimePoint;
using Datagram = std::vector<std::uint8_t>;

/// Good PDUs for the transactions that are open in these tests, to be spoiled.
const char* const kGood[] = {
    "0A 00 05 02 'q'",
    "08 00 05 01 'aaaa'",
    "2C 00 05 01 'bbbb'",
    "2A 00 05 02 'c'",
    "0E 00 06 20 06 01 BE 'n'",
    "0A 00 07 11 07 01 BE 'n'",
    "0E 00 06 00 05 07",
    "18 80 01",
    "1C 80 01",
    "1C 00 05",
    "98 80 01 19 00",
    "98 80 01 99 00 92 03 01 12 04 04",
    "38 80 01 02 00 01",
    "16 80 01 02 07 07 02 03 80 82 2C 02 82 E0 A6 00",
    "16 80 02 04 20 01 BE 'b'",
    "14 80 01 'rrrr'",
    "32 80 01 03 'r'",
    "21 80 02 E1",
    "00 03 18 80 01 04 21 00 05 E8",
};

class Rubbish {
 public:
  explicit Rubbish(unsigned seed) : random_(seed) {}

  std::size_t number(std::size_t low, std::size_t high) {
    return std::uniform_int_distribution<std::size_t>(low, high)(random_);
  }
  Datagram next() {
    Datagram octets;
    if (number(0, 9) == 0) {
      octets.resize(number(0, 40));
      for (auto& octet : octets) octet = static_cast<std::uint8_t>(number(0, 255));
      return octets;
    }
    octets = hex(kGood[number(0, std::size(kGood) - 1)]);
    for (std::size_t i = number(0, 3); i > 0; --i) {
      octets[number(0, octets.size() - 1)] = static_cast<std::uint8_t>(number(0, 255));
    }
    if (number(0, 3) == 0) octets.resize(number(0, octets.size() + 3));
    return octets;
  }

 private:
  std::mt19937 random_;
};

/// Lets time pass until no timer runs; false when that takes more than a day.
template <typename Engine>
bool settles(Engine& engine, TimePoint now) {
  const TimePoint end = now + std::chrono::hours(24);
  while (const auto at = engine.deadline()) {
    now = std::max(now, *at);
    if (now > end) return false;
    engine.onTimer(now);
    while (engine.takeDatagram()) continue;
    while (engine.takeEvent()) continue;
  }
  return engine.transactions() == 0;
}

TEST(WapRubbish, AnEndpointComesToAnEnd) {
  for (unsigned seed = 0; seed < 2000; ++seed) {
    Rubbish rubbish(seed);
    wtp::Settings settings;
    settings.segmentOctets = 4;
    settings.maxMessage = settings.maxInvoke = 64;
    settings.acceptClass2 = seed % 2 == 0;
    wtp::Endpoint endpoint(settings, 1);
    TimePoint now;
    endpoint.invoke({}, {wtp::Class::result}, hex("'aaaabbbbccccdd'"), now);
    endpoint.invoke({}, {wtp::Class::reliablePush}, hex("'p'"), now);
    for (int i = 0; i < 60; ++i) {
      endpoint.receive({}, rubbish.next(), now);
      while (endpoint.takeDatagram()) continue;
      while (const auto event = endpoint.takeEvent()) {
        ASSERT_LE(event->data.size(), settings.maxMessage);
        if (rubbish.number(0, 1) == 0) endpoint.sendResult(event->handle, hex("'rrrrs'"), now);
        if (rubbish.number(0, 3) == 0) endpoint.respondResult(event->handle, {}, now);
      }
      now += std::chrono::milliseconds(rubbish.number(0, 2000));
      endpoint.onTimer(now);
    }
    ASSERT_TRUE(settles(endpoint, now)) << "seed " << seed;
  }
}

TEST(WapRubbish, AClientComesToAnEnd) {
  int connects = 0;
  for (unsigned seed = 0; seed < 2000; ++seed) {
    Rubbish rubbish(seed);
    session::Client client({}, 1);
    TimePoint now;
    const session::Capabilities proposed{300, 300, std::uint8_t{0xE0}, std::uint8_t{2},
                                         std::uint8_t{1}};
    client.connect({}, proposed, {}, now);
    for (session::Id i = 1; i < 60; ++i) {
      client.receive({}, rubbish.next(), now);
      while (client.takeDatagram()) continue;
      while (const auto event = client.takeEvent()) {
        if (event->kind == session::Event::Kind::connectConfirm) ++connects;
      }
      if (rubbish.number(0, 3) == 0) client.invokeMethod(i, 0x40, "u", {}, {}, now);
      if (rubbish.number(0, 19) == 0) client.suspend(now);
      if (rubbish.number(0, 9) == 0) client.resume({}, {}, now);
      if (rubbish.number(0, 19) == 0) client.disconnect(now);
      if (client.state() == session::State::null) client.connect({}, proposed, {}, now);
      now += std::chrono::milliseconds(rubbish.number(0, 2000));
      client.onTimer(now);
    }
    ASSERT_TRUE(settles(client, now)) << "seed " << seed;
  }
  EXPECT_GT(connects, 100) << "no session comes up here, so little is tried";
}

TEST(WapRubbish, AServerComesToAnEnd) {
  const char* const good[] = {
      "0A 00 09 02 01 10 11 02 03 80 82 2C 03 81 82 2C 02 82 E0 02 83 02 02 84 01 80 80",
      "0A 00 0A 02 60 01 01 'u' BE 'mms'",
      "0A 00 0B 02 40 01 'u' 83",
      "0E 00 0C 00 08 01",
      "0A 00 0D 02 09 01 00 80 80",
      "0E 00 0E 00 05 01",
  };
  int methods = 0;
  for (unsigned seed = 0; seed < 2000; ++seed) {
    Rubbish rubbish(seed);
    session::Server server({}, 1);
    TimePoint now;
    for (int i = 0; i < 60; ++i) {
      Datagram octets = rubbish.next();
      if (rubbish.number(0, 1) == 0) {
        octets = hex(good[rubbish.number(0, std::size(good) - 1)]);
        octets[2] = static_cast<std::uint8_t>(16 + i);  // its TID
      }
      server.receive({}, octets, now);
      while (server.takeDatagram()) continue;
      while (const auto event = server.takeEvent()) {
        using Kind = session::ServerEvent::Kind;
        if (event->kind == Kind::methodIndication) ++methods;
        if (rubbish.number(0, 3) != 0) server.accept(event->session, {}, now);
        if (rubbish.number(0, 1) == 0) server.reply(event->id, 0x20, hex("BE"), hex("'r'"), now);
        if (rubbish.number(0, 9) == 0) server.push(event->session, {}, {}, now);
        wtp::Handle push = 0;
        if (rubbish.number(0, 9) == 0) server.confirmedPush(event->session, {}, {}, push, now);
        if (rubbish.number(0, 19) == 0) server.abortMethod(event->id, 0xE4, now);
        if (rubbish.number(0, 19) == 0) {
          server.disconnect(event->session, session::Reason::congestion, now);
        }
      }
      now += std::chrono::milliseconds(rubbish.number(0, 2000));
      server.onTimer(now);
    }
    ASSERT_TRUE(settles(server, now)) << "seed " << seed;
  }
  EXPECT_GT(methods, 1000) << "hardly a method comes through here, so little is tried";
}

}  // namespace
}  // namespace mmsbrix
