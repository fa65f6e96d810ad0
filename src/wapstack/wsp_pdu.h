// WSP protocol data units of the connection mode, as a client writes and reads them.  Header blocks
// are octets whose meaning is the user's.  [WAP-230 8.2]
#ifndef MMSBRIX_WAPSTACK_WSP_PDU_H
#define MMSBRIX_WAPSTACK_WSP_PDU_H

#include <cstdint>
#include <optional>
#include <vector>

#include "wapstack/wdp_address.h"
#include "wsp/octets.h"

namespace mmsbrix::session {

enum class PduType : std::uint8_t {
  connect = 0x01,
  connectReply = 0x02,
  redirect = 0x03,
  reply = 0x04,
  disconnect = 0x05,
  push = 0x06,
  confirmedPush = 0x07,
  suspend = 0x08,
  resume = 0x09,
};

inline constexpr std::uint8_t kVersion = 0x10;  ///< 1.0
/// Methods from here on have Post's layout, those below it Get's.
inline constexpr std::uint8_t kFirstPostMethod = 0x60;

/// A PDU from the server; only the members of its type are set, views are of the datagram.
struct ServerPdu {
  PduType type = PduType::reply;
  std::uint32_t sessionId = 0;  ///< ConnectReply, Disconnect
  std::uint8_t status = 0;      ///< Reply
  std::uint8_t flags = 0;       ///< Redirect
  Octets capabilities;
  Octets headers;  ///< with the content type in front in Reply and the pushes
  Octets data;     ///< body, or the addresses of a Redirect
};

/// Nothing for types that no server sends and for lengths past the end.
[[nodiscard]] std::optional<ServerPdu> decodeServerPdu(Octets octets) noexcept;

void encodeConnect(Octets capabilities, Octets headers, Writer& out) noexcept;
/// Disconnect or Suspend.
void encodeSessionEnd(PduType type, std::uint32_t sessionId, Writer& out) noexcept;
void encodeResume(std::uint32_t sessionId, Octets headers, Writer& out) noexcept;
/// Any method; `headers` begin with the content type and `body` is sent for Post's layout only.
void encodeMethod(std::uint8_t method, std::string_view uri, Octets headers, Octets body,
                  Writer& out) noexcept;

inline constexpr std::uint8_t kRedirectPermanent = 0x80;
/// The IP addresses among those of a Redirect, in order; what an entry leaves out is as in
/// `current`.  Bearers that do not route IP are passed over.  [WAP-230 8.2.2.3]
[[nodiscard]] std::vector<WdpAddress> redirectAddresses(Octets entries, const WdpAddress& current);

}  // namespace mmsbrix::session

#endif  // MMSBRIX_WAPSTACK_WSP_PDU_H
