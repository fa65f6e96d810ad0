// Texts of parts: what charset they are in.
#ifndef MMSBRIX_CONVERT_TEXT_PARTS_H
#define MMSBRIX_CONVERT_TEXT_PARTS_H

#include <optional>
#include <string>
#include <string_view>

namespace mmsbrix {

/// The charset that a text's octets tell of themselves: "utf-8", "iso-8859-1" or "windows-1252".
[[nodiscard]] const char* charsetOfText(std::string_view text) noexcept;
/// A text in UTF-16 with a mark as UTF-8; nothing for any other.
[[nodiscard]] std::optional<std::string> utf8FromMarkedUtf16(std::string_view text);
/// A text that claims to be in `charset`, "" for no claim, as UTF-8.  A mark of UTF-16 wins, and
/// where the claim is unknown or false the octets are taken for what they look like.
[[nodiscard]] std::string textAsUtf8(std::string_view text, std::string_view charset);

}  // namespace mmsbrix

#endif  // MMSBRIX_CONVERT_TEXT_PARTS_H
