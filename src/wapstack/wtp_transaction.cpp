#include "wapstack/wtp_transaction.h"

#include <algorithm>
#include <bitset>

namespace mmsbrix::wtp {
namespace {

std::optional<Trigger> triggerOf(Transaction::Role role, PduType type) {
  const bool initiator = role == Transaction::Role::initiator;
  switch (type) {
    case PduType::invoke:
    case PduType::segmentedInvoke:
      if (!initiator) return Trigger::rcvInvoke;
      break;
    case PduType::result:
    case PduType::segmentedResult:
      if (initiator) return Trigger::rcvResult;
      break;
    case PduType::ack:
      return Trigger::rcvAck;
    case PduType::negativeAck:
      return Trigger::rcvNack;
    case PduType::abort:
      return Trigger::rcvAbort;
  }
  return std::nullopt;
}

fact::Set factOf(Arrival arrival) {
  switch (arrival) {
    case Arrival::nothing:
      return 0;
    case Arrival::stored:
      return fact::kStored;
    case Arrival::hole:
      return fact::kHole;
    case Arrival::groupDone:
      return fact::kGroupDone;
    case Arrival::repeated:
      return fact::kRepeated;
    case Arrival::complete:
      return fact::kComplete;
    case Arrival::tooLarge:
      return fact::kTooLarge;
  }
  return 0;
}

}  // namespace

Transaction::Transaction(Role role, Handle handle, const WdpAddress& peer, std::uint16_t tid,
                         Terms terms, Shared& shared)
    : role_(role),
      handle_(handle),
      peer_(peer),
      tid_(tid),
      terms_(terms),
      shared_(&shared),
      in_(std::min(role == Role::initiator ? shared.settings.maxMessage : shared.settings.maxInvoke,
                   kMaxReassembly)) {}

void Transaction::invoke(SegmentSender message, Start start, TimePoint now) {
  out_ = std::move(message);
  tidNew_ = start == Start::withNewTid;
  limitAt_ = now + shared_->settings.overallLimit;
  step(Trigger::invokeRequest, start == Start::held ? fact::kHeldBack : 0, nullptr, now);
}

void Transaction::release(TimePoint now) {
  step(Trigger::released, 0, nullptr, now);
}

void Transaction::doubtTid(bool tidNew) noexcept {
  tidBad_ = true;
  tidNew_ = tidNew;
}

fact::Set Transaction::standingFacts() const noexcept {
  fact::Set facts = fact::kClass0 << static_cast<int>(terms_.transactionClass);
  const auto when = [&facts](bool holds, fact::Set bit) { facts |= holds ? bit : 0; };
  when(terms_.userAck, fact::kUserAck);
  when(holdOn_, fact::kHoldOn);
  when(ackSent_, fact::kAckSent);
  when(tokSent_, fact::kTokSent);
  when(stoodBy_, fact::kStoodBy);
  when(tidBad_, fact::kTidBad);
  when(out_.segmented(), fact::kSegmented);
  when(out_.nextEnds(), fact::kNextEnds);
  when(retries_ < shared_->settings.maxRetries, fact::kRetriesLeft);
  when(ackExpirations_ < shared_->settings.maxAckExpirations, fact::kAecLeft);
  return facts;
}

/// True in the states in which packets of the peer's message are put together.
bool Transaction::listens() const noexcept {
  if (role_ == Role::initiator) {
    return terms_.transactionClass == Class::result &&
           (state_ == State::resultWait || state_ == State::receiving);
  }
  return state_ == State::null || state_ == State::receiving || state_ == State::tidOkWait;
}

fact::Set Transaction::invokeFacts(const Pdu& pdu) const noexcept {
  if (pdu.version != 0) return fact::kWrongVersion;
  if (pdu.classBits > static_cast<std::uint8_t>(Class::result)) return fact::kNoClass;
  const bool class2 = terms_.transactionClass == Class::result;
  if (class2 && !shared_->settings.acceptClass2) return fact::kNoClass2;
  if (!pdu.last && !shared_->settings.segmentation) return fact::kNoSegments;
  return 0;
}

fact::Set Transaction::messageFacts(const Pdu& pdu) {
  fact::Set facts = pdu.resent ? fact::kResent : 0;
  if (role_ == Role::responder && state_ == State::null) {
    if (const fact::Set refused = invokeFacts(pdu); refused != 0) return facts | refused;
    whole_ = pdu.groupEnd && pdu.last;  // [WAP-224 8.3.1]: the sender takes no segments
    if (pdu.tpis.maxUnit && *pdu.tpis.maxUnit > 0) peerUnit_ = *pdu.tpis.maxUnit;
  }
  if (!listens()) return facts;
  const Packet packet{.psn = pdu.psn,
                      .groupEnd = pdu.groupEnd,
                      .last = pdu.last,
                      .resent = pdu.resent,
                      .data = pdu.data};
  facts |= factOf(in_.add(packet, pdu.tpis.totalSize));
  return facts;
}

void Transaction::receive(const Pdu& pdu, TimePoint now) {
  const auto trigger = triggerOf(role_, pdu.type);
  if (!trigger) return;
  fact::Set facts = 0;
  switch (*trigger) {
    case Trigger::rcvInvoke:
    case Trigger::rcvResult:
      facts = messageFacts(pdu);
      break;
    case Trigger::rcvAck:
      if (pdu.verify) facts |= fact::kTve;
      if (pdu.resent) facts |= fact::kResent;
      // A Tve acknowledges a group only by naming it.
      if ((!pdu.verify || pdu.tpis.psn) && out_.acknowledges(pdu.tpis.psn)) facts |= fact::kAcks;
      if (in_.complete()) facts |= fact::kComplete;
      if ((facts & fact::kAcks) != 0 && pdu.tpis.maxGroup) out_.limitGroup(*pdu.tpis.maxGroup);
      break;
    case Trigger::rcvNack:
      if (std::ranges::any_of(pdu.missing, [this](auto psn) { return out_.outstanding(psn); }) ||
          (pdu.missing.empty() && out_.acknowledges(std::nullopt))) {
        facts |= fact::kListed;
      }
      break;
    case Trigger::rcvAbort:
      if (role_ == Role::initiator && out_.segmented() &&
          pdu.abortType == static_cast<std::uint8_t>(AbortType::provider) &&
          pdu.abortReason == static_cast<std::uint8_t>(AbortReason::noSegmentation) &&
          out_.data().size() + 4 <= kMaxDatagram) {
        facts |= fact::kRetryWhole;
      }
      break;
    default:
      break;
  }
  step(*trigger, facts, &pdu, now);
}

void Transaction::receiveBroken(TimePoint now) {
  step(Trigger::rcvError, 0, nullptr, now);
}

bool Transaction::respond(Trigger response, Octets exitInfo, TimePoint now) {
  // An answer that comes too late must not change what is repeated.
  auto before = std::exchange(exitInfo_, std::vector(exitInfo.begin(), exitInfo.end()));
  if (step(response, 0, nullptr, now)) return true;
  exitInfo_ = std::move(before);
  return false;
}

std::size_t Transaction::resultSegmentOctets() const noexcept {
  const bool whole = !mayBeSegmented();
  return std::min(whole ? kMaxDatagram - 3 : shared_->settings.segmentOctets, peerUnit_);
}

bool Transaction::sendResult(SegmentSender message, TimePoint now) {
  if (state_ != State::invokeRespWait && state_ != State::resultWait) return false;
  out_ = std::move(message);
  return step(Trigger::resultRequest, 0, nullptr, now);
}

bool Transaction::abandon(std::uint8_t reason, TimePoint now) {
  userReason_ = reason;
  return step(Trigger::abortRequest, 0, nullptr, now);
}

bool Transaction::step(Trigger trigger, fact::Set facts, const Pdu* pdu, TimePoint now) {
  facts |= standingFacts();
  const bool initiator = role_ == Role::initiator;
  const auto table = initiator ? initiatorTable() : responderTable();
  const Row* row = findRow(table, state_, trigger, facts);
  if (row == nullptr) return false;
  if (shared_->counts != nullptr) {
    auto& counts = initiator ? shared_->counts->initiator : shared_->counts->responder;
    ++counts[static_cast<std::size_t>(row - table.data())];
  }
  if (trigger == Trigger::rcvAck && (facts & fact::kAcks) != 0) noteAck(*pdu, *row);
  act(*row, trigger, facts, pdu, now);
  return true;
}

/// Books an Ack of the outstanding group.  A Tve that sends no further group leaves it open: the
/// Ack that answers the Tok closes it.
void Transaction::noteAck(const Pdu& pdu, const Row& row) {
  if (pdu.verify && (row.actions & act::kSendGroup) == 0) return;
  out_.acknowledged();
  if (!pdu.verify) tokSent_ = false;
  pause_ = Duration(std::min<std::uint32_t>(pdu.tpis.delay.value_or(0), 6000) * 100);
}

void Transaction::act(const Row& row, Trigger trigger, fact::Set facts, const Pdu* pdu,
                      TimePoint now) {
  constexpr act::Set kStarts =
      act::kStartRetry | act::kStartAck | act::kStartWait | act::kStartSilence;
  act::Set actions = row.actions;
  if (timer_ == Timer::delay && row.next == state_ && (actions & act::kSendGroup) == 0) {
    actions &= ~act::kStartRetry;  // the pause that the peer asked for goes on
  } else if (row.next != state_ || (actions & kStarts) != 0) {
    timer_ = Timer::none;
  }
  if (row.next != State::receiving) nackAt_.reset();
  if (role_ == Role::responder && state_ == State::null) {
    limitAt_ = now + shared_->settings.overallLimit;
  }
  state_ = row.next;
  constexpr act::Set kEnds = act::kSendAbort | act::kIndicateAbort;
  leftOpen_ = role_ == Role::responder && finished() && in_.complete() &&
              trigger != Trigger::rcvAbort && (actions & kEnds) != 0;

  if ((actions & act::kCountRetry) != 0) ++retries_;
  if ((actions & act::kCountAec) != 0) ++ackExpirations_;
  if ((actions & act::kSetHoldOn) != 0) holdOn_ = true;
  if ((actions & act::kVerified) != 0) tidBad_ = false;
  if ((actions & act::kRestartWhole) != 0) {
    tid_ = shared_->freshTid();
    tokSent_ = stoodBy_ = false;
    whole_ = true;
    out_ = SegmentSender(out_.data(), kMaxDatagram, 1);
  }
  if ((actions & act::kSendGroup) != 0 && pause_ > Duration::zero()) {
    actions &= ~(act::kSendGroup | act::kStartRetry);
    timer_ = Timer::delay;
    timerAt_ = now + std::exchange(pause_, Duration::zero());
  }
  send(actions, pdu);
  if ((actions & act::kSendAbort) != 0) {
    const bool byUser = trigger == Trigger::abortRequest;
    sendAbort(byUser ? AbortType::user : AbortType::provider,
              byUser ? userReason_ : static_cast<std::uint8_t>(ownReason(trigger, facts)));
  }
  report(actions, trigger, facts, pdu);
  startTimers(actions, now);
  const bool delivered = role_ == Role::initiator && state_ == State::resultRespWait;
  if (finished() || delivered || state_ == State::waitTimeout) limitAt_.reset();
}

void Transaction::send(act::Set actions, const Pdu* pdu) {
  if ((actions & act::kSendTok) != 0) {
    sendAck(true, std::exchange(tokSent_, true));
    stoodBy_ = true;
  }
  if ((actions & act::kSendTve) != 0) sendAck(true, std::exchange(tveSent_, true));
  if ((actions & act::kSendGroup) != 0) {
    retries_ = 0;
    out_.nextGroup();
    for (std::size_t psn = out_.groupFirst(); psn <= out_.groupLast(); ++psn) {
      sendPacket(static_cast<std::uint8_t>(psn), false);
    }
  }
  if ((actions & act::kResendLast) != 0) {
    out_.lost();
    sendPacket(out_.groupLast(), true);
  }
  if ((actions & act::kResendListed) != 0) {
    out_.lost();
    std::bitset<kMaxSegments> listed;
    for (const std::uint8_t psn : pdu->missing) listed.set(psn);
    for (std::size_t psn = out_.groupFirst(); psn <= out_.groupLast(); ++psn) {
      if (pdu->missing.empty() || listed.test(psn))
        sendPacket(static_cast<std::uint8_t>(psn), true);
    }
  }
  if ((actions & (act::kSendAck | act::kAckGroup)) != 0) sendAck(false, false);
  if ((actions & act::kSendAck) != 0) ackSent_ = true;
  if ((actions & act::kResendAck) != 0) sendAck(false, true);
  if ((actions & act::kSendNack) != 0) {
    const std::vector<std::uint8_t> missing = in_.missing();
    if (!missing.empty()) {
      Pdu nack = header(PduType::negativeAck);
      nack.missing = missing;
      emit(nack);
    }
  }
}

AbortReason Transaction::ownReason(Trigger trigger, fact::Set facts) const noexcept {
  switch (trigger) {
    case Trigger::rcvError:
      return AbortReason::protocolError;
    case Trigger::rcvAck:
      return AbortReason::invalidTid;
    case Trigger::rcvInvoke:
    case Trigger::rcvResult:
      if ((facts & fact::kWrongVersion) != 0) return AbortReason::wrongVersion;
      if ((facts & fact::kNoClass) != 0) return AbortReason::protocolError;
      if ((facts & fact::kNoClass2) != 0) return AbortReason::noClass2;
      if ((facts & fact::kNoSegments) != 0) return AbortReason::noSegmentation;
      return AbortReason::messageTooLarge;
    default:
      return AbortReason::noResponse;
  }
}

void Transaction::sendAbort(AbortType type, std::uint8_t reason) {
  Pdu pdu = header(PduType::abort);
  pdu.abortType = static_cast<std::uint8_t>(type);
  pdu.abortReason = reason;
  emit(pdu);
}

void Transaction::report(act::Set actions, Trigger trigger, fact::Set facts, const Pdu* pdu) {
  const auto exitInfo = [pdu] {
    if (pdu == nullptr || pdu->type != PduType::ack || !pdu->tpis.info)
      return std::vector<std::uint8_t>{};
    return std::vector(pdu->tpis.info->begin(), pdu->tpis.info->end());
  };
  if ((actions & act::kConfirmInvoke) != 0 && (facts & fact::kHoldOn) == 0) {
    event(Event::Kind::invokeConfirm, exitInfo());
  }
  if ((actions & act::kIndicateInvoke) != 0) event(Event::Kind::invokeIndication, in_.take());
  if ((actions & act::kIndicateResult) != 0) event(Event::Kind::resultIndication, in_.take());
  if ((actions & act::kConfirmResult) != 0) event(Event::Kind::resultConfirm, exitInfo());
  if ((actions & act::kIndicateAbort) != 0) {
    event(Event::Kind::abortIndication);
    Event& last = shared_->events.back();
    last.byPeer = trigger == Trigger::rcvAbort;
    last.abortType = last.byPeer ? pdu->abortType : std::uint8_t{0};
    last.abortReason =
        last.byPeer ? pdu->abortReason : static_cast<std::uint8_t>(ownReason(trigger, facts));
  }
}

Duration Transaction::retryInterval() const noexcept {
  const Settings& s = shared_->settings;
  Duration base = s.groupRetry;
  if (role_ == Role::responder && state_ == State::resultRespWait) base = s.longRetry;
  if (role_ == Role::initiator && state_ == State::resultWait) {
    base = terms_.transactionClass == Class::result ? s.baseRetry
           : terms_.userAck                         ? s.shortRetryByUser
                                                    : s.shortRetry;
  }
  const auto octets = static_cast<Duration::rep>(out_.groupOctets());
  return base + Duration(s.perKilooctet.count() * octets / 1024);
}

Duration Transaction::ackInterval() const noexcept {
  const Settings& s = shared_->settings;
  if (role_ == Role::initiator) return s.longAck;
  if (terms_.transactionClass == Class::result) return s.baseAck;
  return terms_.userAck ? s.shortAckByUser : s.shortAck;
}

void Transaction::startTimers(act::Set actions, TimePoint now) {
  const auto start = [&](act::Set action, Timer timer, Duration interval) {
    if ((actions & action) == 0) return;
    timer_ = timer;
    timerAt_ = now + interval;
  };
  const Settings& s = shared_->settings;
  start(act::kStartRetry, Timer::retry, retryInterval());
  start(act::kStartAck, Timer::ack, ackInterval());
  start(act::kStartWait, Timer::wait, s.wait);
  start(act::kStartSilence, Timer::silence, s.silenceLimit);
  if ((actions & act::kStartNack) != 0) nackAt_ = now + s.nackDelay;
  if ((actions & act::kAckGroup) != 0) nackAt_.reset();
}

void Transaction::onTimer(TimePoint now) {
  if (nackAt_ && *nackAt_ <= now) {
    nackAt_.reset();
    step(Trigger::nackTimer, 0, nullptr, now);
  }
  if (timer_ != Timer::none && timerAt_ <= now) {
    constexpr Trigger kTriggers[] = {Trigger::limit,     Trigger::retryTimer, Trigger::ackTimer,
                                     Trigger::waitTimer, Trigger::delayTimer, Trigger::limit};
    const Timer due = std::exchange(timer_, Timer::none);
    step(kTriggers[static_cast<int>(due)], 0, nullptr, now);
  }
  if (limitAt_ && *limitAt_ <= now && !step(Trigger::limit, 0, nullptr, now)) {
    limitAt_ = now + shared_->settings.silenceLimit;  // the state has a limit of its own
  }
}

std::optional<TimePoint> Transaction::deadline() const noexcept {
  std::optional<TimePoint> earliest = limitAt_;
  const auto consider = [&earliest](TimePoint at) {
    if (!earliest || at < *earliest) earliest = at;
  };
  if (nackAt_) consider(*nackAt_);
  if (timer_ != Timer::none) consider(timerAt_);
  return earliest;
}

Pdu Transaction::header(PduType type) const noexcept {
  Pdu pdu;
  pdu.type = type;
  pdu.tid = role_ == Role::responder ? static_cast<std::uint16_t>(tid_ | kTidDirectionBit) : tid_;
  return pdu;
}

void Transaction::emit(const Pdu& pdu) {
  Writer octets;
  octets.reserve(pdu.data.size() + 16);
  encodePdu(pdu, octets);
  shared_->pdus.emplace_back(peer_, std::move(octets));
}

void Transaction::sendPacket(std::uint8_t psn, bool resent) {
  const bool initiator = role_ == Role::initiator;
  const PduType first = initiator ? PduType::invoke : PduType::result;
  const PduType later = initiator ? PduType::segmentedInvoke : PduType::segmentedResult;
  Pdu pdu = header(psn == 0 ? first : later);
  pdu.psn = psn;
  pdu.resent = resent;
  pdu.last = out_.endsMessage(psn);
  pdu.groupEnd = out_.endsGroup(psn) && !pdu.last;
  // Both flags together say that the sender takes no segments.
  if (pdu.last && psn == 0 && !mayBeSegmented()) pdu.groupEnd = true;
  pdu.classBits = static_cast<std::uint8_t>(terms_.transactionClass);
  pdu.userAck = terms_.userAck;
  pdu.tidNew = initiator && tidNew_;
  pdu.data = out_.packet(psn);
  emit(pdu);
}

/// An Ack names the last packet of what it acknowledges when that came in several.
void Transaction::sendAck(bool verify, bool resent) {
  Pdu pdu = header(PduType::ack);
  pdu.verify = verify;
  pdu.resent = resent;
  const bool ofMessage = !verify || role_ == Role::responder;
  if (ofMessage && in_.segmented()) pdu.tpis.psn = in_.acknowledgedPsn();
  // Exit information belongs to the last Ack, not to one that only holds on.
  const bool holdsOn = role_ == Role::responder && terms_.transactionClass == Class::result;
  if (!verify && !holdsOn && in_.complete() && !exitInfo_.empty()) {
    pdu.tpis.info = Octets(exitInfo_);
  }
  emit(pdu);
}

void Transaction::event(Event::Kind kind, std::vector<std::uint8_t> data) {
  Event& made = shared_->events.emplace_back();
  made.kind = kind;
  made.handle = handle_;
  made.peer = peer_;
  made.transactionClass = terms_.transactionClass;
  made.userAck = terms_.userAck;
  made.data = std::move(data);
}

}  // namespace mmsbrix::wtp
