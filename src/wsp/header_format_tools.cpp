#include "wsp/header_format_tools.h"

#include <charconv>

#include "wsp/header_table.h"
#include "wsp/wsp_header_coding.h"
#include "wsp/wsp_header_reports.h"

namespace WapStack {
namespace {

using namespace WapAssignments;

constexpr char kHexDigits[] = "0123456789ABCDEF";

// The code of a name in a table, with its version; nothing without one up to `version`.
std::optional<std::uint32_t> codeUpTo(Kind kind, std::string_view name, Version version) noexcept {
  const std::int32_t number = nameToNumber(*getTable(kind), name);
  if (isUnassigned(number)) return std::nullopt;
  const StringInt row{nullptr, static_cast<std::uint32_t>(number)};
  if (row.version() > version) return std::nullopt;
  return row.code();
}

// A character that may begin a text on the wire without being taken for a length or a quote.
bool beginsText(std::string_view text) noexcept {
  const std::uint8_t first = text.empty() ? 0 : static_cast<std::uint8_t>(text.front());
  return first > ' ' && first < 0x7F;
}

}  // namespace

bool enter(Reader& in) noexcept {
  const auto length = mmsbrix::readValueLength(in);
  return length && *length == in.left();
}

std::optional<std::string_view> takeText(Reader& in) {
  const auto first = in.peekOctet();
  if (!first || !mmsbrix::opensTextString(*first) || !mmsbrix::zeroAhead(in)) return std::nullopt;
  if (*first == mmsbrix::kTextQuote && in.peek(2, 1).front() < mmsbrix::kShortIntegerBit) {
    failAssertion(TextString(), "quote octet ahead of a character below 128");
    return std::nullopt;
  }
  return mmsbrix::readTextString(in);
}

bool fitsTextString(std::string_view text) noexcept {
  if (text.empty()) return true;
  const auto first = static_cast<std::uint8_t>(text.front());
  const bool opens = first >= mmsbrix::kShortIntegerBit ||
                     (first != mmsbrix::kTextQuote && mmsbrix::opensTextString(first));
  return opens && text.find('\0') == std::string_view::npos;
}

std::string_view withoutMarks(std::string_view text) noexcept {
  while (text.size() > 1 && text.starts_with('"') && text.ends_with('"')) {
    text = text.substr(1, text.size() - 2);
  }
  return text;
}

bool writeToken(std::string_view token, Writer& out) {
  if (token.empty() || !mmsbrix::isToken(token)) return false;
  mmsbrix::writeTokenText(out, token);
  return !out.failed();
}

std::string numberName(std::uint32_t number) {
  std::string name = "0x";
  for (int shift = number > 0xFF ? 12 : 4; shift >= 0; shift -= 4) {
    name += kHexDigits[number >> shift & 0xF];
  }
  return name;
}

std::optional<std::uint32_t> numberOfName(std::string_view name) noexcept {
  if (!name.starts_with("0x") || name.size() > 6) return std::nullopt;
  std::uint32_t number = 0;
  const auto [end, error] = std::from_chars(name.data() + 2, name.data() + name.size(), number, 16);
  if (error != std::errc() || end != name.data() + name.size()) return std::nullopt;
  if (numberName(number) != name) return std::nullopt;
  return number;
}

std::optional<std::uint32_t> Vocabulary::numberOf(std::string_view name) const noexcept {
  if (any && name == "*") return any;
  if (const auto code = codeUpTo(table, name, kVersion15); code && *code >= bit + first) {
    return *code - bit;
  }
  const auto number = decimals ? mmsbrix::plainDecimal(name) : std::nullopt;
  if (number && *number <= 0xFFFFFFFF) return static_cast<std::uint32_t>(*number);
  return std::nullopt;
}

bool Vocabulary::nameOf(std::uint64_t number, std::string& name) const {
  if (number == any) {
    name = "*";
    return true;
  }
  const char* assigned =
      number >= first && number <= 0xFFFF
          ? numberToName(*getTable(table), static_cast<std::uint32_t>(number) + bit)
          : nullptr;
  if (assigned != nullptr) {
    name = assigned;
  } else if (decimals) {
    name = std::to_string(number);
  }
  return assigned != nullptr || decimals;
}

bool readName(Reader& in, const Vocabulary& names, std::string& text) {
  if (textAhead(in)) {
    const auto name = takeText(in);
    text = name.value_or("");
    return name.has_value();
  }
  const auto number = mmsbrix::readInteger(in);
  return number && names.nameOf(*number, text);
}

bool writeMediaType(std::string_view mediaType, MediaNumbers numbers, Version version,
                    Writer& out) {
  if (!beginsText(mediaType)) return false;
  auto number = codeUpTo(kContentTypes, mediaType, version);
  if (!number) number = codeUpTo(kRegisteredContentTypes, mediaType, version);
  if (number && (numbers == MediaNumbers::all || *number < mmsbrix::kShortIntegerBit)) {
    mmsbrix::writeInteger(out, *number);
  } else {
    mmsbrix::writeTokenText(out, mediaType);
  }
  return !out.failed();
}

bool isQuality(std::string_view text) noexcept {
  if (text == "0") return true;
  return text.size() >= 2 && text.size() <= 5 && text.starts_with("0.") &&
         text.find_first_not_of("0123456789", 2) == std::string_view::npos;
}

bool isFullQuality(std::string_view text) noexcept {
  if (text == "1") return true;
  return text.size() >= 2 && text.size() <= 5 && text.starts_with("1.") &&
         text.find_first_not_of('0', 2) == std::string_view::npos;
}

bool readVersion(Reader& in, std::string& text) {
  VersionValue version;
  if (!version.decodeFromFrame(in)) return false;
  text = version.getText();
  return true;
}

void writeVersion(std::string_view text, Writer& out) {
  const std::size_t begin = out.size();
  VersionValue version(text);
  version.encodeToFrame(out);
  Reader in(out.written().subspan(begin));
  // "1.2/x" and the like have a short form too, but it would lose what else they say.
  if (version.decodeFromFrame(in) && version.getText() == text) return;
  out.truncate(begin);
  mmsbrix::writeTextString(out, text);
}

bool writeFieldName(std::string_view name, Version version, Writer& out) {
  const HeaderRow* row = chooseHeader(name, version);
  if (row == nullptr) return writeToken(name, out);
  mmsbrix::writeShortInteger(out, row->code);
  return !out.failed();
}

}  // namespace WapStack
