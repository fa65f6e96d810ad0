// One WTP transaction, on either side: turns what happens into rows of the state tables and carries
// out what they say.
#ifndef MMSBRIX_WAPSTACK_WTP_TRANSACTION_H
#define MMSBRIX_WAPSTACK_WTP_TRANSACTION_H

#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

#include "wapstack/wdp_address.h"
#include "wapstack/wtp_pdu.h"
#include "wapstack/wtp_segments.h"
#include "wapstack/wtp_settings.h"
#include "wapstack/wtp_tables.h"

namespace mmsbrix::wtp {

/// Names a transaction towards the user; never used twice.
using Handle = std::uint32_t;

/// A service primitive towards the user.  [WAP-224 7.5]
struct Event {
  enum class Kind : std::uint8_t {
    invokeIndication,
    invokeConfirm,  ///< with the exit information of a class 1 Ack
    resultIndication,
    resultConfirm,    ///< with the exit information of the last Ack
    abortIndication,  ///< nothing more comes for this handle
  };
  Kind kind{};
  Handle handle = 0;
  WdpAddress peer;
  Class transactionClass = Class::push;
  bool userAck = false;            ///< the peer wants the user's acknowledgement
  std::vector<std::uint8_t> data;  ///< of an invoke or a result, else exit information
  bool byPeer = false;             ///< of an abort: the peer's, else our own provider's
  std::uint8_t abortType = 0;      ///< AbortType
  std::uint8_t abortReason = 0;    ///< AbortReason, or the peer user's
};

/// What transactions of an endpoint share.
struct Shared {
  Settings settings;
  std::deque<Event> events;
  std::deque<std::pair<WdpAddress, Writer>> pdus;
  std::function<std::uint16_t()> freshTid;
  RowCounts* counts = nullptr;
};

class Transaction {
 public:
  enum class Role : std::uint8_t { initiator, responder };

  /// What an initiator's user asks for, or what an invoke asks of a responder.
  struct Terms {
    Class transactionClass = Class::push;
    bool userAck = false;
  };

  Transaction(Role role, Handle handle, const WdpAddress& peer, std::uint16_t tid, Terms terms,
              Shared& shared);

  /// Without the direction bit.
  [[nodiscard]] std::uint16_t tid() const noexcept { return tid_; }
  /// True when nothing is left to do and the object may go.
  [[nodiscard]] bool finished() const noexcept { return state_ == State::null; }
  [[nodiscard]] State state() const noexcept { return state_; }
  /// True when a responder ended on its own what it had delivered: the initiator may not know yet
  /// and would stand by its TID.
  [[nodiscard]] bool leftOpen() const noexcept { return leftOpen_; }

  /// How an invoke goes out.
  enum class Start : std::uint8_t {
    atOnce,
    withNewTid,  ///< at once, marked so that the peer forgets which TIDs it has seen
    held,        ///< by release()
  };
  void invoke(SegmentSender message, Start start, TimePoint now);
  void release(TimePoint now);
  void receive(const Pdu& pdu, TimePoint now);
  void receiveBroken(TimePoint now);
  /// The TID of the invoke that opens this transaction must be verified before it is believed.
  void doubtTid(bool tidNew) noexcept;
  [[nodiscard]] bool tidDoubted() const noexcept { return tidBad_; }
  [[nodiscard]] bool tidNew() const noexcept { return tidNew_; }

  /// The user's answers; false in a state that has no use for them.
  bool respond(Trigger response, Octets exitInfo, TimePoint now);
  bool sendResult(SegmentSender message, TimePoint now);
  bool abandon(std::uint8_t reason, TimePoint now);
  /// False when one of both sides takes no segments.
  [[nodiscard]] bool mayBeSegmented() const noexcept {
    return !whole_ && shared_->settings.segmentation;
  }
  /// Octets that a packet of our result may carry, as far as the invoke limits it.
  [[nodiscard]] std::size_t resultSegmentOctets() const noexcept;

  void onTimer(TimePoint now);
  [[nodiscard]] std::optional<TimePoint> deadline() const noexcept;

 private:
  enum class Timer : std::uint8_t { none, retry, ack, wait, delay, silence };

  bool step(Trigger trigger, fact::Set facts, const Pdu* pdu, TimePoint now);
  [[nodiscard]] fact::Set standingFacts() const noexcept;
  fact::Set messageFacts(const Pdu& pdu);
  [[nodiscard]] fact::Set invokeFacts(const Pdu& pdu) const noexcept;
  [[nodiscard]] bool listens() const noexcept;
  void noteAck(const Pdu& pdu, const Row& row);
  void act(const Row& row, Trigger trigger, fact::Set facts, const Pdu* pdu, TimePoint now);
  void send(act::Set actions, const Pdu* pdu);
  void sendAbort(AbortType type, std::uint8_t reason);
  void report(act::Set actions, Trigger trigger, fact::Set facts, const Pdu* pdu);
  void startTimers(act::Set actions, TimePoint now);
  [[nodiscard]] Duration retryInterval() const noexcept;
  [[nodiscard]] Duration ackInterval() const noexcept;
  [[nodiscard]] AbortReason ownReason(Trigger trigger, fact::Set facts) const noexcept;

  [[nodiscard]] Pdu header(PduType type) const noexcept;
  void emit(const Pdu& pdu);
  void sendPacket(std::uint8_t psn, bool resent);
  void sendAck(bool verify, bool resent);
  void event(Event::Kind kind, std::vector<std::uint8_t> data = {});

  Role role_;
  Handle handle_;
  WdpAddress peer_;
  std::uint16_t tid_;
  Terms terms_;
  Shared* shared_;

  State state_ = State::null;
  SegmentSender out_;
  Reassembly in_;
  std::vector<std::uint8_t> exitInfo_;
  std::uint8_t retries_ = 0;         // RCR
  std::uint8_t ackExpirations_ = 0;  // AEC
  bool holdOn_ = false;
  bool ackSent_ = false;
  bool tokSent_ = false;
  bool stoodBy_ = false;  // a Tok was ever sent
  bool tveSent_ = false;
  bool tidBad_ = false;
  bool tidNew_ = false;  // of the invoke, whoever sent it
  bool leftOpen_ = false;
  bool whole_ = false;               // one packet whatever its size: the peer takes no segments
  std::size_t peerUnit_ = SIZE_MAX;  // octets of the largest packet the peer takes
  std::uint8_t userReason_ = 0;

  Timer timer_ = Timer::none;
  TimePoint timerAt_;
  std::optional<TimePoint> nackAt_;
  std::optional<TimePoint> limitAt_;
  Duration pause_{0};  // the peer's wish before the next group
};

}  // namespace mmsbrix::wtp

#endif  // MMSBRIX_WAPSTACK_WTP_TRANSACTION_H
