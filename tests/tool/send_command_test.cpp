// `send` and `demo`: what they print and how they end.
#include <gtest/gtest.h>

#include <array>
#include <cstdlib>

#include "command_line.h"
#include "demo.h"
#include "relay_server.h"
#include "send.h"
#include "support/send_req.h"
#include "support/temporary_folder.h"

namespace mmsbrix::test {
namespace {

using tool::RelayServer;
using tool::SendCommand;

TEST(SendCommand, SaysWhatBecameOfTheMessage) {
  const TemporaryFolder folder;
  std::string error;
  const auto relay = RelayServer::start({.responseText = "thanks\x1B[2J"}, error);
  ASSERT_TRUE(relay) << error;
  SendCommand command;
  command.file = folder.put("m.mms", encodeSendReq());
  command.url = "http://mmsc.example/";
  command.proxy = relay->address();
  Caught accepted;
  EXPECT_EQ(runSend(command, accepted.streams()), 0) << accepted.err.str();
  EXPECT_EQ(accepted.out.str(), "accepted: 0x80 Ok: thanks\\x1B[2J\n");
  EXPECT_EQ(accepted.err.str(), "");

  command.file = folder.put("broken.mms", "\x8C\x80");
  Caught refused;
  EXPECT_EQ(runSend(command, refused.streams()), 1);
  EXPECT_EQ(refused.out.str(), "");
  EXPECT_NE(refused.err.str().find("broken.mms not sent: 0x"), std::string::npos)
      << refused.err.str();

  command.file = folder.path("none");
  Caught missing;
  EXPECT_EQ(runSend(command, missing.streams()), 1);
  EXPECT_NE(missing.err.str().find("error 2: File not found"), std::string::npos);

  command.proxy = "host:port";
  Caught usage;
  EXPECT_EQ(runSend(command, usage.streams()), 2);
}

TEST(SendCommand, CredentialsComeFromFileOrEnvironmentAndAreNeverShown) {
  const TemporaryFolder folder;
  std::string error;
  const auto relay = RelayServer::start({.credentials = "ann:s3cret"}, error);
  ASSERT_TRUE(relay) << error;
  SendCommand command;
  command.file = "-";
  command.url = "http://" + relay->address() + "/mms";
  command.trace = true;
  const auto run = [&] {
    Caught caught;
    caught.in.str(encodeSendReq());
    const int status = runSend(command, caught.streams());
    EXPECT_EQ(caught.err.str().find("s3cret"), std::string::npos);
    EXPECT_EQ(caught.err.str().find("YW5uOnMzY3JldA"), std::string::npos);  // base64 of it
    return std::pair(status, caught.out.str() + caught.err.str());
  };
  EXPECT_NE(run().second.find("HTTP 401"), std::string::npos);
  command.credentialsFile = folder.putPrivate("c", "ann:s3cret\r\n");
  const auto [status, text] = run();
  EXPECT_EQ(status, 0) << text;
  EXPECT_NE(text.find("HttpClient::SendMMS("), std::string::npos);  // the trace is there
  command.credentialsFile.clear();
  ::setenv("MMSBRIX_USER", "ann", 1);
  ::setenv("MMSBRIX_PASSWORD", "s3cret", 1);
  EXPECT_EQ(run().first, 0);
  ::unsetenv("MMSBRIX_USER");
  ::unsetenv("MMSBRIX_PASSWORD");
  command.credentialsFile = folder.putPrivate("c", "no colon");
  EXPECT_EQ(run().first, 1);
}

struct AnswerCase {
  tool::RelayOptions options;
  const char* says;
};

TEST(SendCommand, FailuresWithTheSameCodeAreToldApart) {
  const TemporaryFolder folder;
  SendCommand command;
  command.file = folder.put("m.mms", encodeSendReq());
  for (const auto& [options, says] : std::to_array<AnswerCase>({
           {{.contentType = "text/html"},
            "HTTP 200: The request completed successfully. (the answer is text/html"},
           {{.contentType = ""}, "(the answer has no content type)"},
           {{.fault = tool::ReplyFault::broken}, "(the answer is no m-send-conf)"},
           {{.fault = tool::ReplyFault::cut}, "(the answer is broken, cut short or too large)"},
           {{.fault = tool::ReplyFault::closed}, "error 12030 (the connection was closed without"},
           {{.httpStatus = 404}, "HTTP 404: The server has not found"},
       })) {
    std::string error;
    const auto relay = RelayServer::start(options, error);
    ASSERT_TRUE(relay) << error;
    command.url = "http://" + relay->address() + "/";
    Caught caught;
    EXPECT_EQ(runSend(command, caught.streams()), 1);
    EXPECT_NE(caught.err.str().find(says), std::string::npos) << says << "\n" << caught.err.str();
  }
}

TEST(SendCommand, CodesSayOfWhatKindTheyAre) {
  using Kind = CMMSHttp::ResultKind;
  EXPECT_EQ(tool::resultCodeText(Kind::responseStatus, 0x99), "0x99");
  EXPECT_EQ(tool::resultCodeText(Kind::responseStatus, 0xE2),
            "0xE2 Error-permanent-message-format-corrupt");
  EXPECT_EQ(tool::resultCodeText(Kind::httpStatus, 226), "HTTP 226");  // the same number
  EXPECT_EQ(tool::resultCodeText(Kind::error, 12029), "error 12029");
}

TEST(DemoCommand, TheWholeWay) {
  for (const bool wap : {false, true}) {
    SCOPED_TRACE(wap);
    const TemporaryFolder folder;
    Caught caught;
    EXPECT_EQ(tool::runDemo({folder.path("kept"), wap}, caught.streams()), 0) << caught.err.str();
    EXPECT_EQ(caught.out.str().find(" WAP POST ") != std::string::npos, wap);
    EXPECT_NE(caught.out.str().find("accepted: 0x80 Ok"), std::string::npos);
    EXPECT_NE(caught.out.str().find("that were composed"), std::string::npos);
    EXPECT_NE(caught.out.str().find("the same picture and sound"), std::string::npos);
    EXPECT_NE(folder.get("kept/page.html").find("data:image/jpeg;base64,"), std::string::npos);
  }
}

}  // namespace
}  // namespace mmsbrix::test
