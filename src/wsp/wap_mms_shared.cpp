#include "wsp/wap_mms_shared.h"

#include <algorithm>
#include <limits>

#include "wsp/report.h"

namespace mmsbrix {
namespace {

constexpr std::string_view kSource = "wap_mms_shared";

// Right shift that brings the highest non-zero 7-bit group of `value` down, 0 to 28.
constexpr unsigned highestGroupShift(std::uint32_t value) noexcept {
  unsigned shift = value >= 0x10000000 ? 28 : 21;
  while (shift > 0 && (value >> shift) == 0) shift -= 7;
  return shift;
}

}  // namespace

std::size_t encodeUintvar(std::uint32_t value, std::uint8_t* out) noexcept {
  const unsigned first = highestGroupShift(value);
  for (unsigned shift = first; shift > 0; shift -= 7) {
    *out++ = static_cast<std::uint8_t>(((value >> shift) & 0x7F) | 0x80);
  }
  *out = static_cast<std::uint8_t>(value & 0x7F);
  return (first + 6) / 7 + 1;
}

void writeUintvar(Writer& out, std::uint32_t value) noexcept {
  std::uint8_t octets[kMaxUintvarOctets];
  out.append(Octets(octets, encodeUintvar(value, octets)));
}

Uintvar decodeUintvar(Octets octets) noexcept {
  Uintvar result;
  for (; result.octets < std::min(octets.size(), kMaxUintvarOctets);) {
    const std::uint8_t octet = octets[result.octets++];
    result.value = (result.value << 7) | (octet & 0x7FU);
    if ((octet & 0x80) == 0) return result;
  }
  result.error = true;
  MMSBRIX_REPORT_ERROR(kSource, "decodeUintvar(): error");
  return result;
}

Uintvar decodeUintvar(Octets buffer, std::size_t available) noexcept {
  return decodeUintvar(available < buffer.size() ? buffer.first(available + 1) : buffer);
}

Uintvar peekUintvar(const Reader& in, std::size_t place) noexcept {
  return decodeUintvar(in.peek(place, kMaxUintvarOctets));
}

bool takeUintvar(Reader& in, std::uint32_t& value) noexcept {
  const Uintvar decoded = peekUintvar(in, 1);
  in.skip(decoded.octets);
  value = decoded.value;
  return !decoded.error;
}

bool isUintvar(Octets octets) noexcept {
  if (octets.empty() || octets.front() == 0x80) return false;
  return std::ranges::any_of(octets.first(std::min(octets.size(), kMaxUintvarOctets)),
                             [](std::uint8_t octet) { return octet < 0x80; });
}

void writeShortInteger(Writer& out, std::uint8_t value) noexcept {
  out.octet(value | kShortIntegerBit);
}

std::size_t longIntegerOctets(std::uint64_t value) noexcept {
  std::size_t octets = 1;
  while (octets < 8 && (value >> (8 * octets)) != 0) ++octets;
  return octets;
}

void writeLongInteger(Writer& out, std::uint64_t value) noexcept {
  const std::size_t octets = longIntegerOctets(value);
  out.octet(static_cast<std::uint8_t>(octets));
  for (std::size_t left = octets; left > 0; --left) {
    out.octet(static_cast<std::uint8_t>(value >> (8 * (left - 1))));
  }
}

bool takeLongInteger(Reader& in, std::uint64_t& value) noexcept {
  const auto length = in.peekOctet();
  if (!length || *length >= kLengthQuote) return false;
  in.skip(1);
  value = 0;
  for (const std::uint8_t octet : in.take(*length)) value = (value << 8) | octet;
  return true;
}

void writeInteger(Writer& out, std::uint64_t value) noexcept {
  if (value < 0x80) {
    writeShortInteger(out, static_cast<std::uint8_t>(value));
  } else {
    writeLongInteger(out, value);
  }
}

std::size_t integerSize(std::uint64_t value) noexcept {
  return value < 0x80 ? 1 : 1 + longIntegerOctets(value);
}

void writeValueLength(Writer& out, std::uint32_t length) noexcept {
  if (length < kLengthQuote) {
    out.octet(static_cast<std::uint8_t>(length));
  } else {
    out.octet(kLengthQuote);
    writeUintvar(out, length);
  }
}

void insertValueLength(Writer& out, std::size_t begin) noexcept {
  const auto length = static_cast<std::uint32_t>(out.size() - begin);
  std::uint8_t prefix[1 + kMaxUintvarOctets] = {static_cast<std::uint8_t>(length)};
  std::size_t octets = 1;
  if (length >= kLengthQuote) {
    prefix[0] = kLengthQuote;
    octets += encodeUintvar(length, prefix + 1);
  }
  out.insert(begin, Octets(prefix, octets));
}

void writeTextString(Writer& out, std::string_view text) noexcept {
  if (!text.empty() && static_cast<std::uint8_t>(text.front()) >= 0x80) out.octet(kTextQuote);
  writeTokenText(out, text);
}

std::size_t textStringSize(std::string_view text) noexcept {
  const bool quoted = !text.empty() && static_cast<std::uint8_t>(text.front()) >= 0x80;
  return text.size() + 1 + (quoted ? 1 : 0);
}

void writeTokenText(Writer& out, std::string_view text) noexcept {
  out.append(text);
  out.octet(0);
}

bool zeroAhead(const Reader& in) noexcept {
  return asText(in.rest()).find('\0') != std::string_view::npos;
}

bool opensTextString(std::uint8_t octet) noexcept {
  return octet == 0 || octet == 9 || octet == 10 || octet == 13 || (octet >= 32 && octet <= 127);
}

std::size_t fieldSize(const Reader& in) noexcept {
  const Octets ahead = in.rest();
  if (ahead.empty()) return 0;
  const std::uint8_t first = ahead.front();
  if (first < kLengthQuote) return 1 + std::size_t{first};
  if (first == kLengthQuote) {
    const Uintvar length = peekUintvar(in, 2);
    const std::size_t stated = length.value;
    constexpr std::size_t kAll = std::numeric_limits<std::size_t>::max();
    const std::size_t prefix = 1 + length.octets;
    // Where sizes have 32 bits the sum may not fit; the value is cut short in any case then.
    return length.error ? 0 : prefix + std::min(stated, kAll - prefix);
  }
  if (first >= kShortIntegerBit) return 1;
  const void* zero = std::memchr(ahead.data(), 0, ahead.size());
  if (zero == nullptr) return ahead.size() + 1;
  return static_cast<std::size_t>(static_cast<const std::uint8_t*>(zero) - ahead.data()) + 1;
}

}  // namespace mmsbrix
