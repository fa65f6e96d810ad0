// What a submission puts on the wire, and what it does with answers that no real server gives.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <mmsbrix/transport/mmshttp.h>
#include <mmsbrix/transport/trace_log.h>

#include <algorithm>
#include <array>
#include <list>
#include <string>
#include <vector>

#include "support/host.h"
#include "support/mms_http.h"
#include "support/raw_server.h"
#include "support/temporary_folder.h"

namespace mmsbrix::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;
using testing::StartsWith;

/// A transport that is connected while it lives.
class Submission {
 public:
  explicit Submission(const char* proxyHost = nullptr, unsigned proxyPort = 0,
                      const char* user = nullptr, const char* password = nullptr) {
    http_.SetCredentials(user, password);
    EXPECT_TRUE(http_.ConnectGtw(proxyHost, proxyPort, 0));
  }
  ~Submission() { http_.DisconnectGtw(); }
  Submission(const Submission&) = delete;
  Submission& operator=(const Submission&) = delete;

  bool send(const std::string& url, const std::string& message = "message") {
    return http_.SendMMS(url.c_str(), folder_.put("out.mms", message).c_str(), 0);
  }
  unsigned long code() { return http_.GetResult(nullptr); }
  CMMSHttp& http() { return http_; }

 private:
  CMMSHttp http_;
  TemporaryFolder folder_;
};

RawReply ok() {
  return {{httpAnswer(kSendConfOk)}};
}

TEST(HttpSubmission, RequestHasExactlyTheseFields) {
  RawServer server(ok());
  Submission direct;
  ASSERT_TRUE(
      direct.send(server.url("/a/../b%7e/;p?x=1&y=%2F z#fragment"), std::string("\0\x8C", 2)));
  EXPECT_EQ(direct.code(), 0x80u);
  const RawRequest request = server.requests().at(0);
  EXPECT_EQ(request.head,
            "POST /a/../b%7e/;p?x=1&y=%2F%20z HTTP/1.1\r\n"
            "Host: " +
                server.address() +
                "\r\n"
                "User-Agent: Tarvik Mmsbrix 1.0\r\n"
                "Content-Type: application/vnd.wap.mms-message\r\n"
                "Accept: */*\r\n"
                "Content-Length: 2\r\n\r\n");
  EXPECT_EQ(request.body, std::string("\0\x8C", 2));
}

TEST(HttpSubmission, ProxyGetsTheWholeUrlWhateverItsHost) {
  RawServer proxy(ok());
  for (const char* host : {"127.0.0.1", "127.000.000.001", "localhost"}) {
    Submission submission(host, proxy.port());
    EXPECT_TRUE(submission.send("http://relay.invalid/mms")) << host;
    EXPECT_EQ(proxy.requests().back().line(), "POST http://relay.invalid/mms HTTP/1.1");
    EXPECT_EQ(proxy.requests().back().header("Host"), "relay.invalid");
  }
}

TEST(HttpSubmission, EnvironmentProxiesChangeNothing) {
  RawServer relay(ok());
  RawServer wrong(RawReply{{httpAnswer("", "", "500 Wrong")}});
  std::list<EnvironmentVariable> proxies;
  for (const char* name : {"http_proxy", "HTTP_PROXY", "all_proxy", "ALL_PROXY"}) {
    proxies.emplace_back(name, "http://" + wrong.address());
  }
  Submission direct;
  EXPECT_TRUE(direct.send(relay.url()));
  const EnvironmentVariable lower("no_proxy", "*");
  const EnvironmentVariable upper("NO_PROXY", "*");
  Submission proxied("127.0.0.1", relay.port());
  EXPECT_TRUE(proxied.send(wrong.url()));
  EXPECT_THAT(wrong.requests(), testing::IsEmpty());
}

