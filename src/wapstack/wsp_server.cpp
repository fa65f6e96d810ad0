#include "wapstack/wsp_server.h"

#include <utility>

#include "wapstack/wsp_reason.h"

namespace mmsbrix::session {
namespace {

constexpr std::uint8_t kStatusOk = 0x20;
constexpr std::uint8_t kMajorVersionMask = 0xF0;

std::vector<std::uint8_t> copy(Octets octets) {
  return {octets.begin(), octets.end()};
}

bool exceeds(std::size_t octets, std::uint32_t limit) {
  return limit != 0 && octets > limit;
}

/// True for octets that mean to open a session, sound or not.
bool opensSession(Octets octets) {
  const auto type = Reader(octets).peekOctet();
  return type == static_cast<std::uint8_t>(PduType::connect) ||
         type == static_cast<std::uint8_t>(PduType::resume);
}

}  // namespace

const char* refusalText(ServerRefusal refusal) noexcept {
  switch (refusal) {
    case ServerRefusal::none:
      return "";
    case ServerRefusal::wrongState:
      return "not in this state of the session";
    case ServerRefusal::noFacility:
      return "the session has no pushes of this kind";
    case ServerRefusal::tooManyPushes:
      return "as many pushes are open as the client takes";
    case ServerRefusal::largerThanAgreed:
      return "the PDU is larger than the client accepts";
    case ServerRefusal::cannotBeSent:
      return "the PDU does not go into the packets that the client takes";
  }
  return "";
}

Server::Server(const wtp::Settings& settings, std::uint16_t firstTid, SessionId firstSession)
    : wtp_(
          [&settings] {
            wtp::Settings serving = settings;
            serving.acceptClass2 = true;
            return serving;
          }(),
          firstTid),
      nextSession_(firstSession) {}

ServerRefusal Server::accept(SessionId id, Octets headers, TimePoint now) {
  const auto found = sessions_.find(id);
  if (found == sessions_.end()) return ServerRefusal::wrongState;
  Session& session = found->second;
  Writer pdu;
  const bool connects = session.state == State::connecting;
  if (connects) {
    const Grant granted = grant(session.proposed, limits_);
    Writer capabilities;
    encodeCapabilities(granted.answer, capabilities);
    capabilities.append(session.unsupported);
    encodeConnectReply(id, capabilities.written(), headers, pdu);
    session.agreement = granted.agreement;
  } else {
    encodeReply(kStatusOk, headers, {}, pdu);
  }
  if (const auto refusal = answer(found, pdu.written(), now); refusal != ServerRefusal::none) {
    return refusal;
  }
  opening_.erase(session.peer);
  if (const auto other = open_.find(session.peer); other != open_.end()) {
    end(sessions_.find(other->second), Reason::disconnect, now);
  }
  open_[session.peer] = id;
  session.state = State::connected;
  releaseHeld(id, now);
  pump(now);
  return ServerRefusal::none;
}

ServerRefusal Server::refuse(SessionId id, std::uint8_t status, Octets headers, Octets body,
                             TimePoint now) {
  const auto session = sessions_.find(id);
  if (session == sessions_.end()) return ServerRefusal::wrongState;
  Writer pdu;
  encodeReply(status, headers, body, pdu);
  return turnAway(session, pdu.written(), now);
}

ServerRefusal Server::redirect(SessionId id, std::uint8_t flags,
                               std::span<const WdpAddress> addresses, TimePoint now) {
  const auto session = sessions_.find(id);
  if (session == sessions_.end() || session->second.state != State::connecting) {
    return ServerRefusal::wrongState;
  }
  Writer pdu;
  encodeRedirect(flags, addresses, session->second.peer, pdu);
  return turnAway(session, pdu.written(), now);
}

/// Ends a session by the answer to its opening.
ServerRefusal Server::turnAway(Sessions::iterator session, Octets pdu, TimePoint now) {
  const ServerRefusal refusal = answer(session, pdu, now);
  if (refusal == ServerRefusal::none) {
    forgetExchange(session->second.transaction);
    drop(session, Reason::connectError, now);
  }
  pump(now);
  return refusal;
}

ServerRefusal Server::disconnect(SessionId id, Reason reason, TimePoint now) {
  const auto session = sessions_.find(id);
  if (session == sessions_.end()) return ServerRefusal::wrongState;
  const WdpAddress peer = session->second.peer;
  const bool connected = session->second.state == State::connected;
  drop(session, connected ? Reason::disconnect : reason, now);
  if (connected) {
    Writer pdu;
    encodeSessionEnd(PduType::disconnect, id, pdu);
    wtp_.invoke(peer, {wtp::Class::push}, copy(pdu.written()), now);
  }
  pump(now);
  return ServerRefusal::none;
}

ServerRefusal Server::reply(wtp::Handle method, std::uint8_t status, Octets headers, Octets body,
                            TimePoint now) {
  const auto exchange = exchanges_.find(method);
  if (exchange == exchanges_.end() || exchange->second.kind != Exchange::Kind::method ||
      exchange->second.answered) {
    return ServerRefusal::wrongState;
  }
  Session& session = sessions_.at(exchange->second.session);
  Writer pdu;
  encodeReply(status, headers, body, pdu);
  if (exceeds(pdu.size(), session.agreement.clientSduSize)) return ServerRefusal::largerThanAgreed;
  if (wtp_.sendResult(method, copy(pdu.written()), now) != wtp::Refusal::none) {
    return ServerRefusal::cannotBeSent;
  }
  exchange->second.answered = true;
  --session.unanswered;
  pump(now);
  return ServerRefusal::none;
}

ServerRefusal Server::abortMethod(wtp::Handle method, std::uint8_t reason, TimePoint now) {
  const auto exchange = exchanges_.find(method);
  if (exchange == exchanges_.end() || exchange->second.kind != Exchange::Kind::method) {
    return ServerRefusal::wrongState;
  }
  wtp_.abandon(method, reason, now);
  say(ServerEvent::Kind::methodAbortIndication, exchange->second.session, reason).id = method;
  forgetExchange(method);
  pump(now);
  return ServerRefusal::none;
}

ServerRefusal Server::push(SessionId session, Octets headers, Octets body, TimePoint now) {
  wtp::Handle unused = 0;
  return sendPush(session, PduType::push, headers, body, unused, now);
}

ServerRefusal Server::confirmedPush(SessionId session, Octets headers, Octets body, wtp::Handle& id,
                                    TimePoint now) {
  return sendPush(session, PduType::confirmedPush, headers, body, id, now);
}

ServerRefusal Server::sendPush(SessionId id, PduType type, Octets headers, Octets body,
                               wtp::Handle& handle, TimePoint now) {
  const auto found = sessions_.find(id);
  if (found == sessions_.end() || found->second.state != State::connected) {
    return ServerRefusal::wrongState;
  }
  Session& session = found->second;
  const bool confirmed = type == PduType::confirmedPush;
  if (!session.agreement.has(confirmed ? kConfirmedPushFacility : kPushFacility)) {
    return ServerRefusal::noFacility;
  }
  if (confirmed && session.pushes.size() >= session.agreement.pushMor) {
    return ServerRefusal::tooManyPushes;
  }
  Writer pdu;
  encodePush(type, headers, body, pdu);
  if (exceeds(pdu.size(), session.agreement.clientSduSize)) return ServerRefusal::largerThanAgreed;
  // The client's user has a say in a confirmed push, so its Ack waits for that.
  const auto invoked =
      wtp_.invoke(session.peer,
                  confirmed ? wtp::Transaction::Terms{wtp::Class::reliablePush, true}
                            : wtp::Transaction::Terms{wtp::Class::push, false},
                  copy(pdu.written()), now);
  if (invoked.refusal != wtp::Refusal::none) return ServerRefusal::cannotBeSent;
  if (confirmed) {
    handle = invoked.handle;
    exchanges_[handle] = {Exchange::Kind::push, id};
    session.pushes.insert(handle);
  }
  pump(now);
  return ServerRefusal::none;
}

ServerRefusal Server::answer(Sessions::iterator session, Octets pdu, TimePoint now) {
  const State state = session->second.state;
  if (state != State::connecting && state != State::resuming) return ServerRefusal::wrongState;
  const auto refusal = wtp_.sendResult(session->second.transaction, copy(pdu), now);
  return refusal == wtp::Refusal::none ? ServerRefusal::none : ServerRefusal::cannotBeSent;
}

void Server::receive(const WdpAddress& peer, Octets datagram, TimePoint now) {
  wtp_.receive(peer, datagram, now);
  pump(now);
}

void Server::onTimer(TimePoint now) {
  wtp_.onTimer(now);
  pump(now);
}

std::optional<ServerEvent> Server::takeEvent() {
  if (events_.empty()) return std::nullopt;
  std::optional<ServerEvent> event(std::move(events_.front()));
  events_.pop_front();
  return event;
}

void Server::pump(TimePoint now) {
  while (const auto event = wtp_.takeEvent()) handle(*event, now);
}

void Server::handle(const wtp::Event& event, TimePoint now) {
  using Kind = wtp::Event::Kind;
  switch (event.kind) {
    case Kind::invokeIndication:
      if (event.transactionClass == wtp::Class::push) {
        handleUnreliable(event, now);
      } else if (const auto refused = takeInvoke(event, now)) {
        wtp_.abandon(event.handle, static_cast<std::uint8_t>(*refused), now);
      } else {
        wtp_.respondInvoke(event.handle, {}, now);
      }
      break;
    case Kind::invokeConfirm:
    case Kind::resultConfirm:
      confirm(event);
      break;
    case Kind::abortIndication:
      handleAbort(event, now);
      break;
    case Kind::resultIndication:
      break;  // nothing of class 2 is invoked here
  }
}

Server::Sessions::iterator Server::sessionOf(const WdpAddress& peer) {
  if (const auto opening = opening_.find(peer); opening != opening_.end()) {
    return sessions_.find(opening->second);
  }
  const auto open = open_.find(peer);
  return open == open_.end() ? sessions_.end() : sessions_.find(open->second);
}

/// Takes what is to be answered; a reason says why it is not taken.
std::optional<Reason> Server::takeInvoke(const wtp::Event& event, TimePoint now) {
  const auto session = sessionOf(event.peer);
  const auto pdu = decodeClientPdu(event.data);
  const bool known = session != sessions_.end();
  if (pdu && event.transactionClass == wtp::Class::result) {
    if (pdu->is(PduType::connect)) return takeConnect(event, *pdu, now);
    if (pdu->is(PduType::resume)) return takeResume(event, *pdu, now);
    if (pdu->isMethod() && known) return takeMethod(session->first, event.handle, event.data);
  }
  return known || opensSession(event.data) ? Reason::protocolError : Reason::disconnect;
}

std::optional<Reason> Server::takeConnect(const wtp::Event& event, const ClientPdu& pdu,
                                          TimePoint now) {
  const auto proposed = decodeCapabilities(pdu.capabilities);
  if (!proposed || (pdu.version & kMajorVersionMask) != (kVersion & kMajorVersionMask)) {
    return Reason::protocolError;
  }
  if (const auto earlier = opening_.find(event.peer); earlier != opening_.end()) {
    end(sessions_.find(earlier->second), Reason::disconnect, now);
  }
  if (sessions_.size() >= kMaxSessions) end(sessions_.begin(), Reason::congestion, now);
  const SessionId id = nextSession_++;
  Session& session = sessions_[id];
  session.peer = event.peer;
  session.transaction = event.handle;
  session.proposed = *proposed;
  Writer unsupported;
  encodeUnsupported(pdu.capabilities, unsupported);
  session.unsupported = copy(unsupported.written());
  opening_[event.peer] = id;
  exchanges_[event.handle] = {Exchange::Kind::connect, id};
  ServerEvent& told = say(ServerEvent::Kind::connectIndication, id);
  told.peer = event.peer;
  told.proposed = *proposed;
  told.headers = copy(pdu.headers);
  return std::nullopt;
}

std::optional<Reason> Server::takeResume(const wtp::Event& event, const ClientPdu& pdu,
                                         TimePoint now) {
  const auto found = sessions_.find(pdu.sessionId);
  if (found == sessions_.end() || !found->second.agreement.has(kResumeFacility)) {
    return Reason::disconnect;
  }
  Session& session = found->second;
  if (session.state != State::suspended) suspend(found, Reason::resume, now);
  if (const auto other = opening_.find(event.peer); other != opening_.end()) {
    end(sessions_.find(other->second), Reason::disconnect, now);
  }
  session.state = State::resuming;
  session.peer = event.peer;  // the client may have moved
  session.transaction = event.handle;
  opening_[event.peer] = found->first;
  exchanges_[event.handle] = {Exchange::Kind::resume, found->first};
  ServerEvent& told = say(ServerEvent::Kind::resumeIndication, found->first);
  told.peer = event.peer;
  told.headers = copy(pdu.headers);
  return std::nullopt;
}

std::optional<Reason> Server::takeMethod(SessionId id, wtp::Handle handle, Octets octets) {
  Session& session = sessions_.at(id);
  if (session.state != State::connected) {
    // WTP keeps no order between transactions: a method may overtake its session.
    if (session.held.size() >= limits_.methodMor) return Reason::morExceeded;
    session.held.push_back({handle, copy(octets)});
    return std::nullopt;
  }
  const auto pdu = decodeClientPdu(octets);
  if (!pdu) return Reason::protocolError;
  if (exceeds(octets.size(), session.agreement.serverSduSize)) return Reason::mruExceeded;
  // Tolerance: a method counts until its reply goes out, not until the client has acknowledged
  // that: the Ack may be lost while the client rightly goes on.
  if (session.unanswered >= session.agreement.methodMor) return Reason::morExceeded;
  ++session.unanswered;
  session.methods.insert(handle);
  exchanges_[handle] = {Exchange::Kind::method, id};
  ServerEvent& told = say(ServerEvent::Kind::methodIndication, id);
  told.id = handle;
  told.peer = session.peer;
  told.method = pdu->type;
  told.uri = pdu->uri;
  told.headers = copy(pdu->headers);
  told.body = copy(pdu->data);
  return std::nullopt;
}

void Server::releaseHeld(SessionId id, TimePoint now) {
  for (const Held& held : std::exchange(sessions_.at(id).held, {})) {
    if (const auto refused = takeMethod(id, held.handle, held.pdu)) {
      wtp_.abandon(held.handle, static_cast<std::uint8_t>(*refused), now);
    }
  }
}

void Server::handleUnreliable(const wtp::Event& event, TimePoint now) {
  const auto pdu = decodeClientPdu(event.data);
  if (!pdu || !(pdu->is(PduType::disconnect) || pdu->is(PduType::suspend))) return;
  const auto session = sessions_.find(pdu->sessionId);
  if (session == sessions_.end() || session->second.peer != event.peer) return;
  if (pdu->is(PduType::disconnect)) {
    end(session, Reason::disconnect, now);
  } else if (session->second.state != State::suspended) {
    suspend(session, Reason::suspend, now);
  }
}

void Server::handleAbort(const wtp::Event& event, TimePoint now) {
  const auto found = exchanges_.find(event.handle);
  if (found == exchanges_.end()) {
    const auto opening = opening_.find(event.peer);
    if (opening == opening_.end()) return;
    std::erase_if(sessions_.at(opening->second).held,
                  [&event](const Held& held) { return held.handle == event.handle; });
    return;
  }
  const Exchange exchange = found->second;
  const auto session = sessions_.find(exchange.session);
  const std::uint8_t code = reasonOf(event);
  forgetExchange(event.handle);
  if (exchange.kind == Exchange::Kind::method || exchange.kind == Exchange::Kind::push) {
    const bool method = exchange.kind == Exchange::Kind::method;
    say(method ? ServerEvent::Kind::methodAbortIndication : ServerEvent::Kind::pushAbortIndication,
        exchange.session, code)
        .id = event.handle;
  }
  if (is(code, Reason::disconnect) || exchange.kind == Exchange::Kind::connect) {
    end(session, static_cast<Reason>(code), now);
  } else if (is(code, Reason::suspend) || exchange.kind == Exchange::Kind::resume) {
    suspend(session, static_cast<Reason>(code), now);
  }
}

void Server::confirm(const wtp::Event& event) {
  const auto found = exchanges_.find(event.handle);
  if (found == exchanges_.end()) return;
  const Exchange exchange = found->second;
  forgetExchange(event.handle);
  if (exchange.kind == Exchange::Kind::connect || exchange.kind == Exchange::Kind::resume) return;
  const bool method = exchange.kind == Exchange::Kind::method;
  ServerEvent& told = say(
      method ? ServerEvent::Kind::methodConfirm : ServerEvent::Kind::pushConfirm, exchange.session);
  told.id = event.handle;
  told.headers = event.data;
}

void Server::forgetExchange(wtp::Handle handle) {
  const auto found = exchanges_.find(handle);
  if (found == exchanges_.end()) return;
  const Exchange exchange = found->second;
  exchanges_.erase(found);
  Session& session = sessions_.at(exchange.session);
  if (session.transaction == handle) session.transaction = 0;
  session.pushes.erase(handle);
  if (session.methods.erase(handle) != 0 && !exchange.answered) --session.unanswered;
}

void Server::close(Sessions::iterator found, Reason reason, TimePoint now) {
  Session& session = found->second;
  for (auto* const bound : {&opening_, &open_}) {
    const auto entry = bound->find(session.peer);
    if (entry != bound->end() && entry->second == found->first) bound->erase(entry);
  }
  const auto code = static_cast<std::uint8_t>(reason);
  const auto abandon = [&](wtp::Handle handle) {
    wtp_.abandon(handle, code, now);
    exchanges_.erase(handle);
  };
  if (session.transaction != 0) abandon(std::exchange(session.transaction, 0));
  for (const Held& held : std::exchange(session.held, {})) abandon(held.handle);
  for (const wtp::Handle handle : std::exchange(session.methods, {})) {
    abandon(handle);
    say(ServerEvent::Kind::methodAbortIndication, found->first, code).id = handle;
  }
  for (const wtp::Handle handle : std::exchange(session.pushes, {})) {
    abandon(handle);
    say(ServerEvent::Kind::pushAbortIndication, found->first, code).id = handle;
  }
  session.unanswered = 0;
}

void Server::suspend(Sessions::iterator session, Reason reason, TimePoint now) {
  if (!session->second.agreement.has(kResumeFacility)) {
    end(session, reason, now);
    return;
  }
  close(session, reason, now);
  say(ServerEvent::Kind::suspendIndication, session->first, static_cast<std::uint8_t>(reason));
  session->second.state = State::suspended;
}

void Server::end(Sessions::iterator session, Reason reason, TimePoint now) {
  const SessionId id = session->first;
  drop(session, Reason::disconnect, now);
  say(ServerEvent::Kind::disconnectIndication, id, static_cast<std::uint8_t>(reason));
}

void Server::drop(Sessions::iterator session, Reason reason, TimePoint now) {
  close(session, reason, now);
  sessions_.erase(session);
}

ServerEvent& Server::say(ServerEvent::Kind kind, SessionId session, std::uint8_t code) {
  ServerEvent& event = events_.emplace_back();
  event.kind = kind;
  event.session = session;
  event.code = code;
  return event;
}

}  // namespace mmsbrix::session
