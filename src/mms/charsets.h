/// @file
/// Texts of messages between their own charset and UTF-8.  The message classes themselves never
/// convert.
#ifndef MMSBRIX_MMS_CHARSETS_H
#define MMSBRIX_MMS_CHARSETS_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "../export.h"

namespace mmsbrix {

/// True for well-formed UTF-8 (no overlong forms, no surrogates).  [RFC 3629]
MMSBRIX_API bool isUtf8(std::string_view octets) noexcept;
/// A text in the charset of that MIME name as UTF-8.  Without a charset the text counts as UTF-8
/// when it is well-formed, and as Latin-1 otherwise.  Nothing for an unknown charset, or octets
/// that are not valid in it.
MMSBRIX_API std::optional<std::string> toUtf8(std::string_view octets, std::string_view charset);
/// UTF-8 in the charset of that name; nothing for an unknown one, or a character it does not have.
MMSBRIX_API std::optional<std::string> fromUtf8(std::string_view utf8, std::string_view charset);
/// True for a charset that an address, a subject or a response text can name on the wire.
MMSBRIX_API bool isFieldCharset(std::string_view charset) noexcept;

}  // namespace mmsbrix

#endif  // MMSBRIX_MMS_CHARSETS_H
