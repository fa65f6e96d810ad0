// Submissions to the tool's relay, and by WAP to a gateway, on loopback.  "exchange" is the floor:
// the same octets over a socket that is kept, without a client; what a submission takes beyond it
// is the client's own time.
#include <arpa/inet.h>
#include <benchmark/benchmark.h>
#include <mmsbrix/mms/mmscodec.h>
#include <mmsbrix/transport/mmshttp.h>
#include <mmsbrix/transport/mmswap.h>
#include <mmsbrix/transport/wap_gateway.h>
#include <netinet/tcp.h>
#include <relay_server.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace {

namespace fs = std::filesystem;
using mmsbrix::tool::RelayServer;

void require(bool good) {
  if (!good) std::abort();
}

CMMsg request(std::size_t contentOctets) {
  CMMsg message;
  message.SetMsgType(CMMsg::MSG_TYPE_SEND_REQ);
  message.SetTransactionId("T0123456789");
  message.SetVersion("1.2");
  const CMMAddr to("+358409876543", CMMAddr::TYPE_PLMN);
  message.AddTo(&to);
  const CMMHdr type("Content-Type", "text/plain");
  message.Content()->Headers()->Add(&type);
  const std::string text(contentOctets, 'x');
  message.Content()->SetContent(text.data(), static_cast<int>(text.size()));
  return message;
}

// The relay, and a message in a file of its own.
class Bench {
 public:
  Bench() {
    std::string error;
    relay_ = RelayServer::start({.keptExchanges = 0}, error);
    require(relay_ != nullptr);
    std::string folder = (fs::temp_directory_path() / "mmsbrix-bench-XXXXXX").string();
    require(::mkdtemp(folder.data()) != nullptr);
    folder_ = folder;
    CMMsg message = request(1000);
    require(MMS_Save(&message, file().c_str(), 0) > 0);
  }
  Bench(const Bench&) = delete;
  Bench& operator=(const Bench&) = delete;
  ~Bench() {
    std::error_code ignored;
    fs::remove_all(folder_, ignored);
  }
  [[nodiscard]] std::string file() const { return (folder_ / "message.mms").string(); }
  [[nodiscard]] std::string url() const { return "http://" + relay_->address() + "/"; }
  [[nodiscard]] const RelayServer& relay() const { return *relay_; }

 private:
  std::unique_ptr<RelayServer> relay_;
  fs::path folder_;
};

Bench& bench() {
  static Bench instance;
  return instance;
}

void submit(benchmark::State& state) {
  CMMSHttp transport;
  require(transport.ConnectGtw(nullptr, 0, 0));
  const std::string url = bench().url();
  const std::string file = bench().file();
  require(transport.SendMMS(url.c_str(), file.c_str(), 0));  // connects
  for (auto _ : state) require(transport.SendMMS(url.c_str(), file.c_str(), 0));
  state.SetItemsProcessed(state.iterations());
  transport.DisconnectGtw();
}

class Socket {
 public:
  explicit Socket(std::uint16_t port) : descriptor_(::socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    require(::connect(descriptor_, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0);
    const int on = 1;
    ::setsockopt(descriptor_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  }
  Socket(const Socket&) = delete;
  Socket& operator=(const Socket&) = delete;
  ~Socket() { ::close(descriptor_); }

  // Sends all and reads one answer, whose length its header states.
  void exchange(std::string_view request) {
    require(::send(descriptor_, request.data(), request.size(), MSG_NOSIGNAL) ==
            static_cast<ssize_t>(request.size()));
    std::string answer;
    std::size_t wanted = std::string::npos;
    while (answer.size() < wanted) {
      char chunk[4096];
      const ssize_t got = ::recv(descriptor_, chunk, sizeof chunk, 0);
      require(got > 0);
      answer.append(chunk, static_cast<std::size_t>(got));
      const std::size_t end = answer.find("\r\n\r\n");
      if (wanted != std::string::npos || end == std::string::npos) continue;
      constexpr std::string_view kLength = "Content-Length: ";
      const std::size_t length = answer.find(kLength);
      require(length < end);
      wanted = end + 4 + static_cast<std::size_t>(std::atoi(&answer[length + kLength.size()]));
    }
  }

 private:
  int descriptor_;
};

void exchange(benchmark::State& state) {
  CMMsg message = request(1000);
  void* data = nullptr;
  unsigned size = 0;
  require(MMS_SaveToMemory(&message, &data, &size, 0) == 1);
  std::string text = "POST / HTTP/1.1\r\nHost: " + bench().relay().address() +
                     "\r\nUser-Agent: bench\r\nContent-Type: application/vnd.wap.mms-message\r\n"
                     "Accept: */*\r\nContent-Length: " +
                     std::to_string(size) + "\r\n\r\n";
  text.append(static_cast<const char*>(data), size);
  MMS_Free(data);
  Socket socket(bench().relay().port());
  socket.exchange(text);
  for (auto _ : state) socket.exchange(text);
  state.SetItemsProcessed(state.iterations());
}

// A message of so many octets in a session that is open, to a gateway that accepts everything.
void submitByWap(benchmark::State& state) {
  mmsbrix::WapGatewayOptions options;
  options.onRequest = [](const mmsbrix::WapRequest&) {
    using namespace std::string_view_literals;
    constexpr std::string_view kAccepted = "\x8C\x81\x98T1\0\x8D\x90\x92\x80"sv;
    mmsbrix::WapResponse response;
    response.contentType = "application/vnd.wap.mms-message";
    response.body.assign(kAccepted.begin(), kAccepted.end());
    return response;
  };
  std::string error;
  const auto gateway = mmsbrix::WapGateway::start(std::move(options), error);
  require(gateway != nullptr);
  CMMSWap transport;
  require(transport.ConnectGtw("127.0.0.1", gateway->port(), 0));
  const auto octets = static_cast<std::size_t>(state.range(0));
  CMMsg message = request(octets);
  const std::string file = bench().file() + "." + std::to_string(octets);
  require(MMS_Save(&message, file.c_str(), 0) > 0);
  for (auto _ : state) require(transport.SendMMS("http://mmsc.example/", file.c_str(), 0));
  state.SetItemsProcessed(state.iterations());
  state.counters["octets"] = static_cast<double>(octets);
  transport.DisconnectGtw();
}

}  // namespace

BENCHMARK(submitByWap)->Name("wap-submit")->Arg(1000)->Arg(100'000)->UseRealTime();
BENCHMARK(submit)->Name("http-submit")->UseRealTime()->Threads(1)->Threads(4);
BENCHMARK(exchange)->Name("http-exchange")->UseRealTime()->Threads(1)->Threads(4);

BENCHMARK_MAIN();
