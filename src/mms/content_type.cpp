#include "mms/content_type.h"

#include <array>

#include "mms/item_cost.h"
#include "platform/ascii.h"
#include "wsp/http_text.h"
#include "wsp/wap_mms_shared.h"
#include "wsp/wsp_assigned_headers.h"
#include "wsp/wsp_assigned_names.h"
#include "wsp/wsp_header_coding.h"

namespace mmsbrix {
namespace {

using namespace WapAssignments;

// The codec numbers media types 0x00 to 0x4B, whatever the encoding version.
constexpr std::uint32_t kCodecMediaTypes = 76;

constexpr int kTypeOfMultipart = 0x09;

const AssignmentsBase& table(Kind kind) noexcept {
  return *getTable(kind);
}

std::string_view mediaTypeOf(std::uint64_t number) noexcept {
  if (number >= kCodecMediaTypes && number <= 0x7F) return {};
  return mediaTypeName(number);
}

// The number a media type is written as, 0 for none: "*/*", number 0, goes out as text.
std::uint8_t mediaNumberOf(std::string_view mediaType) noexcept {
  const std::int32_t number = nameToNumber(table(kContentTypes), mediaType);
  const std::uint32_t code = static_cast<std::uint32_t>(number) & 0xFFFF;
  return isUnassigned(number) || code >= kCodecMediaTypes ? 0 : static_cast<std::uint8_t>(code);
}

// Reads a date with the text-centred value class, which refuses what is none.
bool readDate(Reader& in, std::string& out) {
  WapStack::DateValue value;
  if (!value.decodeFromFrame(in)) return false;
  out = value.getText();
  return true;
}

// No-value, token-text or quoted-string, whichever the text needs.
void writeTextValue(Writer& out, std::string_view text) noexcept {
  if (!isToken(text)) out.octet(kStringQuote);
  out.append(text);
  out.octet(0);
}

// Writes the compact form of a value; false, with nothing written, when the text has none.
bool writeCompact(Writer& out, ParameterKind kind, std::string_view text) {
  switch (kind) {
    case ParameterKind::charset: {
      const std::int32_t assigned = nameToNumber(table(kCharsets), text);
      if (text == "*") {
        out.octet(kAnyCharsetOctet);
      } else if (!isUnassigned(assigned)) {
        writeInteger(out, static_cast<std::uint32_t>(assigned) & 0xFFFF);
      } else if (const auto number = plainDecimal(text)) {
        writeInteger(out, *number);
      } else {
        return false;
      }
      return true;
    }
    case ParameterKind::integer:
    case ParameterKind::shortInteger: {
      const auto number = plainDecimal(text);
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
    case ParameterKind::noValue:
    case ParameterKind::date:
    case ParameterKind::untyped:
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
  // The name of this number is for multiparts; elsewhere it would read back as another's.
  if (code == kTypeOfMultipart) return ofMultipart ? code : -1;
  const bool isType = equalsIgnoringCase(name, "type");
  return isType && ofMultipart ? kTypeOfMultipart : code;
}

void writeParameter(Writer& out, const CMMParam& parameter, bool ofMultipart) {
  const std::string_view value = parameter.Value();
  const int code = parameterCode(parameter.Name(), ofMultipart);
  const ParameterKind kind = parameterKind(code);
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

// Nearly every message has it twice, and it is one character too long to be kept in place.
constexpr StaticText kPresentationType{"application/smil"};

bool isPresentationType(const std::string_view& type) noexcept {
  return type.size() == kPresentationType.text.size() && type == kPresentationType.text;
}

// Names and values from the tables are not copied.
void keep(const Parameter& parameter, CMMParam& kept) {
  if (parameter.code < 0) {
    kept.Assign(ZeroFreeText{parameter.name}, ZeroFreeText{parameter.value});
  } else if (parameter.valueIsStatic) {
    kept.Assign(StaticText{parameter.name}, StaticText{parameter.value});
  } else if (isPresentationType(parameter.value)) {
    kept.Assign(StaticText{parameter.name}, kPresentationType);
  } else {
    kept.Assign(StaticText{parameter.name}, ZeroFreeText{parameter.value});
  }
}

// Adds the parameters to a header's list, those of numbers that are not assigned left out.
void addParameters(Reader& in, CMMHdr& header, ItemBudget& budget) {
  Parameter parameter;
  std::size_t kept = 0;
  while (readParameter(in, mediaTypeOf, parameter)) {
    if (parameter.name.empty()) continue;
    if (!budget.take(parameterCost(parameter, kept))) continue;
    keep(parameter, *header.Params()->AddNew());
    ++kept;
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

struct PartHeader {
  std::string_view name;  // of the first row that has the code
  PartHeaderKind kind = PartHeaderKind::text;
};

// Indexed by code, since every header of every part is looked up.
constexpr auto kPartHeaders = [] {
  std::array<PartHeader, 128> headers{};
  for (const PartHeaderRow& row : kPartHeaderRows) headers[row.code].kind = row.kind;
  for (const StringInt& row : kHeaderRows) {
    if (headers[row.code()].name.empty()) headers[row.code()].name = row.name;
  }
  return headers;
}();

constexpr PartHeaderKind partHeaderKind(int code) noexcept {
  return kPartHeaders[static_cast<std::size_t>(code & 0x7F)].kind;
}

PartHeaderKind kindOf(const HeaderItem& item) noexcept {
  return item.kind == HeaderItem::Kind::text ? PartHeaderKind::text : partHeaderKind(item.code);
}

// Value-length, then a token or text, then parameters.
bool readDisposition(Reader& in, CMMHdr& header, ItemBudget& budget) {
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
    value = kDispositions[static_cast<std::size_t>(*token)];
  }
  header.Assign(StaticText{"Content-Disposition"}, ZeroFreeText{value});
  addParameters(inside, header, budget);
  return true;
}

// The name of a well-known header is not copied.
void assign(CMMHdr& header, const HeaderItem& item, std::string_view name, std::string_view value) {
  if (item.kind == HeaderItem::Kind::wellKnown) {
    header.Assign(StaticText{name}, ZeroFreeText{value});
  } else {
    header.Assign(ZeroFreeText{name}, ZeroFreeText{value});
  }
}

bool readNumericHeader(Reader& in, PartHeaderKind kind, std::string& value) {
  if (kind == PartHeaderKind::date) return readDate(in, value);
  const auto number = readInteger(in);
  if (!number || !in.atEnd()) return false;
  if (kind == PartHeaderKind::integer) {
    value = std::to_string(*number);
    return true;
  }
  std::string_view name;
  if (kind == PartHeaderKind::language && *number <= 0xFFFF) {
    name = nameOfNumber(table(kLanguages), static_cast<std::uint32_t>(*number));
  } else if (kind == PartHeaderKind::encoding && *number <= 0x7F) {
    name = nameOfNumber(table(kContentEncodings),
                        static_cast<std::uint32_t>(*number) | kShortIntegerBit);
  }
  value = name;
  return !name.empty();
}

}  // namespace

ContentTypeReader contentTypeReader(Octets value) noexcept {
  return ContentTypeReader(value, mediaTypeOf);
}

void readContentType(Octets value, CMMHdr& header, ItemBudget& budget) {
  ContentTypeReader reader = contentTypeReader(value);
  if (reader.mediaNumber()) {
    header.Assign(StaticText{kContentTypeName}, StaticText{reader.mediaType()});
  } else if (isPresentationType(reader.mediaType())) {
    header.Assign(StaticText{kContentTypeName}, kPresentationType);
  } else {
    header.Assign(StaticText{kContentTypeName}, ZeroFreeText{reader.mediaType()});
  }
  addParameters(reader.parameters(), header, budget);
}

void writeContentType(Writer& out, const CMMHdr& header) {
  const std::size_t begin = out.size();
  if (const std::uint8_t number = mediaNumberOf(header.Value()); number != 0) {
    out.octet(number | kShortIntegerBit);
  } else {
    writeTextString(out, header.Value());
  }
  const bool multipart = namesMultipart(header.Value());
  for (const CMMParam& parameter : *header.Params()) writeParameter(out, parameter, multipart);
  const bool hasParameters = header.Params()->begin() != header.Params()->end();
  if (hasParameters && out.size() - begin > 1) insertValueLength(out, begin);
}

bool isMultipart(std::string_view mediaType) noexcept {
  return mediaType.starts_with("application/vnd.wap.multipart") ||
         mediaType.starts_with("multipart");
}

bool namesMultipart(std::string_view mediaType) noexcept {
  return startsWithIgnoringCase(mediaType, "application/vnd.wap.multipart") ||
         startsWithIgnoringCase(mediaType, "multipart");
}

std::string_view partHeaderName(const HeaderItem& item) noexcept {
  if (item.kind == HeaderItem::Kind::text) return item.name;
  if (item.kind != HeaderItem::Kind::wellKnown || item.page != kFirstPage) return {};
  return kPartHeaders[item.code & 0x7F].name;
}

std::string_view partHeaderText(const HeaderItem& item) noexcept {
  if (item.form != ValueForm::text) return {};
  // The walker has ended the value at its first zero, so that it is not looked for again.
  std::string_view text = asText(item.value);
  if (text.ends_with('\0')) text.remove_suffix(1);
  const auto dropMark = [&](std::uint8_t mark) {
    if (text.starts_with(static_cast<char>(mark))) text.remove_prefix(1);
  };
  // Tolerance: a Content-ID without the quote that opens a quoted-string.
  if (kindOf(item) == PartHeaderKind::quotedText) dropMark(kStringQuote);
  dropMark(kTextQuote);
  return text;
}

bool readPartHeaderValue(const HeaderItem& item, std::string_view name, CMMHdr& header,
                         ItemBudget& budget) {
  if (item.form == ValueForm::text) {
    assign(header, item, name, partHeaderText(item));
    return true;
  }
  const PartHeaderKind kind = kindOf(item);
  Reader in(item.value);
  if (kind == PartHeaderKind::disposition && item.form == ValueForm::lengthPrefixed) {
    return readDisposition(in, header, budget);
  }
  std::string value;
  if (!readNumericHeader(in, kind, value)) return false;
  assign(header, item, name, value);
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
