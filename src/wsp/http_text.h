// The text of HTTP header values taken apart and put together: tokens, quoted strings, parameters,
// comma lists, base64.  Views handed out point into the text given.
// [RFC 2616 2.1, 2.2, 3.6; RFC 2045 6.8]
#ifndef MMSBRIX_WSP_HTTP_TEXT_H
#define MMSBRIX_WSP_HTTP_TEXT_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "wsp/octets.h"

namespace mmsbrix {

/// True for a text of token characters only, also for the empty one.
[[nodiscard]] bool isToken(std::string_view text) noexcept;
/// True for characters that a header value may hold: no controls, save the tab.
[[nodiscard]] bool isHeaderText(std::string_view text) noexcept;
/// The text without blanks at its ends.
[[nodiscard]] std::string_view trimmed(std::string_view text) noexcept;
/// The number of a decimal text that is written as numbers are printed: no sign, blank or leading
/// zero.
[[nodiscard]] std::optional<std::uint64_t> plainDecimal(std::string_view text) noexcept;

/// The characters that the inside of a quoted string stands for.
[[nodiscard]] std::string unescaped(std::string_view inside);
/// `text` as a quoted string, quotation marks included.
[[nodiscard]] std::string quoted(std::string_view text);
/// The inside of a quoted string with its quotation marks; one that stands unescaped inside, or a
/// backslash that escapes nothing, is escaped, so that the result is a quoted string in any case.
[[nodiscard]] std::string quotedAsIs(std::string_view inside);
/// `text` itself where it is a token, else as a quoted string.
[[nodiscard]] std::string tokenOrQuoted(std::string_view text);

/// A parameter as text writes it: `name`, `name=value` or `name="value"`.
struct TextParameter {
  std::string_view name;
  std::string_view value;  ///< what is inside the quotation marks, escapes kept, or the bare value
  bool hasValue = false;
  bool isQuoted = false;

  /// The value without escapes.
  [[nodiscard]] std::string plainValue() const;
};

/// Takes words and parameters from the front of a text.
class TextScanner {
 public:
  explicit TextScanner(std::string_view text) noexcept : rest_(text) { skipBlanks(); }

  [[nodiscard]] bool atEnd() const noexcept { return rest_.empty(); }
  [[nodiscard]] std::string_view rest() const noexcept { return rest_; }
  /// Takes `character` and the blanks behind it.
  bool take(char character) noexcept;
  /// Characters up to a blank or one of `stops`, and the blanks behind them; may be empty.
  std::string_view word(std::string_view stops = {}) noexcept;
  /// The inside of a quoted string, escapes kept, and the blanks behind it; nothing when no whole
  /// quoted string is ahead.
  std::optional<std::string_view> quotedString() noexcept;
  /// A decimal number and the blanks behind it.
  std::optional<std::uint64_t> number() noexcept;
  /// A parameter that ends at `separator` or at the end of the text; nothing when there is none.  A
  /// bare value may hold what is no token character, save blanks, quotation marks and separators.
  std::optional<TextParameter> parameter(char separator) noexcept;

 private:
  void skipBlanks() noexcept;

  std::string_view rest_;
};

/// The parameters of `text`, separated by `separator`; nothing when a part of it is none.
[[nodiscard]] std::optional<std::vector<TextParameter>> splitParameters(std::string_view text,
                                                                        char separator);

/// A value with parameters, "head; name=value".
struct ParameterisedText {
  std::string_view head;
  std::vector<TextParameter> parameters;
};
[[nodiscard]] std::optional<ParameterisedText> splitParameterised(std::string_view text);

/// The elements of a comma list, without the empty ones.  Commas in quoted strings and in comments
/// separate nothing.
[[nodiscard]] std::vector<std::string_view> splitList(std::string_view text);
/// The same for challenges, whose own parameters are separated by commas: an element that does not
/// begin with a scheme, alone or with a blank behind it, belongs to the one before.
[[nodiscard]] std::vector<std::string_view> splitChallenges(std::string_view text);

[[nodiscard]] std::string toBase64(Octets octets);
/// The octets of a base64 text with its padding; nothing for a text that `toBase64` never gives.
[[nodiscard]] std::optional<std::string> fromBase64(std::string_view text);

}  // namespace mmsbrix

#endif  // MMSBRIX_WSP_HTTP_TEXT_H
