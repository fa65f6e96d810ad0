// The WTP endpoint: all transactions of one local port.  It owns no socket, clock or thread.  The
// driver hands in datagrams and the time, fetches datagrams and events until there are none, and
// calls onTimer() at deadline().  Events are queued, so a user may call back from any of them.
#ifndef MMSBRIX_WAPSTACK_WTP_H
#define MMSBRIX_WAPSTACK_WTP_H

#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include "wapstack/wtp_tid.h"
#include "wapstack/wtp_transaction.h"

namespace mmsbrix::wtp {

struct Datagram {
  WdpAddress peer;
  Writer octets;
};

/// Why a request could not be taken.
enum class Refusal : std::uint8_t {
  none,
  tooManySegments,      ///< the message takes more than kMaxSegments packets
  tooLargeForDatagram,  ///< it must go in one packet and does not fit
  tooManyTransactions,
  unknownHandle,  ///< no such transaction, or one that has no use for this now
};
/// One sentence for people.
[[nodiscard]] const char* refusalText(Refusal refusal) noexcept;

struct Invoked {
  Refusal refusal = Refusal::none;
  Handle handle = 0;
};

class Endpoint {
 public:
  /// `firstTid` is where the TIDs of own transactions begin; better not the same after each start.
  Endpoint(const Settings& settings, std::uint16_t firstTid);
  Endpoint(const Endpoint&) = delete;
  Endpoint& operator=(const Endpoint&) = delete;

  /// TR-Invoke.req.  Every class 1 or 2 invoke ends by an event: class 1 by the confirm, class 2 by
  /// the result, or either by an abort.
  Invoked invoke(const WdpAddress& peer, Transaction::Terms terms, std::vector<std::uint8_t> data,
                 TimePoint now);
  /// TR-Invoke.res; exit information goes out with a class 1 Ack.
  Refusal respondInvoke(Handle handle, Octets exitInfo, TimePoint now);
  /// TR-Result.req
  Refusal sendResult(Handle handle, std::vector<std::uint8_t> data, TimePoint now);
  /// TR-Result.res; exit information goes out with the last Ack.
  Refusal respondResult(Handle handle, Octets exitInfo, TimePoint now);
  /// TR-Abort.req; no event follows.
  Refusal abandon(Handle handle, std::uint8_t reason, TimePoint now);

  void receive(const WdpAddress& peer, Octets datagram, TimePoint now);
  void onTimer(TimePoint now);
  /// When onTimer() is due; nothing when no timer runs.
  [[nodiscard]] std::optional<TimePoint> deadline() const;

  std::optional<Event> takeEvent();
  /// The next datagram to send; small PDUs for the same peer travel together.
  std::optional<Datagram> takeDatagram();

  [[nodiscard]] std::size_t transactions() const noexcept { return transactions_.size(); }
  /// Counts the table rows that are taken from now on.
  void countRows(RowCounts* counts) noexcept { shared_.counts = counts; }

 private:
  struct Key {
    Transaction::Role role{};
    std::uint16_t tid = 0;
    WdpAddress peer;
    auto operator<=>(const Key&) const = default;
  };
  struct Entry {
    Key key;
    Transaction transaction;
    std::optional<TimePoint> due{};  ///< as it stands in timers_
    bool doubted = false;            ///< of our own: the peer asked about the TID
    bool answered = false;           ///< and then, or at once, went on
    bool resting = false;            ///< it only waits for late packets
  };
  /// A peer that does not believe our TIDs.
  struct Doubter {
    unsigned inARow = 0;
    bool told = false;    ///< that our TIDs begin anew
    Handle verified = 0;  ///< the invoke that said so, until the peer has verified its TID
    std::vector<Handle> held;
  };

  void receivePdu(const WdpAddress& peer, Octets octets, TimePoint now);
  void receiveInvoke(const Key& key, const DecodedPdu& decoded, TimePoint now);
  void refuseTid(const Key& key);
  [[nodiscard]] Transaction::Start startOf(const WdpAddress& peer, Handle handle);
  void noteAnswer(Entry& entry, const Pdu& pdu);
  void releaseHeld(const WdpAddress& peer, Handle verified, TimePoint now);
  /// Brings the books up to date after something happened to a transaction.
  void settle(Handle handle, TimePoint now);
  void forget(std::map<Handle, Entry>::iterator entry);
  void makeRoom();
  [[nodiscard]] std::uint16_t freshTid();
  [[nodiscard]] std::size_t count(Transaction::Role role) const;
  template <typename Act>
  Refusal apply(Handle handle, TimePoint now, Act act);

  Shared shared_;
  TidCache tids_;
  std::map<Handle, Entry> transactions_;
  std::map<Key, Handle> byKey_;
  std::set<std::pair<TimePoint, Handle>> timers_;
  std::deque<Handle> resting_;  // the longest first; some may be gone
  std::map<WdpAddress, Doubter> doubters_;
  std::size_t own_ = 0;
  Handle lastHandle_ = 0;
  std::uint16_t nextTid_;
};

}  // namespace mmsbrix::wtp

#endif  // MMSBRIX_WAPSTACK_WTP_H
