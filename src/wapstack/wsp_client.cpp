#include "wapstack/wsp_client.h"

#include <algorithm>
#include <array>
#include <utility>

#include "wapstack/wsp_reason.h"

namespace mmsbrix::session {
namespace {

std::vector<std::uint8_t> copy(Octets octets) {
  return {octets.begin(), octets.end()};
}

/// The trigger that a result means where a Reply is expected, or any answer to a Connect.
Trigger triggerOf(const std::optional<ServerPdu>& pdu, bool connecting) {
  if (!pdu) return Trigger::rcvOther;
  if (pdu->type == PduType::reply) return Trigger::rcvReply;
  if (connecting && pdu->type == PduType::connectReply) return Trigger::rcvConnectReply;
  if (connecting && pdu->type == PduType::redirect) return Trigger::rcvRedirect;
  return Trigger::rcvOther;
}

template <std::size_t N>
void count(std::array<std::uint32_t, N>* counts, std::span<const Row> table, const Row* row) {
  if (counts != nullptr) ++(*counts)[static_cast<std::size_t>(row - table.data())];
}

Refusal refusalOf(wtp::Refusal refusal) {
  return refusal == wtp::Refusal::tooManyTransactions ? Refusal::tooManyTransactions
                                                      : Refusal::cannotBeSent;
}

/// A method's PDU, into which the body is copied once.
std::vector<std::uint8_t> methodPdu(const Writer& head, Octets body) {
  std::vector<std::uint8_t> pdu;
  pdu.reserve(head.size() + body.size());
  pdu.insert(pdu.end(), head.written().begin(), head.written().end());
  pdu.insert(pdu.end(), body.begin(), body.end());
  return pdu;
}

constexpr std::uint8_t kStatusOk = 0x20;

}  // namespace

const char* refusalText(Refusal refusal) noexcept {
  switch (refusal) {
    case Refusal::none:
      return "";
    case Refusal::wrongState:
      return "not in this state of the session";
    case Refusal::tooManyMethods:
      return "as many methods are open as the server allows";
    case Refusal::largerThanAgreed:
      return "the request is larger than the server accepts";
    case Refusal::cannotBeSent:
      return "the request takes more than 256 packets";
    case Refusal::tooManyTransactions:
      return "too many transactions are open";
    case Refusal::unknownMethod:
      return "the server has not agreed to this method";
    case Refusal::ackHeadersTooLong:
      return "the acknowledgement headers are longer than 255 octets";
  }
  return "";
}

Client::Client(const wtp::Settings& settings, std::uint16_t firstTid) : wtp_(settings, firstTid) {}

Refusal Client::connect(const WdpAddress& server, const Capabilities& capabilities, Octets headers,
                        TimePoint now) {
  if (state_ != State::null) return Refusal::wrongState;
  server_ = server;
  proposed_ = capabilities;
  agreement_ = {};
  headers_ = copy(headers);
  step(Trigger::connectRequest, 0, {.now = now});
  pump(now);
  return Refusal::none;
}

Refusal Client::disconnect(TimePoint now) {
  const bool taken = step(Trigger::disconnectRequest, 0, {.handle = transaction_, .now = now});
  pump(now);
  return taken ? Refusal::none : Refusal::wrongState;
}

Refusal Client::suspend(TimePoint now) {
  const bool taken = step(Trigger::suspendRequest, 0, {.handle = transaction_, .now = now});
  pump(now);
  return taken ? Refusal::none : Refusal::wrongState;
}

Refusal Client::resume(const WdpAddress& server, Octets headers, TimePoint now) {
  const WdpAddress old = std::exchange(server_, server);
  headers_ = copy(headers);
  const bool taken = step(Trigger::resumeRequest, 0, {.now = now});
  if (!taken) server_ = old;
  pump(now);
  return taken ? Refusal::none : Refusal::wrongState;
}

Refusal Client::invokeMethod(Id id, std::uint8_t method, std::string_view uri, Octets headers,
                             Octets body, TimePoint now) {
  if (findRow(sessionTable(), state_, Trigger::methodRequest, 0) == nullptr ||
      methods_.contains(id)) {
    return Refusal::wrongState;
  }
  if (!mayInvoke(method)) return Refusal::unknownMethod;
  if (methods_.size() >= agreement_.methodMor) return Refusal::tooManyMethods;
  Writer head;
  encodeMethod(method, uri, headers, {}, head);
  if (method < kFirstPostMethod) body = {};
  const std::size_t limit = agreement_.serverSduSize;
  if (limit != 0 && (head.size() > limit || body.size() > limit - head.size())) {
    return Refusal::largerThanAgreed;
  }
  const auto invoked = wtp_.invoke(server_, {wtp::Class::result}, methodPdu(head, body), now);
  if (invoked.refusal != wtp::Refusal::none) return refusalOf(invoked.refusal);
  methods_[id] = {State::requesting, invoked.handle};
  step(Trigger::methodRequest, 0, {.now = now});
  pump(now);
  return Refusal::none;
}

/// The standard's methods, and those that were agreed on beyond them.
bool Client::mayInvoke(std::uint8_t method) const noexcept {
  constexpr auto kMethods = std::to_array<std::uint8_t>({0x40, 0x41, 0x42, 0x43, 0x44, 0x60, 0x61});
  return std::ranges::find(kMethods, method) != kMethods.end() ||
         std::ranges::find(agreement_.extendedMethods, method) != agreement_.extendedMethods.end();
}

Octets Client::agreedAckHeaders(Octets ackHeaders) const noexcept {
  return agreement_.has(kAckHeadersFacility) ? ackHeaders : Octets{};
}

Refusal Client::respondResult(Id id, Octets ackHeaders, TimePoint now) {
  ackHeaders = agreedAckHeaders(ackHeaders);
  if (ackHeaders.size() > wtp::kMaxInfoOctets) return Refusal::ackHeadersTooLong;
  const auto method = methods_.find(id);
  const bool taken = method != methods_.end() && stepMethod(method, Trigger::resultResponse,
                                                            {.octets = ackHeaders, .now = now});
  pump(now);
  return taken ? Refusal::none : Refusal::wrongState;
}

Refusal Client::abortMethod(Id id, TimePoint now) {
  const auto method = methods_.find(id);
  const bool taken =
      method != methods_.end() && stepMethod(method, Trigger::methodAbortRequest, {.now = now});
  pump(now);
  return taken ? Refusal::none : Refusal::wrongState;
}

Refusal Client::respondPush(Id id, Octets ackHeaders, TimePoint now) {
  ackHeaders = agreedAckHeaders(ackHeaders);
  if (ackHeaders.size() > wtp::kMaxInfoOctets) return Refusal::ackHeadersTooLong;
  const auto push = pushes_.find(id);
  const bool taken = push != pushes_.end() &&
                     stepPush(push, Trigger::pushResponse, {.octets = ackHeaders, .now = now});
  pump(now);
  return taken ? Refusal::none : Refusal::wrongState;
}

Refusal Client::abortPush(Id id, std::uint8_t reason, TimePoint now) {
  const auto push = pushes_.find(id);
  const bool taken = push != pushes_.end() &&
                     stepPush(push, Trigger::pushAbortRequest, {.code = reason, .now = now});
  pump(now);
  return taken ? Refusal::none : Refusal::wrongState;
}

void Client::receive(const WdpAddress& peer, Octets datagram, TimePoint now) {
  wtp_.receive(peer, datagram, now);
  pump(now);
}

void Client::onTimer(TimePoint now) {
  wtp_.onTimer(now);
  pump(now);
}

std::optional<Event> Client::takeEvent() {
  if (events_.empty()) return std::nullopt;
  std::optional<Event> event(std::move(events_.front()));
  events_.pop_front();
  return event;
}

fact::Set Client::facilities() const noexcept {
  fact::Set facts = 0;
  if (agreement_.has(kPushFacility)) facts |= fact::kPush;
  if (agreement_.has(kConfirmedPushFacility)) facts |= fact::kConfirmedPush;
  if (agreement_.has(kResumeFacility)) facts |= fact::kResume;
  if (pushes_.size() < agreement_.pushMor) facts |= fact::kPushRoom;
  return facts;
}

/// While the session is being set up, the size is the one that was proposed.
bool Client::tooLarge(std::size_t octets) const noexcept {
  const std::uint32_t limit = state_ == State::connecting
                                  ? proposed_.clientSduSize.value_or(agreement_.clientSduSize)
                                  : agreement_.clientSduSize;
  return limit != 0 && octets > limit;
}

bool Client::step(Trigger trigger, fact::Set facts, const Occasion& occasion) {
  const auto table = sessionTable();
  const Row* row = findRow(table, state_, trigger, facts | facilities());
  if (row == nullptr) return false;
  count(counts_ == nullptr ? nullptr : &counts_->session, table, row);
  state_ = row->next;
  act(*row, occasion);
  tell(*row, trigger, occasion);
  return true;
}

void Client::act(const Row& row, const Occasion& occasion) {
  const auto reason = static_cast<std::uint8_t>(row.abort);
  if ((row.actions & act::kRespond) != 0) {
    wtp_.respondResult(occasion.handle, {}, occasion.now);
    transaction_ = 0;
  }
  if ((row.actions & act::kAbort) != 0) {
    const wtp::Handle handle = occasion.handle != 0 ? occasion.handle : transaction_;
    wtp_.abandon(handle, reason, occasion.now);
    if (handle == transaction_) transaction_ = 0;
  }
  if ((row.actions & act::kAbortAll) != 0) abortAll(row.abort, occasion.now);
  if ((row.actions & act::kSendDisconnect) != 0) sendUnreliable(PduType::disconnect, occasion.now);
  if ((row.actions & act::kSendSuspend) != 0) sendUnreliable(PduType::suspend, occasion.now);
  if ((row.actions & (act::kInvokeConnect | act::kInvokeResume)) != 0) {
    Writer pdu;
    if ((row.actions & act::kInvokeConnect) != 0) {
      Writer capabilities;
      encodeCapabilities(proposed_, capabilities);
      encodeConnect(capabilities.written(), headers_, pdu);
    } else {
      encodeResume(sessionId_, headers_, pdu);
    }
    invokeSession(pdu.written(), occasion.now);
  }
}

void Client::tell(const Row& row, Trigger trigger, const Occasion& occasion) {
  const std::uint8_t code =
      row.say == Reason::fromEvent ? occasion.code : static_cast<std::uint8_t>(row.say);
  const auto contents = [&occasion](Event& event) {
    if (occasion.pdu == nullptr) return;
    event.headers = copy(occasion.pdu->headers);
    event.body = copy(occasion.pdu->data);
  };
  if ((row.actions & act::kConfirm) != 0) {
    const bool connected = trigger == Trigger::rcvConnectReply;
    Event& event = say(connected ? Event::Kind::connectConfirm : Event::Kind::resumeConfirm, 0);
    event.agreement = agreement_;
    contents(event);
  }
  if ((row.actions & act::kIndicateDisconnect) != 0) {
    Event& event = say(Event::Kind::disconnectIndication, code);
    if (trigger == Trigger::rcvRedirect) {
      event.redirect = redirectAddresses(occasion.pdu->data, server_);
    } else if (trigger == Trigger::rcvReply) {
      contents(event);
    }
  }
  if ((row.actions & act::kIndicateSuspend) != 0) say(Event::Kind::suspendIndication, code);
  if ((row.actions & act::kIndicateException) != 0) say(Event::Kind::exceptionIndication, code);
  if ((row.actions & act::kIndicatePush) != 0) {
    const bool confirmed = trigger == Trigger::rcvConfirmedPush;
    Event& event =
        say(confirmed ? Event::Kind::confirmedPushIndication : Event::Kind::pushIndication, 0);
    contents(event);
    if (!confirmed) return;
    event.id = ++lastPush_;
    pushes_[event.id] = {State::receiving, occasion.handle};
  }
}

void Client::abortAll(Reason reason, TimePoint now) {
  const auto code = static_cast<std::uint8_t>(reason);
  for (const auto& [id, method] : std::exchange(methods_, {})) {
    wtp_.abandon(method.handle, code, now);
    say(Event::Kind::methodAbortIndication, code).id = id;
  }
  for (const auto& [id, push] : std::exchange(pushes_, {})) {
    wtp_.abandon(push.handle, code, now);
    say(Event::Kind::pushAbortIndication, code).id = id;
  }
}

void Client::invokeSession(Octets pdu, TimePoint now) {
  const auto invoked = wtp_.invoke(server_, {wtp::Class::result}, copy(pdu), now);
  transaction_ = invoked.handle;
  if (invoked.refusal == wtp::Refusal::none) return;
  // Nothing is on its way that could end this.
  const bool busy = invoked.refusal == wtp::Refusal::tooManyTransactions;
  state_ = State::null;
  say(Event::Kind::disconnectIndication,
      static_cast<std::uint8_t>(busy ? Reason::congestion : Reason::mruExceeded));
}

void Client::sendUnreliable(PduType type, TimePoint now) {
  Writer pdu;
  encodeSessionEnd(type, sessionId_, pdu);
  wtp_.invoke(server_, {wtp::Class::push}, copy(pdu.written()), now);
}

Event& Client::say(Event::Kind kind, std::uint8_t code) {
  Event& event = events_.emplace_back();
  event.kind = kind;
  event.code = code;
  return event;
}

bool Client::stepMethod(Exchanges::iterator method, Trigger trigger, const Occasion& occasion) {
  const auto table = methodTable();
  const fact::Set facts = state_ == State::connecting ? fact::kUnconnected : fact::Set{0};
  const Row* row = findRow(table, method->second.state, trigger, facts);
  if (row == nullptr) return false;
  count(counts_ == nullptr ? nullptr : &counts_->method, table, row);
  const auto [id, exchange] = *method;
  method->second.state = row->next;
  if (row->next == State::null) methods_.erase(method);

  const std::uint8_t code =
      row->say == Reason::fromEvent ? occasion.code : static_cast<std::uint8_t>(row->say);
  if ((row->actions & act::kRespond) != 0) {
    wtp_.respondResult(exchange.handle, occasion.octets, occasion.now);
  }
  if ((row->actions & act::kAbort) != 0) {
    wtp_.abandon(exchange.handle, static_cast<std::uint8_t>(row->abort), occasion.now);
  }
  if ((row->actions & act::kConfirm) != 0) say(Event::Kind::methodInvokeConfirm, 0).id = id;
  if ((row->actions & act::kIndicateAbort) != 0) {
    say(Event::Kind::methodAbortIndication, code).id = id;
  }
  if ((row->actions & act::kIndicateResult) != 0) {
    Event& event = say(Event::Kind::methodResultIndication, occasion.pdu->status);
    event.id = id;
    event.headers = copy(occasion.pdu->headers);
    event.body = copy(occasion.pdu->data);
  }
  return true;
}

bool Client::stepPush(Exchanges::iterator push, Trigger trigger, const Occasion& occasion) {
  const auto table = pushTable();
  const Row* row = findRow(table, push->second.state, trigger, 0);
  if (row == nullptr) return false;
  count(counts_ == nullptr ? nullptr : &counts_->push, table, row);
  const auto [id, exchange] = *push;
  pushes_.erase(push);
  if ((row->actions & act::kRespond) != 0) {
    wtp_.respondInvoke(exchange.handle, occasion.octets, occasion.now);
  }
  if ((row->actions & act::kAbort) != 0) wtp_.abandon(exchange.handle, occasion.code, occasion.now);
  if ((row->actions & act::kIndicateAbort) != 0) {
    say(Event::Kind::pushAbortIndication,
        row->say == Reason::fromEvent ? occasion.code : static_cast<std::uint8_t>(row->say))
        .id = id;
  }
  return true;
}

void Client::pump(TimePoint now) {
  while (const auto event = wtp_.takeEvent()) handle(*event, now);
}

Client::Exchanges::iterator Client::find(Exchanges& among, wtp::Handle handle) {
  return std::ranges::find_if(
      among, [handle](const auto& entry) { return entry.second.handle == handle; });
}

void Client::handle(const wtp::Event& event, TimePoint now) {
  using Kind = wtp::Event::Kind;
  switch (event.kind) {
    case Kind::invokeIndication:
      handleInvoke(event, now);
      break;
    case Kind::invokeConfirm:
      if (const auto method = find(methods_, event.handle); method != methods_.end()) {
        stepMethod(method, Trigger::trConfirm, {.now = now});
      }
      break;
    case Kind::resultIndication:
      handleResult(event, now);
      break;
    case Kind::resultConfirm:
      break;  // class 2 is not served
    case Kind::abortIndication:
      handleAbort(event, now);
      break;
  }
}

void Client::handleInvoke(const wtp::Event& event, TimePoint now) {
  const bool reliable = event.transactionClass == wtp::Class::reliablePush;
  // Only the server of the session speaks in it; anybody else has no session here.
  if (event.peer != server_ && state_ != State::null) {
    if (reliable) wtp_.abandon(event.handle, static_cast<std::uint8_t>(Reason::disconnect), now);
    return;
  }
  if (state_ != State::null && tooLarge(event.data.size())) {
    if (reliable) wtp_.abandon(event.handle, static_cast<std::uint8_t>(Reason::mruExceeded), now);
    return;
  }
  const auto pdu = decodeServerPdu(event.data);
  Trigger trigger = reliable ? Trigger::rcvBadRequest : Trigger::rcvBadInvoke;
  if (pdu && reliable && pdu->type == PduType::confirmedPush) trigger = Trigger::rcvConfirmedPush;
  if (pdu && !reliable && pdu->type == PduType::push) trigger = Trigger::rcvPush;
  if (pdu && !reliable && pdu->type == PduType::disconnect) {
    if (pdu->sessionId != sessionId_) return;  // of an earlier session
    trigger = Trigger::rcvDisconnect;
  }
  Occasion occasion{.pdu = pdu ? &*pdu : nullptr, .now = now};
  if (reliable) occasion.handle = event.handle;
  step(trigger, 0, occasion);
}

void Client::handleResult(const wtp::Event& event, TimePoint now) {
  const bool ofSession = event.handle == transaction_;
  const auto pdu = decodeServerPdu(event.data);
  Trigger trigger = triggerOf(pdu, ofSession && state_ == State::connecting);
  if (tooLarge(event.data.size())) trigger = Trigger::rcvTooLarge;
  Occasion occasion{.handle = event.handle, .pdu = pdu ? &*pdu : nullptr, .now = now};
  if (!ofSession) {
    const auto method = find(methods_, event.handle);
    if (method != methods_.end()) stepMethod(method, trigger, occasion);
    return;
  }
  fact::Set facts = 0;
  if (trigger == Trigger::rcvConnectReply) {
    const auto answered = decodeCapabilities(pdu->capabilities);
    const auto agreed = answered ? agree(proposed_, *answered) : std::nullopt;
    sessionId_ = pdu->sessionId;
    if (agreed) {
      agreement_ = *agreed;
      facts |= fact::kAgreed;
    }
  } else if (trigger == Trigger::rcvRedirect) {
    const bool permanent = (pdu->flags & kRedirectPermanent) != 0;
    occasion.code =
        static_cast<std::uint8_t>(permanent ? Reason::movedPermanently : Reason::movedTemporarily);
  } else if (trigger == Trigger::rcvReply) {
    occasion.code = pdu->status;
    if (pdu->status == kStatusOk) facts |= fact::kOk;
  }
  step(trigger, facts, occasion);
}

void Client::handleAbort(const wtp::Event& event, TimePoint now) {
  const std::uint8_t code = reasonOf(event);
  const Occasion occasion{.code = code, .now = now};
  if (event.handle == transaction_) {
    transaction_ = 0;
    step(Trigger::trAbort, is(code, Reason::disconnect) ? fact::kDisconnected : fact::Set{0},
         occasion);
    return;
  }
  if (const auto push = find(pushes_, event.handle); push != pushes_.end()) {
    stepPush(push, Trigger::trAbort, occasion);
    return;
  }
  if (find(methods_, event.handle) == methods_.end()) return;
  if (is(code, Reason::disconnect) && step(Trigger::peerLeft, 0, {.now = now})) return;
  if (is(code, Reason::suspend) && step(Trigger::peerSuspended, 0, {.now = now})) return;
  stepMethod(find(methods_, event.handle), Trigger::trAbort, occasion);
}

}  // namespace mmsbrix::session
