// Capabilities of a WSP session: what a client proposes, what a server answers, what holds.
// [WAP-230 8.3]
#ifndef MMSBRIX_WAPSTACK_WSP_CAPABILITIES_H
#define MMSBRIX_WAPSTACK_WSP_CAPABILITIES_H

#include <cstdint>
#include <optional>

#include "wsp/octets.h"

namespace mmsbrix::session {

/// Facilities in Protocol Options.
inline constexpr std::uint8_t kConfirmedPushFacility = 0x80;
inline constexpr std::uint8_t kPushFacility = 0x40;
inline constexpr std::uint8_t kResumeFacility = 0x20;
inline constexpr std::uint8_t kAckHeadersFacility = 0x10;

/// A capability block; what is absent stands for the value that holds already.  The sizes are
/// octets of a whole PDU, 0 for no limit.
struct Capabilities {
  std::optional<std::uint32_t> clientSduSize;  ///< what the client receives at most
  std::optional<std::uint32_t> serverSduSize;  ///< what the client sends at most
  std::optional<std::uint8_t> protocolOptions;
  std::optional<std::uint8_t> methodMor;  ///< methods outstanding at a time
  std::optional<std::uint8_t> pushMor;    ///< confirmed pushes outstanding at a time
};

/// What holds in a session; the defaults are those before any negotiation.
struct Agreement {
  std::uint32_t clientSduSize = 1400;
  std::uint32_t serverSduSize = 1400;
  std::uint8_t protocolOptions = 0;
  std::uint8_t methodMor = 1;
  std::uint8_t pushMor = 1;

  [[nodiscard]] bool has(std::uint8_t facility) const noexcept {
    return (protocolOptions & facility) != 0;
  }
};

void encodeCapabilities(const Capabilities& capabilities, Writer& out) noexcept;
/// Nothing when a length or a number is broken.  Unknown capabilities are passed over; of several
/// instances of one the first counts; one without parameters was not understood by its sender and
/// reads as the default.
[[nodiscard]] std::optional<Capabilities> decodeCapabilities(Octets block) noexcept;

/// What holds when a server answers a proposal; nothing when it answers with more than was
/// proposed, which fails the session.
[[nodiscard]] std::optional<Agreement> agree(const Capabilities& proposed,
                                             const Capabilities& answered) noexcept;

}  // namespace mmsbrix::session

#endif  // MMSBRIX_WAPSTACK_WSP_CAPABILITIES_H
