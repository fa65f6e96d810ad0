// The WSP values that are texts, and those that choose between a text and something else.
#include "wsp/wsp_header_coding.h"

#include <algorithm>
#include <string>

#include "wsp/wap_mms_shared.h"
#include "wsp/wsp_header_reports.h"

namespace WapStack {
namespace {

using mmsbrix::kShortIntegerBit;
using mmsbrix::kStringQuote;
using mmsbrix::kTextQuote;

constexpr std::string_view kSeparators = "()<>@,;:\\\"/[]?={} \t";
constexpr std::string_view kRelaxedSeparators = "()<>@,;\\\"[]?={} \t";
static_assert(kSeparators.size() == 19 && kRelaxedSeparators.size() == 17);

// A value longer than this is cut in the warning about its characters.
constexpr std::size_t kWarningCharacters = 128;

bool isToken(std::string_view text, bool relaxed) noexcept {
  return std::ranges::all_of(
      text, [=](char character) { return TokenText::isTokenCharacter(character, relaxed); });
}

TokenText relaxedToken(std::string_view text = {}) {
  TokenText token(text);
  token.setRelaxed(true);
  return token;
}

}  // namespace

bool TextString::isKind(const Reader& in) const {
  const auto first = in.peekOctet();
  return first && mmsbrix::opensTextString(*first);
}

bool TextString::encodeToFrame(Writer& out) const {
  mmsbrix::writeTextString(out, getText());
  return !out.failed();
}

bool TextString::decodeFromFrame(Reader& in) {
  const mmsbrix::Octets start = in.peek(1, 2);
  if (start.size() == 2 && start[0] == kTextQuote && start[1] < 0x80) {
    return failAssertion(*this, "quote octet ahead of a character below 128");
  }
  if (!mmsbrix::zeroAhead(in)) return failEndOfInput();
  setText(mmsbrix::readTextString(in));
  return true;
}

bool QuotedString::isKind(const Reader& in) const {
  return in.peekOctet() == kStringQuote;
}

bool QuotedString::encodeToFrame(Writer& out) const {
  out.octet(kStringQuote);
  mmsbrix::writeTokenText(out, getText());
  return !out.failed();
}

bool QuotedString::decodeFromFrame(Reader& in) {
  if (in.atEnd()) return failEndOfInput();
  if (!isKind(in)) return failAssertion(*this, "first octet is no double-quote character");
  in.skip(1);
  return decodeAs<TextString>(in);
}

bool TokenText::isTokenCharacter(char character, bool relaxed) noexcept {
  const auto octet = static_cast<unsigned char>(character);
  return octet >= 32 && octet < 127 &&
         (relaxed ? kRelaxedSeparators : kSeparators).find(character) == std::string_view::npos;
}

bool TokenText::isKind(const Reader& in) const {
  const std::string_view ahead = mmsbrix::asText(in.rest());
  const std::size_t end = ahead.find('\0');
  return end != 0 && end != std::string_view::npos && isToken(ahead.substr(0, end), relaxed_);
}

bool TokenText::encodeToFrame(Writer& out) const {
  if (mmsbrix::diagnosticsWanted() && !isToken(getText(), relaxed_)) {
    const std::string warning =
        "Invalid characters in token-text \"" + getText().substr(0, kWarningCharacters) + '"';
    for (const char character : getText()) {
      if (!isTokenCharacter(character, relaxed_))
        MMSBRIX_REPORT_WARNING(kHeaderCodingSource, warning);
    }
  }
  mmsbrix::writeTokenText(out, getText());
  return !out.failed();
}

bool TokenText::decodeFromFrame(Reader& in) {
  if (!mmsbrix::zeroAhead(in)) return failEndOfInput();
  const std::string_view text = in.text();
  if (mmsbrix::diagnosticsWanted() && !isToken(text, relaxed_)) {
    MMSBRIX_REPORT_WARNING(kHeaderCodingSource,
                           std::string("Invalid chars in Token-text \"").append(text) +
                               "\" but decoding still succeeded.");
  }
  setText(text);
  return true;
}

bool ExtensionMedia::isKind(const Reader& in) const {
  return relaxedToken().isKind(in);
}

bool ExtensionMedia::encodeToFrame(Writer& out) const {
  return relaxedToken(getText()).encodeToFrame(out);
}

bool ExtensionMedia::decodeFromFrame(Reader& in) {
  TokenText token = relaxedToken();
  if (!token.decodeFromFrame(in)) return false;
  setText(token.getText());
  return true;
}

bool NoValue::isKind(const Reader& in) const {
  return in.peekOctet() == 0;
}

bool NoValue::encodeToFrame(Writer& out) const {
  out.octet(0);
  return !out.failed();
}

bool NoValue::decodeFromFrame(Reader& in) {
  const auto octet = in.octet();
  if (!octet) return failEndOfInput();
  if (*octet != 0) return failAssertion(*this, "octet is not zero");
  setText({});
  return true;
}

bool TextValue::isKind(const Reader& in) const {
  return NoValue().isKind(in) || TokenText().isKind(in) || QuotedString().isKind(in);
}

bool TextValue::encodeToFrame(Writer& out) const {
  const std::string& text = getText();
  if (text.empty()) return encodeAs<NoValue>({}, out);
  if (isToken(text, false)) return encodeAs<TokenText>(text, out);
  const bool quoted = text.size() >= 2 && text.starts_with('"') && text.ends_with('"');
  return encodeAs<QuotedString>(quoted ? unquoted(text) : text, out);
}

bool TextValue::decodeFromFrame(Reader& in) {
  const auto first = in.peekOctet();
  if (!first) return failEndOfInput();
  if (*first == 0) return decodeAs<NoValue>(in);
  if (*first == kStringQuote) return decodeAs<QuotedString>(in);
  if (*first < ' ' || *first >= kShortIntegerBit) {
    return failValue(*this, "first octet opens no text");
  }
  return decodeAs<TokenText>(in);
}

bool UntypedValue::isKind(const Reader& in) const {
  return IntegerValue().isKind(in) || TextValue().isKind(in);
}

bool UntypedValue::encodeToFrame(Writer& out) const {
  const auto number = parseDecimal(getText());
  if (number && std::to_string(*number) == getText()) return encodeAs<IntegerValue>(getText(), out);
  return encodeAs<TextValue>(getText(), out);
}

bool UntypedValue::decodeFromFrame(Reader& in) {
  // A zero octet could open a long-integer too; it is No-value.
  const bool number = IntegerValue().isKind(in) && !NoValue().isKind(in);
  return number ? decodeAs<IntegerValue>(in) : decodeAs<TextValue>(in);
}

}  // namespace WapStack
