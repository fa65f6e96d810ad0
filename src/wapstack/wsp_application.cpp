#include "wapstack/wsp_application.h"

#include <utility>

#include "wapstack/client_port.h"
#include "wapstack/exception_log.h"
#include "wsp/wsp_header_values.h"

namespace WapStack {
namespace {

using mmsbrix::session::Client;
using mmsbrix::session::Reason;
using mmsbrix::session::Refusal;
using TimePoint = mmsbrix::wtp::TimePoint;

std::uint8_t codeOf(Reason reason) {
  return static_cast<std::uint8_t>(reason);
}

/// What an abort tells of a request that was not taken.
Reason reasonOf(Refusal refusal) {
  switch (refusal) {
    case Refusal::tooManyMethods:
      return Reason::morExceeded;
    case Refusal::largerThanAgreed:
    case Refusal::cannotBeSent:
      return Reason::mruExceeded;
    default:
      return Reason::disconnect;
  }
}

}  // namespace

WspClientApplication::~WspClientApplication() {
  closeClientPort();
}

std::optional<WdpAddress> WspClientApplication::createClientPort(
    std::uint16_t portType, const WdpAddress& local, const TransactionSettings& settings,
    std::error_code& error) {
  // Sessions are the only service spoken here; the port type of any of them gives the same port.
  if (portType == 0) {
    error = std::make_error_code(std::errc::invalid_argument);
    return std::nullopt;
  }
  closeClientPort();
  TransactionSettings own = settings;
  own.segmentOctets = task_.unitSize();
  auto port = std::make_shared<ClientPort>(task_, *this, own);
  error = port->bind(local);
  if (error) return std::nullopt;
  port_ = port;
  if (!task_.post([port] { port->open(); })) {
    port_.reset();
    error = std::make_error_code(std::errc::operation_not_permitted);
    return std::nullopt;
  }
  return port->local();
}

void WspClientApplication::closeClientPort() noexcept {
  if (port_ == nullptr) return;
  try {
    task_.run([this] { port_->close(); });
    port_.reset();  // not before: callbacks make requests
  } catch (const std::exception& exception) {
    mmsbrix::logCriticalAssertion("wsp_application", __LINE__, exception.what());
  }
}

/// Queues a job on the session; false when there is no thread that could do it.
template <typename Job>
bool WspClientApplication::request(Job job) {
  if (port_ != nullptr &&
      task_.post([port = port_, job = std::move(job)]() mutable { port->apply(std::move(job)); })) {
    return true;
  }
  task_.awaitRelease();  // one callback at a time: the caller makes the next
  return false;
}

void WspClientApplication::s_Connect_req(const WdpAddress& server,
                                         std::vector<std::uint8_t> headers,
                                         const Capabilities& capabilities) {
  const bool queued = request(
      [this, server, headers = std::move(headers), capabilities](Client& session, TimePoint now) {
        if (session.connect(server, capabilities, headers, now) != Refusal::none) {
          s_Disconnect_ind(codeOf(Reason::connectError), {}, {}, {});
        }
      });
  if (!queued) s_Disconnect_ind(codeOf(Reason::connectError), {}, {}, {});
}

void WspClientApplication::s_Disconnect_req(std::uint8_t reason) {
  const bool queued = request([this, reason](Client& session, TimePoint now) {
    if (session.disconnect(now) != Refusal::none) s_Disconnect_ind(reason, {}, {}, {});
  });
  if (!queued) s_Disconnect_ind(reason, {}, {}, {});
}

void WspClientApplication::s_Suspend_req() {
  request([this](Client& session, TimePoint now) {
    if (session.suspend(now) != Refusal::none) s_Exception_ind(codeOf(Reason::protocolError));
  });
}

void WspClientApplication::s_Resume_req(const WdpAddress& server,
                                        std::vector<std::uint8_t> headers) {
  request([this, server, headers = std::move(headers)](Client& session, TimePoint now) {
    if (session.resume(server, headers, now) != Refusal::none) {
      s_Exception_ind(codeOf(Reason::protocolError));
    }
  });
}

void WspClientApplication::s_MethodInvoke_req(TransactionId id, std::uint8_t method,
                                              MethodArguments arguments) {
  const bool queued =
      request([this, id, method, arguments = std::move(arguments)](Client& session, TimePoint now) {
        mmsbrix::Writer headers;
        if (!arguments.contentType.empty()) {
          Content_type_value(arguments.contentType).encodeToFrame(headers);
        }
        headers.append(Octets(arguments.headers));
        const Octets body = arguments.body ? Octets(*arguments.body) : Octets();
        const Refusal refusal =
            session.invokeMethod(id, method, arguments.uri, headers.written(), body, now);
        if (refusal == Refusal::none) return;
        const std::uint8_t reason = codeOf(reasonOf(refusal));
        const bool noSession = session.state() == mmsbrix::session::State::null;
        s_MethodAbort_ind(id, reason);
        if (noSession) s_Disconnect_ind(reason, {}, {}, {});
      });
  if (queued) return;
  s_MethodAbort_ind(id, codeOf(Reason::disconnect));
  s_Disconnect_ind(codeOf(Reason::disconnect), {}, {}, {});
}

void WspClientApplication::s_MethodResult_res(TransactionId id) {
  request([id](Client& session, TimePoint now) { session.respondResult(id, {}, now); });
}

void WspClientApplication::s_MethodAbort_req(TransactionId id) {
  request([id](Client& session, TimePoint now) { session.abortMethod(id, now); });
}

void WspClientApplication::s_ConfirmedPush_res(TransactionId id) {
  request([id](Client& session, TimePoint now) { session.respondPush(id, {}, now); });
}

void WspClientApplication::s_PushAbort_req(TransactionId id, std::uint8_t reason) {
  request([id, reason](Client& session, TimePoint now) { session.abortPush(id, reason, now); });
}

void WspClientApplication::s_Connect_cnf(Octets, const Agreement&) {}
void WspClientApplication::s_Exception_ind(std::uint8_t) {}
void WspClientApplication::s_Disconnect_ind(std::uint8_t, const std::vector<WdpAddress>&, Octets,
                                            Octets) {}
void WspClientApplication::s_MethodInvoke_cnf(TransactionId) {}
void WspClientApplication::s_MethodResult_ind(TransactionId, std::uint8_t, Octets, Octets) {}
void WspClientApplication::s_MethodAbort_ind(TransactionId, std::uint8_t) {}
void WspClientApplication::s_Suspend_ind(std::uint8_t) {}
void WspClientApplication::s_Resume_cnf(Octets) {}
void WspClientApplication::s_Unit_MethodResult_ind(TransactionId, std::uint8_t, Octets, Octets) {}
void WspClientApplication::s_Push_ind(Octets, Octets) {}
void WspClientApplication::s_ConfirmedPush_ind(TransactionId id, Octets, Octets) {
  constexpr std::uint8_t kPushRefused = 0xEB;
  s_PushAbort_req(id, kPushRefused);
}
void WspClientApplication::s_PushAbort_ind(TransactionId, std::uint8_t) {}

}  // namespace WapStack
