// The WSP values whose numbers have names in the assignment tables.
#include "wsp/wsp_header_coding.h"

#include <string>

#include "wsp/wap_mms_shared.h"
#include "wsp/wsp_assigned_headers.h"
#include "wsp/wsp_header_reports.h"

namespace WapStack {
namespace {

using WapAssignments::AssignmentsBase;

constexpr std::string_view kAnyCharset = "*";
constexpr std::uint8_t kAnyCharsetOctet = 0x80;

const AssignmentsBase& tableOf(WapAssignments::Kind kind) noexcept {
  return *WapAssignments::getTable(kind);
}

// The code of the first row of that name.
std::optional<std::uint16_t> codeOf(WapAssignments::Kind kind, std::string_view name) noexcept {
  const std::int32_t number = WapAssignments::nameToNumber(tableOf(kind), name);
  if (WapAssignments::isUnassigned(number)) return std::nullopt;
  return static_cast<std::uint16_t>(number & 0xFFFF);
}

// Writes the name's code as a short-integer; false, with nothing written, without one that fits.
bool writeCode(WapAssignments::Kind kind, std::string_view name, Writer& out) noexcept {
  const auto code = codeOf(kind, name);
  if (!code || *code >= mmsbrix::kShortIntegerBit) return false;
  mmsbrix::writeShortInteger(out, static_cast<std::uint8_t>(*code));
  return !out.failed();
}

// Reads a short-integer into the value's text by name; a number without name is reported.
bool readCode(WapAssignments::Kind kind, Reader& in, WapBase& value) {
  const auto code = mmsbrix::readShortInteger(in);
  if (!code) return failEndOfInput();
  const char* name = WapAssignments::numberToName(tableOf(kind), *code);
  if (name == nullptr) return failUnknownValue();
  value.setText(name);
  return true;
}

bool readAnyCharset(Reader& in, WapBase& value) {
  if (in.peekOctet() != kAnyCharsetOctet) return false;
  in.skip(1);
  value.setText(kAnyCharset);
  return true;
}

}  // namespace

bool ConstrainedEncoding::isKind(const Reader& in) const {
  return ShortInteger().isKind(in) || ExtensionMedia().isKind(in);
}

bool ConstrainedEncoding::encodeToFrame(Writer& out) const {
  const auto number = parseDecimal(getText());
  if (number && *number < mmsbrix::kShortIntegerBit) return encodeAs<ShortInteger>(getText(), out);
  return encodeAs<ExtensionMedia>(getText(), out);
}

bool ConstrainedEncoding::decodeFromFrame(Reader& in) {
  return ShortInteger().isKind(in) ? decodeAs<ShortInteger>(in) : decodeAs<ExtensionMedia>(in);
}

bool ConstrainedMedia::encodeToFrame(Writer& out) const {
  return writeCode(WapAssignments::kContentTypes, getText(), out) ||
         encodeAs<ExtensionMedia>(getText(), out);
}

bool ConstrainedMedia::decodeFromFrame(Reader& in) {
  if (ShortInteger().isKind(in)) return readCode(WapAssignments::kContentTypes, in, *this);
  return decodeAs<ExtensionMedia>(in);
}

bool ConstrainedCharset::encodeToFrame(Writer& out) const {
  if (getText() == kAnyCharset) return encodeAs<ShortInteger>("0", out);
  return writeCode(WapAssignments::kCharsets, getText(), out) ||
         encodeAs<ExtensionMedia>(getText(), out);
}

bool ConstrainedCharset::decodeFromFrame(Reader& in) {
  if (readAnyCharset(in, *this)) return true;
  if (ShortInteger().isKind(in)) return readCode(WapAssignments::kCharsets, in, *this);
  return decodeAs<ExtensionMedia>(in);
}

bool FieldName::isKind(const Reader& in) const {
  return ShortInteger().isKind(in) || TokenText().isKind(in);
}

bool FieldName::encodeToFrame(Writer& out) const {
  return writeCode(WapAssignments::kHeaders, getText(), out) || encodeAs<TokenText>(getText(), out);
}

bool FieldName::decodeFromFrame(Reader& in) {
  if (ShortInteger().isKind(in)) return readCode(WapAssignments::kHeaders, in, *this);
  return decodeAs<TokenText>(in);
}

bool WellKnownCharset::isKind(const Reader& in) const {
  return UntypedValue().isKind(in);
}

bool WellKnownCharset::encodeToFrame(Writer& out) const {
  const std::string_view name = unquoted(getText());
  if (name == kAnyCharset) return encodeAs<ShortInteger>("0", out);
  if (const auto code = codeOf(WapAssignments::kCharsets, name)) {
    mmsbrix::writeInteger(out, *code);
    return !out.failed();
  }
  if (parseDecimal(name)) return encodeAs<IntegerValue>(name, out);
  return encodeAs<TextValue>(getText(), out);
}

bool WellKnownCharset::decodeFromFrame(Reader& in) {
  if (readAnyCharset(in, *this)) return true;
  UntypedValue value;
  const bool number = IntegerValue().isKind(in);
  if (!value.decodeFromFrame(in)) return false;
  const auto code = number ? parseDecimal(value.getText()) : std::nullopt;
  const char* name = code && *code <= 0xFFFF
                         ? WapAssignments::numberToName(tableOf(WapAssignments::kCharsets),
                                                        static_cast<std::uint32_t>(*code))
                         : nullptr;
  setText(name != nullptr ? std::string_view(name) : value.getText());
  return true;
}

}  // namespace WapStack
