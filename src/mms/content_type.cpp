#include "mms/content_type.h"

#include <algorithm>
#include <charconv>

#include "platform/ascii.h"
#include "wsp/wap_mms_shared.h"
#include "wsp/wsp_assigned_headers.h"
#include "wsp/wsp_header_coding.h"

namespace mmsbrix {
namespace {

using namespace WapAssignments;

// The codec numbers media types 0x00 to 0x4B, whatever the encoding version.
constexpr std::uint32_t kCodecMediaTypes = 76;
constexpr std::string_view kOctetStream = "application/octet-stream";

// How the value of a well-known parameter is coded.  [WAP-230 table 38]
enum class ParameterKind {
  qValue,
  charset,    // well-known-charset
  version,    // version-value
  integer,    // integer-value, delta-seconds, short-integer: decimal text
  text,       // text-string
  fieldName,  // field-name
  media,      // constrained-encoding of a media type
  textValue,  // no-value, token-text or quoted-string
  date,       // date-value
};

struct ParameterRow {
  std::uint8_t code;
  ParameterKind kind;
};

constexpr auto kParameterRows = std::to_array<ParameterRow>({
    {0x00, ParameterKind::qValue},    {0x01, ParameterKind::charset},
    {0x02, ParameterKind::version},   {0x03, ParameterKind::integer},
    {0x05, ParameterKind::text},      {0x06, ParameterKind::text},
    {0x07, ParameterKind::fieldName}, {0x08, ParameterKind::integer},
    {0x09, ParameterKind::media},     {0x0A, ParameterKind::text},
    {0x0B, ParameterKind::text},      {0x0C, ParameterKind::text},
    {0x0D, ParameterKind::text},      {0x0E, ParameterKind::integer},
    {0x0F, ParameterKind::text},      {0x13, ParameterKind::date},
    {0x14, ParameterKind::date},      {0x15, ParameterKind::date},
    {0x16, ParameterKind::integer},
});

constexpr ParameterKind kindOf(int code) noexcept {
  for (const ParameterRow& row : kParameterRows) {
    if (row.code == code) return row.kind;
  }
  return ParameterKind::textValue;  // textual names and all newer numbers
}

constexpr int kTypeOfMultipart = 0x09;
constexpr std::uint32_t kAnyCharset = 128;  // the short-integer 0x80, no MIBenum

const AssignmentsBase& table(Kind kind) noexcept {
  return *getTable(kind);
}

std::string_view nameOrEmpty(const char* name) noexcept {
  return name == nullptr ? std::string_view() : std::string_view(name);
}

std::string_view mediaTypeOf(std::uint64_t number) noexcept {
  if (number < kCodecMediaTypes) {
    return nameOrEmpty(numberToName(table(kContentTypes), static_cast<std::uint32_t>(number)));
  }
  // The registered types begin at 0x201 and do not fit a short-integer.
  if (number > 0x200 && number <= 0xFFFF) {
    return nameOrEmpty(
        numberToName(table(kRegisteredContentTypes), static_cast<std::uint32_t>(number)));
  }
  return {};
}

// The number a media type is written as, 0 for none: "*/*", number 0, goes out as text.
std::uint8_t mediaNumberOf(std::string_view mediaType) noexcept {
  const std::int32_t number = nameToNumber(table(kContentTypes), mediaType);
  const std::uint32_t code = static_cast<std::uint32_t>(number) & 0xFFFF;
  return isUnassigned(number) || code >= kCodecMediaTypes ? 0 : static_cast<std::uint8_t>(code);
}

std::optional<std::uint64_t> decimal(std::string_view text) noexcept {
  std::uint64_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (text.empty() || error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  // What would not read back to the same text, such as "05", is no number here.
  if (text.size() > 1 && text.front() == '0') return std::nullopt;
  return value;
}

void assignDecimal(std::string& out, std::uint64_t value) {
  char digits[20];
  const auto result = std::to_chars(std::begin(digits), std::end(digits), value);
  out.assign(digits, result.ptr);
}

// Reads with one of the text-centred value classes; a value it refuses is left out.
template <class Value>
bool readThrough(Reader& in, std::string& out) {
  Value value;
  if (!value.decodeFromFrame(in)) return false;
  out = value.getText();
  return true;
}

bool readInto(Reader& in, ParameterKind kind, std::string& out) {
  const auto first = in.peekOctet();
  if (!first) return false;
  const ValueForm form = formOf(in.rest());
  if (kind == ParameterKind::qValue) return readThrough<WapStack::QValue>(in, out);
  if (form == ValueForm::text) {
    // Where a quoted-string may stand its opening quote is dropped; in a text-string it is a
    // character.
    const bool mayBeQuoted = kind != ParameterKind::text && kind != ParameterKind::media;
    if (mayBeQuoted && *first == kStringQuote) in.skip(1);
    out = readTextString(in);
    return true;
  }
  if (kind == ParameterKind::version && form == ValueForm::shortInteger) {
    return readThrough<WapStack::VersionValue>(in, out);
  }
  if (kind == ParameterKind::date) return readThrough<WapStack::DateValue>(in, out);
  const bool anyCharset = kind == ParameterKind::charset && *first == kAnyCharset;
  const auto number = readInteger(in);
  if (!number) return false;
  std::string_view name;
  if (anyCharset) {
    name = "*";
  } else if (kind == ParameterKind::charset && *number <= 0xFFFF) {
    name = nameOrEmpty(numberToName(table(kCharsets), static_cast<std::uint32_t>(*number)));
  } else if (kind == ParameterKind::media) {
    name = mediaTypeOf(*number);
  } else if (kind == ParameterKind::fieldName && *number <= 0x7F) {
    name = nameOrEmpty(numberToName(table(kHeaders), static_cast<std::uint32_t>(*number)));
  }
  if (name.empty()) {
    assignDecimal(out, *number);
  } else {
    out = name;
  }
  return true;
}

bool isTokenText(std::string_view text) noexcept {
  constexpr std::string_view kSeparators = "()<>@,;:\\\"/[]?={} \t";
  return std::ranges::all_of(text, [&](char c) {
    const auto octet = static_cast<std::uint8_t>(c);
    return octet > 32 && octet < 127 && kSeparators.find(c) == std::string_view::npos;
  });
}

// No-value, token-text or quoted-string, whichever the text needs.
void writeTextValue(Writer& out, std::string_view text) noexcept {
  if (!isTokenText(text)) out.octet(kStringQuote);
  out.append(text);
  out.octet(0);
}

// Writes the compact form of a value; false, with nothing written, when the text has none.
bool writeCompact(Writer& out, ParameterKind kind, std::string_view text) {
  switch (kind) {
    case ParameterKind::charset: {
      const std::int32_t assigned = nameToNumber(table(kCharsets), text);
      if (text == "*") {
        out.octet(static_cast<std::uint8_t>(kAnyCharset));
      } else if (!isUnassigned(assigned)) {
        writeInteger(out, static_cast<std::uint32_t>(assigned) & 0xFFFF);
      } else if (const auto number = decimal(text)) {
        writeInteger(out, *number);
      } else {
        return false;
      }
      return true;
    }
    case ParameterKind::integer: {
      const auto number = decimal(text);
      if (number) writeInteger(out, *number);
      return number.has_value();
    }
    case ParameterKind::media: {
      const std::uint8_t number = mediaNumberOf(text);
      if (number != 0) {
        out.octet(number | kShortIntegerBit);
      } else {
        writeTextString(out, text);
      }
      return true;
    }
    case ParameterKind::text:
      writeTextString(out, text);
      return true;
    case ParameterKind::version: {
      WapStack::VersionValue version;
      version.setText(std::string(text));
      return version.encodeToFrame(out);
    }
    case ParameterKind::fieldName: {
      const std::int32_t assigned = nameToNumber(table(kHeaders), text);
      if (isUnassigned(assigned)) return false;
      out.octet(static_cast<std::uint8_t>(assigned) | kShortIntegerBit);
      return true;
    }
    case ParameterKind::qValue: {
      const std::size_t before = out.size();
      WapStack::QValue quality;
      quality.setText(std::string(text));
      return quality.encodeToFrame(out) && out.size() > before;
    }
    case ParameterKind::textValue:
    case ParameterKind::date:
      break;
  }
  return false;
}

// The number a parameter name is written as under encoding version 1.2, -1 for none.
int parameterCode(std::string_view name, bool ofMultipart) noexcept {
  const std::int32_t number = nameToNumber(table(kParameters), name);
  if (isUnassigned(number)) return -1;
  if ((static_cast<std::uint32_t>(number) >> 16) > kVersion12) return -1;
  const int code = number & 0xFFFF;
  const bool isType = equalsIgnoringCase(name, "type");
  return isType && ofMultipart ? kTypeOfMultipart : code;
}

void writeParameter(Writer& out, const CMMParam& parameter, bool ofMultipart) {
  const std::string_view value = parameter.Value();
  const int code = parameterCode(parameter.Name(), ofMultipart);
  const ParameterKind kind = kindOf(code);
  // A quality is a number or nothing, so one that is none takes the textual name.
  const std::size_t before = out.size();
  if (code >= 0) {
    out.octet(static_cast<std::uint8_t>(code) | kShortIntegerBit);
    if (writeCompact(out, kind, value)) return;
    if (kind != ParameterKind::qValue) return writeTextValue(out, value);
    out.truncate(before);
  }
  writeTextString(out, parameter.Name());
  writeTextValue(out, value);
}

// Reads one parameter; false, with nothing consumed, at the end or when none can be read.
bool readParameter(Reader& from, Parameter& parameter) {
  if (from.atEnd()) return false;
  Reader in = from;
  parameter.code = -1;
  parameter.value.clear();
  if (formOf(in.rest()) == ValueForm::text) {
    parameter.name = readTextString(in);
  } else {
    const auto number = readInteger(in);
    if (!number) return false;
    parameter.code = *number > 0xFFFF ? 0xFFFF : static_cast<int>(*number);
    parameter.name =
        nameOrEmpty(numberToName(table(kParameters), static_cast<std::uint32_t>(parameter.code)));
  }
  // A parameter without its value, at the very end, is one with the empty value.
  if (!in.atEnd() && !readInto(in, kindOf(parameter.code), parameter.value)) return false;
  from = in;
  return true;
}

// Adds the parameters to a header's list, those of numbers that are not assigned left out.
void addParameters(Reader& in, CMMHdr& header) {
  Parameter parameter;
  while (readParameter(in, parameter)) {
    if (!parameter.name.empty()) {
      header.Params()->AddNew()->Assign(parameter.name, parameter.value);
    }
  }
}

// How the value of a part's well-known header may be coded besides as text.  [WAP-230 8.4.2]
enum class PartHeaderKind { text, quotedText, disposition, integer, date, language, encoding };

struct PartHeaderRow {
  std::uint8_t code;
  PartHeaderKind kind;
};

constexpr auto kPartHeaderRows = std::to_array<PartHeaderRow>({
    {0x05, PartHeaderKind::integer},      // Age
    {0x0B, PartHeaderKind::encoding},     // Content-Encoding
    {0x0C, PartHeaderKind::language},     // Content-Language
    {0x0D, PartHeaderKind::integer},      // Content-Length
    {0x12, PartHeaderKind::date},         // Date
    {0x14, PartHeaderKind::date},         // Expires
    {0x17, PartHeaderKind::date},         // If-Modified-Since
    {0x1B, PartHeaderKind::date},         // If-Unmodified-Since
    {0x1D, PartHeaderKind::date},         // Last-Modified
    {0x1E, PartHeaderKind::integer},      // Max-Forwards
    {0x2E, PartHeaderKind::disposition},  // Content-Disposition, 1.1
    {0x40, PartHeaderKind::quotedText},   // Content-ID
    {0x45, PartHeaderKind::disposition},  // Content-Disposition, 1.4
});

constexpr PartHeaderKind partHeaderKind(int code) noexcept {
  for (const PartHeaderRow& row : kPartHeaderRows) {
    if (row.code == code) return row.kind;
  }
  return PartHeaderKind::text;
}

// Value-length, then a token or text, then parameters.
bool readDisposition(Reader& in, CMMHdr& header) {
  constexpr std::array<std::string_view, 3> kDispositions = {"form-data", "attachment", "inline"};
  const auto length = readValueLength(in);
  if (!length) return false;
  Reader inside = in.sub(*length);
  std::string_view value;
  if (formOf(inside.rest()) == ValueForm::text) {
    value = readTextString(inside);
  } else {
    const auto token = readInteger(inside);
    if (!token || *token >= kDispositions.size()) return false;
    value = kDispositions[*token];
  }
  header.Assign("Content-Disposition", value);
  addParameters(inside, header);
  return true;
}

bool readNumericHeader(Reader& in, PartHeaderKind kind, std::string& value) {
  if (kind == PartHeaderKind::date) return readThrough<WapStack::DateValue>(in, value);
  const auto number = readInteger(in);
  if (!number || !in.atEnd()) return false;
  if (kind == PartHeaderKind::integer) {
    assignDecimal(value, *number);
    return true;
  }
  std::string_view name;
  if (kind == PartHeaderKind::language && *number <= 0xFFFF) {
    name = nameOrEmpty(numberToName(table(kLanguages), static_cast<std::uint32_t>(*number)));
  } else if (kind == PartHeaderKind::encoding && *number <= 0x7F) {
    name = nameOrEmpty(numberToName(table(kContentEncodings),
                                    static_cast<std::uint32_t>(*number) | kShortIntegerBit));
  }
  value = name;
  return !name.empty();
}

}  // namespace

std::size_t contentTypeSize(const Reader& in) noexcept {
  const std::size_t size = fieldSize(in);
  const std::string_view ahead = asText(in.rest());
  // Tolerance: some relays send this type without its terminating zero.
  if (ahead.starts_with(kOctetStream) && size != kOctetStream.size() + 1) {
    return kOctetStream.size();
  }
  return size;
}

ContentTypeReader::ContentTypeReader(Octets value) noexcept {
  Reader in(value);
  if (formOf(value) == ValueForm::lengthPrefixed) {
    const auto length = readValueLength(in);
    if (!length) return;
    parametersOffset_ = in.position();
    in = in.sub(*length);
  }
  if (formOf(in.rest()) == ValueForm::text) {
    mediaType_ = asText(in.rest()).starts_with(kOctetStream) && in.left() == kOctetStream.size()
                     ? asText(in.take(kOctetStream.size()))
                     : readTextString(in);
  } else if ((mediaNumber_ = readInteger(in))) {
    mediaType_ = mediaTypeOf(*mediaNumber_);
  }
  parameters_ = in;
}

bool ContentTypeReader::next(Parameter& parameter) {
  parameter.offset = position();
  return readParameter(parameters_, parameter);
}

void readContentType(Octets value, CMMHdr& header) {
  ContentTypeReader reader(value);
  header.Assign(kContentTypeName, reader.mediaType());
  Reader parameters = reader.parameters();
  addParameters(parameters, header);
}

void writeContentType(Writer& out, const CMMHdr& header) {
  const std::size_t begin = out.size();
  if (const std::uint8_t number = mediaNumberOf(header.Value()); number != 0) {
    out.octet(number | kShortIntegerBit);
  } else {
    writeTextString(out, header.Value());
  }
  const bool multipart = isMultipart(header.Value());
  for (const CMMParam& parameter : *header.Params()) writeParameter(out, parameter, multipart);
  const bool hasParameters = header.Params()->begin() != header.Params()->end();
  if (hasParameters && out.size() - begin > 1) insertValueLength(out, begin);
}

bool isMultipart(std::string_view mediaType) noexcept {
  return mediaType.starts_with("application/vnd.wap.multipart") ||
         mediaType.starts_with("multipart");
}

std::string_view partHeaderName(const HeaderItem& item) noexcept {
  if (item.kind == HeaderItem::Kind::text) return item.name;
  if (item.kind != HeaderItem::Kind::wellKnown || item.page != kFirstPage) return {};
  return nameOrEmpty(numberToName(table(kHeaders), item.code));
}

bool readPartHeaderValue(const HeaderItem& item, CMMHdr& header) {
  const PartHeaderKind kind =
      item.kind == HeaderItem::Kind::text ? PartHeaderKind::text : partHeaderKind(item.code);
  Reader in(item.value);
  std::string value;
  if (item.form == ValueForm::text) {
    // Tolerance: a Content-ID without the quote that opens a quoted-string.
    if (kind == PartHeaderKind::quotedText && in.peekOctet() == kStringQuote) in.skip(1);
    value = readTextString(in);
  } else if (kind == PartHeaderKind::disposition && item.form == ValueForm::lengthPrefixed) {
    return readDisposition(in, header);
  } else if (!readNumericHeader(in, kind, value)) {
    return false;
  }
  header.Assign(partHeaderName(item), value);
  return true;
}

void writePartHeader(Writer& out, const CMMHdr& header) {
  const std::int32_t number = nameToNumber(table(kHeaders), header.Name());
  if (isUnassigned(number)) {
    writeTextString(out, header.Name());
  } else {
    out.octet(static_cast<std::uint8_t>((number & 0x7F) | kShortIntegerBit));
  }
  const bool quoted =
      !isUnassigned(number) && partHeaderKind(number & 0x7F) == PartHeaderKind::quotedText;
  if (quoted) {
    out.octet(kStringQuote);
    out.append(header.Value());
    out.octet(0);
  } else {
    writeTextString(out, header.Value());
  }
}

}  // namespace mmsbrix
