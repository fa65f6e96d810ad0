// The relay's answer, handed to the client by a stub in the place of the platform's HTTP.
#include <algorithm>
#include <cstring>
#include <string>

#include "platform/http.h"
#include "support/send_req.h"
#include "support/temporary_folder.h"
#include "targets.h"
#include "transport/mmshttp.h"
#include "transport/trace_log.h"

namespace mmsbrix::platform {
namespace {

struct StubReply {
  unsigned error = 0;
  unsigned status = 0;
  bool complete = true;
  std::size_t piece = 1;  // octets that a read gives at most
  std::vector<std::string> headers;
  std::vector<std::uint8_t> body;
};
StubReply reply;

class StubRequest final : public HttpRequest {
 public:
  unsigned id() const noexcept override { return 3; }
  unsigned send(const std::string&, std::span<const std::uint8_t>, const SendProgress&) override {
    return reply.error;
  }
  unsigned status() const noexcept override { return reply.status; }
  std::vector<std::string> rawHeaders() const override { return reply.headers; }
  std::size_t available() const noexcept override {
    return std::min(reply.body.size() - read_, reply.piece);
  }
  std::optional<std::size_t> read(std::span<std::uint8_t> buffer) override {
    const std::size_t count = std::min(buffer.size(), available());
    std::copy_n(reply.body.begin() + static_cast<std::ptrdiff_t>(read_), count, buffer.begin());
    read_ += count;
    return count;
  }
  bool complete() const noexcept override { return reply.complete; }

 private:
  std::size_t read_ = 0;
};

class StubConnection final : public HttpConnection {
 public:
  unsigned id() const noexcept override { return 2; }
  std::unique_ptr<HttpRequest> openPost(const std::string&, const std::string&) override {
    return std::make_unique<StubRequest>();
  }
  std::unique_ptr<HttpRequest> openGet(const std::string& path, const std::string& type) override {
    return openPost(path, type);
  }
};

class StubSession final : public HttpSession {
 public:
  unsigned id() const noexcept override { return 1; }
  std::unique_ptr<HttpConnection> connect(const UrlParts&, const std::string&,
                                          const std::string&) override {
    return std::make_unique<StubConnection>();
  }
};

}  // namespace

std::unique_ptr<HttpSession> HttpSession::open(const HttpSessionOptions&) {
  return std::make_unique<StubSession>();
}
bool isOfflineByUser() {
  return false;
}
void setOnline() {}
void restoreOfflineByUser() {}

}  // namespace mmsbrix::platform

namespace mmsbrix::fuzz {

// The first octet says how the exchange goes, the next two are the status, then come header lines,
// an empty one, and the body.
void httpReply(Input input) {
  static const test::TemporaryFolder folder;
  static const std::string file = folder.put("message.mms", test::encodeSendReq());
  static std::size_t longest = 0;
  static const bool tracing = [] {
    setTraceSink([](std::string_view line) { longest = std::max(longest, line.size()); });
    return true;
  }();
  (void)tracing;
  if (input.size() < 3) return;
  platform::StubReply& reply = platform::reply;
  reply = {};
  reply.error = (input[0] & 0x01) != 0 ? platform::kInternetTimeout : 0;
  reply.complete = (input[0] & 0x02) == 0;
  reply.piece = (input[0] & 0x04) != 0 ? 7 : SIZE_MAX;
  reply.status = (input[0] & 0x08) != 0 ? unsigned{input[1]} << 8 | input[2] : 200;
  std::string_view rest(reinterpret_cast<const char*>(input.data()) + 3, input.size() - 3);
  while (!rest.empty()) {
    const std::string_view line = rest.substr(0, rest.find('\n'));
    rest.remove_prefix(std::min(rest.size(), line.size() + 1));
    if (line.empty()) break;
    reply.headers.emplace_back(line);
  }
  reply.body.assign(rest.begin(), rest.end());

  CMMSHttp http;
  http.ConnectGtw(nullptr, 0, 0);
  const bool accepted = http.SendMMS("http://127.0.0.1/mms", file.c_str(), 0);
  char text[512];
  std::memset(text, 'x', sizeof text);
  const unsigned long code = http.GetResult(text);
  require(std::memchr(text, 0, sizeof text) != nullptr, "the result's text ends in its buffer");
  if (accepted) {
    require(reply.error == 0 && reply.complete && reply.status == 200 && code == 0x80,
            "only a whole answer that says Ok is a delivery");
  }
  require(std::strlen(http.GetFailureDetail()) < 4096 + rest.size() + input.size(),
          "the detail is no longer than what it tells of");
  http.DisconnectGtw();
  require(longest <= 2047, "lines of the trace have their limit");
}

}  // namespace mmsbrix::fuzz