TEST(HttpSubmission, ConnectionIsReusedWithinASessionAndReplacedWhenTheServerClosesIt) {
  RawServer server([](const RawRequest& request) {
    RawReply reply = ok();
    reply.close = request.body == "close";
    return reply;
  });
  Submission first;
  EXPECT_TRUE(first.send(server.url(), "1"));
  EXPECT_TRUE(first.send(server.url("/other"), "close"));
  EXPECT_TRUE(first.send(server.url(), "3"));
  Submission second;
  EXPECT_TRUE(second.send(server.url(), "4"));
  std::vector<int> connections;
  for (const RawRequest& request : server.requests()) connections.push_back(request.connection);
  EXPECT_THAT(connections, ElementsAre(1, 1, 2, 3));
}

TEST(HttpSubmission, LargeMessageGoesOutAtOnceAndWhole) {
  RawServer server(ok());
  std::string message(3 << 20, '\0');
  for (std::size_t i = 0; i < message.size(); ++i) message[i] = static_cast<char>(i * 31 >> 3);
  Submission direct;
  EXPECT_TRUE(direct.send(server.url(), message));
  EXPECT_TRUE(direct.send(server.url(), ""));
  const RawRequest request = server.requests().at(0);
  EXPECT_TRUE(request.body == message);
  EXPECT_EQ(request.header("Content-Length"), std::to_string(message.size()));
  EXPECT_EQ(request.header("Transfer-Encoding") + request.header("Expect"), "");
  EXPECT_EQ(server.requests().at(1).header("Content-Length"), "0");
}

TEST(HttpSubmission, AuthorizationGoesOutOnlyWithUserAndPassword) {
  RawServer server(ok());
  struct Case {
    std::string user, password, header;
  };
  // 383 octets of "u...:" are the most whose Base64 text fits in 512 characters.
  const std::string longUser(300, 'u');
  for (const Case& c : std::vector<Case>{{"user", "pass", "Basic dXNlcjpwYXNz"},
                                         {"a", "b", "Basic YTpi"},
                                         {"a", "bc", "Basic YTpiYw=="},
                                         {"user", "", ""},
                                         {"", "pass", ""}}) {
    Submission submission(nullptr, 0, c.user.c_str(), c.password.c_str());
    EXPECT_TRUE(submission.send(server.url()));
    EXPECT_EQ(server.requests().back().header("Authorization"), c.header) << c.user;
  }
  Submission cut(nullptr, 0, longUser.c_str(), longUser.c_str());
  EXPECT_TRUE(cut.send(server.url()));
  std::string uuu;
  for (int i = 0; i < 85; ++i) uuu += "dXV1";
  EXPECT_THAT(server.requests().back().header("Authorization"),
              StartsWith("Basic " + uuu + "OnV1"));
  EXPECT_EQ(server.requests().back().header("Authorization").size(), 6u + 512u);
}

TEST(HttpSubmission, ChallengeIsAnsweredOnceAndWithoutTheRefusedHeader) {
  RawServer server([](const RawRequest& request) -> RawReply {
    const std::string given = request.header("Authorization");
    const bool digest = request.line().find("/digest") != std::string::npos;
    if (digest ? given.starts_with("Digest username=\"user\"") &&
                     given.find("Basic") == std::string::npos
               : given == "Basic dXNlcjo=") {
      return ok();
    }
    return {
        {httpAnswer("", "", "401 Unauthorized",
                    digest ? "WWW-Authenticate: Digest realm=\"r\", nonce=\"n\", qop=\"auth\"\r\n"
                           : "WWW-Authenticate: Basic realm=\"r\"\r\n")}};
  });
  const auto authorizations = [&server] {
    std::vector<std::string> values;
    for (const RawRequest& request : server.requests()) {
      EXPECT_EQ(request.body, "message");
      values.push_back(request.header("Authorization").substr(0, 12));
    }
    return values;
  };
  Submission userOnly(nullptr, 0, "user", "");
  EXPECT_TRUE(userOnly.send(server.url("/basic")));
  EXPECT_THAT(authorizations(), ElementsAre("", "Basic dXNlcj"));
  Submission both(nullptr, 0, "user", "pass");
  EXPECT_FALSE(both.send(server.url("/basic")));
  EXPECT_EQ(both.code(), 401u);
  EXPECT_TRUE(both.send(server.url("/digest")));
  EXPECT_THAT(authorizations(),
              ElementsAre("", "Basic dXNlcj", "Basic dXNlcj", "Basic dXNlcj", "Digest usern"));
}

