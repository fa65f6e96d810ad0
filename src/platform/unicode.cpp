#include "platform/unicode.h"

#include <array>
#include <cstdint>
#include <cstring>

namespace mmsbrix::platform {
namespace {

// Octets 0x80 to 0x9F of Windows-1252; all others are those of Latin-1.
constexpr std::array<char16_t, 32> kWindows1252 = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

void appendUtf16le(std::string& out, char32_t unit) {
  out += static_cast<char>(unit & 0xFF);
  out += static_cast<char>(unit >> 8 & 0xFF);
}

}  // namespace

std::size_t utf8SequenceLength(std::string_view text) noexcept {
  if (text.empty()) return 0;
  const auto at = [&](std::size_t i) { return static_cast<std::uint8_t>(text[i]); };
  const std::uint8_t lead = at(0);
  if (lead < 0x80) return 1;
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return 0;
  // The second octet's range keeps out overlong forms, surrogates and what lies past U+10FFFF.
  const std::uint8_t low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
  const std::uint8_t high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
  if (at(1) < low || at(1) > high) return 0;
  for (std::size_t i = 2; i < length; ++i) {
    if ((at(i) & 0xC0) != 0x80) return 0;
  }
  return length;
}

char32_t utf8Character(std::string_view sequence) noexcept {
  const auto lead = static_cast<std::uint8_t>(sequence[0]);
  if (lead < 0x80) return lead;
  char32_t character = lead & (0x7Fu >> sequence.size());
  for (const char octet : sequence.substr(1)) {
    character = character << 6 | (static_cast<std::uint8_t>(octet) & 0x3F);
  }
  return character;
}

char32_t takeUtf8Character(std::string_view& text) noexcept {
  const std::size_t length = utf8SequenceLength(text);
  const char32_t character =
      length == 0 ? kReplacementCharacter : utf8Character(text.substr(0, length));
  text.remove_prefix(length == 0 ? 1 : length);
  return character;
}

bool isUtf8(std::string_view octets) noexcept {
  while (!octets.empty()) {
    // Most texts are ASCII, of which eight characters are passed over at once.
    std::uint64_t eight = 0;
    if (octets.size() >= sizeof eight) {
      std::memcpy(&eight, octets.data(), sizeof eight);
      if ((eight & 0x8080808080808080) == 0) {
        octets.remove_prefix(sizeof eight);
        continue;
      }
    }
    const std::size_t length = utf8SequenceLength(octets);
    if (length == 0) return false;
    octets.remove_prefix(length);
  }
  return true;
}

void appendUtf8(std::string& out, char32_t character) {
  const auto tail = [&](int shift) {
    out += static_cast<char>(0x80 | (character >> shift & 0x3F));
  };
  if (character < 0x80) {
    out += static_cast<char>(character);
  } else if (character < 0x800) {
    out += static_cast<char>(0xC0 | character >> 6);
    tail(0);
  } else if (character < 0x10000) {
    out += static_cast<char>(0xE0 | character >> 12);
    tail(6);
    tail(0);
  } else {
    out += static_cast<char>(0xF0 | character >> 18);
    tail(12);
    tail(6);
    tail(0);
  }
}

std::string utf8FromWindows1252(std::string_view octets) {
  std::string utf8;
  utf8.reserve(octets.size() + octets.size() / 4);
  for (const char c : octets) {
    const auto octet = static_cast<std::uint8_t>(c);
    appendUtf8(utf8, octet >= 0x80 && octet < 0xA0 ? kWindows1252[octet - 0x80] : octet);
  }
  return utf8;
}

std::string utf16leFromUtf8(std::string_view octets) {
  std::string utf16;
  utf16.reserve(octets.size() * 2);
  while (!octets.empty()) {
    const char32_t character = takeUtf8Character(octets);
    if (character < 0x10000) {
      appendUtf16le(utf16, character);
    } else {
      appendUtf16le(utf16, 0xD800 + ((character - 0x10000) >> 10));
      appendUtf16le(utf16, 0xDC00 + ((character - 0x10000) & 0x3FF));
    }
  }
  return utf16;
}

}  // namespace mmsbrix::platform
