// The WSP reasons for what WTP reports.
#ifndef MMSBRIX_WAPSTACK_WSP_REASON_H
#define MMSBRIX_WAPSTACK_WSP_REASON_H

#include <cstdint>

#include "wapstack/wsp_tables.h"
#include "wapstack/wtp_transaction.h"

namespace mmsbrix::session {

/// The WSP reason for an abort: the peer user's own, or what comes nearest to the reason of WTP,
/// which knows none of them.
[[nodiscard]] std::uint8_t reasonOf(const wtp::Event& abort) noexcept;

[[nodiscard]] constexpr bool is(std::uint8_t code, Reason reason) noexcept {
  return code == static_cast<std::uint8_t>(reason);
}

}  // namespace mmsbrix::session

#endif  // MMSBRIX_WAPSTACK_WSP_REASON_H
