// `send` against the relay: what it prints and how it ends.
#include <gtest/gtest.h>

#include <array>

#include "command_line.h"
#include "relay_server.h"
#include "send.h"
#include "support/host.h"
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
  {
    const EnvironmentVariable user("MMSBRIX_USER", "ann");
    const EnvironmentVariable password("MMSBRIX_PASSWORD", "s3cret");
    EXPECT_EQ(run().first, 0);
  }
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

}  // namespace
}  // namespace mmsbrix::test
