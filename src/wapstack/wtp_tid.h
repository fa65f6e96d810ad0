// Transaction identifiers as the responder judges them.  [WAP-224 7.8]
#ifndef MMSBRIX_WAPSTACK_WTP_TID_H
#define MMSBRIX_WAPSTACK_WTP_TID_H

#include <cstdint>
#include <map>

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

/// The last TID of each initiator, for a bounded number of them.
class TidCache {
 public:
  /// Judges the TID of a new invoke; false asks for its verification.  An unknown peer is believed.
  [[nodiscard]] bool accept(const WdpAddress& peer, std::uint16_t tid, bool tidNew) {
    const auto known = last_.find(peer);
    if (known == last_.end()) {
      // Forgetting some peer costs a check of duplicates that nobody sends this late.
      if (last_.size() >= kMaxCachedPeers) last_.erase(last_.begin());
      last_.emplace(peer, tid);
      return true;
    }
    if (tidNew) {
      known->second = 0;
      return false;
    }
    if (!tidFollows(known->second, tid)) return false;
    known->second = tid;
    return true;
  }
  /// The peer stands by a TID that it marked as new.
  void verifiedNew(const WdpAddress& peer, std::uint16_t tid) { last_[peer] = tid; }

 private:
  std::map<WdpAddress, std::uint16_t> last_;
};

}  // namespace mmsbrix::wtp

#endif  // MMSBRIX_WAPSTACK_WTP_TID_H
