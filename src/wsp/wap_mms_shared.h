// Octet-level WSP codings shared by the MMS codec and the typed WSP values: uintvar, short and long
// integers, value-length, text-string, and the size of a field value.
// [WAP-230 8.1.2, 8.4.1.2, 8.4.2.1, 8.4.2.2]
//
// The smallest readers are always inline, and what they leave to others comes back as a number: an
// optional that is handed back is put together in memory by parts and then read as a whole, for
// which a processor waits longer than all the reading takes.
#ifndef MMSBRIX_WSP_WAP_MMS_SHARED_H
#define MMSBRIX_WSP_WAP_MMS_SHARED_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "wsp/octets.h"

namespace mmsbrix {

inline constexpr std::uint8_t kShortIntegerBit = 0x80;  ///< set in every short-integer
inline constexpr std::uint8_t kLengthQuote = 31;        ///< a uintvar length follows
inline constexpr std::uint8_t kTextQuote = 127;         ///< precedes a text that begins above 127
inline constexpr std::uint8_t kStringQuote = 34;        ///< opens a quoted-string
inline constexpr std::size_t kMaxUintvarOctets = 5;

/// Writes `value` as a uintvar into `out` (room for five octets) and returns the octets written.
std::size_t encodeUintvar(std::uint32_t value, std::uint8_t* out) noexcept;
void writeUintvar(Writer& out, std::uint32_t value) noexcept;

/// Result of decoding a uintvar: what was accumulated, the octets read, and whether it went wrong.
struct Uintvar {
  std::uint32_t value = 0;
  std::size_t octets = 0;
  bool error = false;
};
/// Decodes a uintvar of at most five octets from `octets`; bits shifted out of 32 are lost.  An
/// unterminated one reports "decodeUintvar(): error".
Uintvar decodeUintvar(Octets octets) noexcept;
/// The same for `buffer` of which `available` octets are said to be there.  Only an octet count
/// above `available` is an error, so one octet past it may be taken, but never one past `buffer`.
Uintvar decodeUintvar(Octets buffer, std::size_t available) noexcept;
/// Decodes a uintvar at the 1-based `place` ahead of the cursor; consumes nothing.
Uintvar peekUintvar(const Reader& in, std::size_t place) noexcept;
/// Reads a uintvar of any number of octets and skips them; false when it is unterminated.
bool takeUintvar(Reader& in, std::uint32_t& value) noexcept;
/// The same; nothing when it is unterminated.  Most are one octet.
[[gnu::always_inline]] inline std::optional<std::uint32_t> readUintvar(Reader& in) noexcept {
  const auto first = in.peekOctet();
  std::uint32_t value = first.value_or(0);
  if (first && *first < 0x80) {
    in.skip(1);
  } else if (!takeUintvar(in, value)) {
    return std::nullopt;
  }
  return value;
}
/// True when `octets` begins with a terminated uintvar that has no leading zero group (0x80).
bool isUintvar(Octets octets) noexcept;

/// Writes the low seven bits of `value` as a short-integer.
void writeShortInteger(Writer& out, std::uint8_t value) noexcept;
/// Reads one octet without its high bit; nothing at the end of the input.
[[gnu::always_inline]] inline std::optional<std::uint8_t> readShortInteger(Reader& in) noexcept {
  const auto octet = in.octet();
  if (!octet) return std::nullopt;
  return static_cast<std::uint8_t>(*octet & 0x7F);
}

/// Minimal octet count of `value` in a long-integer, 1 to 8.
[[nodiscard]] std::size_t longIntegerOctets(std::uint64_t value) noexcept;
void writeLongInteger(Writer& out, std::uint64_t value) noexcept;
/// Reads short-length and that many octets (clamped to what is left); with more than eight octets
/// the earliest are shifted out.  A length of 0 gives 0.  False when the first octet is above 30.
bool takeLongInteger(Reader& in, std::uint64_t& value) noexcept;
/// The same; nothing when the first octet is above 30.
[[gnu::always_inline]] inline std::optional<std::uint64_t> readLongInteger(Reader& in) noexcept {
  std::uint64_t value = 0;
  if (!takeLongInteger(in, value)) return std::nullopt;
  return value;
}

/// Writes a short-integer below 128, else a long-integer.
void writeInteger(Writer& out, std::uint64_t value) noexcept;
[[nodiscard]] std::size_t integerSize(std::uint64_t value) noexcept;
/// Reads a short-integer or a long-integer; nothing when the next octet opens neither.
[[gnu::always_inline]] inline std::optional<std::uint64_t> readInteger(Reader& in) noexcept {
  const auto first = in.peekOctet();
  std::uint64_t value = first.value_or(0) & 0x7F;
  if (first && *first >= kShortIntegerBit) {
    in.skip(1);
  } else if (!takeLongInteger(in, value)) {
    return std::nullopt;
  }
  return value;
}

void writeValueLength(Writer& out, std::uint32_t length) noexcept;
/// Puts in, at `begin`, the value-length of all that has been written from there on.
void insertValueLength(Writer& out, std::size_t begin) noexcept;
/// Reads a value-length; nothing when the next octet opens none or its uintvar is broken.
[[gnu::always_inline]] inline std::optional<std::uint32_t> readValueLength(Reader& in) noexcept {
  const auto first = in.peekOctet();
  if (!first || *first > kLengthQuote) return std::nullopt;
  in.skip(1);
  if (*first < kLengthQuote) return *first;
  return readUintvar(in);
}

/// Writes a text-string: the quote octet when the first character is 0x80 or above, the characters,
/// a zero.  `text` ends at its first zero at the latest.
void writeTextString(Writer& out, std::string_view text) noexcept;
[[nodiscard]] std::size_t textStringSize(std::string_view text) noexcept;
/// Reads a text-string: a leading quote octet is passed over, the zero is consumed, a missing zero
/// leaves the text as far as it goes.
inline std::string_view readTextString(Reader& in) noexcept {
  if (in.peekOctet() == kTextQuote) in.skip(1);
  return in.text();
}
/// Writes the characters and a zero, without a quote octet.
void writeTokenText(Writer& out, std::string_view text) noexcept;
/// True when a zero octet is ahead, so that a text does not run out of the input.
[[nodiscard]] bool zeroAhead(const Reader& in) noexcept;
/// True for an octet that may open a text-string: 127, 0, 32 to 126, and 9, 10, 13.
[[nodiscard]] bool opensTextString(std::uint8_t octet) noexcept;

/// Octets that the next field value occupies, by the form of its first octet, without consuming it:
/// value-length forms as stated in the data, a short-integer 1, a text up to and including its zero
/// (one past the end when there is none).  May exceed what is left; 0 for a broken uintvar length
/// or at the end of the input.  [WAP-230 8.4.1.2]
[[nodiscard]] std::size_t fieldSize(const Reader& in) noexcept;

}  // namespace mmsbrix

#endif  // MMSBRIX_WSP_WAP_MMS_SHARED_H
