// Transaction identifiers as the responder judges them.  [WAP-224 7.8]
#ifndef MMSBRIX_WAPSTACK_WTP_TID_H
#define MMSBRIX_WAPSTACK_WTP_TID_H

#include <cstdint>
#include <map>
#include <utility>

#include "wapstack/wdp_address.h"
#include "wapstack/wtp_pdu.h"
#include "wapstack/wtp_settings.h"

namespace mmsbrix::wtp {

/// True when a TID follows the last one within half of the TID space, so that it cannot be that of
/// an old packet.
[[nodiscard]] constexpr bool tidFollows(std::uint16_t last, std::uint16_t received) noexcept {
  constexpr int kWindow = 1 << 14;
  const int difference = int{received} - int{last};
  return difference >= 0 ? difference != 0 && difference <= kWindow : -difference >= kWindow;
}

/// What becomes of an invoke, by its TID.
enum class TidVerdict : std::uint8_t {
  believed,
  doubted,  ///< to be verified before anything is delivered
  old,      ///< it was verified and served a moment ago: a copy that the network kept
};

/// The last TID of each initiator, for a bounded number of them.
class TidCache {
 public:
  /// Judges the TID of a new invoke.  An unknown peer is believed, unless it says itself that its
  /// TIDs begin anew.
  [[nodiscard]] TidVerdict judge(const WdpAddress& peer, std::uint16_t tid, bool tidNew,
                                 TimePoint now) {
    const auto served = served_.find({peer, tid});
    if (served != served_.end() && now - served->second < kPacketLifetime) return TidVerdict::old;
    const auto known = last_.find(peer);
    if (known == last_.end()) {
      // Forgetting some peer costs a check of duplicates that nobody sends this late.
      if (last_.size() >= kMaxCachedPeers) last_.erase(last_.begin());
      last_.emplace(peer, tidNew ? std::uint16_t{0} : tid);
      return tidNew ? TidVerdict::doubted : TidVerdict::believed;
    }
    if (tidNew) {
      known->second = 0;
      return TidVerdict::doubted;
    }
    if (!tidFollows(known->second, tid)) return TidVerdict::doubted;
    known->second = tid;
    return TidVerdict::believed;
  }

  /// The peer stood by a doubted TID.  While copies of its Tok may still be under way, a copy of
  /// the invoke must not be verified by them once more.
  void verified(const WdpAddress& peer, std::uint16_t tid, bool tidNew, TimePoint now) {
    if (tidNew) last_[peer] = tid;
    served(peer, tid, now);
  }
  /// The transaction was served, yet the peer may still stand by its TID.
  void served(const WdpAddress& peer, std::uint16_t tid, TimePoint now) {
    std::erase_if(served_,
                  [now](const auto& entry) { return now - entry.second >= kPacketLifetime; });
    if (served_.size() < kMaxVerifiedTids) served_[{peer, tid}] = now;
  }

 private:
  std::map<WdpAddress, std::uint16_t> last_;
  std::map<std::pair<WdpAddress, std::uint16_t>, TimePoint> served_;
};

}  // namespace mmsbrix::wtp

#endif  // MMSBRIX_WAPSTACK_WTP_TID_H
