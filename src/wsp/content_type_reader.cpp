#include "wsp/content_type_reader.h"

#include <array>

#include "wsp/header_table.h"
#include "wsp/header_walker.h"
#include "wsp/wap_mms_shared.h"
#include "wsp/wsp_assigned_headers.h"
#include "wsp/wsp_assigned_names.h"
#include "wsp/wsp_header_coding.h"

namespace mmsbrix {
namespace {

using namespace WapAssignments;

constexpr std::uint32_t kFirstRegisteredType = 0x201;

// Indexed by number.
constexpr auto kParameterKinds = std::to_array<ParameterKind>({
    ParameterKind::qValue,        // 00 q
    ParameterKind::charset,       // 01 Charset
    ParameterKind::version,       // 02 Level
    ParameterKind::integer,       // 03 Type
    ParameterKind::untyped,       // 04
    ParameterKind::text,          // 05 Name
    ParameterKind::text,          // 06 Filename
    ParameterKind::fieldName,     // 07 Differences
    ParameterKind::shortInteger,  // 08 Padding
    ParameterKind::media,         // 09 Type of multipart/related
    ParameterKind::text,          // 0A Start
    ParameterKind::text,          // 0B Start-info
    ParameterKind::text,          // 0C Comment
    ParameterKind::text,          // 0D Domain
    ParameterKind::integer,       // 0E Max-Age
    ParameterKind::text,          // 0F Path
    ParameterKind::noValue,       // 10 Secure
    ParameterKind::shortInteger,  // 11 SEC
    ParameterKind::textValue,     // 12 MAC
    ParameterKind::date,          // 13 Creation-date
    ParameterKind::date,          // 14 Modification-date
    ParameterKind::date,          // 15 Read-date
    ParameterKind::integer,       // 16 Size
    ParameterKind::textValue,     // 17 Name
    ParameterKind::textValue,     // 18 Filename
    ParameterKind::textValue,     // 19 Start
    ParameterKind::textValue,     // 1A Start-info
    ParameterKind::textValue,     // 1B Comment
    ParameterKind::textValue,     // 1C Domain
    ParameterKind::textValue,     // 1D Path
});
static_assert(kParameterKinds.size() == 0x1E);

// Likewise; the first row of a number names it.
constexpr auto kParameterNames = [] {
  std::array<std::string_view, kParameterKinds.size()> names{};
  for (const StringInt& row : kParameterRows) {
    if (names[row.code()].empty()) names[row.code()] = row.name;
  }
  return names;
}();

// The name of a number in a table, empty for none.
std::string_view nameIn(Kind kind, std::uint64_t number) noexcept {
  return number <= 0xFFFF ? nameOfNumber(*getTable(kind), static_cast<std::uint32_t>(number))
                          : std::string_view();
}

// Reads with one of the text-centred value classes; a value it refuses is left out.
template <class Value>
bool readThrough(Reader& in, Parameter& parameter) {
  Value value;
  if (!value.decodeFromFrame(in)) return false;
  parameter.made = value.getText();
  parameter.value = parameter.made;
  return true;
}

// Where a quoted-string may stand its opening quote is dropped; in a text-string it is a character.
void readText(Reader& in, ParameterKind kind, Parameter& parameter) {
  const auto first = in.peekOctet();
  const bool mayBeQuoted =
      kind != ParameterKind::text && kind != ParameterKind::media && kind != ParameterKind::version;
  parameter.form = first == 0 ? ParameterForm::noValue : ParameterForm::text;
  if (mayBeQuoted && first == kStringQuote) {
    in.skip(1);
    parameter.form = ParameterForm::quoted;
  }
  parameter.value = readTextString(in);
}

bool readNumber(Reader& in, MediaTypeNames mediaTypes, ParameterKind kind, Parameter& parameter) {
  const bool anyCharset = kind == ParameterKind::charset && in.peekOctet() == kAnyCharsetOctet;
  const auto number = readInteger(in);
  if (!number) return false;
  std::string_view name;
  if (anyCharset) {
    name = "*";
  } else if (kind == ParameterKind::charset) {
    name = nameIn(kCharsets, *number);
  } else if (kind == ParameterKind::media) {
    name = mediaTypes(*number);
  } else if (kind == ParameterKind::fieldName) {
    const WapStack::HeaderRow* row = *number < kShortIntegerBit
                                         ? WapStack::findHeader(static_cast<std::size_t>(*number))
                                         : nullptr;
    if (row != nullptr) name = row->name;
  }
  if (name.empty()) {
    parameter.made = std::to_string(*number);
    parameter.value = parameter.made;
  } else {
    parameter.value = name;
    parameter.valueIsStatic = true;
  }
  return true;
}

bool readValue(Reader& in, MediaTypeNames mediaTypes, Parameter& parameter) {
  const ParameterKind kind = parameterKind(parameter.code);
  const ValueForm form = formOf(in.rest());
  parameter.form = ParameterForm::binary;
  if (kind == ParameterKind::qValue) {
    return readThrough<WapStack::QValue>(in, parameter);
  }
  if (form == ValueForm::text) {
    readText(in, kind, parameter);
    return true;
  }
  if (kind == ParameterKind::version && form == ValueForm::shortInteger) {
    return readThrough<WapStack::VersionValue>(in, parameter);
  }
  if (kind == ParameterKind::date) {
    return readThrough<WapStack::DateValue>(in, parameter);
  }
  return readNumber(in, mediaTypes, kind, parameter);
}

}  // namespace

ParameterKind parameterKind(int code) noexcept {
  if (code < 0 || static_cast<std::size_t>(code) >= kParameterKinds.size()) {
    return ParameterKind::untyped;
  }
  return kParameterKinds[static_cast<std::size_t>(code)];
}

std::string_view mediaTypeName(std::uint64_t number) noexcept {
  if (number < kShortIntegerBit) return nameIn(kContentTypes, number);
  // The registered types do not fit a short-integer.
  return number < kFirstRegisteredType ? std::string_view()
                                       : nameIn(kRegisteredContentTypes, number);
}

bool readParameter(Reader& in, MediaTypeNames mediaTypes, Parameter& parameter) {
  if (in.atEnd()) return false;
  const Reader::Place begin = in.place();
  parameter.code = -1;
  parameter.form = ParameterForm::missing;
  parameter.value = {};
  parameter.valueIsStatic = false;
  if (formOf(in.rest()) == ValueForm::text) {
    parameter.name = readTextString(in);
  } else {
    const auto number = readInteger(in);
    if (!number) {
      in.returnTo(begin);
      return false;
    }
    parameter.code = *number > 0xFFFF ? 0xFFFF : static_cast<int>(*number);
    const auto code = static_cast<std::size_t>(parameter.code);
    parameter.name = code < kParameterNames.size() ? kParameterNames[code] : "";
  }
  // A parameter without its value, at the very end, is one with the empty value.
  if (!in.atEnd() && !readValue(in, mediaTypes, parameter)) {
    in.returnTo(begin);
    return false;
  }
  return true;
}

std::size_t contentTypeSize(const Reader& in) noexcept {
  const std::size_t size = fieldSize(in);
  if (in.peekOctet() != kOctetStream.front() || size == kOctetStream.size() + 1) return size;
  // Tolerance: some relays send this type without its terminating zero.
  return asText(in.rest()).starts_with(kOctetStream) ? kOctetStream.size() : size;
}

ContentTypeReader::ContentTypeReader(Octets value, MediaTypeNames mediaTypes) noexcept
    : mediaTypes_(mediaTypes) {
  Reader in(value);
  if (formOf(value) == ValueForm::lengthPrefixed) {
    const auto length = readValueLength(in);
    if (!length) return;
    parametersOffset_ = in.position();
    in = in.sub(*length);
  }
  if (formOf(in.rest()) == ValueForm::text) {
    mediaType_ = in.left() == kOctetStream.size() && asText(in.rest()) == kOctetStream
                     ? asText(in.take(kOctetStream.size()))
                     : readTextString(in);
  } else if (const auto number = readInteger(in)) {
    mediaNumber_.emplace(*number);
    mediaType_ = mediaTypes_(*number);
  }
  parameters_ = in;
}

bool ContentTypeReader::next(Parameter& parameter) {
  parameter.offset = position();
  return readParameter(parameters_, mediaTypes_, parameter);
}

}  // namespace mmsbrix
