#include "wapstack/wsp_pdu.h"

#include <algorithm>
#include <array>

#include "wsp/wap_mms_shared.h"

namespace mmsbrix::session {
namespace {

/// In the first octet of an address entry.  [WAP-230 8.2.2.3]
constexpr std::uint8_t kBearerIncluded = 0x80;
constexpr std::uint8_t kPortIncluded = 0x40;

/// Octets whose length stands in a uintvar before them; nothing when they are not all there.
std::optional<Octets> block(Reader& in, std::optional<std::uint32_t> length) {
  if (!length || *length > in.left()) return std::nullopt;
  return in.take(*length);
}

bool readConnectReply(Reader& in, ServerPdu& pdu) {
  const auto id = readUintvar(in);
  const auto capabilitiesLength = readUintvar(in);
  const auto headersLength = readUintvar(in);
  const auto capabilities = block(in, capabilitiesLength);
  const auto headers = block(in, headersLength);
  if (!id || !capabilities || !headers) return false;
  pdu.sessionId = *id;
  pdu.capabilities = *capabilities;
  pdu.headers = *headers;
  return true;
}

bool readHeadersAndData(Reader& in, ServerPdu& pdu) {
  const auto length = readUintvar(in);
  const auto headers = block(in, length);
  if (!headers) return false;
  pdu.headers = *headers;
  pdu.data = in.rest();
  return true;
}

bool readConnect(Reader& in, ClientPdu& pdu) {
  const auto version = in.octet();
  const auto capabilitiesLength = readUintvar(in);
  const auto headersLength = readUintvar(in);
  const auto capabilities = block(in, capabilitiesLength);
  const auto headers = block(in, headersLength);
  if (!version || !capabilities || !headers) return false;
  pdu.version = *version;
  pdu.capabilities = *capabilities;
  pdu.headers = *headers;
  return true;
}

/// A Resume's capabilities are passed over: its session has what was agreed on.
bool readResume(Reader& in, ClientPdu& pdu) {
  const auto id = readUintvar(in);
  const auto length = readUintvar(in);
  if (!id || !block(in, length)) return false;
  pdu.sessionId = *id;
  pdu.headers = in.rest();
  return true;
}

bool readMethod(Reader& in, ClientPdu& pdu) {
  const bool hasBody = pdu.type >= kFirstPostMethod;
  const auto uriLength = readUintvar(in);
  const auto headersLength = hasBody ? readUintvar(in) : std::optional<std::uint32_t>(0);
  const auto uri = block(in, uriLength);
  const auto headers = block(in, headersLength);
  if (!uri || !headers) return false;
  pdu.uri = asText(*uri);
  pdu.headers = hasBody ? *headers : in.rest();
  if (hasBody) pdu.data = in.rest();
  return true;
}

/// Bearers of an address entry that route IP.  [WAP-259 A]
bool routesIp(std::uint8_t bearer) {
  constexpr auto kIp = std::to_array<std::uint8_t>(
      {0x00, 0x01, 0x06, 0x07, 0x08, 0x09, 0x0A, 0x0B, 0x0D, 0x0E, 0x0F, 0x11, 0x12, 0x19});
  return std::ranges::find(kIp, bearer) != kIp.end();
}

}  // namespace

std::optional<ServerPdu> decodeServerPdu(Octets octets) noexcept {
  Reader in(octets);
  const auto type = in.octet();
  if (!type) return std::nullopt;
  ServerPdu pdu;
  pdu.type = static_cast<PduType>(*type);
  bool sound = false;
  switch (pdu.type) {
    case PduType::connectReply:
      sound = readConnectReply(in, pdu);
      break;
    case PduType::redirect:
      if (const auto flags = in.octet()) {
        pdu.flags = *flags;
        pdu.data = in.rest();
        sound = true;
      }
      break;
    case PduType::reply:
      if (const auto status = in.octet()) {
        pdu.status = *status;
        sound = readHeadersAndData(in, pdu);
      }
      break;
    case PduType::disconnect:
      if (const auto id = readUintvar(in)) {
        pdu.sessionId = *id;
        sound = true;
      }
      break;
    case PduType::push:
    case PduType::confirmedPush:
      sound = readHeadersAndData(in, pdu);
      break;
    default:
      break;
  }
  if (!sound) return std::nullopt;
  return pdu;
}

void encodeConnect(Octets capabilities, Octets headers, Writer& out) noexcept {
  out.octet(static_cast<std::uint8_t>(PduType::connect));
  out.octet(kVersion);
  writeUintvar(out, static_cast<std::uint32_t>(capabilities.size()));
  writeUintvar(out, static_cast<std::uint32_t>(headers.size()));
  out.append(capabilities);
  out.append(headers);
}

void encodeSessionEnd(PduType type, std::uint32_t sessionId, Writer& out) noexcept {
  out.octet(static_cast<std::uint8_t>(type));
  writeUintvar(out, sessionId);
}

void encodeResume(std::uint32_t sessionId, Octets headers, Writer& out) noexcept {
  encodeSessionEnd(PduType::resume, sessionId, out);
  writeUintvar(out, 0);  // no capabilities
  out.append(headers);
}

void encodeMethod(std::uint8_t method, std::string_view uri, Octets headers, Octets body,
                  Writer& out) noexcept {
  out.reserve(uri.size() + headers.size() + body.size() + 2 * kMaxUintvarOctets + 1);
  out.octet(method);
  writeUintvar(out, static_cast<std::uint32_t>(uri.size()));
  if (method < kFirstPostMethod) {
    out.append(uri);
    out.append(headers);
    return;
  }
  writeUintvar(out, static_cast<std::uint32_t>(headers.size()));
  out.append(uri);
  out.append(headers);
  out.append(body);
}

std::vector<WdpAddress> redirectAddresses(Octets entries, const WdpAddress& current) {
  std::vector<WdpAddress> addresses;
  Reader in(entries);
  while (const auto head = in.octet()) {
    std::uint8_t bearer = 0;
    WdpAddress address;
    address.port = current.port;
    if ((*head & kBearerIncluded) != 0) bearer = in.octet().value_or(0xFF);
    if ((*head & kPortIncluded) != 0) {
      const auto high = in.octet();
      const auto low = in.octet();
      if (!low) break;
      address.port = static_cast<std::uint16_t>(*high << 8 | *low);
    }
    const Octets octets = in.take(*head & 0x3F);
    if (in.failed()) break;
    const bool usable = (octets.size() == 4 || octets.size() == 16) && address.port != 0;
    if (!usable || !routesIp(bearer)) continue;
    address.size = static_cast<std::uint8_t>(octets.size());
    std::ranges::copy(octets, address.octets.begin());
    addresses.push_back(address);
  }
  return addresses;
}

std::optional<ClientPdu> decodeClientPdu(Octets octets) noexcept {
  Reader in(octets);
  const auto type = in.octet();
  if (!type) return std::nullopt;
  ClientPdu pdu;
  pdu.type = *type;
  bool sound = false;
  if (pdu.isMethod()) {
    sound = readMethod(in, pdu);
  } else if (pdu.is(PduType::connect)) {
    sound = readConnect(in, pdu);
  } else if (pdu.is(PduType::resume)) {
    sound = readResume(in, pdu);
  } else if (pdu.is(PduType::disconnect) || pdu.is(PduType::suspend)) {
    const auto id = readUintvar(in);
    sound = id.has_value();
    pdu.sessionId = id.value_or(0);
  }
  if (!sound) return std::nullopt;
  return pdu;
}

void encodeConnectReply(std::uint32_t sessionId, Octets capabilities, Octets headers,
                        Writer& out) noexcept {
  out.octet(static_cast<std::uint8_t>(PduType::connectReply));
  writeUintvar(out, sessionId);
  writeUintvar(out, static_cast<std::uint32_t>(capabilities.size()));
  writeUintvar(out, static_cast<std::uint32_t>(headers.size()));
  out.append(capabilities);
  out.append(headers);
}

void encodeAddresses(std::span<const WdpAddress> addresses, const WdpAddress& current,
                     Writer& out) noexcept {
  for (const WdpAddress& address : addresses) {
    const bool otherPort = address.port != current.port;
    out.octet(static_cast<std::uint8_t>(address.size | (otherPort ? kPortIncluded : 0)));
    if (otherPort) {
      out.octet(static_cast<std::uint8_t>(address.port >> 8));
      out.octet(static_cast<std::uint8_t>(address.port & 0xFF));
    }
    out.append(Octets(address.octets).first(address.size));
  }
}

void encodeRedirect(std::uint8_t flags, std::span<const WdpAddress> addresses,
                    const WdpAddress& current, Writer& out) noexcept {
  out.octet(static_cast<std::uint8_t>(PduType::redirect));
  out.octet(flags);
  encodeAddresses(addresses, current, out);
}

void encodeReply(std::uint8_t status, Octets headers, Octets body, Writer& out) noexcept {
  out.reserve(headers.size() + body.size() + kMaxUintvarOctets + 2);
  out.octet(static_cast<std::uint8_t>(PduType::reply));
  out.octet(status);
  writeUintvar(out, static_cast<std::uint32_t>(headers.size()));
  out.append(headers);
  out.append(body);
}

void encodePush(PduType type, Octets headers, Octets body, Writer& out) noexcept {
  out.octet(static_cast<std::uint8_t>(type));
  writeUintvar(out, static_cast<std::uint32_t>(headers.size()));
  out.append(headers);
  out.append(body);
}

}  // namespace mmsbrix::session
