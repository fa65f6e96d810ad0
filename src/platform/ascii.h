// Comparison of names without regard to case: ASCII letters fold, every other byte is itself, so
// the result is the same in every locale and on every platform.
#ifndef MMSBRIX_PLATFORM_ASCII_H
#define MMSBRIX_PLATFORM_ASCII_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <type_traits>

namespace mmsbrix {

[[nodiscard]] constexpr char foldAscii(char c) noexcept {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

/// `foldAscii` of eight characters at once: each octet has a carry of its own to its high bit.
[[nodiscard]] constexpr std::uint64_t foldEight(std::uint64_t eight) noexcept {
  constexpr std::uint64_t kEach = 0x0101010101010101;
  const std::uint64_t low = eight & 0x7F * kEach;
  const std::uint64_t fromA = low + (0x80 - 'A') * kEach;
  const std::uint64_t beyondZ = low + (0x7F - 'Z') * kEach;
  const std::uint64_t capitals = fromA & ~beyondZ & ~eight & 0x80 * kEach;
  return eight | capitals >> 2;
}

/// Names are compared at every turn (header lists, tables, attributes), most of them of eight
/// characters and more: by eights this takes a third of the instructions.
[[nodiscard]] constexpr bool equalsIgnoringCase(std::string_view a, std::string_view b) noexcept {
  if (a.size() != b.size()) return false;
  std::size_t i = 0;
  if (!std::is_constant_evaluated()) {
    for (; a.size() - i >= sizeof(std::uint64_t); i += sizeof(std::uint64_t)) {
      std::uint64_t ofA;
      std::uint64_t ofB;
      std::memcpy(&ofA, a.data() + i, sizeof ofA);
      std::memcpy(&ofB, b.data() + i, sizeof ofB);
      if (ofA != ofB && foldEight(ofA) != foldEight(ofB)) return false;
    }
  }
  for (; i < a.size(); ++i) {
    if (a[i] != b[i] && foldAscii(a[i]) != foldAscii(b[i])) return false;
  }
  return true;
}

[[nodiscard]] constexpr bool startsWithIgnoringCase(std::string_view text,
                                                    std::string_view prefix) noexcept {
  return text.size() >= prefix.size() && equalsIgnoringCase(text.substr(0, prefix.size()), prefix);
}

}  // namespace mmsbrix

#endif  // MMSBRIX_PLATFORM_ASCII_H
