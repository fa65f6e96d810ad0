// How proxies are told to libcurl.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "platform/posix/curl_url.h"

namespace mmsbrix::test {
namespace {

using platform::proxyUrlOf;

TEST(ProxyUrl, FormsThatOperatorsPublish) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"", ""},
      {"proxy.example:8080", "http://proxy.example:8080"},
      {"192.168.094.023:80", "http://192.168.94.23:80"},
      {"010.0.0.010:0", "http://10.0.0.10:80"},
      {"10.0.0.300:80", "http://10.0.0.300:80"},
      {"proxy.example:", "http://proxy.example:80"},
      {"2001:db8::1:8080", "http://[2001:db8::1]:8080"},
      {"[2001:db8::1]:8080", "http://[2001:db8::1]:8080"},
      {"fe80::1%eth0:80", "http://[fe80::1%25eth0]:80"},
  };
  for (const auto& [proxy, url] : cases) EXPECT_EQ(proxyUrlOf(proxy), url) << proxy;
}

}  // namespace
}  // namespace mmsbrix::test
