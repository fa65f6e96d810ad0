// The gateway as a host uses it, with a client over real UDP on loopback.
#include "transport/wap_gateway.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "support/hex.h"
#include "support/wap_phone.h"
#include "transport/wap_text.h"

namespace mmsbrix {
namespace {

using namespace std::chrono_literals;
using session::Capabilities;
using session::Refusal;
using test::hex;
using test::WapPhone;
using Kind = session::Event::Kind;
using Body = std::vector<std::uint8_t>;

const Capabilities kAnything{0, 0, std::uint8_t{0xE0}, std::uint8_t{4}, std::uint8_t{2}};

std::unique_ptr<WapGateway> started(WapGatewayOptions options) {
  options.retryInterval = 200ms;
  std::string error;
  auto gateway = WapGateway::start(std::move(options), error);
  if (gateway == nullptr) throw std::runtime_error(error);
  return gateway;
}

Body pattern(std::size_t octets) {
  Body body(octets);
  for (std::size_t i = 0; i < octets; ++i) body[i] = static_cast<std::uint8_t>(i * 31 + i / 251);
  return body;
}

/// A connected phone.
struct Call {
  explicit Call(const WapGateway& gateway) : phone(gateway.port()) {
    // Accept-Language: en; User-Agent: P
    phone.connect(kAnything, hex("83 99 A9 'P' 00"));
    if (phone.wait().kind != Kind::connectConfirm) throw std::runtime_error("not connected");
  }
  session::Event post(const Body& body) {
    EXPECT_EQ(phone.post(++id, "http://mmsc/", hex("BE"), body), Refusal::none);
    return phone.wait();
  }
  WapPhone phone;
  session::Id id = 0;
};

/// What a counter is, as soon as it is that; else what it stays.
std::uint64_t settled(const WapGateway& gateway, std::uint64_t WapGatewayCounters::*counter,
                      std::uint64_t wanted) {
  for (int i = 0; i < 500 && gateway.counters().*counter != wanted; ++i) {
    std::this_thread::sleep_for(10ms);
  }
  return gateway.counters().*counter;
}

TEST(WapGateway, MethodsComeAndGoWholeWhateverTheirSize) {
  std::mutex mutex;  // requests come on the gateway's thread
  WapRequest last;
  const auto lastSeen = [&] {
    const std::scoped_lock lock(mutex);
    return last;
  };
  WapGatewayOptions options;
  options.onRequest = [&](const WapRequest& request) {
    const std::scoped_lock lock(mutex);
    last = request;
    return WapResponse{.contentType = "application/vnd.wap.mms-message",
                       .headers = {{"Server", "S"}},
                       .body = request.body};
  };
  const auto gateway = started(std::move(options));
  Call call(*gateway);
  for (const std::size_t size : {std::size_t{0}, std::size_t{1400}, std::size_t{300000}}) {
    const Body body = pattern(size);
    ASSERT_EQ(call.phone.post(++call.id, "http://mmsc/", hex("BE A9 'Q' 00"), body), Refusal::none);
    const auto result = call.phone.wait();
    EXPECT_EQ(result.kind, Kind::methodResultIndication);
    EXPECT_EQ(result.code, 0x20);
    EXPECT_EQ(test::toHex(result.headers), test::toHex(hex("BE A6 'S' 00")));
    EXPECT_TRUE(result.body == body) << size;
    EXPECT_TRUE(lastSeen().body == body) << size;
  }
  WapRequest seen = lastSeen();
  EXPECT_EQ(seen.method, "POST");
  EXPECT_EQ(seen.uri, "http://mmsc/");
  EXPECT_EQ(seen.contentType, "application/vnd.wap.mms-message");
  EXPECT_EQ(seen.peer, "127.0.0.1:" + std::to_string(call.phone.port()));
  const std::vector<HeaderField> headers{{"User-Agent", "Q"}, {"Accept-Language", "en"}};
  EXPECT_EQ(seen.headers, headers);

  EXPECT_EQ(call.phone.client().invokeMethod(9, 0x40, "u", {}, {}, WapPhone::Clock::now()),
            Refusal::none);
  EXPECT_EQ(call.phone.wait().code, 0x20);
  seen = lastSeen();
  EXPECT_EQ(seen.method, "GET");
  EXPECT_EQ(seen.contentType, "");
  EXPECT_EQ(settled(*gateway, &WapGatewayCounters::methodsAnswered, 4), 4u);
}

TEST(WapGateway, ConnectsEndAsTheyAreTold) {
  struct Case {
    const char* name;
    WapGatewayOptions options;
    int code;
    std::uint16_t port;  ///< of the address that it is redirected to
  };
  const Case cases[] = {{"refused", {.refuseStatus = 403}, 0x43, 0},
                        {"refused with a status that WSP has not", {.refuseStatus = 599}, 0x60, 0},
                        {"aborted", {.abortReason = 0xE4}, 0xE4, 0},
                        {"redirected", {.redirect = "127.0.0.1:50123"}, 0x32, 50123},
                        {"redirected for good",
                         {.redirect = "127.0.0.1:50123", .redirectPermanent = true},
                         0x31,
                         50123}};
  for (const Case& test : cases) {
    SCOPED_TRACE(test.name);
    const auto gateway = started(test.options);
    WapPhone phone(gateway->port());
    phone.connect(kAnything, {});
    const auto ended = phone.wait();
    EXPECT_EQ(ended.kind, Kind::disconnectIndication);
    EXPECT_EQ(ended.code, test.code);
    EXPECT_EQ(ended.redirect.empty() ? 0 : ended.redirect.front().port, test.port);
    EXPECT_EQ(gateway->counters().sessions, 0u);
  }
}

TEST(WapGateway, HeadersOfASessionHaveALimit) {
  constexpr std::size_t kMost = 16384;
  const auto gateway = started({});
  for (const std::size_t octets : {kMost, kMost + 1}) {
    Body headers(octets, 'x');  // "x...": "x"
    headers[octets - 3] = headers.back() = 0;
    WapPhone phone(gateway->port());
    phone.connect(kAnything, headers);
    const auto answer = phone.wait();
    EXPECT_EQ(answer.kind == Kind::connectConfirm, octets == kMost) << octets;
    EXPECT_EQ(answer.code, octets == kMost ? 0 : 0x4D);
  }
}

TEST(WapGateway, GrantsWhatItIsToldTo) {
  WapGatewayOptions options;
  options.limits = {.clientSduOctets = 2000,
                    .serverSduOctets = 700,
                    .methods = 2,
                    .pushes = 1,
                    .confirmedPush = false};
  options.onRequest = [](const WapRequest&) { return WapResponse{.body = pattern(2000)}; };
  const auto gateway = started(std::move(options));
  WapPhone phone(gateway->port());
  phone.connect(kAnything, {});
  const auto agreement = phone.wait().agreement;
  EXPECT_EQ(agreement.clientSduSize, 2000u);
  EXPECT_EQ(agreement.serverSduSize, 700u);
  EXPECT_EQ(agreement.protocolOptions, 0x60);
  EXPECT_EQ(agreement.methodMor, 2);
  EXPECT_EQ(agreement.pushMor, 1);
  EXPECT_EQ(phone.post(1, "u", hex("BE"), pattern(700)), Refusal::largerThanAgreed);
  EXPECT_NE(gateway->push(0, {}, true), "");
  // An answer that is larger than agreed is not sent.
  EXPECT_EQ(phone.post(1, "u", hex("BE"), pattern(600)), Refusal::none);
  const auto ended = phone.wait();
  EXPECT_EQ(ended.kind, Kind::methodAbortIndication);
  EXPECT_EQ(ended.code, 0xE6);
}

TEST(WapGateway, MethodsEndAsTheirFunctionSays) {
  int turn = 0;
  WapGatewayOptions options;
  options.onRequest = [&turn](const WapRequest&) -> WapResponse {
    switch (++turn) {
      case 1:
        return {.status = 404};
      case 2:
        return {.abortReason = 0xE9};
      case 3:
        return {.delay = 300ms};
      default:
        throw std::runtime_error("no");
    }
  };
  const auto gateway = started(std::move(options));
  Call call(*gateway);
  EXPECT_EQ(call.post({}).code, 0x44);
  const auto aborted = call.post({});
  EXPECT_EQ(aborted.kind, Kind::methodAbortIndication);
  EXPECT_EQ(aborted.code, 0xE9);
  const auto before = WapPhone::Clock::now();
  EXPECT_EQ(call.post({}).code, 0x20);
  EXPECT_GE(WapPhone::Clock::now() - before, 300ms);
  EXPECT_EQ(call.post({}).code, 0x60);
  EXPECT_EQ(gateway->counters().methodsAborted, 1u);
}

TEST(WapGateway, LostDatagramsAreMadeUpFor) {
  struct Case {
    const char* name;
    WapGatewayOptions options;
  };
  const Case cases[] = {{"listed ones", {.dropReceived = {1, 4}, .dropSent = {2, 3}}},
                        {"a share of them", {.lossPercent = 10, .lossSeed = 7}}};
  for (const Case& test : cases) {
    SCOPED_TRACE(test.name);
    WapGatewayOptions options = test.options;
    std::atomic<std::uint64_t> shown = 0;
    std::atomic<std::uint64_t> dropped = 0;
    options.onRequest = [](const WapRequest& request) { return WapResponse{.body = request.body}; };
    options.onDatagram = [&](const WapDatagram& datagram) {
      ++shown;
      if (datagram.dropped) ++dropped;
    };
    const auto gateway = started(std::move(options));
    Call call(*gateway);
    const Body body = pattern(60000);
    const auto result = call.post(body);
    EXPECT_EQ(result.kind, Kind::methodResultIndication);
    EXPECT_TRUE(result.body == body);
    EXPECT_GE(dropped, 4u);
    const auto counters = gateway->counters();
    EXPECT_EQ(counters.methods, 1u) << "the request was served twice";
    EXPECT_GE(counters.datagramsSent + counters.datagramsReceived, shown);
  }
}

TEST(WapGateway, PushesReachTheirClient) {
  const WapPush push{.contentType = "application/vnd.wap.mms-message",
                     .headers = {{"X-Wap-Application-Id", "x-wap-application:mms.ua"}},
                     .body = hex("8C 82")};
  const auto gateway = started({});
  EXPECT_NE(gateway->push(0, push, false), "") << "to nobody";
  Call call(*gateway);
  for (const bool confirmed : {false, true}) {
    EXPECT_EQ(gateway->push(0, push, confirmed), "");
    const auto event = call.phone.wait();
    EXPECT_EQ(event.kind, confirmed ? Kind::confirmedPushIndication : Kind::pushIndication);
    EXPECT_EQ(event.body, push.body);
    EXPECT_EQ(readTypedHeaders(event.headers).contentType, push.contentType);
  }
  EXPECT_EQ(settled(*gateway, &WapGatewayCounters::pushesConfirmed, 1), 1u);

  test::UdpSocket listener;
  const std::string address = "127.0.0.1:" + std::to_string(listener.port());
  for (const char* const expected : {"00 06 03 BE AF 84 8C 82", "01 06 03 BE AF 84 8C 82"}) {
    EXPECT_EQ(gateway->pushTo(address, push), "");
    EXPECT_EQ(test::toHex(listener.receive(5s).value_or(Body{})), expected);
  }
  EXPECT_NE(gateway->pushTo("127.0.0.1", push), "");
}

TEST(WapGateway, SessionsEndSuspendAndResume) {
  std::atomic<WapGateway*> self = nullptr;
  WapGatewayOptions options;
  options.onRequest = [&self](const WapRequest& request) {
    EXPECT_EQ(self.load()->disconnect(request.session), "");
    return WapResponse{};
  };
  const auto gateway = started(std::move(options));
  self = gateway.get();
  Call call(*gateway);
  EXPECT_EQ(call.phone.client().suspend(WapPhone::Clock::now()), Refusal::none);
  EXPECT_EQ(call.phone.wait().kind, Kind::suspendIndication);
  WdpAddress server{.octets = {127, 0, 0, 1}, .size = 4, .port = gateway->port()};
  EXPECT_EQ(call.phone.client().resume(server, {}, WapPhone::Clock::now()), Refusal::none);
  EXPECT_EQ(call.phone.wait().kind, Kind::resumeConfirm);
  call.phone.post(1, "u", hex("BE"), {});
  while (call.phone.wait().kind != Kind::disconnectIndication) continue;
  const auto counters = gateway->counters();
  EXPECT_EQ(counters.suspends, 1u);
  EXPECT_EQ(counters.resumes, 1u);
  EXPECT_EQ(counters.disconnects, 1u);
  EXPECT_NE(gateway->disconnect(0), "") << "it is gone";
}

TEST(WapGateway, SaysWhyItCannotStart) {
  const auto first = started({});
  std::string error;
  WapGatewayOptions options;
  options.port = first->port();
  EXPECT_EQ(WapGateway::start(options, error), nullptr);
  EXPECT_NE(error.find(std::to_string(first->port())), std::string::npos) << error;
  EXPECT_EQ(WapGateway::start({.redirect = "127.0.0.1:x"}, error), nullptr);
  EXPECT_NE(error.find("127.0.0.1:x"), std::string::npos) << error;
  EXPECT_EQ(started({.host = "::1"})->address().substr(0, 6), "[::1]:");
}

}  // namespace
}  // namespace mmsbrix
