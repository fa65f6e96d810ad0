// The WSP primitive values: each holds its value as text, the form a textual HTTP header carries,
// and converts it to and from its octets in a frame.  [WAP-230 8.4.2]
//
// Reports go to the diagnostics sink with the source name "wsp_header_coding".  A decode that asks
// for more octets than remain reports "Header decoding, end of input."; nothing here throws on bad
// input.
#ifndef MMSBRIX_WSP_WSP_HEADER_CODING_H
#define MMSBRIX_WSP_WSP_HEADER_CODING_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "wsp/octets.h"
#include "wsp/wsp_assigned_headers.h"

namespace WapStack {

using mmsbrix::Reader;
using mmsbrix::Writer;

/// A value of any kind.  Frames belong to the caller; a value keeps no reference to them.
class WapBase {
 public:
  WapBase() = default;
  explicit WapBase(std::string_view text) { assign(text); }
  virtual ~WapBase() = default;

  /// True when the octets ahead hold a value of this kind; consumes nothing.
  [[nodiscard]] virtual bool isKind(const Reader& in) const = 0;
  [[nodiscard]] virtual std::unique_ptr<WapBase> clone() const = 0;
  /// Sets the text, which ends at its first zero at the latest; it is checked when it is encoded.
  virtual void setText(std::string_view text) { assign(text); }
  [[nodiscard]] virtual const std::string& getText() const { return text_; }

  /// The value as text for logs.
  [[nodiscard]] virtual std::string print() const { return text_; }
  /// Appends the octets of the text; false, with a report and nothing appended, for a text that
  /// this kind cannot hold.
  virtual bool encodeToFrame(Writer& out) const = 0;
  /// Consumes one value and sets the text from it.  On failure, which is reported, the text stays
  /// as it was and the frame stands anywhere within the value.
  virtual bool decodeFromFrame(Reader& in) = 0;
  [[nodiscard]] virtual std::string_view typeName() const noexcept = 0;

 protected:
  WapBase(const WapBase&) = default;
  WapBase(WapBase&&) = default;
  WapBase& operator=(const WapBase&) = default;
  WapBase& operator=(WapBase&&) = default;

  /// Encodes `text` as a value of kind `Kind`.
  template <class Kind>
  static bool encodeAs(std::string_view text, Writer& out) {
    return Kind(text).encodeToFrame(out);
  }
  /// Decodes a value of kind `Kind` and takes over its text.
  template <class Kind>
  bool decodeAs(Reader& in) {
    Kind value;
    if (!value.decodeFromFrame(in)) return false;
    setText(value.getText());
    return true;
  }

 private:
  void assign(std::string_view text) { text_ = text.substr(0, text.find('\0')); }

