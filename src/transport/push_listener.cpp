#include "transport/push_listener.h"

#include <algorithm>
#include <chrono>
#include <deque>
#include <exception>
#include <optional>
#include <utility>

#include "platform/text.h"
#include "transport/wap_content.h"
#include "transport/wap_start.h"
#include "transport/wap_text.h"
#include "wapstack/exception_log.h"
#include "wapstack/wdpsock.h"
#include "wapstack/wsp_pdu.h"

namespace mmsbrix {
namespace {

/// Pushes that are remembered, and how long, so that a copy of one is known again.
constexpr std::size_t kMaxRemembered = 64;
constexpr std::chrono::minutes kRemember{1};

}  // namespace

struct PushListener::Impl final : ProtocolMember, std::enable_shared_from_this<Impl> {
  Impl(ApiDriverTask& owner, Handler wanted)
      : task(owner), context(owner.context()), socket(*context), handler(std::move(wanted)) {}

  void open() {
    task.join(shared_from_this());
    socket.receive([self = weak_from_this()](const WdpAddress& peer, Octets datagram) {
      if (const auto listener = self.lock()) listener->receive(peer, datagram);
    });
  }
  void close() noexcept {
    const auto self = weak_from_this().lock();
    socket.close();
    task.leave(this);
  }
  void shutDown() noexcept override { close(); }

  void receive(const WdpAddress& peer, Octets datagram) noexcept;
  bool isCopy(const WdpAddress& peer, Octets datagram);

  struct Seen {
    std::chrono::steady_clock::time_point at;
    WdpAddress peer;
    std::vector<std::uint8_t> datagram;
  };

  ApiDriverTask& task;
  const std::shared_ptr<asio::io_context> context;  // goes after the socket
  WdpSocket socket;
  const Handler handler;
  std::deque<Seen> seen;
};

void PushListener::Impl::receive(const WdpAddress& peer, Octets datagram) noexcept {
  try {
    task.traceReceived(peer, datagram);
    if (datagram.empty()) return;
    // Ahead of the PDU stands one octet, the push's identifier.  [WAP-230 8.1]
    const auto pdu = session::decodeServerPdu(datagram.subspan(1));
    if (!pdu || pdu->type != session::PduType::push || isCopy(peer, datagram)) return;
    TypedHeaders headers = readTypedHeaders(pdu->headers);
    Push push;
    push.from = toString(peer);
    push.contentType = std::move(headers.contentType);
    push.headers = std::move(headers.fields);
    push.body.assign(pdu->data.begin(), pdu->data.end());
    std::unique_ptr<CMMsg> notification;
    if (isMmsContentType(push.contentType)) {
      notification = readMms(push.body, CMMsg::MSG_TYPE_NOTIFICATION_IND);
    }
    push.notification = notification.get();
    handler(push);
  } catch (const std::exception& exception) {
    logCriticalAssertion("push_listener", __LINE__, exception.what());
  } catch (...) {
    logCriticalAssertion("push_listener", __LINE__, "unknown exception");
  }
}

bool PushListener::Impl::isCopy(const WdpAddress& peer, Octets datagram) {
  const auto now = std::chrono::steady_clock::now();
  while (!seen.empty() && (now - seen.front().at > kRemember || seen.size() >= kMaxRemembered)) {
    seen.pop_front();
  }
  if (std::ranges::any_of(seen, [&](const Seen& one) {
        return one.peer == peer && std::ranges::equal(one.datagram, datagram);
      })) {
    return true;
  }
  seen.push_back({now, peer, {datagram.begin(), datagram.end()}});
  return false;
}

PushListener::PushListener() = default;

PushListener::~PushListener() {
  Stop();
}

bool PushListener::Start(const char* address, unsigned port, Handler handler) {
  Stop();
  std::error_code error;
  const std::string host = *orEmpty(address) == '\0' ? "0.0.0.0" : address;
  const auto local = resolveAddress(host + ":" + std::to_string(port), error);
  ApiDriverTask& task = startWapStack();
  auto impl = std::make_shared<Impl>(task, std::move(handler));
  if (local) error = impl->socket.open(*local);
  if (!error && !task.post([impl] { impl->open(); })) {
    error = std::make_error_code(std::errc::resource_unavailable_try_again);
  }
  if (error) {
    detail_ = "no port at " + host + ":" + std::to_string(port) + ": " + error.message();
    return false;
  }
  detail_.clear();
  impl_ = std::move(impl);
  return true;
}

void PushListener::Stop() {
  const auto impl = std::exchange(impl_, nullptr);
  if (impl != nullptr) impl->task.run([&impl] { impl->close(); });
}

std::uint16_t PushListener::GetPort() const noexcept {
  return impl_ == nullptr ? std::uint16_t{0} : impl_->socket.local().port;
}

const char* PushListener::GetFailureDetail() const noexcept {
  return detail_.c_str();
}

}  // namespace mmsbrix
