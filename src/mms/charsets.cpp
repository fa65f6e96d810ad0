#include "mms/charsets.h"

#include "mms/charset_names.h"
#include "platform/charset.h"

namespace mmsbrix {
namespace {

// Octets of the well-formed sequence that `text` begins with, 0 without one.
std::size_t sequenceLength(std::string_view text) noexcept {
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

}  // namespace

bool isUtf8(std::string_view octets) noexcept {
  while (!octets.empty()) {
    const std::size_t length = sequenceLength(octets);
    if (length == 0) return false;
    octets.remove_prefix(length);
  }
  return true;
}

std::optional<std::string> toUtf8(std::string_view octets, std::string_view charset) {
  if (charset.empty()) {
    if (isUtf8(octets)) return std::string(octets);
    charset = "iso-8859-1";
  }
  if (equalsIgnoringCase(charset, "utf-8")) {
    return isUtf8(octets) ? std::optional<std::string>(octets) : std::nullopt;
  }
  return platform::convertCharset(octets, charset, "utf-8");
}

std::optional<std::string> fromUtf8(std::string_view utf8, std::string_view charset) {
  if (!isUtf8(utf8)) return std::nullopt;
  if (charset.empty() || equalsIgnoringCase(charset, "utf-8")) return std::string(utf8);
  return platform::convertCharset(utf8, "utf-8", charset);
}

bool isFieldCharset(std::string_view charset) noexcept {
  return charsetNumber(charset) != 0;
}

}  // namespace mmsbrix
