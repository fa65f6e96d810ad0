// Submission through a real HTTP proxy.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <mmsbrix/mmsbrix.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <string>
#include <string_view>
#include <thread>

#include "relay_server.h"
#include "support/raw_server.h"
#include "support/send_req.h"
#include "support/temporary_folder.h"

extern char** environ;

namespace mmsbrix::test {
namespace {

/// tinyproxy on a free port of loopback, from a configuration in a folder of its own.
class Tinyproxy {
 public:
  explicit Tinyproxy(const std::string& moreConfiguration = "") {
    const std::string configuration = folder_.put(
        "tinyproxy.conf", "Port " + std::to_string(port_) +
                              "\nListen 127.0.0.1\nAllow 127.0.0.1\nTimeout 60\nMaxClients 10\n" +
                              "LogFile \"" + folder_.path("log") + "\"\n" + moreConfiguration);
    std::string program = "tinyproxy", debug = "-d", option = "-c", file = configuration;
    std::array<char*, 5> arguments = {program.data(), debug.data(), option.data(), file.data(),
                                      nullptr};
    posix_spawn_file_actions_t quiet;
    posix_spawn_file_actions_init(&quiet);
    posix_spawn_file_actions_addopen(&quiet, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&quiet, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    if (::posix_spawnp(&pid_, "tinyproxy", &quiet, nullptr, arguments.data(), environ) != 0) {
      pid_ = -1;
    }
    posix_spawn_file_actions_destroy(&quiet);
  }
  Tinyproxy(const Tinyproxy&) = delete;
  Tinyproxy& operator=(const Tinyproxy&) = delete;
  ~Tinyproxy() {
    if (pid_ <= 0) return;
    ::kill(pid_, SIGTERM);
    ::waitpid(pid_, nullptr, 0);
  }

  [[nodiscard]] bool installed() const noexcept { return pid_ > 0; }
  [[nodiscard]] unsigned port() const noexcept { return port_; }
  /// Waits until it says that it takes connections.
  [[nodiscard]] bool ready() const {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (std::chrono::steady_clock::now() < deadline) {
      if (folder_.get("log").find("Accepting connections") != std::string::npos) return true;
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return false;
  }
  [[nodiscard]] std::string log() const { return folder_.get("log"); }

 private:
  TemporaryFolder folder_;
  unsigned port_ = closedPort();
  pid_t pid_ = -1;
};

bool mustBeInstalled() {
  const char* ci = std::getenv("CI");
  return ci != nullptr && std::string_view(ci) == "true";
}

TEST(HttpProxy, MessagesReachTheRelayAndAnswersComeBack) {
  const Tinyproxy proxy;
  if (!proxy.installed() && !mustBeInstalled()) GTEST_SKIP() << "tinyproxy is not installed";
  ASSERT_TRUE(proxy.installed());
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
  // What the proxy itself says: there is no such server.
  const std::string nowhere = "http://127.0.0.1:" + std::to_string(closedPort()) + "/";
  EXPECT_FALSE(http.SendMMS(nowhere.c_str(), folder.path("m.mms").c_str(), 0));
  EXPECT_GE(http.GetResult(nullptr), 500u);
  EXPECT_LE(http.GetResult(nullptr), 505u);
  http.DisconnectGtw();
}

TEST(HttpProxy, ItsDemandForCredentialsIsReported) {
  const Tinyproxy proxy("BasicAuth someone secret\n");
  if (!proxy.installed() && !mustBeInstalled()) GTEST_SKIP() << "tinyproxy is not installed";
  ASSERT_TRUE(proxy.installed());
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

}  // namespace
}  // namespace mmsbrix::test
