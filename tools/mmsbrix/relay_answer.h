// What a relay makes of a PDU: whether it takes it, the m-send-conf that says so, and what it hands
// to the recipient: m-notification-ind and m-retrieve-conf.  [OMA-MMS-ENC 6.1 to 6.3, 7.2.20]
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

/// A message that was accepted, on its way to the recipient.
struct Delivery {
  std::span<const std::uint8_t> request{};  ///< the m-send-req
  std::string messageId{};
  std::string transactionId{};  ///< of the relay's own PDUs
  std::string location{};       ///< URL from which the message is fetched
  std::uint64_t now = 0;        ///< seconds since 1970
};
/// Tells the recipient that the message waits.
[[nodiscard]] std::vector<std::uint8_t> encodeNotificationInd(const Delivery& delivery);
/// The message as the recipient gets it: without Bcc, without a sender who hides, and with the body
/// octet for octet.
[[nodiscard]] std::vector<std::uint8_t> encodeRetrieveConf(const Delivery& delivery);

/// The name of a PDU by which a client answers a delivery, "m-notifyresp-ind" and the like; "" for
/// any other octets.
[[nodiscard]] std::string reportName(std::span<const std::uint8_t> pdu);

}  // namespace mmsbrix::tool

#endif  // MMSBRIX_TOOLS_RELAY_ANSWER_H
