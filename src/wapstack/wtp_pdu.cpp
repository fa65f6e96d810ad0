#include "wapstack/wtp_pdu.h"

#include <algorithm>
#include <array>

namespace mmsbrix::wtp {
namespace {

constexpr std::uint8_t kContinue = 0x80;  // CON: TPIs follow
constexpr std::uint8_t kGtr = 0x04;
constexpr std::uint8_t kTtr = 0x02;
constexpr std::uint8_t kRid = 0x01;
constexpr std::uint8_t kTve = 0x04;
constexpr std::uint8_t kTidNew = 0x20;
constexpr std::uint8_t kUserAck = 0x10;
constexpr std::uint8_t kClassBits = 0x03;
constexpr int kVersionShift = 6;

constexpr std::uint8_t kLongTpi = 0x04;
constexpr std::uint8_t kMaxShortTpi = 3;
enum TpiIdentity : std::uint8_t { kInfo = 1, kOption = 2, kPsn = 3 };

/// The options that carry a number, and where it is kept.
struct Option {
  std::uint8_t id;
  std::optional<std::uint32_t> Tpis::*member;
};
constexpr auto kOptions = std::to_array<Option>({
    {1, &Tpis::maxUnit},
    {2, &Tpis::totalSize},
    {3, &Tpis::delay},
    {4, &Tpis::maxGroup},
});
constexpr std::uint8_t kCurrentTid = 5;

bool isSegment(PduType type) {
  return type == PduType::segmentedInvoke || type == PduType::segmentedResult;
}
bool carriesData(PduType type) {
  return type == PduType::invoke || type == PduType::result || isSegment(type);
}

/// A big-endian number of 1 to 4 octets; nothing for another size.
std::optional<std::uint32_t> number(Reader in) {
  if (in.atEnd() || in.left() > 4) return std::nullopt;
  std::uint32_t value = 0;
  while (const auto octet = in.octet()) value = value << 8 | *octet;
  return value;
}

void readOption(Reader in, Tpis& tpis) {
  const auto id = in.octet();
  if (!id) return;
  for (const Option& option : kOptions) {
    if (option.id == *id) tpis.*option.member = number(in);
  }
  if (*id == kCurrentTid && in.left() == 2) {
    tpis.currentTid = static_cast<std::uint16_t>(*number(in));
  }
}

bool readTpis(Reader& in, Tpis& tpis) {
  bool more = true;
  while (more) {
    const auto head = in.octet();
    if (!head) return false;
    more = (*head & kContinue) != 0;
    std::size_t length = *head & kMaxShortTpi;
    if ((*head & kLongTpi) != 0) {
      const auto longLength = in.octet();
      if (!longLength) return false;
      length = *longLength;
    }
    Reader content = in.sub(length);
    if (in.failed()) return false;
    switch (*head >> 3 & 0x0F) {
      case kInfo:
        tpis.info = content.rest();
        break;
      case kOption:
        readOption(content, tpis);
        break;
      case kPsn:
        if (content.left() == 1) tpis.psn = content.octet();
        break;
      default:
        break;
    }
  }
  return true;
}

/// Writes TPIs one after the other, each told whether another follows.
class TpiWriter {
 public:
  TpiWriter(const Tpis& tpis, Writer& out) : tpis_(tpis), out_(out) {}

  [[nodiscard]] std::size_t count() const {
    std::size_t n = (tpis_.psn ? 1u : 0u) + (tpis_.info ? 1u : 0u) + (tpis_.currentTid ? 1u : 0u);
    for (const Option& option : kOptions) n += (tpis_.*option.member) ? 1u : 0u;
    return n;
  }
  void write() {
    left_ = count();
    if (tpis_.psn) item(kPsn, {&*tpis_.psn, 1});
    for (const Option& option : kOptions) {
      if (tpis_.*option.member) optionItem(option.id, *(tpis_.*option.member), 1);
    }
    if (tpis_.currentTid) optionItem(kCurrentTid, *tpis_.currentTid, 2);
    if (tpis_.info) item(kInfo, tpis_.info->first(std::min(tpis_.info->size(), kMaxInfoOctets)));
  }

 private:
  void optionItem(std::uint8_t id, std::uint32_t value, std::size_t minOctets) {
    std::array<std::uint8_t, 5> content{id};
    std::size_t octets = minOctets;
    while (octets < 4 && value >> (8 * octets) != 0) ++octets;
    for (std::size_t i = 0; i < octets; ++i) {
      content[1 + i] = static_cast<std::uint8_t>(value >> 8 * (octets - 1 - i));
    }
    item(kOption, Octets(content).first(1 + octets));
  }
  void item(std::uint8_t identity, Octets content) {
    const std::uint8_t more = --left_ > 0 ? kContinue : 0;
    const auto head = static_cast<std::uint8_t>(more | identity << 3);
    if (content.size() <= kMaxShortTpi) {
      out_.octet(static_cast<std::uint8_t>(head | content.size()));
    } else {
      out_.octet(head | kLongTpi);
      out_.octet(static_cast<std::uint8_t>(content.size()));
    }
    out_.append(content);
  }

