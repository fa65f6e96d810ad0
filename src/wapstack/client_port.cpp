#include "wapstack/client_port.h"

#include <exception>
#include <random>
#include <utility>

#include "wapstack/exception_log.h"

namespace WapStack {
namespace {

constexpr std::string_view kSource = "client_port";

using mmsbrix::session::Event;
using mmsbrix::session::Reason;

std::uint8_t codeOf(Reason reason) {
  return static_cast<std::uint8_t>(reason);
}

/// Late packets of an earlier process at the same port must not fit ours.
std::uint16_t randomTid() {
  std::random_device device;
  return static_cast<std::uint16_t>(device());
}

}  // namespace

ClientPort::ClientPort(ApiDriverTask& task, WspClientApplication& application,
                       const TransactionSettings& settings)
    : task_(task),
      application_(&application),
      settings_(settings),
      context_(task.context()),
      socket_(*context_),
      timer_(*context_) {
  session_.emplace(settings_, randomTid());
}

void ClientPort::open() {
  task_.join(shared_from_this());
  socket_.receive([self = weak_from_this()](const WdpAddress& peer, Octets datagram) {
    if (const auto port = self.lock()) port->receive(peer, datagram);
  });
}

void ClientPort::close() noexcept {
  const auto self = weak_from_this().lock();  // the task may hold the last reference
  application_ = nullptr;
  session_.reset();
  socket_.close();
  timer_.cancel();
  task_.leave(this);
}

void ClientPort::shutDown() noexcept {
  // The application stays: requests may still come, and each ends by a callback.
  WspClientApplication* const application = application_;
  giveUp(codeOf(Reason::userRequest));
  close();
  application_ = application;
}

void ClientPort::apply(const std::function<void(Client&, TimePoint)>& request) noexcept {
  if (!session_) return giveUp(codeOf(Reason::disconnect));  // of a port that was shut down
  guarded([&] { request(*session_, std::chrono::steady_clock::now()); });
}

/// Whatever goes wrong ends the session, never the host.
template <typename Act>
void ClientPort::guarded(Act act) noexcept {
  if (!session_) return;
  try {
    act();
    pump();
  } catch (const std::exception& exception) {
    mmsbrix::logCriticalAssertion(kSource, __LINE__, exception.what());
    giveUp(codeOf(Reason::congestion));
  } catch (...) {
    mmsbrix::logCriticalAssertion(kSource, __LINE__, "unknown exception");
    giveUp(codeOf(Reason::congestion));
  }
}

void ClientPort::giveUp(std::uint8_t reason) noexcept {
  if (application_ == nullptr) return;
  try {
    if (session_) session_.emplace(settings_, randomTid());
  } catch (...) {  // no memory: without a session every request ends at once
    session_.reset();
  }
  try {
    application_->s_Disconnect_ind(reason, {}, {}, {});
  } catch (const std::exception& exception) {
    mmsbrix::logCriticalAssertion(kSource, __LINE__, exception.what());
  } catch (...) {
    mmsbrix::logCriticalAssertion(kSource, __LINE__, "unknown exception");
  }
}

void ClientPort::receive(const WdpAddress& peer, Octets datagram) noexcept {
  if (application_ == nullptr) return;
  guarded([&] {
    task_.traceReceived(peer, datagram);
    // Nobody but the server that we speak with has anything to say here.
    if (peer != application_->serverAddress()) return;
    session_->receive(peer, datagram, std::chrono::steady_clock::now());
  });
}

void ClientPort::onTimer() noexcept {
  timerAt_.reset();
  guarded([&] { session_->onTimer(std::chrono::steady_clock::now()); });
}

void ClientPort::pump() {
  while (session_) {
    while (session_) {
      const auto datagram = session_->takeDatagram();
      if (!datagram) break;
      task_.traceSent(datagram->peer, datagram->octets.written());
      socket_.send(datagram->peer, datagram->octets.written());
    }
    const auto event = session_ ? session_->takeEvent() : std::nullopt;
    if (!event) break;
    tell(*event);
  }
  if (session_) setTimer();
}

void ClientPort::tell(const Event& event) {
  if (application_ == nullptr) return;
  WspClientApplication& application = *application_;
  switch (event.kind) {
    case Event::Kind::connectConfirm:
      return application.s_Connect_cnf(event.headers, event.agreement);
    case Event::Kind::disconnectIndication:
      return application.s_Disconnect_ind(event.code, event.redirect, event.headers, event.body);
    case Event::Kind::suspendIndication:
      return application.s_Suspend_ind(event.code);
    case Event::Kind::resumeConfirm:
      return application.s_Resume_cnf(event.headers);
    case Event::Kind::exceptionIndication:
      return application.s_Exception_ind(event.code);
    case Event::Kind::methodInvokeConfirm:
      return application.s_MethodInvoke_cnf(event.id);
    case Event::Kind::methodResultIndication:
      return application.s_MethodResult_ind(event.id, event.code, event.headers, event.body);
    case Event::Kind::methodAbortIndication:
      return application.s_MethodAbort_ind(event.id, event.code);
    case Event::Kind::pushIndication:
      return application.s_Push_ind(event.headers, event.body);
    case Event::Kind::confirmedPushIndication:
      return application.s_ConfirmedPush_ind(event.id, event.headers, event.body);
    case Event::Kind::pushAbortIndication:
      return application.s_PushAbort_ind(event.id, event.code);
  }
}

void ClientPort::setTimer() {
  const auto deadline = session_->deadline();
  if (deadline == timerAt_) return;
  timerAt_ = deadline;
  timer_.cancel();
  if (!deadline) return;
  timer_.expires_at(*deadline);
  timer_.async_wait([self = weak_from_this()](const asio::error_code& error) {
    if (error) return;  // cancelled
    if (const auto port = self.lock()) port->onTimer();
  });
}

}  // namespace WapStack
