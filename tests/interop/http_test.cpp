// Submission through a real HTTP proxy and to a real TLS server.
#include <gtest/gtest.h>
#include <mmsbrix/mmsbrix.h>

#include <chrono>
#include <cstdlib>
#include <string>
#include <string_view>
#include <thread>

#include "relay_server.h"
#include "support/child_process.h"
#include "support/counterparty.h"
#include "support/raw_server.h"
#include "support/send_req.h"
#include "support/temporary_folder.h"

namespace mmsbrix::test {
namespace {

/// Waits until a program says in its log that it takes connections.
bool comesUp(const TemporaryFolder& folder, const std::string& log, const std::string& saying) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (std::chrono::steady_clock::now() < deadline) {
    if (folder.get(log).find(saying) != std::string::npos) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return false;
}

/// tinyproxy on a free port of loopback, from a configuration in a folder of its own.
class Tinyproxy {
 public:
  explicit Tinyproxy(const std::string& moreConfiguration = "")
      : configuration_(
            folder_.put("tinyproxy.conf", "Port " + std::to_string(port_) +
                                              "\nListen 127.0.0.1\nAllow 127.0.0.1\nTimeout 60\n"
                                              "MaxClients 10\nLogFile \"" +
                                              folder_.path("log") + "\"\n" + moreConfiguration)),
        process_({"tinyproxy", "-d", "-c", configuration_}, folder_.path("output")) {}

  [[nodiscard]] bool installed() const noexcept { return process_.started(); }
  [[nodiscard]] unsigned port() const noexcept { return port_; }
  [[nodiscard]] bool ready() const {
    return installed() && comesUp(folder_, "log", "Accepting connections");
  }
  [[nodiscard]] std::string log() const { return folder_.get("log") + folder_.get("output"); }

 private:
  TemporaryFolder folder_;
  unsigned port_ = closedPort();
  std::string configuration_;
  ChildProcess process_;
};

TEST(HttpProxy, MessagesReachTheRelayAndAnswersComeBack) {
  const Tinyproxy proxy;
  if (!proxy.installed() && !mustBeInstalled()) GTEST_SKIP() << "tinyproxy is not installed";
  ASSERT_TRUE(proxy.ready()) << proxy.log();
  std::string error;
  const auto relay = tool::RelayServer::start({.responseText = "by proxy"}, error);
  ASSERT_TRUE(relay) << error;

  const TemporaryFolder folder;
  const std::string url = "http://" + relay->address() + "/mms?a=b";
  CMMSHttp http;
  ASSERT_TRUE(http.ConnectGtw("127.0.0.1", proxy.port(), 0));
  char text[512];
  for (const std::size_t octets : {std::size_t{5}, std::size_t{2} << 20}) {
    const std::string pdu = encodeSendReq({.content = std::string(octets, 'o')});
    EXPECT_TRUE(http.SendMMS(url.c_str(), folder.put("m.mms", pdu).c_str(), 0));
    EXPECT_EQ(http.GetResult(text), 0x80u);
    EXPECT_STREQ(text, "by proxy");
    const tool::RelayExchange exchange = relay->exchanges().back();
    EXPECT_TRUE(std::string(exchange.pdu.begin(), exchange.pdu.end()) == pdu);
    EXPECT_EQ(exchange.target, "/mms?a=b");
    EXPECT_EQ(exchange.userAgent, "Tarvik Mmsbrix 1.0");
  }
  // What the proxy itself says: there is no such server.  It does not read what is posted, so that
  // a long message would be cut off before its answer is heard.
  folder.put("m.mms", encodeSendReq());
  const std::string nowhere = "http://127.0.0.1:" + std::to_string(closedPort()) + "/";
  EXPECT_FALSE(http.SendMMS(nowhere.c_str(), folder.path("m.mms").c_str(), 0));
  EXPECT_GE(http.GetResult(nullptr), 500u);
  EXPECT_LE(http.GetResult(nullptr), 505u);
  http.DisconnectGtw();
}

TEST(HttpProxy, ItsDemandForCredentialsIsReported) {
  const Tinyproxy proxy("BasicAuth someone secret\n");
  if (!proxy.installed() && !mustBeInstalled()) GTEST_SKIP() << "tinyproxy is not installed";
  ASSERT_TRUE(proxy.ready()) << proxy.log();
  const TemporaryFolder folder;
  const std::string file = folder.put("m.mms", encodeSendReq());
  CMMSHttp http;
  http.SetCredentials("user", "pass");
  ASSERT_TRUE(http.ConnectGtw("127.0.0.1", proxy.port(), 0));
  for (const char* url : {"http://127.0.0.1:1/", "https://127.0.0.1:1/"}) {
    EXPECT_FALSE(http.SendMMS(url, file.c_str(), 0));
    EXPECT_EQ(http.GetResult(nullptr), 407u) << url;
  }
  http.DisconnectGtw();
}

TEST(TlsRelay, IsTrustedByItsCertificateOnly) {
  const TemporaryFolder folder;
  ChildProcess request(
      {"openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes",
       "-subj", "/CN=relay", "-addext", "subjectAltName=IP:127.0.0.1", "-days", "1", "-keyout",
       folder.path("key"), "-out", folder.path("certificate")},
      folder.path("log"));
  if (!request.started() && !mustBeInstalled()) GTEST_SKIP() << "openssl is not installed";
  ASSERT_TRUE(request.wait()) << folder.get("log");
  std::string error;
  const auto relay = tool::RelayServer::start(
      {.tlsCertificate = folder.get("certificate"), .tlsKey = folder.get("key")}, error);
  ASSERT_TRUE(relay) << error;
  const std::string file = folder.put("m.mms", encodeSendReq());
  const std::string port = std::to_string(relay->port());
  CMMSHttp http;
  const auto codeFor = [&](const char* trusted, const std::string& host) {
    http.SetTrustedCertificates(trusted);
    EXPECT_TRUE(http.ConnectGtw(nullptr, 0, 0));
    http.SendMMS(("https://" + host + ":" + port + "/").c_str(), file.c_str(), 0);
    const unsigned long code = http.GetResult(nullptr);
    http.DisconnectGtw();
    return code;
  };
  const std::string certificate = folder.path("certificate");
  EXPECT_EQ(codeFor(nullptr, "127.0.0.1"), 12045U);  // unknown to the system
  EXPECT_EQ(codeFor(certificate.c_str(), "127.0.0.1"), 0x80U);
  EXPECT_NE(codeFor(certificate.c_str(), "localhost"), 0x80U);  // another name than certified
}

}  // namespace
}  // namespace mmsbrix::test