TEST(HttpSubmission, RedirectIsFollowedButCredentialsStayBehind) {
  RawServer other(ok());
  RawServer relay([&other](const RawRequest& request) -> RawReply {
    const bool away = request.line().find("/away") != std::string::npos;
    const std::string to = away ? other.url("/there")
                           : request.line().find("/loop") != std::string::npos
                               ? "/loop"
                               : "ftp://127.0.0.1/x";
    return {{httpAnswer("gone", "text/plain", "307 Elsewhere", "Location: " + to + "\r\n")}};
  });
  Submission submission(nullptr, 0, "user", "pass");
  EXPECT_TRUE(submission.send(relay.url("/away")));
  EXPECT_NE(relay.requests().at(0).header("Authorization"), "");
  const RawRequest arrived = other.requests().at(0);
  EXPECT_EQ(arrived.line(), "POST /there HTTP/1.1");
  EXPECT_EQ(arrived.body, "message");
  EXPECT_EQ(arrived.header("Authorization"), "");
  for (const char* path : {"/loop", "/ftp"}) {
    EXPECT_FALSE(submission.send(relay.url(path)));
    EXPECT_EQ(submission.code(), 12156u) << path;
  }
}

struct AnswerCase {
  const char* name;
  std::vector<std::string> pieces;
  unsigned long code;  ///< 0x80 for an answer that is accepted
};

void expectResults(const std::vector<AnswerCase>& cases) {
  for (const AnswerCase& c : cases) {
    RawServer server(RawReply{c.pieces, true});
    Submission submission;
    EXPECT_EQ(submission.send(server.url()), c.code == 0x80) << c.name;
    EXPECT_EQ(submission.code(), c.code) << c.name;
  }
}

const std::string kOk = "HTTP/1.1 200 OK\r\n";
const std::string kType = std::string("Content-Type: ") + kMmsType + "\r\n";
const std::string kLength = "Content-Length: " + std::to_string(kSendConfOk.size()) + "\r\n";
const std::string kBody = "\r\n" + kSendConfOk;

TEST(HttpSubmission, OddAnswers) {
  expectResults(
      {{"type in another case with parameters",
        {httpAnswer(kSendConfOk, "Application/VND.WAP.MMS-Message; charset=utf-8")},
        0x80},
       {"blanks before the type",
        {kOk + "content-type:   " + std::string(kMmsType) + "\r\n" + kLength + kBody},
        0x80},
       {"no type", {httpAnswer(kSendConfOk, "")}, 200},
       {"type that only ends alike", {httpAnswer(kSendConfOk, "x" + std::string(kMmsType))}, 200},
       {"no length, body up to the close", {kOk + kType + kBody}, 0x80},
       {"chunks in pieces, with a trailer",
        {kOk + kType + "Transfer-Encoding: chunked\r\n\r\n3\r\n", kSendConfOk.substr(0, 3),
         "\r\nC\r\n" + kSendConfOk.substr(3, 4),
         kSendConfOk.substr(7) + "\r\n0\r\nX-Status: HTTP/1.1 500\r\n\r\n"},
        0x80},
       {"chunks that break off",
        {kOk + kType + "Transfer-Encoding: chunked\r\n\r\n3\r\n", kSendConfOk.substr(0, 3)},
        200},
       {"interim answer first", {"HTTP/1.1 100 Continue\r\n\r\n", httpAnswer(kSendConfOk)}, 0x80},
       {"folded header", {kOk + "X-Long: a\r\n\tb: c\r\n" + kType + kLength + kBody}, 0x80},
       {"headers cut short", {kOk + kType + "Content-Len"}, 200},
       {"length beyond the body", {kOk + kType + "Content-Length: 99\r\n" + kBody}, 200},
       {"length that is no number", {kOk + kType + "Content-Length: x\r\n" + kBody}, 200},
       {"status line cut short", {"HTTP/1.1 2"}, 12030},
       {"endless headers",
        {"HTTP/1.1 404 Not Found\r\n" + std::string(90000, 'a') + ": b\r\n",
         std::string(90000, 'c') + ": d\r\n", std::string(90000, 'e') + ": f\r\n\r\n"},
        404}});
}

