// Submission by WAP as a host uses it, against the small gateway over real UDP on loopback.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <mmsbrix/transport/mmswap.h>
#include <mmsbrix/transport/push_listener.h>
#include <mmsbrix/transport/trace_log.h>
#include <mmsbrix/transport/wap_gateway.h>
#include <mmsbrix/transport/wap_stack.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "support/hex.h"
#include "support/temporary_folder.h"
#include "support/wap_phone.h"
#include "transport/wap_client.h"

namespace mmsbrix::test {
namespace {

using namespace std::chrono_literals;
using Outcome = CMMSWap::Outcome;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsSupersetOf;
using testing::StartsWith;

constexpr char kUrl[] = "http://mmsc.example/mms";
const std::vector<std::uint8_t> kSendConfOk =
    hex("8C 81 98 'T1' 00 8D 90 92 80 93 'thanks' 00 8B 'id1' 00");
const std::vector<std::uint8_t> kNotification =
    hex("8C 82 98 'N1' 00 8D 90 8A 80 8E 02 10 00 88 05 81 03 01 51 80 83 'http://m/1' 00");

WapResponse mms(std::vector<std::uint8_t> pdu) {
  return {.contentType = "application/vnd.wap.mms-message", .body = std::move(pdu)};
}

std::unique_ptr<WapGateway> started(WapGatewayOptions options) {
  options.retryInterval = 200ms;
  if (!options.onRequest) {
    options.onRequest = [](const WapRequest&) { return mms(kSendConfOk); };
  }
  std::string error;
  auto gateway = WapGateway::start(std::move(options), error);
  if (gateway == nullptr) throw std::runtime_error(error);
  return gateway;
}
std::unique_ptr<WapGateway> answering(WapResponse response) {
  return started({.onRequest = [response](const WapRequest&) { return response; }});
}

/// A transport with little patience.
class Submission {
 public:
  Submission() { wap_.SetTiming({.retryInterval = 100ms, .maxRetries = 3}); }
  Submission(const Submission&) = delete;
  Submission& operator=(const Submission&) = delete;
  ~Submission() { wap_.DisconnectGtw(); }

  bool connect(const WapGateway& gateway) {
    return wap_.ConnectGtw("127.0.0.1", gateway.port(), 0);
  }
  bool send(const std::string& message = "message") {
    return wap_.SendMMS(kUrl, folder_.put("out.mms", message).c_str(), 0);
  }
  std::string text() {
    char text[512] = "untouched";
    wap_.GetResult(text);
    return text;
  }
  CMMSWap& wap() { return wap_; }
  [[nodiscard]] const TemporaryFolder& folder() const { return folder_; }

 private:
  CMMSWap wap_;
  TemporaryFolder folder_;
};

/// The trace while it lives.
class TraceLines {
 public:
  TraceLines() {
    setTraceSink([this](std::string_view line) {
      const std::lock_guard lock(mutex_);
      lines_.emplace_back(line);
    });
  }
  TraceLines(const TraceLines&) = delete;
  TraceLines& operator=(const TraceLines&) = delete;
  ~TraceLines() { setTraceSink({}); }
  /// Without the datagrams.
  std::vector<std::string> steps() {
    const std::lock_guard lock(mutex_);
    std::vector<std::string> steps;
    for (const std::string& line : lines_) {
      if (!line.starts_with("--> ") && !line.starts_with("<-- ")) steps.push_back(line);
    }
    return steps;
  }
  std::vector<std::string> all() {
    const std::lock_guard lock(mutex_);
    return lines_;
  }