  const Tpis& tpis_;
  Writer& out_;
  std::size_t left_ = 0;
};

/// Reads what follows the TID in the fixed header.
PduError readFixedPart(std::uint8_t head, Reader& in, Pdu& pdu) {
  if (carriesData(pdu.type)) {
    pdu.groupEnd = (head & kGtr) != 0;
    pdu.last = (head & kTtr) != 0;
  }
  if (pdu.type != PduType::abort) pdu.resent = (head & kRid) != 0;
  if (pdu.type == PduType::ack) pdu.verify = (head & kTve) != 0;
  if (pdu.type == PduType::result || pdu.type == PduType::ack) return PduError::none;

  const auto octet = in.octet();
  if (!octet) return PduError::tooShort;
  switch (pdu.type) {
    case PduType::invoke:
      pdu.version = static_cast<std::uint8_t>(*octet >> kVersionShift);
      pdu.tidNew = (*octet & kTidNew) != 0;
      pdu.userAck = (*octet & kUserAck) != 0;
      pdu.classBits = *octet & kClassBits;
      break;
    case PduType::abort:
      pdu.abortType = head & 0x07;
      pdu.abortReason = *octet;
      break;
    case PduType::negativeAck:
      pdu.missing = in.take(*octet);
      if (in.failed()) return PduError::listOverrun;
      break;
    default:
      pdu.psn = *octet;
      break;
  }
  return PduError::none;
}

}  // namespace

DecodedPdu decodePdu(Octets octets) noexcept {
  DecodedPdu decoded;
  Pdu& pdu = decoded.pdu;
  Reader in(octets);
  const auto head = in.octet();
  const auto high = in.octet();
  const auto low = in.octet();
  if (!low) {
    decoded.error = PduError::tooShort;
    return decoded;
  }
  pdu.tid = static_cast<std::uint16_t>(*high << 8 | *low);
  decoded.hasTid = true;
  const std::uint8_t type = *head >> 3 & 0x0F;
  if (type == 0 || type > static_cast<std::uint8_t>(PduType::negativeAck)) {
    decoded.error = PduError::unknownType;
    return decoded;
  }
  pdu.type = static_cast<PduType>(type);
  decoded.error = readFixedPart(*head, in, pdu);
  if (decoded.error != PduError::none) return decoded;
  if ((*head & kContinue) != 0 && !readTpis(in, pdu.tpis)) {
    decoded.error = PduError::tpiOverrun;
    return decoded;
  }
  if (carriesData(pdu.type)) pdu.data = in.rest();
  return decoded;
}

void encodePdu(const Pdu& pdu, Writer& out) noexcept {
  TpiWriter tpis(pdu.tpis, out);
  std::uint8_t head = static_cast<std::uint8_t>(static_cast<std::uint8_t>(pdu.type) << 3);
  if (tpis.count() > 0) head |= kContinue;
  if (pdu.type == PduType::abort) {
    head |= pdu.abortType & 0x07;
  } else {
    if (pdu.resent) head |= kRid;
    if (carriesData(pdu.type) && pdu.groupEnd) head |= kGtr;
    if (carriesData(pdu.type) && pdu.last) head |= kTtr;
    if (pdu.type == PduType::ack && pdu.verify) head |= kTve;
  }
  out.octet(head);
  out.octet(static_cast<std::uint8_t>(pdu.tid >> 8));
  out.octet(static_cast<std::uint8_t>(pdu.tid));
  switch (pdu.type) {
    case PduType::invoke:
      out.octet(static_cast<std::uint8_t>(pdu.version << kVersionShift |
                                          (pdu.tidNew ? kTidNew : 0) |
                                          (pdu.userAck ? kUserAck : 0) | pdu.classBits));
      break;
    case PduType::abort:
      out.octet(pdu.abortReason);
      break;
    case PduType::negativeAck:
      out.octet(static_cast<std::uint8_t>(pdu.missing.size()));
      out.append(pdu.missing);
      break;
    case PduType::segmentedInvoke:
    case PduType::segmentedResult:
      out.octet(pdu.psn);
      break;
    default:
      break;
  }
  tpis.write();
  if (carriesData(pdu.type)) out.append(pdu.data);
}

Separation::Separation(Octets datagram) noexcept : in_(datagram) {
  several_ = in_.peekOctet() == std::uint8_t{0};
  if (several_) in_.skip(1);
}

std::optional<Octets> Separation::next() noexcept {
  if (in_.atEnd()) return std::nullopt;
  if (!several_) return in_.take(in_.left());
  std::size_t length = *in_.octet();
  if (length >= 0x80) {
    const auto low = in_.octet();
    if (!low) return std::nullopt;
    length = (length & 0x7F) << 8 | *low;
  }
  if (length > in_.left()) {
    in_.skip(in_.left());
    return std::nullopt;
  }
  return in_.take(length);
}

std::size_t concatenatedSize(std::size_t pduOctets) noexcept {
  return pduOctets + (pduOctets < 0x80 ? 1 : 2);
}

void concatenate(Octets pdu, Writer& out) noexcept {
  if (out.size() == 0) out.octet(0);
  if (pdu.size() >= 0x80) out.octet(static_cast<std::uint8_t>(0x80 | pdu.size() >> 8));
  out.octet(static_cast<std::uint8_t>(pdu.size()));
  out.append(pdu);
}

}  // namespace mmsbrix::wtp
