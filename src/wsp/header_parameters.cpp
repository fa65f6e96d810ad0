// The parameters of header values, between text and octets.  [WAP-230 8.4.2.4, Appendix A, table
// 38]
#include "platform/ascii.h"
#include "wsp/content_type_reader.h"
#include "wsp/header_format_tools.h"
#include "wsp/wsp_assigned_names.h"
#include "wsp/wsp_date.h"
#include "wsp/wsp_header_coding.h"

namespace WapStack {
namespace {

using mmsbrix::Parameter;
using mmsbrix::ParameterForm;
using mmsbrix::ParameterKind;
using mmsbrix::TextParameter;

constexpr std::uint32_t kIntegerType = 0x03;
constexpr Vocabulary kCharsetNames{.table = WapAssignments::kCharsets, .any = 0, .decimals = true};

// The number that a parameter is written by.
std::optional<std::uint32_t> numberOf(const TextParameter& parameter, Version version) noexcept {
  if (mmsbrix::equalsIgnoringCase(parameter.name, "type") &&
      mmsbrix::plainDecimal(parameter.value)) {
    return kIntegerType;  // the other parameter of this name holds a media type
  }
  const WapAssignments::StringInt* chosen = nullptr;
  for (const WapAssignments::StringInt& row : WapAssignments::kParameterRows) {
    if (row.version() > version || row.code() == kIntegerType) continue;
    if (!mmsbrix::equalsIgnoringCase(row.name, parameter.name)) continue;
    if (chosen == nullptr || row.version() > chosen->version()) chosen = &row;
  }
  if (chosen != nullptr) return chosen->code();
  const auto number = numberOfName(parameter.name);
  if (!number) return std::nullopt;
  const char* assigned =
      WapAssignments::numberToName(*WapAssignments::getTable(WapAssignments::kParameters), *number);
  return assigned == nullptr ? number : std::nullopt;
}

// No-value, token-text or quoted-string: fits in the place of any value.
void writeTextValue(const TextParameter& parameter, Writer& out) {
  const bool isBareText = !parameter.isQuoted && !mmsbrix::isToken(parameter.value);
  if (parameter.hasValue && isBareText) {
    // In a quoted-string a backslash is an escape, which it is not outside of one.
    std::string marked = mmsbrix::quoted(parameter.value);
    marked.pop_back();
    mmsbrix::writeTokenText(out, marked);
    return;
  }
  if (parameter.isQuoted) out.octet(mmsbrix::kStringQuote);
  mmsbrix::writeTokenText(out, parameter.value);
}

bool writeNumber(std::uint64_t limit, const TextParameter& parameter, Writer& out) {
  const auto number = mmsbrix::plainDecimal(parameter.value);
  if (parameter.isQuoted || !number || *number > limit) return false;
  mmsbrix::writeInteger(out, *number);
  return true;
}

// Writes the typed form of a value; false, with nothing written, when the text has none.
bool writeTyped(ParameterKind kind, const TextParameter& parameter, Version version, Writer& out) {
  const std::string plain = parameter.plainValue();
  // An empty text reads as no value, and one that begins with a quotation mark as a quoted-string.
  const std::uint8_t first = plain.empty() ? 0 : static_cast<std::uint8_t>(plain.front());
  const bool isText = first > ' ' && first != mmsbrix::kStringQuote;
  switch (kind) {
    case ParameterKind::charset:
      if (const auto number = kCharsetNames.numberOf(plain)) {
        mmsbrix::writeInteger(out, *number);
        return true;
      }
      return false;
    case ParameterKind::version:
      // Any other text would read back as a quoted one.
      if (parameter.isQuoted || !isText || !mmsbrix::isToken(plain)) return false;
      writeVersion(plain, out);
      return true;
    case ParameterKind::untyped:
    case ParameterKind::integer:
      return writeNumber(~std::uint64_t{0}, parameter, out);
    case ParameterKind::shortInteger:
      return writeNumber(0x7F, parameter, out);
    case ParameterKind::media:
      return isText && writeMediaType(plain, MediaNumbers::constrained, version, out);
    case ParameterKind::text:
      if (isText) mmsbrix::writeTextString(out, plain);
      return isText;
    case ParameterKind::fieldName:
      return !parameter.isQuoted && writeFieldName(plain, version, out);
    case ParameterKind::date:
      if (const auto seconds = parseDate(plain)) {
        mmsbrix::writeLongInteger(out, *seconds);
        return true;
      }
      return false;
    case ParameterKind::qValue:
    case ParameterKind::textValue:
    case ParameterKind::noValue:
      break;
  }
  return false;
}

// What is inside a text that a quotation mark opens, without a closing one that is not escaped.
std::string_view insideQuotes(std::string_view text) noexcept {
  text.remove_prefix(1);
  if (!text.ends_with('"')) return text;
  const std::string_view before = text.substr(0, text.size() - 1);
  const std::size_t escapes = before.size() - (before.find_last_not_of('\\') + 1);
  return escapes % 2 == 0 ? before : text;
}

// Adds a parameter to a text, behind `separator`.
void appendParameter(std::string& text, std::string_view separator, const Parameter& parameter) {
  text += separator;
  if (parameter.name.empty() && parameter.code >= 0) {
    text += numberName(static_cast<std::uint32_t>(parameter.code));
  } else {
    text += parameter.name;
  }
  switch (parameter.form) {
    case ParameterForm::missing:
    case ParameterForm::noValue:
      return;
    case ParameterForm::quoted:
      text.append("=").append(mmsbrix::quotedAsIs(parameter.value));
      return;
    case ParameterForm::text:
    case ParameterForm::binary:
      break;
  }
  // Tolerance: a quoted-string where the standard has a text-string, as some phones write names.
  text.append("=").append(parameter.value.starts_with('"')
                              ? mmsbrix::quotedAsIs(insideQuotes(parameter.value))
                              : mmsbrix::tokenOrQuoted(parameter.value));
}

// Reads the next parameter; false at the end or when it cannot be read.
bool readNext(Reader& in, Parameter& parameter) {
  if (!mmsbrix::readParameter(in, mmsbrix::mediaTypeName, parameter) || in.failed()) return false;
  return parameter.code >= 0 || (!parameter.name.empty() && mmsbrix::isToken(parameter.name));
}

}  // namespace

bool writeNamedParameter(const TextParameter& parameter, Writer& out) {
  if (!writeToken(parameter.name, out)) return false;
  if (!writeNumber(~std::uint64_t{0}, parameter, out)) writeTextValue(parameter, out);
  return !out.failed();
}

bool writeParameter(const TextParameter& parameter, Version version, Writer& out) {
  if (!mmsbrix::isHeaderText(parameter.value)) return false;
  const auto number = numberOf(parameter, version);
  if (!number) return writeNamedParameter(parameter, out);
  const ParameterKind kind = mmsbrix::parameterKind(static_cast<int>(*number));
  if (kind == ParameterKind::qValue) {
    // A quality is a number or nothing, so one that is none goes out by name.
    if (isFullQuality(parameter.value)) return !out.failed();
    if (!isQuality(parameter.value)) return writeNamedParameter(parameter, out);
    mmsbrix::writeInteger(out, *number);
    return QValue(parameter.value).encodeToFrame(out);
  }
  mmsbrix::writeInteger(out, *number);
  if (!parameter.hasValue || !writeTyped(kind, parameter, version, out)) {
    writeTextValue(parameter, out);
  }
  return !out.failed();
}

bool readParameter(Reader& in, std::string& text) {
  Parameter parameter;
  if (!readNext(in, parameter)) return false;
  appendParameter(text, "", parameter);
  return true;
}

bool readParameters(Reader& in, std::string_view separator, std::string& text) {
  Parameter parameter;
  while (readNext(in, parameter)) appendParameter(text, separator, parameter);
  return isWhole(in);
}

}  // namespace WapStack
