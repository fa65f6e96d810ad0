// What the value formats of the headers have in common: values behind a length, texts, names with
// numbers, qualities, versions and parameters.
#ifndef MMSBRIX_WSP_HEADER_FORMAT_TOOLS_H
#define MMSBRIX_WSP_HEADER_FORMAT_TOOLS_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "wsp/header_formats.h"
#include "wsp/http_text.h"
#include "wsp/wap_mms_shared.h"

namespace WapStack {

/// True when all has been read, and nothing beyond.
[[nodiscard]] inline bool isWhole(const Reader& in) noexcept {
  return in.atEnd() && !in.failed();
}
/// True when a short-integer is ahead.
[[nodiscard]] inline bool shortAhead(const Reader& in) noexcept {
  return in.peekOctet() >= mmsbrix::kShortIntegerBit;
}
/// True when characters are ahead; not for a zero octet, which is no value.
[[nodiscard]] inline bool textAhead(const Reader& in) noexcept {
  return in.peekOctet() > mmsbrix::kLengthQuote && !shortAhead(in);
}
/// Moves `in` inside the value-length ahead; false when there is none or it is not all of `in`.
[[nodiscard]] bool enter(Reader& in) noexcept;
/// Reads a text-string, also an empty one; nothing when none with its zero is ahead, or one with a
/// quote octet that quotes nothing, which is reported.
[[nodiscard]] std::optional<std::string_view> takeText(Reader& in);
/// True for a text that `takeText` reads back as it is.
[[nodiscard]] bool fitsTextString(std::string_view text) noexcept;
/// The text without the pairs of quotation marks around it.
[[nodiscard]] std::string_view withoutMarks(std::string_view text) noexcept;
/// Writes what `body` writes behind its length; false when `body` says so.
template <class Body>
bool writeInside(Writer& out, Body&& body) {
  const std::size_t begin = out.size();
  if (!body()) return false;
  mmsbrix::insertValueLength(out, begin);
  return !out.failed();
}
/// Writes a token; false for a text that is none.
bool writeToken(std::string_view token, Writer& out);

/// "0x4B", the name of something that has a number only.
[[nodiscard]] std::string numberName(std::uint32_t number);
/// The number in such a name, written exactly like that.
[[nodiscard]] std::optional<std::uint32_t> numberOfName(std::string_view name) noexcept;

/// Names with numbers: a table of assignments and what a header adds to it.
struct Vocabulary {
  WapAssignments::Kind table;
  std::uint32_t bit = 0;  ///< what the table's codes have more than the numbers
  std::optional<std::uint32_t> any = std::nullopt;  ///< the number of "*"
  std::uint32_t first = 0;                          ///< numbers below this one are not the header's
  bool decimals = false;  ///< true where a number without a name stands in decimal

  [[nodiscard]] std::optional<std::uint32_t> numberOf(std::string_view name) const noexcept;
  /// Sets `name`; false for a number that has none.
  bool nameOf(std::uint64_t number, std::string& name) const;
};
/// Reads a number or a text as a name of the vocabulary.
bool readName(Reader& in, const Vocabulary& names, std::string& text);

/// How the number of a media type may stand: in any octets, or in a constrained-encoding, which has
/// short-integers only.
enum class MediaNumbers { all, constrained };
/// Writes a media type as its number up to `version`, else as text; false for a text that is none.
/// [WAP-230 8.4.2.7, 8.4.2.24]
bool writeMediaType(std::string_view mediaType, MediaNumbers numbers, Version version, Writer& out);

/// True for the text of a quality below 1 that the wire can hold; of 1, which is not sent.
[[nodiscard]] bool isQuality(std::string_view text) noexcept;
[[nodiscard]] bool isFullQuality(std::string_view text) noexcept;

/// Reads a version-value.
bool readVersion(Reader& in, std::string& text);
/// Writes a version-value that reads back as the same text.
void writeVersion(std::string_view text, Writer& out);

/// Writes a name of a header, as its number up to `version` or as a token.
bool writeFieldName(std::string_view name, Version version, Writer& out);

/// Writes a parameter: a well-known one by number as far as `version` goes, any other one, and one
/// whose value its type cannot hold in any form, by name.  A quality of 1 is not written.
bool writeParameter(const mmsbrix::TextParameter& parameter, Version version, Writer& out);
/// Writes a parameter by name, whatever its name.
bool writeNamedParameter(const mmsbrix::TextParameter& parameter, Writer& out);
/// Reads one parameter and adds it to a text; false when none can be read.
bool readParameter(Reader& in, std::string& text);
/// Reads parameters to the end and adds each to a text behind `separator`; false when one cannot be
/// read.
bool readParameters(Reader& in, std::string_view separator, std::string& text);

}  // namespace WapStack

#endif  // MMSBRIX_WSP_HEADER_FORMAT_TOOLS_H
