// Every way a submission ends, with the code and the text that the caller sees.
#include <gtest/gtest.h>
#include <mmsbrix/mmsbrix.h>

#include <memory>
#include <string>
#include <vector>

#include "relay_server.h"
#include "support/mms_http.h"
#include "support/raw_server.h"
#include "support/send_req.h"
#include "support/temporary_folder.h"

namespace mmsbrix::test {
namespace {

using tool::RelayOptions;
using tool::RelayServer;
using tool::ReplyFault;

constexpr char kNoGateway[] = "Failed to connect to the gateway\n\nCheck setup.";
constexpr char kCompleted[] = "The request completed successfully.";
constexpr char kInvalidUrl[] = "The URL is invalid.";
constexpr char kUnknownScheme[] = "The URL scheme could not be recognized or is not supported.";

struct Case {
  const char* name;
  unsigned long code;  ///< 0x80 for a submission that is accepted
  std::string text{};
  RelayOptions relay{};
  std::string url{};                      ///< in place of the relay's
  std::string proxyHost{};                ///< "relay" is the relay itself
  std::string answer{};                   ///< octets of a server in place of the relay
  std::string message = encodeSendReq();  ///< empty for a file that is missing
};

Case at(const char* name, unsigned long code, const char* text, std::string url,
        const char* proxyHost = "", RelayOptions relay = {}) {
  return {name, code, text, std::move(relay), std::move(url), proxyHost};
}
Case answered(const char* name, std::string answer) {
  return {name, 200, kCompleted, {}, {}, {}, std::move(answer)};
}
Case sent(const char* name, unsigned long code, const char* text, std::string message,
          RelayOptions relay = {}, const char* url = "") {
  return {name, code, text, std::move(relay), url, {}, {}, std::move(message)};
}

std::vector<Case> cases() {
  using std::chrono::milliseconds;
  const std::string longText(600, 't');
  return {
      {"accepted", 0x80},
      {"accepted with a text", 0x80, "Grüße", {.responseText = "Grüße"}},
      at("accepted through the relay as a proxy", 0x80, "", "http://relay.invalid/mms", "relay"),
      {"accepted slowly, in chunks",
       0x80,
       "",
       {.delay = milliseconds(20),
        .slowOctets = 16,
        .slowInterval = milliseconds(2),
        .chunked = true}},
      sent("file missing", 2, "File not found", ""),
      sent("URL is looked at before the file", 12005, kInvalidUrl, "", {}, "http://"),
      at("scheme unknown", 12006, kUnknownScheme, "mailto:mms@relay"),
      at("no scheme", 12006, kUnknownScheme, "relay.example/mms"),
      at("path too long", 122, "", "http://relay.invalid/" + longText),
      at("host not resolved", 12007, kNoGateway, "http://relay.invalid/mms"),
      at("proxy not resolved", 12007, kNoGateway, "", "proxy.invalid"),
      at("connection refused", 12029, kNoGateway,
         "http://127.0.0.1:" + std::to_string(closedPort()) + "/"),
      at("no TLS at the other end", 12157, "", "https"),
      {"connection closed without an answer", 12030, "", {.fault = ReplyFault::closed}},
      {"404",
       404,
       "The server has not found anything matching the requested URI.",
       {.httpStatus = 404}},
      {"status without a text", 599, "", {.httpStatus = 599}},
      {"credentials required",
       401,
       "The requested resource requires user authentication.",
       {.credentials = "user:other"}},
      at("proxy's credentials required", 407, "Proxy authentication required.",
         "http://relay.invalid/mms", "relay", {.credentials = "user:other"}),
      sent("too large", 413,
           "The server is refusing to process a request because the request entity is larger than "
           "the server is willing or able to process.",
           encodeSendReq({.content = std::string(300000, 'c')}), {.maxBodyOctets = 300000}),
      {"200 with another content type", 200, kCompleted, {.contentType = "text/html"}},
      {"200 with a broken PDU", 200, kCompleted, {.fault = ReplyFault::broken}},
      {"200 cut short", 200, kCompleted, {.fault = ReplyFault::cut}},
      {"200 with chunks cut short", 200, kCompleted, {.chunked = true, .fault = ReplyFault::cut}},
      answered("200 with nothing", httpAnswer("")),
      answered("200 with another message type", httpAnswer("\x8C\x86\x98T1\0\x8D\x90\x92\x80"s)),
      answered("confirmation without a status", httpAnswer("\x8C\x81\x98T1\0\x8D\x90"s)),
      {"refused with a text",
       0x86,
       "network is down",
       {.responseStatus = 0x86, .responseText = "network is down"}},
      {"refused with a text that is cut",
       0xE0,
       longText.substr(0, 511),
       {.responseStatus = 0xE0, .responseText = longText}},
      sent("no recipient", 0x84, "there is no recipient (To, Cc, Bcc)",
           encodeSendReq({.to = nullptr})),
      sent("another PDU than a message", 0x88, "m-send-conf where an m-send-req is due",
           kSendConfOk),
  };
}

TEST(SendResults, EachEndHasItsCodeAndText) {
  for (const Case& c : cases()) {
    SCOPED_TRACE(c.name);
    std::string error;
    const auto relay = RelayServer::start(c.relay, error);
    ASSERT_TRUE(relay) << error;
    RawServer raw(RawReply{{c.answer}, true});

    std::string url = c.url.empty() ? "http://" + relay->address() + "/mms" : c.url;
    if (!c.answer.empty()) url = raw.url();
    if (c.url == "https") url = "https://" + relay->address() + "/";
    const TemporaryFolder folder;
    const std::string file =
        c.message.empty() ? folder.path("missing") : folder.put("m.mms", c.message);

    CMMSHttp http;
    http.SetCredentials("user", "pass");
    EXPECT_TRUE(http.ConnectGtw(c.proxyHost == "relay" ? "127.0.0.1" : c.proxyHost.c_str(),
                                relay->port(), 0));
    EXPECT_EQ(http.SendMMS(url.c_str(), file.c_str(), 0), c.code == 0x80);
    std::string text(512, '#');
    EXPECT_EQ(http.GetResult(text.data()), c.code);
    EXPECT_EQ(text.c_str(), c.text);
    EXPECT_EQ(http.GetResult(nullptr), c.code);
    http.DisconnectGtw();
  }
}

TEST(SendResults, BelongToTheLastSubmission) {
  std::string error;
  const auto relay = RelayServer::start({.responseText = "thank you"}, error);
  ASSERT_TRUE(relay) << error;
  const std::string url = "http://" + relay->address() + "/mms";
  const TemporaryFolder folder;
  const std::string file = folder.put("m.mms", encodeSendReq());
  char text[512];
  CMMSHttp http;
  http.ConnectGtw("", 0, 0);
  EXPECT_TRUE(http.SendMMS(url.c_str(), file.c_str(), 0));
  EXPECT_EQ(http.GetResult(text), 0x80u);
  EXPECT_STREQ(text, "thank you");
  EXPECT_FALSE(http.SendMMS(url.c_str(), folder.path("missing").c_str(), 0));
  EXPECT_EQ(http.GetResult(text), 2u);
  EXPECT_STREQ(text, "File not found");
  EXPECT_FALSE(http.SendMMS(nullptr, nullptr, 0));
  EXPECT_EQ(http.GetResult(text), 87u);
  EXPECT_STREQ(text, "");
  EXPECT_TRUE(http.SendMMS(url.c_str(), file.c_str(), 0));
  EXPECT_EQ(relay->connectionCount(), 1u);
  http.DisconnectGtw();
}

}  // namespace
}  // namespace mmsbrix::test
