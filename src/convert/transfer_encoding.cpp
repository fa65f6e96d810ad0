#include "convert/transfer_encoding.h"

#include <cstdint>

#include "convert/sources.h"

namespace mmsbrix {
namespace {

int base64Digit(char c) noexcept {
  if (c >= 'A' && c <= 'Z') return c - 'A';
  if (c >= 'a' && c <= 'z') return c - 'a' + 26;
  if (c >= '0' && c <= '9') return c - '0' + 52;
  return c == '+' ? 62 : c == '/' ? 63 : -1;
}

bool isBlank(char c) noexcept {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

// Octets of a soft line break behind a "=": blanks and a line end; 0 for none.
std::size_t softBreak(std::string_view text) noexcept {
  const std::size_t blanks = std::min(text.find_first_not_of(" \t"), text.size());
  text.remove_prefix(blanks);
  if (text.starts_with("\r\n")) return blanks + 2;
  return text.starts_with('\n') ? blanks + 1 : 0;
}

}  // namespace

std::optional<std::string> decodeBase64(std::string_view text) {
  std::string octets;
  octets.reserve(text.size() / 4 * 3);
  std::uint32_t bits = 0;
  int count = 0;
  bool ended = false;
  for (const char c : text) {
    if (isBlank(c)) continue;
    if (c == '=') {
      ended = true;
      continue;
    }
    const int digit = base64Digit(c);
    if (digit < 0 || ended) return std::nullopt;
    bits = bits << 6 | static_cast<std::uint32_t>(digit);
    count += 6;
    if (count >= 8) {
      count -= 8;
      octets += static_cast<char>(bits >> count & 0xFF);
    }
  }
  return octets;
}

std::string decodeQuotedPrintable(std::string_view text) {
  std::string octets;
  octets.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '=') {
      octets += text[i];
      continue;
    }
    const std::string_view behind = text.substr(i + 1);
    const int high = behind.size() >= 2 ? hexDigit(behind[0]) : -1;
    const int low = behind.size() >= 2 ? hexDigit(behind[1]) : -1;
    if (high >= 0 && low >= 0) {
      octets += static_cast<char>(high * 16 + low);
      i += 2;
    } else if (const std::size_t lineEnd = softBreak(behind.substr(0, 80)); lineEnd > 0) {
      i += lineEnd;
    } else if (!behind.empty()) {
      octets += '=';
    }
  }
  return octets;
}

}  // namespace mmsbrix
