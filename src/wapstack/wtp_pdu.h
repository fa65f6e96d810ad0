// WTP protocol data units: their fixed headers, their transport information items (TPIs), and the
// concatenation of several in one datagram.  [WAP-224 8]
#ifndef MMSBRIX_WAPSTACK_WTP_PDU_H
#define MMSBRIX_WAPSTACK_WTP_PDU_H

#include <cstddef>
#include <cstdint>
#include <optional>

#include "wsp/octets.h"

namespace mmsbrix::wtp {

/// The transaction classes: unreliable push, reliable push, invoke with result.
enum class Class : std::uint8_t { push = 0, reliablePush = 1, result = 2 };

enum class PduType : std::uint8_t {
  invoke = 1,
  result = 2,
  ack = 3,
  abort = 4,
  segmentedInvoke = 5,
  segmentedResult = 6,
  negativeAck = 7,
};

enum class AbortType : std::uint8_t { provider = 0, user = 1 };

/// Reasons of a provider abort.  [WAP-224 8.3.4]
enum class AbortReason : std::uint8_t {
  unknown = 0x00,
  protocolError = 0x01,
  invalidTid = 0x02,
  noClass2 = 0x03,
  noSegmentation = 0x04,
  noUserAck = 0x05,
  wrongVersion = 0x06,
  capacity = 0x07,
  noResponse = 0x08,
  messageTooLarge = 0x09,
};

/// What the TPIs of a PDU say; the octets belong to the datagram.  [WAP-224 8.4]
struct Tpis {
  std::optional<std::uint8_t> psn;          ///< packet sequence number that an Ack acknowledges
  std::optional<Octets> info;               ///< the user's exit information
  std::optional<std::uint32_t> maxUnit;     ///< octets of the largest result unit accepted
  std::optional<std::uint32_t> totalSize;   ///< octets of the whole message
  std::optional<std::uint32_t> delay;       ///< tenths of a second to wait before the next group
  std::optional<std::uint32_t> maxGroup;    ///< octets acceptable in one group
  std::optional<std::uint16_t> currentTid;  ///< the responder's cached TID, with a Tve
};

/// Any PDU; only the members of its type are read and written.
struct Pdu {
  PduType type = PduType::invoke;
  std::uint16_t tid = 0;  ///< as it stands in the PDU, direction bit included
  bool resent = false;    ///< RID
  bool groupEnd = false;  ///< GTR
  bool last = false;      ///< TTR
  bool verify = false;    ///< Tve of a responder's Ack, Tok of an initiator's
  bool tidNew = false;
  bool userAck = false;          ///< U/P
  std::uint8_t version = 0;      ///< 0 is the only one there is
  std::uint8_t classBits = 0;    ///< 0 to 2; 3 is reserved
  std::uint8_t psn = 0;          ///< of a segment; 0 for Invoke and Result
  std::uint8_t abortType = 0;    ///< three bits, see AbortType
  std::uint8_t abortReason = 0;  ///< AbortReason, or the user's
  Octets missing;                ///< the packet sequence numbers of a negative Ack
  Tpis tpis;
  Octets data;
};

inline constexpr std::uint16_t kTidDirectionBit = 0x8000;  ///< set by the responder
inline constexpr std::uint16_t kTidMask = 0x7FFF;
inline constexpr std::size_t kMaxInfoOctets = 255;  ///< exit information that one TPI holds

/// Why octets are no PDU.
enum class PduError : std::uint8_t {
  none,
  tooShort,     ///< the fixed header is cut off
  unknownType,  ///< type 0 or above 7
  tpiOverrun,   ///< a TPI reaches past the end
  listOverrun,  ///< a negative Ack lists more packets than it holds
};

struct DecodedPdu {
  PduError error = PduError::none;
  /// Valid when `error` is none.  Type and TID are also set for a broken PDU that has them.
  Pdu pdu;
  bool hasTid = false;
};

/// Decodes one PDU.  An unknown TPI is passed over, a known one with unusable content counts as
/// absent.  Reserved bits are ignored.
[[nodiscard]] DecodedPdu decodePdu(Octets octets) noexcept;
/// Appends the PDU.  Exit information is cut to kMaxInfoOctets.
void encodePdu(const Pdu& pdu, Writer& out) noexcept;

/// Takes a datagram apart into its PDUs, one or several.  [WAP-224 8.2]
class Separation {
 public:
  explicit Separation(Octets datagram) noexcept;
  /// The next PDU's octets, nothing at the end or where a length reaches past it.
  [[nodiscard]] std::optional<Octets> next() noexcept;

 private:
  Reader in_;
  bool several_ = false;
};

/// Octets that a PDU of this size needs within a concatenation: itself and its length field.
[[nodiscard]] std::size_t concatenatedSize(std::size_t pduOctets) noexcept;
inline constexpr std::size_t kMaxConcatenatedPdu = 0x7FFF;  ///< octets that a length field can say
/// Appends a PDU to a concatenation, after the opening octet if `out` is empty.
void concatenate(Octets pdu, Writer& out) noexcept;

}  // namespace mmsbrix::wtp

#endif  // MMSBRIX_WAPSTACK_WTP_PDU_H