 private:
  std::mutex mutex_;
  std::vector<std::string> lines_;
};

TEST(WapSubmission, PostsTheFileAndReadsTheAnswer) {
  WapRequest seen;
  const auto gateway = started({.onRequest = [&seen](const WapRequest& request) {
    seen = request;
    return mms(kSendConfOk);
  }});
  Submission submission;
  ASSERT_TRUE(submission.connect(*gateway)) << submission.wap().GetFailureDetail();
  const std::string message(100'000, 'm');
  EXPECT_TRUE(submission.send(message)) << submission.wap().GetFailureDetail();
  EXPECT_EQ(submission.wap().GetResult(nullptr), 0x80u);
  EXPECT_EQ(submission.text(), "thanks");
  EXPECT_EQ(submission.wap().GetOutcome(), Outcome::accepted);
  ASSERT_EQ(gateway->counters().methods, 1u);
  EXPECT_EQ(seen.method, "POST");
  EXPECT_EQ(seen.uri, kUrl);
  EXPECT_EQ(seen.contentType, "application/vnd.wap.mms-message");
  EXPECT_TRUE(std::string(seen.body.begin(), seen.body.end()) == message);
  EXPECT_THAT(seen.headers, ElementsAre(HeaderField{"Accept", "*/*"},
                                        HeaderField{"User-Agent", "Tarvik Mmsbrix 1.0"}));
  submission.wap().DisconnectGtw();
  for (int i = 0; i < 500 && gateway->counters().disconnects == 0; ++i) {
    std::this_thread::sleep_for(10ms);  // it has no answer that could be waited for
  }
  EXPECT_EQ(gateway->counters().disconnects, 1u);
  EXPECT_EQ(submission.wap().GetResult(nullptr), 0u);
  EXPECT_EQ(submission.text(), "untouched");
}

TEST(WapSubmission, EachStepIsTraced) {
  const auto gateway = answering({.status = 200,
                                  .contentType = "text/plain",
                                  .headers = {{"Server", "S"}},
                                  .body = hex("'two' 0D 0A 'lines'")});
  releaseWapStack();
  Submission submission;
  TraceLines trace;
  ASSERT_TRUE(submission.connect(*gateway));
  EXPECT_FALSE(submission.send());
  submission.wap().DisconnectGtw();
  const std::vector<std::string> steps = trace.steps();
  const std::string port = std::to_string(gateway->port());
  EXPECT_THAT(
      steps, ElementsAre("WAP/MMS stack started.",
                         "WAP Gateway Address = 127.0.0.1, Port = " + port + " (Port Type = 0)",
                         "Port Type Unknown : use 9201", "selectLocalIPaddress() = 127.0.0.1",
                         StartsWith("m_LocalAddr = 127.0.0.1:"), "WspClient Connecting...",
                         "s_Connect_cnf", "Headers:", "  Len = 0",
                         "Capabilities:", "  client_SDU_Size = 0", "  server_SDU_Size = 1048576",
                         "  maxOutstandingMethodReqs = 4", "  maxOutstandingPushReqs = 1",
                         "  confPushFacility = 0", "  pushFacility = 0",
                         "  sessionResumeFacility = 1", "  ackHeaders = 0",
                         "WspClient SendMMS() pszMMSCUrl = http://mmsc.example/mms, pszMMSFile = " +
                             submission.folder().path("out.mms"),
                         "WspClient Posting...", "s_MethodInvoke_cnf() transactionId = 1",
                         "s_MethodResult_ind() transactionId = 1", "WSP Status: 0x20 (OK)",
                         "Content type: text/plain", "Headers: Len = 3", "  Server: S",
                         "Body: Len = 10", "Body: two\r\nlines", "WspClient Disconnecting...",
                         "s_Disconnect_ind() reasonCode = 0xEA (User request)"));
  EXPECT_THAT(trace.all(), IsSupersetOf({StartsWith("--> 0A "), StartsWith("<-- ")}));
}

TEST(WapSubmission, EveryEndHasItsCodeTextAndLayer) {
  struct Case {
    WapResponse response;
    unsigned code;
    const char* text;
    Outcome outcome;
    const char* detail;
  };
  const Case cases[] = {
      {mms(hex("8C 81 98 'T1' 00 8D 90 92 84 93 'who?' 00")), 0x84, "who?", Outcome::relayStatus,
       ""},
      {mms(hex("8C 81 98 'T1' 00 8D 90")), 0, "", Outcome::relayStatus,
       "the answer has no response status"},
      {mms(hex("'<html>'")), 0x81, "", Outcome::relayStatus, "the answer is no m-send-conf"},
      {mms(kNotification), 0x81, "", Outcome::relayStatus, "the answer is no m-send-conf"},
      {{.contentType = "text/html", .body = kSendConfOk},
       0x81,
       "",
       Outcome::relayStatus,
       "the answer is no MMS message"},
      {{.status = 404}, 0x44, "Not Found", Outcome::gatewayStatus, "0x44 (Not Found), HTTP 404"},
      {{.status = 500}, 0x60, "Internal Server Error", Outcome::gatewayStatus, "HTTP 500"},
      {{.abortReason = 0xE4},
       0,
       "",
       Outcome::aborted,
       "0xE4 (The peer is congested and can not process the SDU)"},
      {{.abortReason = 0xE2}, 0, "", Outcome::aborted, "0xE2 (Session has been suspended)"},
      {{.abortReason = 0xE9}, 0, "", Outcome::noAnswer, "does not answer any more"}};
  for (const Case& expected : cases) {
    const auto gateway = answering(expected.response);
    Submission submission;
    ASSERT_TRUE(submission.connect(*gateway));
    EXPECT_FALSE(submission.send());
    EXPECT_EQ(submission.wap().GetResult(nullptr), expected.code);
    EXPECT_EQ(submission.text(), expected.text);
    EXPECT_EQ(submission.wap().GetOutcome(), expected.outcome) << expected.detail;
    EXPECT_THAT(submission.wap().GetFailureDetail(), HasSubstr(expected.detail));
  }
}

TEST(WapSubmission, CodesHaveTexts) {
  EXPECT_EQ(httpStatusOf(0x20), 200u);
  EXPECT_EQ(httpStatusOf(0x44), 404u);
  EXPECT_EQ(httpStatusOf(0x50), 416u);
  EXPECT_EQ(httpStatusOf(0x51), 417u);
  EXPECT_EQ(httpStatusOf(0x65), 505u);
  EXPECT_STREQ(sessionCodeText(0x50), "Requested Range Not Satisfiable");
  EXPECT_STREQ(sessionCodeText(0xE0), "Protocol error, illegal PDU received");
  EXPECT_STREQ(sessionCodeText(0xEE), "Content type of Push message cannot be processed");
  EXPECT_STREQ(sessionCodeText(0x7F), "");
}

TEST(WapSubmission, SessionsThatDoNotComeAboutNameTheReason) {
  struct Case {
    WapGatewayOptions options;
    Outcome outcome;
    const char* detail;
  };
  const Case cases[] = {
      {{.refuseStatus = 403}, Outcome::refused, "refused the session: 0x43 (Forbidden"},
      {{.abortReason = 0xE4}, Outcome::refused, "refused the session: 0xE4"},
      {{.lossPercent = 100}, Outcome::noAnswer, "does not answer"}};
  for (const Case& expected : cases) {
    const auto gateway = started(expected.options);
    Submission submission;
    EXPECT_FALSE(submission.connect(*gateway));
    EXPECT_EQ(submission.wap().GetOutcome(), expected.outcome);
    EXPECT_THAT(submission.wap().GetFailureDetail(), HasSubstr(expected.detail));
    EXPECT_FALSE(submission.send());
    EXPECT_EQ(submission.wap().GetResult(nullptr), 0u);
    EXPECT_EQ(submission.text(), "");
  }
  Submission submission;
  TraceLines trace;
  EXPECT_FALSE(submission.wap().ConnectGtw("no.such.host.invalid", 9201, 0));
  EXPECT_EQ(submission.wap().GetOutcome(), Outcome::noPort);
  EXPECT_EQ(trace.steps().back(), "createClientPort() Failed");
  EXPECT_FALSE(submission.wap().ConnectGtw(nullptr, 9201, 0));
  const auto willing = started({});
  for (const unsigned port : {0U, 65536U + willing->port()}) {
    EXPECT_FALSE(submission.wap().ConnectGtw("127.0.0.1", port, 0));
    EXPECT_EQ(submission.wap().GetOutcome(), Outcome::noPort) << port;
  }
}

TEST(WapSubmission, OneRedirectIsFollowed) {
  for (const bool permanent : {false, true}) {
    const auto gateway = started({});
    const auto first = started({.redirect = gateway->address(), .redirectPermanent = permanent});
    Submission submission;
    TraceLines trace;
    EXPECT_TRUE(submission.connect(*first)) << submission.wap().GetFailureDetail();
    EXPECT_TRUE(submission.send());
    EXPECT_THAT(
        trace.steps(),
        IsSupersetOf({permanent ? "s_Disconnect_ind() reasonCode = 0x31 (Moved Permanently)"
                                : "s_Disconnect_ind() reasonCode = 0x32 (Moved temporarily)",
                      ("s_Disconnect_ind() Redirect Address = " + gateway->address()).c_str()}));

    const auto ring = started({.redirect = first->address()});
    EXPECT_FALSE(submission.connect(*ring));
    EXPECT_EQ(submission.wap().GetOutcome(), Outcome::refused);
    EXPECT_EQ(first->counters().connects, 2u);
    EXPECT_EQ(gateway->counters().connects, 1u);
    EXPECT_THAT(submission.wap().GetFailureDetail(), HasSubstr(first->address()));
  }
}

TEST(WapSubmission, NothingIsSentWithoutASessionOrAFile) {
  const auto gateway = started({});
  Submission submission;
  EXPECT_FALSE(submission.send());
  EXPECT_EQ(submission.wap().GetOutcome(), Outcome::none);
  submission.wap().DisconnectGtw();
  ASSERT_TRUE(submission.connect(*gateway));
  EXPECT_FALSE(submission.wap().SendMMS(kUrl, submission.folder().path("none").c_str(), 0));
  EXPECT_EQ(submission.wap().GetOutcome(), Outcome::fileUnreadable);
  EXPECT_EQ(gateway->counters().methods, 0u);

  // A session that ends while nothing is going on.  Its end is told after that of an exchange which
  // it breaks off, so the next one is refused for sure.
  TraceLines trace;
  const auto endIsTold = [&trace] {
    const auto steps = trace.steps();
    return std::any_of(steps.begin(), steps.end(),
                       [](const auto& step) { return step.starts_with("s_Disconnect_ind"); });
  };
  EXPECT_EQ(gateway->disconnect(0), "");
  for (int i = 0; i < 200 && !endIsTold(); ++i) std::this_thread::sleep_for(5ms);
  EXPECT_FALSE(submission.send());
  EXPECT_EQ(submission.wap().GetOutcome(), Outcome::disconnected);
  EXPECT_THAT(submission.wap().GetFailureDetail(), HasSubstr("has ended: 0xE"));
  const std::size_t steps = trace.steps().size();
  submission.wap().DisconnectGtw();
  EXPECT_EQ(trace.steps().size(), steps);
}

TEST(WapSubmission, ASessionThatEndsMeanwhileEndsTheWait) {
  WapGateway* ending = nullptr;
  const auto gateway = started({.onRequest = [&ending](const WapRequest& request) {
    ending->disconnect(request.session);
    return WapResponse{};
  }});
  ending = gateway.get();
  Submission submission;
  ASSERT_TRUE(submission.connect(*gateway));
  EXPECT_FALSE(submission.send());
  EXPECT_EQ(submission.wap().GetResult(nullptr), 0u);
  EXPECT_THAT(submission.wap().GetFailureDetail(), HasSubstr("0xE"));
}

TEST(WapSubmission, MoreThanTheGatewayTakesIsRefusedHere) {
  const auto gateway = started({.limits = {.serverSduOctets = 2000}});
  Submission submission;
  ASSERT_TRUE(submission.connect(*gateway));
  EXPECT_FALSE(submission.send(std::string(2000, 'x')));
  EXPECT_EQ(submission.wap().GetOutcome(), Outcome::aborted);
  EXPECT_THAT(submission.wap().GetFailureDetail(),
              HasSubstr("0xE6 (The Maximum Receive Unit size was exceeded)"));
  EXPECT_TRUE(submission.send(std::string(1800, 'x')));
  EXPECT_EQ(gateway->counters().methods, 1u);
}

TEST(WapSubmission, LossIsOvercome) {
  const auto gateway = started({.lossPercent = 20, .lossSeed = 7});
  Submission submission;
  submission.wap().SetTiming({.retryInterval = 100ms, .maxRetries = 50});
  ASSERT_TRUE(submission.connect(*gateway)) << submission.wap().GetFailureDetail();
  EXPECT_TRUE(submission.send(std::string(60'000, 'x'))) << submission.wap().GetFailureDetail();
  EXPECT_GT(gateway->counters().datagramsDropped, 5u);
}

TEST(WapSubmission, TheHostStaysAliveWhileItWaits) {
  const auto gateway = answering({.delay = 300ms});
  Submission submission;
  ASSERT_TRUE(submission.connect(*gateway));
  std::atomic<int> pumped{0};
  const auto waiting = std::this_thread::get_id();
  setHostPump([&] {
    EXPECT_EQ(std::this_thread::get_id(), waiting);
    ++pumped;
  });
  submission.send();
  setHostPump({});
  EXPECT_GT(pumped, 5);
  EXPECT_TRUE(submission.wap().Abort());
}

TEST(WapSubmission, AHostThatDisconnectsInItsPumpIsHeardWhenTheWaitIsOver) {
  const auto gateway =
      started({.onRequest = [](const WapRequest&) { return WapResponse{.delay = 100ms}; },
               .dropReceived = {1}});
  for (const bool connecting : {true, false}) {
    Submission submission;
    if (!connecting) {
      ASSERT_TRUE(submission.connect(*gateway));
    }
    setHostPump([&] {
      EXPECT_FALSE(submission.wap().ConnectGtw("127.0.0.1", gateway->port(), 0));
      EXPECT_FALSE(submission.wap().SendMMS(kUrl, "none", 0));
      submission.wap().DisconnectGtw();
    });
    EXPECT_FALSE(connecting ? submission.connect(*gateway) : submission.send());
    setHostPump({});
    EXPECT_EQ(submission.wap().GetOutcome(), Outcome::none);
    EXPECT_FALSE(submission.send());
  }
  EXPECT_EQ(gateway->counters().connects, 2u);
}

TEST(WapSubmission, WhatTheHostThrowsOnTheStacksThreadEndsNothing) {
  const auto gateway = started({});
  Submission submission;
  std::atomic<int> told{0};
  submission.wap().SetNotificationHandler([&told](const CMMsg&) {
    if (++told == 1) throw std::runtime_error("the host's");
    throw 1;
  });
  setTraceSink([](std::string_view) { throw 1; });
  EXPECT_TRUE(submission.connect(*gateway));
  const WapPush notification{"application/vnd.wap.mms-message", {}, kNotification};
  EXPECT_EQ(gateway->push(0, notification, true), "");
  EXPECT_EQ(gateway->push(0, notification, true), "");
  for (int i = 0; i < 500 && gateway->counters().pushesAborted < 2; ++i) {
    std::this_thread::sleep_for(10ms);
  }
  EXPECT_EQ(told, 2);
  EXPECT_TRUE(submission.send());
  submission.wap().DisconnectGtw();
  setTraceSink({});
}

TEST(WapSubmission, IPv6) {
  std::string error;
  const auto gateway = WapGateway::start(
      {.host = "::1", .onRequest = [](const WapRequest&) { return mms(kSendConfOk); }}, error);
  if (gateway == nullptr) GTEST_SKIP() << error;
  Submission submission;
  TraceLines trace;
  EXPECT_TRUE(submission.wap().ConnectGtw("::1", gateway->port(), 0))
      << submission.wap().GetFailureDetail();
  EXPECT_TRUE(submission.send());
  EXPECT_THAT(trace.steps(), IsSupersetOf({"selectLocalIPaddress() = ::1"}));
}

TEST(WapStackRelease, EndsWhatIsUnderWayAndStartsAgain) {
  const auto gateway = answering({.delay = 60s});
  Submission submission;
  ASSERT_TRUE(submission.connect(*gateway));
  std::thread sender([&] { EXPECT_FALSE(submission.send()); });
  while (gateway->counters().methods == 0) std::this_thread::sleep_for(1ms);
  releaseWapStack();
  sender.join();
  EXPECT_EQ(submission.wap().GetOutcome(), Outcome::disconnected);
  EXPECT_FALSE(submission.send());
  const auto willing = started({});
  EXPECT_TRUE(submission.connect(*willing)) << submission.wap().GetFailureDetail();
  EXPECT_TRUE(submission.send());
}

/// What came by push.
struct Inbox {
  void take(const CMMsg& notification) {
    const std::lock_guard lock(mutex);
    ids.emplace_back(notification.GetTransactionId());
  }
  std::vector<std::string> wait(std::size_t count) {
    for (int i = 0; i < 500; ++i) {
      {
        const std::lock_guard lock(mutex);
        if (ids.size() >= count) return ids;
      }
      std::this_thread::sleep_for(10ms);
    }
    return ids;
  }
  std::mutex mutex;
  std::vector<std::string> ids;
};

TEST(WapPush, NotificationsComeThroughASession) {
  const auto gateway = started({});
  Inbox inbox;
  Submission submission;
  submission.wap().SetNotificationHandler(
      [&inbox](const CMMsg& notification) { inbox.take(notification); });
  ASSERT_TRUE(submission.connect(*gateway));
  const WapPush notification{"application/vnd.wap.mms-message",
                             {{"X-Wap-Application-Id", "x-wap-application:mms.ua"}},
                             kNotification};
  EXPECT_EQ(gateway->push(0, notification, false), "");
  EXPECT_EQ(gateway->push(0, notification, true), "");
  EXPECT_EQ(gateway->push(0, {"text/plain", {}, hex("'no'")}, true), "");
  EXPECT_THAT(inbox.wait(2), ElementsAre("N1", "N1"));
  for (int i = 0; i < 500 && gateway->counters().pushesAborted == 0; ++i) {
    std::this_thread::sleep_for(10ms);
  }
  EXPECT_EQ(gateway->counters().pushesConfirmed, 1u);
  EXPECT_EQ(gateway->counters().pushesAborted, 1u);
  EXPECT_TRUE(submission.send());
}

TEST(WapPush, TheListenerHearsEachPushOnce) {
  const auto gateway = started({});
  Inbox inbox;
  std::atomic<int> others{0};
  PushListener listener;
  ASSERT_TRUE(listener.Start("127.0.0.1", 0, [&](const Push& push) {
    EXPECT_THAT(push.from, StartsWith("127.0.0.1:"));
    if (push.contentType == "image/gif") throw std::runtime_error("the host's");
    if (push.notification == nullptr) {
      ++others;
      EXPECT_EQ(push.contentType, "text/plain");
    } else {
      EXPECT_EQ(push.body, kNotification);
      inbox.take(*push.notification);
    }
  })) << listener.GetFailureDetail();
  const std::string at = "127.0.0.1:" + std::to_string(listener.GetPort());
  const TemporaryFolder folder;
  setExceptionLogFolder(folder.path().c_str());
  EXPECT_EQ(gateway->pushTo(at, {"image/gif", {}, {}}), "");
  UdpSocket sender;
  const auto push = [&](std::uint8_t id) {  // of text/plain
    sender.send(listener.GetPort(), std::array<std::uint8_t, 4>{id, 0x06, 0x01, 0x83});
  };
  for (int i = 0; i < 3; ++i) push(1);  // copies on the way
  for (std::uint8_t id = 2; id < 70; ++id) push(id);
  push(1);  // too many pushes later it is another one
  EXPECT_EQ(gateway->pushTo(at, {"application/vnd.wap.mms-message", {}, kNotification}), "");
  EXPECT_THAT(inbox.wait(1), ElementsAre("N1"));
  EXPECT_EQ(others, 70);
  EXPECT_THAT(folder.get("exceptions.log"), HasSubstr("the host's"));
  setExceptionLogFolder("");
  listener.Stop();
  EXPECT_EQ(listener.GetPort(), 0);
  EXPECT_FALSE(listener.Start("192.0.2.1", 0, {}));
  EXPECT_THAT(listener.GetFailureDetail(), HasSubstr("192.0.2.1"));
}

}  // namespace
}  // namespace mmsbrix::test