TEST(HttpSubmission, AnswersThatAreNone) {
  expectResults({{"only an interim answer", {"HTTP/1.1 100 Continue\r\n\r\n"}, 12030},
                 {"first header line without a colon",
                  {kOk + "no colon here\r\n" + kType + kLength + kBody},
                  200},
                 {"later header line without a colon",
                  {kOk + kType + kLength + "no colon here\r\n" + kBody},
                  200},
                 {"no HTTP at all", {"SSH-2.0-server\r\n"}, 12152}});
}

TEST(HttpSubmission, AnswerOverTheCapIsNoDelivery) {
  const std::size_t octets = std::size_t{65} << 20;
  RawServer server([&](const RawRequest&) -> RawReply {
    std::string body = kSendConfOk;
    body.resize(octets);
    return {{httpAnswer(body)}};
  });
  Submission submission;
  EXPECT_FALSE(submission.send(server.url()));
  EXPECT_EQ(submission.code(), 200u);
}

TEST(HttpSubmission, ProxyThatRefusesATunnelGivesItsStatus) {
  RawServer proxy([](const RawRequest&) -> RawReply {
    return {
        {httpAnswer("no", "text/plain", "407 No", "Proxy-Authenticate: Basic realm=\"p\"\r\n")}};
  });
  Submission submission("127.0.0.1", proxy.port(), "user", "pass");
  EXPECT_FALSE(submission.send("https://relay.invalid/mms"));
  EXPECT_EQ(submission.code(), 407u);
  EXPECT_EQ(proxy.requests().at(0).line(), "CONNECT relay.invalid:443 HTTP/1.1");
  EXPECT_EQ(proxy.requests().at(0).header("Authorization"), "");
}

TEST(HttpSubmission, ProgressTellsOctetsAndCancels) {
  RawServer server(ok());
  const std::string message(std::size_t{1} << 20, 'm');
  Submission submission;
  std::vector<std::uint64_t> sent;
  submission.http().SetProgress([&](std::uint64_t octets, std::uint64_t total) {
    EXPECT_EQ(total, message.size());
    sent.push_back(octets);
    return true;
  });
  EXPECT_TRUE(submission.send(server.url(), message));
  EXPECT_TRUE(std::is_sorted(sent.begin(), sent.end()));
  EXPECT_EQ(sent.back(), message.size());

  submission.http().SetProgress([](std::uint64_t, std::uint64_t) { return false; });
  EXPECT_FALSE(submission.send(server.url(), message));
  EXPECT_EQ(submission.code(), 12017u);
  submission.http().SetProgress([](std::uint64_t, std::uint64_t) -> bool { throw 1; });
  EXPECT_FALSE(submission.send(server.url(), message));
  EXPECT_EQ(submission.code(), 12017u);
  submission.http().SetProgress({});
  EXPECT_TRUE(submission.send(server.url(), message));
}

