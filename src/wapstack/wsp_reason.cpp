#include "wapstack/wsp_reason.h"

namespace mmsbrix::session {

std::uint8_t reasonOf(const wtp::Event& abort) noexcept {
  if (abort.abortType == static_cast<std::uint8_t>(wtp::AbortType::user)) return abort.abortReason;
  Reason reason = Reason::networkError;
  switch (static_cast<wtp::AbortReason>(abort.abortReason)) {
    case wtp::AbortReason::protocolError:
      reason = Reason::protocolError;
      break;
    case wtp::AbortReason::capacity:
      reason = Reason::congestion;
      break;
    case wtp::AbortReason::messageTooLarge:
      reason = Reason::mruExceeded;
      break;
    default:
      break;
  }
  return static_cast<std::uint8_t>(reason);
}

}  // namespace mmsbrix::session
