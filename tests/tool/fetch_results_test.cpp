// What the transport makes of answers to GET, and the headers that it lets its caller set.
#include <gtest/gtest.h>
#include <mmsbrix/transport/mmshttp.h>

#include <array>
#include <string>
#include <utility>
#include <vector>

#include "session.h"
#include "support/raw_server.h"

namespace mmsbrix::test {
namespace {

struct FetchCase {
  const char* name;
  std::string answer;  // body of a 200, or a whole answer
  bool fetched;
  CMMSHttp::ResultKind kind;
  unsigned long code;
  const char* detail;
  const char* type = "application/vnd.wap.mms-message";
};

TEST(FetchResults, FollowTheConventionOfSubmissions) {
  using Kind = CMMSHttp::ResultKind;
  const std::string retrieve = "\x8C\x84\x8D\x92";
  for (const FetchCase& c : std::vector<FetchCase>{
           {"no status is Ok", retrieve, true, Kind::retrieveStatus, 0x80, ""},
           {"Ok", retrieve + "\x99\x80", true, Kind::retrieveStatus, 0x80, ""},
           {"refused", retrieve + "\x99\xE2\x9Agone" + '\0', false, Kind::retrieveStatus, 0xE2, ""},
           {"another PDU", "\x8C\x81\x92\x80", false, Kind::httpStatus, 200,
            "the answer is no m-retrieve-conf"},
           {"no PDU", "", false, Kind::httpStatus, 200, "the answer is no m-retrieve-conf"},
           {"another type", retrieve, false, Kind::httpStatus, 200,
            "the answer is text/html, no MMS message", "text/html"},
       }) {
    RawServer server([&](const RawRequest&) -> RawReply {
      return {{"HTTP/1.1 200 OK\r\nContent-Type: " + std::string(c.type) +
               "\r\nContent-Length: " + std::to_string(c.answer.size()) + "\r\n\r\n" + c.answer}};
    });
    CMMSHttp transport;
    EXPECT_TRUE(transport.SetUserAgent("Phone/2"));
    EXPECT_TRUE(transport.AddHeader("x-wap-profile", "\"http://p/\""));
    transport.ConnectGtw(nullptr, 0, 0);
    std::vector<std::uint8_t> pdu = {1};
    EXPECT_EQ(transport.FetchMMS(server.url("/m?1").c_str(), pdu), c.fetched) << c.name;
    EXPECT_EQ(std::string(pdu.begin(), pdu.end()), c.fetched ? c.answer : "\x01") << c.name;
    char text[512] = "";
    EXPECT_EQ(transport.GetResult(text), c.code) << c.name;
    EXPECT_EQ(transport.GetResultKind(), c.kind) << c.name;
    EXPECT_STREQ(transport.GetFailureDetail(), c.detail) << c.name;
    EXPECT_EQ(std::string(text) == "gone", c.code == 0xE2) << c.name;
    const RawRequest request = server.requests().front();
    EXPECT_EQ(request.line(), "GET /m?1 HTTP/1.1") << c.name;
    EXPECT_EQ(request.header("User-Agent"), "Phone/2") << c.name;
    EXPECT_EQ(request.header("x-wap-profile"), "\"http://p/\"") << c.name;
    EXPECT_EQ(request.header("Content-Type"), "") << c.name;
    transport.DisconnectGtw();
  }
}

TEST(FetchResults, HeadersThatAreNoneOrTheTransportsOwnAreRefused) {
  CMMSHttp transport;
  for (const auto& [name, value] :
       std::to_array<std::pair<const char*, const char*>>({{"", "v"},
                                                           {"a b", "v"},
                                                           {"a:", "v"},
                                                           {"a", ""},
                                                           {"a", "v\r\nb: c"},
                                                           {"a", "\x7F"},
                                                           {"content-TYPE", "v"},
                                                           {"Authorization", "v"},
                                                           {"Host", "v"},
                                                           {nullptr, nullptr}})) {
    EXPECT_FALSE(transport.AddHeader(name, value)) << (name == nullptr ? "null" : name);
  }
  EXPECT_FALSE(transport.SetUserAgent("a\nb: c"));
}

TEST(ResultCode, CodesSayOfWhatKindTheyAre) {
  using Kind = CMMSHttp::ResultKind;
  EXPECT_EQ(tool::resultCodeText(Kind::responseStatus, 0x99), "0x99");
  EXPECT_EQ(tool::resultCodeText(Kind::responseStatus, 0xE2),
            "0xE2 Error-permanent-message-format-corrupt");
  EXPECT_EQ(tool::resultCodeText(Kind::httpStatus, 226), "HTTP 226");  // the same number
  EXPECT_EQ(tool::resultCodeText(Kind::error, 12029), "error 12029");
}

}  // namespace
}  // namespace mmsbrix::test
