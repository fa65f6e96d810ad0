// Every way a submission ends, with the code and the text that the caller sees.
#include <gtest/gtest.h>
#include <mmsbrix/mmsbrix.h>

#include <functional>
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
  bool accepted = false;
  unsigned long code = 0;
  std::string text{};
  std::function<void(RelayOptions&)> relay{};  ///< how the relay behaves, properly without
  std::string answer{};                        ///< octets of a server in place of the relay
  std::string url{};                           ///< in place of the relay's
  std::string proxyHost{};                     ///< "relay" is the relay itself
  bool fileMissing = false;
  std::string message = encodeSendReq();
};

std::vector<Case> cases() {
  const std::string longText(600, 't');
  return {
      {.name = "accepted", .accepted = true, .code = 0x80},
      {.name = "accepted with a text",
       .accepted = true,
       .code = 0x80,
       .text = "Grüße",
       .relay = [](RelayOptions& o) { o.responseText = "Grüße"; }},
      {.name = "accepted through the relay as a proxy",
       .accepted = true,
       .code = 0x80,
       .url = "http://relay.invalid/mms",
       .proxyHost = "relay"},
      {.name = "accepted slowly, in chunks",
       .accepted = true,
       .code = 0x80,
       .relay =
           [](RelayOptions& o) {
             o.delay = std::chrono::milliseconds(20);
             o.slowOctets = 16;
             o.slowInterval = std::chrono::milliseconds(2);
             o.chunked = true;
           }},
      {.name = "file missing", .code = 2, .text = "File not found", .fileMissing = true},
      {.name = "URL is looked at before the file",
       .code = 12005,
       .text = kInvalidUrl,
       .url = "http://",
       .fileMissing = true},
      {.name = "scheme unknown", .code = 12006, .text = kUnknownScheme, .url = "mailto:mms@relay"},
      {.name = "no scheme", .code = 12006, .text = kUnknownScheme, .url = "relay.example/mms"},
      {.name = "path too long", .code = 122, .url = "http://relay.invalid/" + longText},
      {.name = "host not resolved",
       .code = 12007,
       .text = kNoGateway,
       .url = "http://relay.invalid/mms"},
      {.name = "proxy not resolved",
       .code = 12007,
       .text = kNoGateway,
       .proxyHost = "proxy.invalid"},
      {.name = "connection refused",
       .code = 12029,
       .text = kNoGateway,
       .url = "http://127.0.0.1:" + std::to_string(closedPort()) + "/"},
      {.name = "no TLS at the other end", .code = 12157, .url = "https"},
      {.name = "connection closed without an answer",
       .code = 12030,
       .relay = [](RelayOptions& o) { o.fault = ReplyFault::closed; }},
      {.name = "404",
       .code = 404,
       .text = "The server has not found anything matching the requested URI.",
       .relay = [](RelayOptions& o) { o.httpStatus = 404; }},
      {.name = "status without a text",
       .code = 599,
       .relay = [](RelayOptions& o) { o.httpStatus = 599; }},
      {.name = "credentials required",
       .code = 401,
       .text = "The requested resource requires user authentication.",
       .relay = [](RelayOptions& o) { o.credentials = "user:other"; }},
      {.name = "proxy's credentials required",
       .code = 407,
       .text = "Proxy authentication required.",
       .relay = [](RelayOptions& o) { o.credentials = "user:other"; },
       .url = "http://relay.invalid/mms",
       .proxyHost = "relay"},
      {.name = "too large",
       .code = 413,
       .text = "The server is refusing to process a request because the request entity is larger "
               "than the server is willing or able to process.",
       .relay = [](RelayOptions& o) { o.maxBodyOctets = 300000; },
       .message = encodeSendReq({.content = std::string(300000, 'c')})},
      {.name = "200 with another content type",
       .code = 200,
       .text = kCompleted,
       .relay = [](RelayOptions& o) { o.contentType = "text/html"; }},
      {.name = "200 with a broken PDU",
       .code = 200,
       .text = kCompleted,
       .relay = [](RelayOptions& o) { o.fault = ReplyFault::broken; }},
      {.name = "200 cut short",
       .code = 200,
       .text = kCompleted,
       .relay = [](RelayOptions& o) { o.fault = ReplyFault::cut; }},
      {.name = "200 with chunks cut short",
       .code = 200,
       .text = kCompleted,
       .relay =
           [](RelayOptions& o) {
             o.fault = ReplyFault::cut;
             o.chunked = true;
           }},
      {.name = "200 with nothing", .code = 200, .text = kCompleted, .answer = httpAnswer("")},
      {.name = "200 with another message type",
       .code = 200,
       .text = kCompleted,
       .answer = httpAnswer("\x8C\x86\x98T1\0\x8D\x90\x92\x80"s)},
      {.name = "confirmation without a status",
       .code = 200,
       .text = kCompleted,
       .answer = httpAnswer("\x8C\x81\x98T1\0\x8D\x90"s)},
      {.name = "refused with a text",
       .code = 0x86,
       .text = "network is down",
       .relay =
           [](RelayOptions& o) {
             o.responseStatus = 0x86;
             o.responseText = "network is down";
           }},
      {.name = "refused with a text that is cut",
       .code = 0xE0,
       .text = longText.substr(0, 511),
       .relay =
           [longText](RelayOptions& o) {
             o.responseStatus = 0xE0;
             o.responseText = longText;
           }},
      {.name = "no recipient",
       .code = 0x84,
       .text = "there is no recipient (To, Cc, Bcc)",
       .message = encodeSendReq({.to = nullptr})},
      {.name = "another PDU than a message",
       .code = 0x88,
       .text = "m-send-conf where an m-send-req is due",
       .message = kSendConfOk},
  };
}

TEST(SendResults, EachEndHasItsCodeAndText) {
  for (const Case& c : cases()) {
    SCOPED_TRACE(c.name);
    RelayOptions options;
    if (c.relay) c.relay(options);
    std::string error;
    const auto relay = RelayServer::start(options, error);
    ASSERT_TRUE(relay) << error;
    RawServer raw(RawReply{{c.answer}, true});

    std::string url = c.url.empty() ? "http://" + relay->address() + "/mms" : c.url;
    if (!c.answer.empty()) url = raw.url();
    if (c.url == "https") url = "https://" + relay->address() + "/";
    const TemporaryFolder folder;
    const std::string file =
        c.fileMissing ? folder.path("missing") : folder.put("m.mms", c.message);

    CMMSHttp http;
    http.SetCredentials("user", "pass");
    EXPECT_TRUE(http.ConnectGtw(c.proxyHost == "relay" ? "127.0.0.1" : c.proxyHost.c_str(),
                                relay->port(), 0));
    EXPECT_EQ(http.SendMMS(url.c_str(), file.c_str(), 0), c.accepted);
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