  std::string text_;
};

/// Fills in what every kind answers in the same way: its copy and its type name.
template <class Kind, class Base = WapBase>
class WapValue : public Base {
 public:
  using Base::Base;
  [[nodiscard]] std::unique_ptr<WapBase> clone() const override {
    return std::make_unique<Kind>(static_cast<const Kind&>(*this));
  }
  [[nodiscard]] std::string_view typeName() const noexcept override { return Kind::kTypeName; }
};

// Numbers ---------------------------------------------------------------------------------------

/// An unsigned 32-bit number in groups of seven bits.  `isKind` refuses a leading zero group, which
/// decoding passes over.  [WAP-230 8.1.2]
class UintvarInteger : public WapValue<UintvarInteger> {
 public:
  static constexpr std::string_view kTypeName = "Uintvar-integer";
  using WapValue::WapValue;
  [[nodiscard]] bool isKind(const Reader& in) const override;
  bool encodeToFrame(Writer& out) const override;
  bool decodeFromFrame(Reader& in) override;
};

/// A number from 0 to 127 in one octet with the high bit set; decoding ignores that bit.
class ShortInteger : public WapValue<ShortInteger> {
 public:
  static constexpr std::string_view kTypeName = "Short-integer";
  using WapValue::WapValue;
  [[nodiscard]] bool isKind(const Reader& in) const override;
  bool encodeToFrame(Writer& out) const override;
  bool decodeFromFrame(Reader& in) override;
};

/// An unsigned 64-bit number behind its octet count.  A count of 0 decodes to the empty text.
class LongInteger : public WapValue<LongInteger> {
 public:
  static constexpr std::string_view kTypeName = "Long-integer";
  using WapValue::WapValue;
  [[nodiscard]] bool isKind(const Reader& in) const override;
  bool encodeToFrame(Writer& out) const override;
  bool decodeFromFrame(Reader& in) override;
};

/// A short-integer below 128, a long-integer otherwise.
class IntegerValue : public WapValue<IntegerValue> {
 public:
  static constexpr std::string_view kTypeName = "Integer-value";
  using WapValue::WapValue;
  [[nodiscard]] bool isKind(const Reader& in) const override;
  bool encodeToFrame(Writer& out) const override;
  bool decodeFromFrame(Reader& in) override;
};

/// The octet count of what follows: one octet up to 30, else 31 and a uintvar.
class ValueLength : public WapValue<ValueLength> {
 public:
  static constexpr std::string_view kTypeName = "Value-length";
  using WapValue::WapValue;
  [[nodiscard]] bool isKind(const Reader& in) const override;
  bool encodeToFrame(Writer& out) const override;
  bool decodeFromFrame(Reader& in) override;
};

// Texts -----------------------------------------------------------------------------------------

/// Characters and a zero; a quote octet goes ahead of a first character above 127.
class TextString : public WapValue<TextString> {
 public:
  static constexpr std::string_view kTypeName = "Text-string";
  using WapValue::WapValue;
  [[nodiscard]] bool isKind(const Reader& in) const override;
  bool encodeToFrame(Writer& out) const override;
  bool decodeFromFrame(Reader& in) override;
};

/// A double-quote character, the text and a zero; the text holds neither quote of the HTTP form.
class QuotedString : public WapValue<QuotedString> {
 public:
  static constexpr std::string_view kTypeName = "Quoted-string";
  using WapValue::WapValue;
  [[nodiscard]] bool isKind(const Reader& in) const override;
  bool encodeToFrame(Writer& out) const override;
  bool decodeFromFrame(Reader& in) override;
};

/// Token characters and a zero.  Other characters are warned about and coded all the same.  The
/// relaxed separators, for values such as media types, leave out the colon and the slash.
/// [RFC 2616 2.2]
class TokenText : public WapValue<TokenText> {
 public:
  static constexpr std::string_view kTypeName = "Token-text";
  using WapValue::WapValue;
  [[nodiscard]] bool isRelaxed() const noexcept { return relaxed_; }
  void setRelaxed(bool relaxed) noexcept { relaxed_ = relaxed; }
  /// True for a character that the strict (or relaxed) separators allow in a token.
  [[nodiscard]] static bool isTokenCharacter(char character, bool relaxed) noexcept;

  [[nodiscard]] bool isKind(const Reader& in) const override;
  bool encodeToFrame(Writer& out) const override;
  bool decodeFromFrame(Reader& in) override;

