// WSP protocol data units of the connection mode, as clients and servers write and read them.
// Header blocks are octets whose meaning is the user's.  [WAP-230 8.2]
#ifndef MMSBRIX_WAPSTACK_WSP_PDU_H
#define MMSBRIX_WAPSTACK_WSP_PDU_H

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
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
inline constexpr std::uint8_t kFirstMethod = 0x40;
inline constexpr std::uint8_t kLastMethod = 0x7F;
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

/// A PDU from a client; only the members of its type are set, views are of the datagram.
struct ClientPdu {
  std::uint8_t type = 0;        ///< PduType, or a method
  std::uint8_t version = 0;     ///< Connect
  std::uint32_t sessionId = 0;  ///< Disconnect, Suspend, Resume
  Octets capabilities;          ///< Connect
  std::string_view uri;         ///< methods
  Octets headers;               ///< with the content type in front in methods of Post's layout
  Octets data;                  ///< of methods of Post's layout

  [[nodiscard]] bool is(PduType other) const noexcept {
    return type == static_cast<std::uint8_t>(other);
  }
  [[nodiscard]] bool isMethod() const noexcept {
    return type >= kFirstMethod && type <= kLastMethod;
  }
};

/// Nothing for types that no client sends and for lengths past the end.
[[nodiscard]] std::optional<ClientPdu> decodeClientPdu(Octets octets) noexcept;

void encodeConnectReply(std::uint32_t sessionId, Octets capabilities, Octets headers,
                        Writer& out) noexcept;
/// Address entries of a Redirect or of aliases.  A port is left out where it is that of `current`.
void encodeAddresses(std::span<const WdpAddress> addresses, const WdpAddress& current,
                     Writer& out) noexcept;
/// `flags`: kRedirectPermanent or 0.
void encodeRedirect(std::uint8_t flags, std::span<const WdpAddress> addresses,
                    const WdpAddress& current, Writer& out) noexcept;
/// `headers` begin with the content type, here and in pushes.
void encodeReply(std::uint8_t status, Octets headers, Octets body, Writer& out) noexcept;
/// Push or ConfirmedPush.  [WAP-230 8.2.4.1]
void encodePush(PduType type, Octets headers, Octets body, Writer& out) noexcept;

}  // namespace mmsbrix::session

#endif  // MMSBRIX_WAPSTACK_WSP_PDU_H
