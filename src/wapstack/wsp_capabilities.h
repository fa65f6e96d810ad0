// Capabilities of a WSP session: what a client proposes, what a server answers, what holds.
// [WAP-230 8.3]
#ifndef MMSBRIX_WAPSTACK_WSP_CAPABILITIES_H
#define MMSBRIX_WAPSTACK_WSP_CAPABILITIES_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "wapstack/wdp_address.h"
#include "wsp/octets.h"

namespace mmsbrix::session {

/// Facilities in Protocol Options.
inline constexpr std::uint8_t kConfirmedPushFacility = 0x80;
inline constexpr std::uint8_t kPushFacility = 0x40;
inline constexpr std::uint8_t kResumeFacility = 0x20;
inline constexpr std::uint8_t kAckHeadersFacility = 0x10;

/// A method beyond the standard's or a header code page: a number that both sides give a name.
struct NamedCode {
  std::uint8_t code = 0;  ///< PDU type 0x50-0x5F or 0x70-0x7F, or the page
  std::string name;       ///< only a proposal has it
};

/// A capability block; what is absent stands for the value that holds already.  The sizes are
/// octets of a whole PDU, 0 for no limit.
struct Capabilities {
  std::optional<std::uint32_t> clientSduSize{};  ///< what the client receives at most
  std::optional<std::uint32_t> serverSduSize{};  ///< what the client sends at most
  std::optional<std::uint8_t> protocolOptions{};
  std::optional<std::uint8_t> methodMor{};  ///< methods outstanding at a time
  std::optional<std::uint8_t> pushMor{};    ///< confirmed pushes outstanding at a time

  // Of messages in several SDUs, which large data transfer is about.
  std::optional<std::uint32_t> clientMessageSize{};
  std::optional<std::uint32_t> serverMessageSize{};
  std::optional<std::vector<NamedCode>> extendedMethods{};
  std::optional<std::vector<NamedCode>> headerCodePages{};
  /// Where else the sender can be reached.  Never asked for here, so passed over on reading.
  std::vector<WdpAddress> aliases{};

  /// A bit by identifier for what came without parameters: its sender did not understand it.
  std::uint16_t unrecognised = 0;
};

/// What holds in a session; the defaults are those before any negotiation.
struct Agreement {
  std::uint32_t clientSduSize = 1400;
  std::uint32_t serverSduSize = 1400;
  std::uint8_t protocolOptions = 0;
  std::uint8_t methodMor = 1;
  std::uint8_t pushMor = 1;
  std::uint32_t clientMessageSize = 1400;
  std::uint32_t serverMessageSize = 1400;
  std::vector<std::uint8_t> extendedMethods{};
  std::vector<std::uint8_t> headerCodePages{};

  [[nodiscard]] bool has(std::uint8_t facility) const noexcept {
    return (protocolOptions & facility) != 0;
  }
};

void encodeCapabilities(const Capabilities& capabilities, Writer& out) noexcept;
/// Nothing when a length or a number is broken.  Unknown capabilities are passed over; of several
/// instances of one the first counts; one without parameters reads as the default and is marked.
/// Methods and code pages are read as a server writes them, without names.
[[nodiscard]] std::optional<Capabilities> decodeCapabilities(Octets block) noexcept;

/// What holds when a server answers a proposal; nothing when it answers with more than was
/// proposed, which fails the session.
[[nodiscard]] std::optional<Agreement> agree(const Capabilities& proposed,
                                             const Capabilities& answered) noexcept;

/// What a server makes of a proposal: what holds, and what it answers.
struct Grant {
  Agreement agreement;
  Capabilities answer;
};
/// Grants what was proposed as far as `limits` go.  The answer says everything that was proposed,
/// and what is now below its default.  [WAP-230 8.3.3]
[[nodiscard]] Grant grant(const Capabilities& proposed, const Agreement& limits) noexcept;
/// Appends every capability of a sound block that is not in Capabilities without its parameters,
/// which tells the client that it is not supported.
void encodeUnsupported(Octets block, Writer& out) noexcept;

}  // namespace mmsbrix::session

#endif  // MMSBRIX_WAPSTACK_WSP_CAPABILITIES_H
