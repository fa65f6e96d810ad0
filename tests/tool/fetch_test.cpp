// The receiving half of a conversation: what one user submits, another fetches and answers.
#include "fetch.h"

#include <gtest/gtest.h>
#include <mmsbrix/mms/inspector.h>
#include <mmsbrix/transport/mmshttp.h>

#include <array>
#include <filesystem>
#include <memory>

#include "command_line.h"
#include "compose.h"
#include "relay_server.h"
#include "send.h"
#include "support/send_req.h"
#include "support/temporary_folder.h"

namespace mmsbrix::test {
namespace {

using tool::RelayExchange;
using tool::RelayServer;

std::unique_ptr<RelayServer> startRelay(tool::RelayOptions options) {
  std::string error;
  auto relay = RelayServer::start(std::move(options), error);
  EXPECT_TRUE(relay) << error;
  return relay;
}

std::string onlyFileIn(const std::string& folder) {
  for (const auto& entry : std::filesystem::directory_iterator(folder)) return entry.path();
  return "";
}

class Conversation : public testing::Test {
 protected:
  // Ann submits, and Bob's notification waits.
  void annSends() {
    tool::ComposeCommand compose;
    compose.output = folder_.path("sent.mms");
    compose.to = {"+358402222222", "+358403333333"};
    compose.bcc = {"+358404444444"};
    compose.from = "+358401111111";
    compose.subject = "Grüße";
    compose.hasSubject = true;
    compose.readReply = "yes";
    compose.texts = {"Hello Bob"};
    compose.expiry = "2d";
    Caught composed;
    ASSERT_EQ(runCompose(compose, composed.streams()), 0) << composed.err.str();
    tool::SendCommand send;
    send.file = compose.output;
    send.url = "http://mmsc.example/mms";
    send.proxy = relay_->address();
    Caught sent;
    ASSERT_EQ(runSend(send, sent.streams()), 0) << sent.err.str();
  }
  tool::FetchCommand bobFetches() {
    tool::FetchCommand fetch;
    fetch.notificationFile = onlyFileIn(folder_.path("waiting"));
    fetch.output = folder_.path("got.mms");
    fetch.proxy = relay_->address();
    return fetch;
  }
  // What the relay was told last.
  RelayExchange last() const { return relay_->exchanges().back(); }

