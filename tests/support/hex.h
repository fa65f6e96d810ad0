// Hex helpers for test vectors: octets are written as in dissections, "8C 80 89 01 81".
#ifndef MMSBRIX_TESTS_SUPPORT_HEX_H
#define MMSBRIX_TESTS_SUPPORT_HEX_H

#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace mmsbrix::test {

/// Octets of a hex text.  Blanks are free; a text in single quotes stands for its characters.
inline std::vector<std::uint8_t> hex(std::string_view text) {
  const auto digit = [](char c) -> int {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    throw std::invalid_argument("bad hex digit in a test vector");
  };
  std::vector<std::uint8_t> octets;
  for (std::size_t i = 0; i < text.size();) {
    if (text[i] == ' ' || text[i] == '\n') {
      ++i;
    } else if (text[i] == '\'') {
      const std::size_t end = text.find('\'', i + 1);
      if (end == std::string_view::npos) throw std::invalid_argument("open quote in a test vector");
      for (++i; i < end; ++i) octets.push_back(static_cast<std::uint8_t>(text[i]));
      ++i;
    } else {
      octets.push_back(static_cast<std::uint8_t>(digit(text[i]) * 16 + digit(text.at(i + 1))));
      i += 2;
    }
  }
  return octets;
}

/// "8C 80 89" for the octets.
inline std::string toHex(std::span<const std::uint8_t> octets) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (const std::uint8_t octet : octets) {
    if (!text.empty()) text += ' ';
    text += kDigits[octet >> 4];
    text += kDigits[octet & 15];
  }
  return text;
}

}  // namespace mmsbrix::test

#endif  // MMSBRIX_TESTS_SUPPORT_HEX_H
