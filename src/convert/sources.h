// What the "src" of a media element may say.
#ifndef MMSBRIX_CONVERT_SOURCES_H
#define MMSBRIX_CONVERT_SOURCES_H

#include <string>
#include <string_view>

namespace mmsbrix {

/// True for a URL that names a body part by its Content-ID.  [RFC 2392]
[[nodiscard]] bool isCidUrl(std::string_view source) noexcept;
/// What follows "cid:"; all of it where there is none.
[[nodiscard]] std::string_view withoutCid(std::string_view source) noexcept;
/// True for a text that begins with a URL's scheme.  A single letter is a drive.  [RFC 3986 3.1]
[[nodiscard]] bool hasScheme(std::string_view source) noexcept;
/// "%41" as "A"; what is no escape stays.  [RFC 3986 2.1]
[[nodiscard]] std::string percentDecoded(std::string_view text);
/// The path of a file URL of this machine; "" for anything else.  [RFC 8089]
[[nodiscard]] std::string pathOfFileUrl(std::string_view source);
/// The value of a hexadecimal digit, -1 for none.
[[nodiscard]] int hexDigit(char c) noexcept;

}  // namespace mmsbrix

#endif  // MMSBRIX_CONVERT_SOURCES_H
