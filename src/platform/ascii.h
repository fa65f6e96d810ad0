// Comparison of names without regard to case: ASCII letters fold, every other byte is itself, so
// the result is the same in every locale and on every platform.
#ifndef MMSBRIX_PLATFORM_ASCII_H
#define MMSBRIX_PLATFORM_ASCII_H

#include <cstddef>
#include <string_view>

namespace mmsbrix {

[[nodiscard]] constexpr char foldAscii(char c) noexcept {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

[[nodiscard]] constexpr bool equalsIgnoringCase(std::string_view a, std::string_view b) noexcept {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (foldAscii(a[i]) != foldAscii(b[i])) return false;
  }
  return true;
}

[[nodiscard]] constexpr bool startsWithIgnoringCase(std::string_view text,
                                                    std::string_view prefix) noexcept {
  return text.size() >= prefix.size() && equalsIgnoringCase(text.substr(0, prefix.size()), prefix);
}

}  // namespace mmsbrix

#endif  // MMSBRIX_PLATFORM_ASCII_H