TEST(HttpSubmission, TraceShowsEachStepWithMaskedCredentials) {
  const std::string conf = "\x8C\x81\x98T1\0\x8D\x90\x92\x86\x93late\0\x8Bm@r\0"s;
  RawServer proxy(RawReply{{httpAnswer(conf, kMmsType, "200 Fine")}});
  TemporaryFolder folder;
  const std::string file = folder.put("out.mms", "12345");
  std::vector<std::string> lines;
  setTraceSink([&lines](std::string_view line) { lines.emplace_back(line); });
  CMMSHttp http;
  http.SetCredentials("user", "secret");
  http.ConnectGtw("127.0.0.1", proxy.port(), 0);
  EXPECT_FALSE(http.SendMMS("http://relay.invalid:81/p?q", file.c_str(), 0));
  http.DisconnectGtw();
  http.ConnectGtw("127.0.0.1", closedPort(), 0);
  EXPECT_FALSE(http.SendMMS("http://relay.invalid:81/p?q", file.c_str(), 0));
  http.DisconnectGtw();
  setTraceSink({});

  const std::string id = "[0-9a-f]{8}";
  std::vector<testing::Matcher<std::string>> expected;
  const auto like = [&](std::string regex) { expected.emplace_back(MatchesRegex(regex)); };
  const auto are = [&](std::initializer_list<std::string> texts) {
    expected.insert(expected.end(), texts.begin(), texts.end());
  };
  are({"HttpClient::Connect - InternetOpen(\"Tarvik Mmsbrix 1.0\", INTERNET_OPEN_TYPE_PROXY, " +
           proxy.address() + ", ...)",
       "HttpClient::SendMMS(" + file + ", http://relay.invalid:81/p?q)"});
  like("Calling InternetConnect\\(" + id + ", relay.invalid, 81, ...\\)");
  like("Calling HttpOpenRequest\\(" + id + ", POST , /p\\?q, ... , \\*/\\*, 84400000\\)");
  like("Calling HttpSendRequest\\(" + id +
       ", Content-Type: application/vnd.wap.mms-message\nContent-Length: 5\n"
       "Authorization: Basic \\*\\*\\*, -1, " +
       id + ", 5\\)");
  like("Calling HttpQueryInfo\\(" + id + ", ...\\)");
  are({"HttpQueryInfo returned success and 83 bytes", "Response dump:", "HTTP/1.1 200 Fine",
       "Content-Type: application/vnd.wap.mms-message", "Content-Length: 21",
       "Response Status: 0x86", "Transaction Id: T1", "Response Text: late", "Message Id: m@r"});
  for (const char* step :
       {"HttpClient::Connect - ", "HttpClient::SendMMS(", "Calling InternetConnect(",
        "Calling HttpOpenRequest(", "Calling HttpSendRequest("}) {
    expected.emplace_back(StartsWith(step));
  }
  are({"Error 12029 on HttpSendRequest"});
  EXPECT_THAT(lines, testing::ElementsAreArray(expected));
  EXPECT_THAT(lines, testing::Each(Not(testing::AnyOf(HasSubstr("secret"), HasSubstr("dXNlc")))));
}

TEST(Credentials, AreCutToTheirBuffers) {
  CMMSComm comm;
  comm.SetCredentials(std::string(300, 'u').c_str(), "password");
  std::array<char, 512> user{};
  std::array<char, 5> password{};
  comm.GetCredentials(user.data(), user.size(), password.data(), password.size());
  EXPECT_EQ(user.data(), std::string(255, 'u'));
  EXPECT_STREQ(password.data(), "pass");
  comm.GetCredentials(user.data(), 1, nullptr, 0);
  EXPECT_STREQ(user.data(), "");
  user.fill('x');
  comm.GetCredentials(user.data(), 0, nullptr, 9);
  EXPECT_EQ(user[0], 'x');
  comm.SetCredentials("short", nullptr);
  comm.GetCredentials(user.data(), user.size(), password.data(), password.size());
  EXPECT_STREQ(user.data(), "short");
  EXPECT_STREQ(password.data(), "");
}

TEST(Transport, UnconnectedOneSendsNothingAndKeepsTheText) {
  CMMSHttp http;
  char text[512] = "before";
  EXPECT_FALSE(http.SendMMS("http://127.0.0.1/", "file", 0));
  EXPECT_EQ(http.GetResult(text), 0u);
  EXPECT_STREQ(text, "before");
  EXPECT_TRUE(http.Abort());
  http.DisconnectGtw();
  CMMSComm base;
  EXPECT_FALSE(base.ConnectGtw("h", 1, 0));
  EXPECT_FALSE(base.SendMMS("u", "f", 0));
  EXPECT_EQ(base.GetResult(text), 0u);
  EXPECT_TRUE(base.Abort());
  base.DisconnectGtw();
}

TEST(Transport, CopyRefersToTheSameConnection) {
  RawServer server(RawReply{{httpAnswer("", "", "503 Busy")}});
  Submission submission;
  CMMSHttp copy(submission.http());
  EXPECT_FALSE(submission.send(server.url()));
  EXPECT_EQ(copy.GetResult(nullptr), 503u);
}

}  // namespace
}  // namespace mmsbrix::test