 private:
  bool relaxed_ = false;
};

/// A name without a code, coded as a relaxed token.
class ExtensionMedia : public WapValue<ExtensionMedia> {
 public:
  static constexpr std::string_view kTypeName = "Extension-media";
  using WapValue::WapValue;
  [[nodiscard]] bool isKind(const Reader& in) const override;
  bool encodeToFrame(Writer& out) const override;
  bool decodeFromFrame(Reader& in) override;
};

/// A Text-string that holds a URI.
class UriValue : public WapValue<UriValue, TextString> {
 public:
  static constexpr std::string_view kTypeName = "Uri-value";
  using WapValue::WapValue;
};

/// A single zero octet; its text is empty.
class NoValue : public WapValue<NoValue> {
 public:
  static constexpr std::string_view kTypeName = "No-value";
  using WapValue::WapValue;
  [[nodiscard]] bool isKind(const Reader& in) const override;
  bool encodeToFrame(Writer& out) const override;
  bool decodeFromFrame(Reader& in) override;
};

/// No-value for the empty text, Token-text for a token, Quoted-string for any other text.  Quotes
/// around the text, as HTTP writes them, make it a Quoted-string and are not coded.
class TextValue : public WapValue<TextValue> {
 public:
  static constexpr std::string_view kTypeName = "Text-value";
  using WapValue::WapValue;
  [[nodiscard]] bool isKind(const Reader& in) const override;
  bool encodeToFrame(Writer& out) const override;
  bool decodeFromFrame(Reader& in) override;
};

/// Integer-value for a decimal number without leading zeros, Text-value for any other text.
class UntypedValue : public WapValue<UntypedValue> {
 public:
  static constexpr std::string_view kTypeName = "Untyped-value";
  using WapValue::WapValue;
  [[nodiscard]] bool isKind(const Reader& in) const override;
  bool encodeToFrame(Writer& out) const override;
  bool decodeFromFrame(Reader& in) override;
};

// Values with assigned numbers ------------------------------------------------------------------

/// A short-integer, which stands for a number, or an Extension-media.  The kinds below give the
/// number a name; a number without one fails to decode with "unsupported or not well known Wap
/// value (unknown value)", a name without a number below 128 is coded as text.
class ConstrainedEncoding : public WapValue<ConstrainedEncoding> {
 public:
  static constexpr std::string_view kTypeName = "Constrained-encoding";
  using WapValue::WapValue;
  [[nodiscard]] bool isKind(const Reader& in) const override;
  bool encodeToFrame(Writer& out) const override;
  bool decodeFromFrame(Reader& in) override;
};

/// A Constrained-encoding of the content types.
class ConstrainedMedia : public WapValue<ConstrainedMedia, ConstrainedEncoding> {
 public:
  static constexpr std::string_view kTypeName = "Constrained-media";
  using WapValue::WapValue;
  bool encodeToFrame(Writer& out) const override;
  bool decodeFromFrame(Reader& in) override;
};

/// A Constrained-encoding of the character sets, or Any-charset, the octet 0x80, as "*".
class ConstrainedCharset : public WapValue<ConstrainedCharset, ConstrainedEncoding> {
 public:
  static constexpr std::string_view kTypeName = "Constrained-charset";
  using WapValue::WapValue;
  bool encodeToFrame(Writer& out) const override;
  bool decodeFromFrame(Reader& in) override;
};

/// The short-integer of a header field name, or a Token-text.
class FieldName : public WapValue<FieldName> {
 public:
  static constexpr std::string_view kTypeName = "Field-name";
  using WapValue::WapValue;
  [[nodiscard]] bool isKind(const Reader& in) const override;
  bool encodeToFrame(Writer& out) const override;
  bool decodeFromFrame(Reader& in) override;
};

/// The MIBenum number of a character set as an Integer-value, or Any-charset, the octet 0x80, as
/// "*".  A number without a name stands as decimal text.  Where neither fits, the value is the
/// Text-value that may replace any typed parameter value.  [WAP-230 8.4.2.4]
class WellKnownCharset : public WapValue<WellKnownCharset> {
 public:
  static constexpr std::string_view kTypeName = "Well-known-charset (Parameter)";
  using WapValue::WapValue;
  [[nodiscard]] bool isKind(const Reader& in) const override;
  bool encodeToFrame(Writer& out) const override;
  bool decodeFromFrame(Reader& in) override;
};

// Formatted values ------------------------------------------------------------------------------

/// "1.2" or "1": a short-integer of major 1 to 7 and minor 0 to 14, 15 standing for no minor; any
/// other text as a Text-string.
class VersionValue : public WapValue<VersionValue> {
 public:
  static constexpr std::string_view kTypeName = "Version-value";
  using WapValue::WapValue;
  [[nodiscard]] bool isKind(const Reader& in) const override;
  bool encodeToFrame(Writer& out) const override;
  bool decodeFromFrame(Reader& in) override;
};

/// A quality factor below 1, such as "0.5"; one that does not begin with the digit 0 is the default
/// and is encoded as nothing.  0.01 to 0.09 decode as 0.1 to 0.9.
class QValue : public WapValue<QValue> {
 public:
  static constexpr std::string_view kTypeName = "Q-value";
  using WapValue::WapValue;
  [[nodiscard]] bool isKind(const Reader& in) const override;
  bool encodeToFrame(Writer& out) const override;
  bool decodeFromFrame(Reader& in) override;
};

/// A date, decoded to the form of RFC 1123 and read from the layouts of `parseDate`: a long-integer
/// of the seconds since 1970-01-01 00:00:00 UTC.  A long-integer without octets is the empty text.
class DateValue : public WapValue<DateValue> {
 public:
  static constexpr std::string_view kTypeName = "Date-value";
  using WapValue::WapValue;
  [[nodiscard]] bool isKind(const Reader& in) const override;
  bool encodeToFrame(Writer& out) const override;
  bool decodeFromFrame(Reader& in) override;
};

}  // namespace WapStack

#endif  // MMSBRIX_WSP_WSP_HEADER_CODING_H
