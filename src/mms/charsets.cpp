#include "mms/charsets.h"

#include "mms/charset_names.h"
#include "platform/charset.h"
#include "platform/unicode.h"

namespace mmsbrix {

bool isUtf8(std::string_view octets) noexcept {
  return platform::isUtf8(octets);
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
