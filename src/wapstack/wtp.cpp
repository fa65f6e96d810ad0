#include "wapstack/wtp.h"

#include <algorithm>
#include <array>
#include <utility>

namespace mmsbrix::wtp {

using Role = Transaction::Role;

const char* refusalText(Refusal refusal) noexcept {
  switch (refusal) {
    case Refusal::none:
      return "";
    case Refusal::tooManySegments:
      return "the message takes more than 256 packets";
    case Refusal::tooLargeForDatagram:
      return "the message does not fit into one packet";
    case Refusal::tooManyTransactions:
      return "too many transactions are open";
    case Refusal::unknownHandle:
      return "there is no such transaction in this state";
  }
  return "";
}

Endpoint::Endpoint(const Settings& settings, std::uint16_t firstTid) : nextTid_(firstTid) {
  shared_.settings = settings;
  shared_.settings.segmentOctets = std::clamp<std::size_t>(settings.segmentOctets, 1, 65000);
  shared_.freshTid = [this] { return freshTid(); };
}

std::uint16_t Endpoint::freshTid() {
  // Every peer sees TIDs that go up; one that is still in use somewhere is passed over.
  for (;;) {
    const auto tid = static_cast<std::uint16_t>(nextTid_++ & kTidMask);
    const auto next = byKey_.lower_bound({Role::initiator, tid, {.octets = {}, .size = 0}});
    const bool used =
        next != byKey_.end() && next->first.role == Role::initiator && next->first.tid == tid;
    if (!used) return tid;
  }
}

std::size_t Endpoint::count(Role role) const {
  return role == Role::initiator ? own_ : transactions_.size() - own_;
}

Invoked Endpoint::invoke(const WdpAddress& peer, Transaction::Terms terms,
                         std::vector<std::uint8_t> data, TimePoint now) {
  const Settings& settings = shared_.settings;
  const bool mayBeSegmented = settings.segmentation && terms.transactionClass != Class::push;
  const std::size_t unit =
      mayBeSegmented ? settings.segmentOctets : kMaxDatagram - 4;  // the Invoke header
  const std::size_t packets = SegmentSender::packets(data.size(), unit);
  if (!mayBeSegmented && packets > 1) return {Refusal::tooLargeForDatagram, 0};
  if (packets > kMaxSegments) return {Refusal::tooManySegments, 0};
  if (count(Role::initiator) >= kMaxOwnTransactions) makeRoom();
  if (count(Role::initiator) >= kMaxOwnTransactions) return {Refusal::tooManyTransactions, 0};

  const Key key{Role::initiator, freshTid(), peer};
  const Handle handle = ++lastHandle_;
  const auto [entry, fresh] = transactions_.try_emplace(
      handle, Entry{key, Transaction(key.role, handle, peer, key.tid, terms, shared_)});
  byKey_[key] = handle;
  ++own_;
  // Class 0 is not verified, so that it neither begins anew nor waits.
  const auto start =
      terms.transactionClass == Class::push ? Transaction::Start::atOnce : startOf(peer, handle);
  entry->second.transaction.invoke(SegmentSender(std::move(data), unit, settings.maxGroupSegments),
                                   start, now);
  settle(handle, now);
  return {Refusal::none, handle};
}

/// A peer that asked about several TIDs in a row has seen higher ones of an earlier run of ours. It
/// is told once that they begin anew, and gets no further invoke until it has verified that.
/// [WAP-224 7.8.3]
Transaction::Start Endpoint::startOf(const WdpAddress& peer, Handle handle) {
  const auto found = doubters_.find(peer);
  if (found == doubters_.end()) return Transaction::Start::atOnce;
  Doubter& doubter = found->second;
  if (doubter.verified != 0) {
    doubter.held.push_back(handle);
    return Transaction::Start::held;
  }
  if (doubter.told || doubter.inARow < kDoubtsBeforeNewTid) return Transaction::Start::atOnce;
  doubter.told = true;
  doubter.verified = handle;
  return Transaction::Start::withNewTid;
}

/// Learns from the answers to an own transaction whether the peer believes our TIDs.
void Endpoint::noteAnswer(Entry& entry, const Pdu& pdu) {
  if (entry.key.role != Role::initiator || entry.answered) return;
  if (pdu.type == PduType::ack && pdu.verify) {
    entry.doubted = true;
    return;
  }
  entry.answered = true;
  const auto found = doubters_.find(entry.key.peer);
  if (entry.doubted) {
    if (found != doubters_.end()) {
      ++found->second.inARow;
    } else if (doubters_.size() < kMaxCachedPeers) {
      doubters_[entry.key.peer].inARow = 1;
    }
  } else if (found != doubters_.end() && found->second.verified == 0) {
    doubters_.erase(found);
  }
}

/// Lets go what was held for this transaction, if that was so.
void Endpoint::releaseHeld(const WdpAddress& peer, Handle verified, TimePoint now) {
  const auto found = doubters_.find(peer);
  if (found == doubters_.end() || found->second.verified != verified) return;
  found->second.verified = 0;
  for (const Handle handle : std::exchange(found->second.held, {})) {
    const auto entry = transactions_.find(handle);
    if (entry == transactions_.end()) continue;
    entry->second.transaction.release(now);
    settle(handle, now);
  }
}

template <typename Act>
Refusal Endpoint::apply(Handle handle, TimePoint now, Act act) {
  const auto entry = transactions_.find(handle);
  if (entry == transactions_.end()) return Refusal::unknownHandle;
  const Refusal refusal = act(entry->second.transaction);
  settle(handle, now);
  return refusal;
}

namespace {
Refusal unlessTaken(bool taken) {
  return taken ? Refusal::none : Refusal::unknownHandle;
}
}  // namespace

Refusal Endpoint::respondInvoke(Handle handle, Octets exitInfo, TimePoint now) {
  return apply(handle, now, [&](Transaction& transaction) {
    return unlessTaken(transaction.respond(Trigger::invokeResponse, exitInfo, now));
  });
}

Refusal Endpoint::respondResult(Handle handle, Octets exitInfo, TimePoint now) {
  return apply(handle, now, [&](Transaction& transaction) {
    return unlessTaken(transaction.respond(Trigger::resultResponse, exitInfo, now));
  });
}

Refusal Endpoint::sendResult(Handle handle, std::vector<std::uint8_t> data, TimePoint now) {
  return apply(handle, now, [&](Transaction& transaction) {
    const Settings& settings = shared_.settings;
    const std::size_t unit = transaction.resultSegmentOctets();
    const std::size_t packets = SegmentSender::packets(data.size(), unit);
    if (packets > 1 && !transaction.mayBeSegmented()) return Refusal::tooLargeForDatagram;
    if (packets > kMaxSegments) return Refusal::tooManySegments;
    return unlessTaken(transaction.sendResult(
        SegmentSender(std::move(data), unit, settings.maxGroupSegments), now));
  });
}

Refusal Endpoint::abandon(Handle handle, std::uint8_t reason, TimePoint now) {
  return apply(handle, now, [&](Transaction& transaction) {
    return unlessTaken(transaction.abandon(reason, now));
  });
}

void Endpoint::settle(Handle handle, TimePoint now) {
  const auto found = transactions_.find(handle);
  if (found == transactions_.end()) return;
  Entry& entry = found->second;
  const WdpAddress peer = entry.key.peer;
  const bool own = entry.key.role == Role::initiator;
  const bool verified = own && (entry.answered || entry.transaction.finished());
  if (entry.transaction.finished()) {
    if (entry.transaction.leftOpen()) tids_.served(peer, entry.key.tid, now);
    forget(found);
    while (!resting_.empty() && !transactions_.contains(resting_.front())) resting_.pop_front();
  } else {
    if (entry.transaction.tid() != entry.key.tid) {
      byKey_.erase(entry.key);
      entry.key.tid = entry.transaction.tid();
      byKey_[entry.key] = handle;
    }
    if (own && entry.transaction.state() == State::waitTimeout &&
        !std::exchange(entry.resting, true)) {
      resting_.push_back(handle);
    }
    const auto due = entry.transaction.deadline();
    if (due != entry.due) {
      if (entry.due) timers_.erase({*entry.due, handle});
      if (due) timers_.emplace(*due, handle);
      entry.due = due;
    }
  }
  if (verified) releaseHeld(peer, handle, now);
}

void Endpoint::forget(std::map<Handle, Entry>::iterator entry) {
  if (entry->second.due) timers_.erase({*entry->second.due, entry->first});
  if (entry->second.key.role == Role::initiator) --own_;
  byKey_.erase(entry->second.key);
  transactions_.erase(entry);
}

/// Forgets the transaction that has waited longest for late packets: another one is worth more than
/// repeating its Ack.
void Endpoint::makeRoom() {
  while (!resting_.empty()) {
    const auto entry = transactions_.find(resting_.front());
    resting_.pop_front();
    if (entry == transactions_.end()) continue;
    forget(entry);
    return;
  }
}

void Endpoint::receive(const WdpAddress& peer, Octets datagram, TimePoint now) {
  Separation separation(datagram);
  while (const auto octets = separation.next()) receivePdu(peer, *octets, now);
}

void Endpoint::receivePdu(const WdpAddress& peer, Octets octets, TimePoint now) {
  const DecodedPdu decoded = decodePdu(octets);
  if (!decoded.hasTid) return;
  const Pdu& pdu = decoded.pdu;
  const bool own = (pdu.tid & kTidDirectionBit) != 0;
  const Key key{own ? Role::initiator : Role::responder,
                static_cast<std::uint16_t>(pdu.tid & kTidMask), peer};
  const auto known = byKey_.find(key);
  if (known != byKey_.end()) {
    const Handle handle = known->second;
    Entry& entry = transactions_.at(handle);
    Transaction& transaction = entry.transaction;
    if (decoded.error != PduError::none) {
      transaction.receiveBroken(now);
    } else {
      const bool doubted = transaction.tidDoubted();
      transaction.receive(pdu, now);
      noteAnswer(entry, pdu);
      if (doubted && !transaction.tidDoubted()) {
        tids_.verified(peer, key.tid, transaction.tidNew(), now);
      }
    }
    settle(handle, now);
  } else if (decoded.error != PduError::unknownType && pdu.type == PduType::invoke && !own) {
    receiveInvoke(key, decoded, now);
  } else if (decoded.error == PduError::none && pdu.type == PduType::ack && pdu.verify && own) {
    refuseTid(key);
  }
}

void Endpoint::receiveInvoke(const Key& key, const DecodedPdu& decoded, TimePoint now) {
  const Pdu& pdu = decoded.pdu;
  // Class 0 leaves nothing behind, and may be the end of a session.
  const bool leavesNothing = pdu.classBits == static_cast<std::uint8_t>(Class::push);
  if (!leavesNothing && count(Role::responder) >= kMaxPeerTransactions) return;
  const Transaction::Terms terms{static_cast<Class>(pdu.classBits), pdu.userAck};
  const Handle handle = ++lastHandle_;
  Transaction transaction(key.role, handle, key.peer, key.tid, terms, shared_);
  if (decoded.error != PduError::none) {
    transaction.receiveBroken(now);
    return;
  }
  const bool cached = pdu.version == 0 && (terms.transactionClass == Class::reliablePush ||
                                           terms.transactionClass == Class::result);
  const TidVerdict verdict =
      cached ? tids_.judge(key.peer, key.tid, pdu.tidNew, now) : TidVerdict::believed;
  if (verdict == TidVerdict::old) return;
  if (verdict == TidVerdict::doubted) transaction.doubtTid(pdu.tidNew);
  transaction.receive(pdu, now);
  if (transaction.finished()) return;
  transactions_.try_emplace(handle, Entry{key, std::move(transaction)});
  byKey_[key] = handle;
  settle(handle, now);
}

/// Answers a Tve for a transaction that is not there: a Tok would have it run once more.
void Endpoint::refuseTid(const Key& key) {
  Pdu pdu;
  pdu.type = PduType::abort;
  pdu.tid = key.tid;
  pdu.abortReason = static_cast<std::uint8_t>(AbortReason::invalidTid);
  Writer octets;
  encodePdu(pdu, octets);
  shared_.pdus.emplace_back(key.peer, std::move(octets));
}

void Endpoint::onTimer(TimePoint now) {
  std::vector<Handle> due;
  for (auto timer = timers_.begin(); timer != timers_.end() && timer->first <= now; ++timer) {
    due.push_back(timer->second);
  }
  for (const Handle handle : due) {
    transactions_.at(handle).transaction.onTimer(now);
    settle(handle, now);
  }
}

std::optional<TimePoint> Endpoint::deadline() const {
  if (timers_.empty()) return std::nullopt;
  return timers_.begin()->first;
}

std::optional<Event> Endpoint::takeEvent() {
  if (shared_.events.empty()) return std::nullopt;
  std::optional<Event> event(std::move(shared_.events.front()));
  shared_.events.pop_front();
  return event;
}

std::optional<Datagram> Endpoint::takeDatagram() {
  auto& pdus = shared_.pdus;
  if (pdus.empty()) return std::nullopt;
  Datagram datagram{pdus.front().first, std::move(pdus.front().second)};
  pdus.pop_front();
  std::size_t size = 1 + concatenatedSize(datagram.octets.size());
  bool several = false;
  while (!pdus.empty() && pdus.front().first == datagram.peer) {
    const Octets next = pdus.front().second.written();
    size += concatenatedSize(next.size());
    if (size > std::min(shared_.settings.segmentOctets, kMaxConcatenatedPdu)) break;
    if (!std::exchange(several, true)) {
      Writer opened;
      concatenate(datagram.octets.written(), opened);
      datagram.octets = std::move(opened);
    }
    concatenate(next, datagram.octets);
    pdus.pop_front();
  }
  return datagram;
}

}  // namespace mmsbrix::wtp