  TemporaryFolder folder_;
  std::unique_ptr<RelayServer> relay_ = startRelay({.notifyDirectory = folder_.path("waiting")});
};

TEST_F(Conversation, AMessageGoesThereAndItsAnswersBack) {
  annSends();
  Caught fetched;
  ASSERT_EQ(runFetch(bobFetches(), fetched.streams()), 0) << fetched.err.str();
  EXPECT_NE(fetched.out.str().find("0x80 Ok\nanswered: m-notifyresp-ind\n"), std::string::npos)
      << fetched.out.str();
  const Inspection answer = inspect(last().pdu.data(), last().pdu.size());
  EXPECT_EQ(answer.find(0x15)->value, "Retrieved");
  EXPECT_EQ(answer.find(0x18)->text->substr(0, 2), "N-");

  // The same body, and no word of Bcc, expiry or Ann's transaction.
  const std::string sent = folder_.get("sent.mms");
  const std::string got = folder_.get("got.mms");
  const Inspection before = inspect(sent.data(), sent.size());
  const Inspection after = inspect(got.data(), got.size());
  EXPECT_EQ(after.messageTypeName, "m-retrieve-conf");
  EXPECT_TRUE(after.remarks.empty()) << after.remarks.front().text;
  EXPECT_EQ(got.substr(after.headerLength), sent.substr(before.headerLength));
  EXPECT_EQ(after.find(0x01), nullptr);
  EXPECT_EQ(after.find(0x08), nullptr);
  EXPECT_NE(*after.find(0x18)->text, *before.find(0x18)->text);
  EXPECT_EQ(after.find(0x16)->value, before.find(0x16)->value);

  tool::ReportCommand report;
  report.file = folder_.path("got.mms");
  report.url = "http://" + relay_->address() + "/";
  Caught reported;
  EXPECT_EQ(runReport(report, reported.streams()), 0) << reported.err.str();
  EXPECT_EQ(last().text, "m-read-rec-ind");

  tool::ComposeCommand reply;
  reply.output = folder_.path("reply.mms");
  reply.replyTo = report.file;
  reply.own = {"040 222 2222"};
  reply.texts = {"Hi"};
  Caught composed;
  ASSERT_EQ(runCompose(reply, composed.streams()), 0) << composed.err.str();
  CMMsg message;
  ASSERT_EQ(MMS_Load(reply.output.c_str(), &message, 0), 1);
  EXPECT_EQ(message.GetTo()->Count(), 2u);
  EXPECT_STREQ(message.GetTo()->Get(0)->Value()->Get(), "+358401111111");
  EXPECT_STREQ(message.GetTo()->Get(1)->Value()->Get(), "+358403333333");
  EXPECT_EQ(message.GetSubject()->Text(), "Re: Grüße");
}

TEST_F(Conversation, ADeferredMessageIsFetchedLaterAndAcknowledged) {
  annSends();
  tool::FetchCommand defer = bobFetches();
  defer.output.clear();
  defer.defer = true;
  Caught deferred;
  ASSERT_EQ(runFetch(defer, deferred.streams()), 0) << deferred.err.str();
  EXPECT_EQ(inspect(last().pdu.data(), last().pdu.size()).find(0x15)->value, "Deferred");

  tool::FetchCommand later;
  later.location = last().target;
  later.proxy = relay_->address();
  later.output = "-";
  later.reportAllowed = "no";
  Caught fetched;
  ASSERT_EQ(runFetch(later, fetched.streams()), 0) << fetched.err.str();
  EXPECT_EQ(fetched.out.str().substr(0, 2), "\x8C\x84");
  EXPECT_EQ(last().text, "m-acknowledge-ind");
  EXPECT_EQ(inspect(last().pdu.data(), last().pdu.size()).find(0x11)->value, "No");
}

TEST_F(Conversation, WhatCannotBeStoredIsNotAnswered) {
  annSends();
  tool::FetchCommand fetch = bobFetches();
  fetch.output = folder_.path("none/got.mms");
  Caught caught;
  EXPECT_EQ(runFetch(fetch, caught.streams()), 1);
  EXPECT_EQ(last().method, "GET");
}

struct HiddenCase {
  const char* from;
  const char* visibility;
  bool shown;
};

TEST_F(Conversation, ASenderWhoHidesIsNotTold) {
  for (const auto& [from, visibility, shown] : std::to_array<HiddenCase>(
           {{"+358401111111", "show", true}, {"+358401111111", "hide", false}, {"", "", false}})) {
    tool::ComposeCommand compose;
    compose.output = folder_.path("sent.mms");
    compose.to = {"+358402222222"};
    compose.from = from;
    compose.visibility = visibility;
    compose.texts = {"x"};
    Caught composed;
    ASSERT_EQ(runCompose(compose, composed.streams()), 0);
    CMMSHttp transport;
    transport.ConnectGtw(nullptr, 0, 0);
    const std::string url = "http://" + relay_->address();
    ASSERT_TRUE(transport.SendMMS(url.c_str(), compose.output.c_str(), 0));
    std::vector<std::uint8_t> pdu;
    ASSERT_TRUE(transport.FetchMMS((url + "/message/" + last().messageId).c_str(), pdu));
    EXPECT_EQ(inspect(pdu.data(), pdu.size()).find(0x09) != nullptr, shown) << visibility;
    transport.DisconnectGtw();
  }
}

TEST(SizeLimit, AMessageBeyondTheLimitIsNotUploaded) {
  const auto relay = startRelay({});
  const std::string pdu = encodeSendReq();
  CMMSHttp transport;
  transport.ConnectGtw(nullptr, 0, 0);
  const std::string url = "http://" + relay->address() + "/";
  transport.SetSizeLimit(pdu.size() - 1);
  EXPECT_FALSE(transport.SendPdu(url.c_str(), pdu.data(), pdu.size()));
  EXPECT_EQ(transport.GetResult(nullptr), 223u);
  EXPECT_EQ(relay->connectionCount(), 0u);
  transport.SetSizeLimit(pdu.size());
  EXPECT_TRUE(transport.SendPdu(url.c_str(), pdu.data(), pdu.size()));
  transport.DisconnectGtw();
}

}  // namespace
}  // namespace mmsbrix::test
