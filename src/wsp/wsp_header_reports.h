// What the sources of the WSP values share: their reports, each of which gives the line of its
// caller, and the reading of decimal texts.
#ifndef MMSBRIX_WSP_WSP_HEADER_REPORTS_H
#define MMSBRIX_WSP_WSP_HEADER_REPORTS_H

#include <charconv>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include "wsp/report.h"
#include "wsp/wsp_header_coding.h"

namespace WapStack {

inline constexpr std::string_view kHeaderCodingSource = "wsp_header_coding";

/// A line in a source.  As a default argument `currentLine()` is the line of the caller, on every
/// compiler in use; not all of them have std::source_location.
using Line = unsigned;
constexpr Line currentLine(Line line = __builtin_LINE()) noexcept {
  return line;
}

inline void reportHere(mmsbrix::DiagnosticKind kind, std::string_view text, Line at) noexcept {
  mmsbrix::report(kind, kHeaderCodingSource, at, text);
}
/// Reports "<type name>: <what>".
inline void reportValue(mmsbrix::DiagnosticKind kind, const WapBase& value, std::string_view what,
                        Line at) {
  if (!mmsbrix::diagnosticsWanted()) return;
  reportHere(kind, std::string(value.typeName()).append(": ").append(what), at);
}

inline bool failEndOfInput(Line at = currentLine()) noexcept {
  reportHere(mmsbrix::DiagnosticKind::error, "Header decoding, end of input.", at);
  return false;
}
inline bool failUnknownValue(Line at = currentLine()) noexcept {
  reportHere(mmsbrix::DiagnosticKind::error,
             "unsupported or not well known Wap value (unknown value)", at);
  return false;
}
inline bool failValue(const WapBase& value, std::string_view what, Line at = currentLine()) {
  reportValue(mmsbrix::DiagnosticKind::error, value, what, at);
  return false;
}
inline bool failAssertion(const WapBase& value, std::string_view what, Line at = currentLine()) {
  reportValue(mmsbrix::DiagnosticKind::assertion, value, what, at);
  return false;
}
inline void warnValue(const WapBase& value, std::string_view what, Line at = currentLine()) {
  reportValue(mmsbrix::DiagnosticKind::warning, value, what, at);
}

/// The number of a text of digits within blanks; nothing for any other text or above 64 bits.
inline std::optional<std::uint64_t> parseDecimal(std::string_view text) noexcept {
  constexpr std::string_view kBlanks = " \t";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return std::nullopt;
  text = text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
  std::uint64_t number = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc{} || stop != end) return std::nullopt;
  return number;
}

/// The text without a double-quote character at its start and one at its end.
inline std::string_view unquoted(std::string_view text) noexcept {
  if (text.starts_with('"')) text.remove_prefix(1);
  if (text.ends_with('"')) text.remove_suffix(1);
  return text;
}

}  // namespace WapStack

#endif  // MMSBRIX_WSP_WSP_HEADER_REPORTS_H
