#include "convert/text_parts.h"

#include <algorithm>

#include "mms/charsets.h"
#include "platform/charset.h"
#include "platform/unicode.h"

namespace mmsbrix {

const char* charsetOfText(std::string_view text) noexcept {
  if (platform::isUtf8(text)) return "utf-8";
  // What only Windows-1252 has lies where Latin-1 has control characters.
  const bool plainLatin = std::none_of(text.begin(), text.end(), [](char c) {
    return static_cast<unsigned char>(c) >= 0x80 && static_cast<unsigned char>(c) < 0xA0;
  });
  return plainLatin ? "iso-8859-1" : "windows-1252";
}

std::optional<std::string> utf8FromMarkedUtf16(std::string_view text) {
  const bool lowFirst = text.starts_with("\xFF\xFE");
  if (!lowFirst && !text.starts_with("\xFE\xFF")) return std::nullopt;
  return platform::convertCharset(text.substr(2), lowFirst ? "utf-16le" : "utf-16be", "utf-8");
}

std::string textAsUtf8(std::string_view text, std::string_view charset) {
  if (auto converted = utf8FromMarkedUtf16(text)) return *std::move(converted);
  if (!charset.empty()) {
    if (auto converted = toUtf8(text, charset)) return *std::move(converted);
  }
  return platform::isUtf8(text) ? std::string(text) : platform::utf8FromWindows1252(text);
}

}  // namespace mmsbrix
