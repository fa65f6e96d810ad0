// What libcurl is allowed to take from servers: at the limits and above them.
#include <gtest/gtest.h>

#include <string>

#include "support/mms_http.h"
#include "support/raw_server.h"
#include "support/temporary_folder.h"
#include "transport/mmshttp.h"

namespace mmsbrix::test {
namespace {

static_assert(CMMSHttp::kDefaultTimeoutSeconds == 60);

// The result of a submission.
unsigned long submit(const std::string& url) {
  const TemporaryFolder folder;
  CMMSHttp http;
  http.ConnectGtw(nullptr, 0, 0);
  http.SendMMS(url.c_str(), folder.put("m.mms", "message").c_str(), 0);
  const unsigned long code = http.GetResult(nullptr);
  http.DisconnectGtw();
  return code;
}

TEST(HttpLimits, HeadersOfAReply) {
  constexpr std::size_t kMost = std::size_t{256} << 10;  // without line ends
  constexpr std::size_t kLine = 1000;
  for (const std::size_t octets : {kMost, kMost + 1}) {
    const std::string plain = httpAnswer(kSendConfOk);
    std::size_t left = octets - (plain.size() - kSendConfOk.size() - 4 * 2);
    std::string headers;
    for (; left > 2 * kLine; left -= kLine) headers += "X: " + std::string(kLine - 3, 'x') + "\r\n";
    headers += "X: " + std::string(left - 3, 'x') + "\r\n";
    RawServer server(RawReply{{httpAnswer(kSendConfOk, kMmsType, "200 OK", headers)}, true});
    EXPECT_EQ(submit(server.url()), octets == kMost ? 0x80U : 200U) << octets;
  }
}

TEST(HttpLimits, RedirectsInARow) {
  RawServer server([](const RawRequest& request) -> RawReply {
    const int left = std::stoi(request.line().substr(request.line().find('/') + 1));
    if (left == 0) return {{httpAnswer(kSendConfOk)}};
    const std::string next = "Location: /" + std::to_string(left - 1) + "\r\n";
    return {{httpAnswer("gone", "text/plain", "307 Elsewhere", next)}};
  });
  EXPECT_EQ(submit(server.url("/10")), 0x80U);
  EXPECT_EQ(submit(server.url("/11")), 12156U);
}

}  // namespace
}  // namespace mmsbrix::test
