// What a relay makes of a PDU: whether it takes it, and the m-send-conf that says so.
// [OMA-MMS-ENC 6.1, 7.2.20]
#ifndef MMSBRIX_TOOLS_RELAY_ANSWER_H
#define MMSBRIX_TOOLS_RELAY_ANSWER_H

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace mmsbrix::tool {

/// Response statuses that the relay gives by itself.
enum class ResponseStatus : std::uint8_t {
  ok = 0x80,
  unspecified = 0x81,
  messageFormatCorrupt = 0x83,
  sendingAddressUnresolved = 0x84,
  unsupportedMessage = 0x88,
};

/// The relay's opinion of a PDU.
struct Verdict {
  std::uint8_t status = static_cast<std::uint8_t>(ResponseStatus::ok);
  std::string text{};           ///< why it is refused, UTF-8; empty for none
  std::string transactionId{};  ///< of the PDU, empty when it has none
  std::uint8_t version = 0x90;  ///< of the PDU as on the wire, 1.0 when it has none

  [[nodiscard]] bool accepted() const noexcept {
    return status == static_cast<std::uint8_t>(ResponseStatus::ok);
  }
};

/// Judges any octets: an m-send-req that is whole and has what it must have is accepted.
[[nodiscard]] Verdict judge(std::span<const std::uint8_t> pdu);

/// The m-send-conf that tells a verdict.  `messageId` goes with an accepted message only.
[[nodiscard]] std::vector<std::uint8_t> encodeSendConf(const Verdict& verdict,
                                                       const std::string& messageId);

}  // namespace mmsbrix::tool

#endif  // MMSBRIX_TOOLS_RELAY_ANSWER_H
