// Value formats of caching, ranges, expectations and warnings.
#include <algorithm>
#include <array>

#include "platform/ascii.h"
#include "wsp/header_format_tools.h"
#include "wsp/header_formats.h"
#include "wsp/header_table.h"
#include "wsp/wsp_date.h"
#include "wsp/wsp_header_coding.h"

namespace WapStack {
namespace {

using mmsbrix::TextScanner;

constexpr std::string_view kBytes = "bytes";
constexpr std::uint64_t kMaxPosition = 0xFFFFFFFF;  // positions are uintvars

// Pragma and Expect begin with the one keyword they have a number for.
constexpr Vocabulary kExpectations{.table = WapAssignments::kExpect, .bit = 0x80};
constexpr std::string_view kNoCache = "No-cache";

bool decodePragma(Reader& in, std::string& text) {
  if (in.peekOctet() == mmsbrix::kShortIntegerBit) {
    in.skip(1);
    text = kNoCache;
    return true;
  }
  return enter(in) && readParameter(in, text);
}

bool encodePragma(std::string_view text, Version version, Writer& out) {
  const auto parameters = mmsbrix::splitParameters(text, ';');
  if (!parameters || parameters->size() != 1) return false;
  const mmsbrix::TextParameter& only = parameters->front();
  if (!only.hasValue && mmsbrix::equalsIgnoringCase(only.name, kNoCache)) {
    mmsbrix::writeShortInteger(out, 0);
    return !out.failed();
  }
  return writeInside(out, [&] {
    const std::size_t begin = out.size();
    return writeParameter(only, version, out) && out.size() > begin;
  });
}

bool decodeExpect(Reader& in, std::string& text) {
  if (shortAhead(in)) return readName(in, kExpectations, text);
  return enter(in) && textAhead(in) && readParameter(in, text) && readParameters(in, "; ", text);
}

bool encodeExpect(std::string_view text, Version version, Writer& out) {
  const auto parameters = mmsbrix::splitParameters(text, ';');
  if (!parameters || parameters->empty()) return false;
  const mmsbrix::TextParameter& first = parameters->front();
  const auto number = kExpectations.numberOf(first.name);
  if (number && !first.hasValue && parameters->size() == 1) {
    mmsbrix::writeInteger(out, *number);
    return !out.failed();
  }
  return writeInside(out, [&] {
    if (!writeNamedParameter(first, out)) return false;
    return std::all_of(parameters->begin() + 1, parameters->end(), [&](const auto& parameter) {
      return writeParameter(parameter, version, out);
    });
  });
}

// Cache-Control.  What stands behind each directive.
enum class Operand { none, fieldNames, seconds, optionalSeconds };

constexpr Operand operandOf(std::uint32_t directive) noexcept {
  switch (directive) {
    case 0x00:  // no-cache
    case 0x07:  // private
      return Operand::fieldNames;
    case 0x02:  // max-age
    case 0x04:  // min-fresh
    case 0x0B:  // s-maxage
      return Operand::seconds;
    case 0x03:  // max-stale
      return Operand::optionalSeconds;
    default:
      return Operand::none;
  }
}

constexpr Vocabulary kDirectives{.table = WapAssignments::kCacheControl, .bit = 0x80};

bool decodeDirective(Reader& in, std::string& text) {
  if (shortAhead(in)) return readName(in, kDirectives, text);
  if (!enter(in)) return false;
  if (!shortAhead(in)) {
    return textAhead(in) && readParameter(in, text);
  }
  const std::uint32_t directive = mmsbrix::readShortInteger(in).value_or(0);
  if (!kDirectives.nameOf(directive, text) || operandOf(directive) == Operand::none) return false;
  if (operandOf(directive) != Operand::fieldNames) {
    const auto seconds = mmsbrix::readInteger(in);
    text.append("=").append(std::to_string(seconds.value_or(0)));
    return seconds.has_value();
  }
  std::string names;
  while (!in.atEnd()) {
    std::string name;
    if (textAhead(in)) {
      name = takeText(in).value_or("");
    } else if (!kFieldNameFormat.decode(in, name)) {
      return false;
    }
    if (name.empty()) return false;
    names.append(names.empty() ? "" : ", ").append(name);
  }
  text.append("=").append(mmsbrix::quoted(names));
  return !names.empty();
}

bool writeFieldNames(std::string_view list, Version version, Writer& out) {
  const auto names = mmsbrix::splitList(list);
  return !names.empty() && std::ranges::all_of(names, [&](std::string_view name) {
    return writeFieldName(name, version, out);
  });
}

bool encodeDirective(std::string_view text, Version version, Writer& out) {
  const auto parameters = mmsbrix::splitParameters(text, ',');
  if (!parameters || parameters->size() != 1) return false;
  const mmsbrix::TextParameter& directive = parameters->front();
  const auto number = kDirectives.numberOf(directive.name);
  if (!directive.hasValue) {
    if (!number) return writeToken(directive.name, out);
    mmsbrix::writeInteger(out, *number);
    return operandOf(*number) != Operand::seconds && !out.failed();
  }
  return writeInside(out, [&] {
    if (!number) return writeNamedParameter(directive, out);
    mmsbrix::writeInteger(out, *number);
    if (operandOf(*number) == Operand::none) return false;
    if (operandOf(*number) == Operand::fieldNames) {
      return writeFieldNames(directive.plainValue(), version, out);
    }
    return kIntegerFormat.encode(directive.value, version, out);
  });
}

// Ranges.
constexpr std::uint8_t kByteRange = 0;
constexpr std::uint8_t kSuffixRange = 1;
constexpr std::uint8_t kUnknownLength = 0x80;

bool writePosition(std::optional<std::uint64_t> position, Writer& out) {
  if (!position || *position > kMaxPosition) return false;
  mmsbrix::writeUintvar(out, static_cast<std::uint32_t>(*position));
  return !out.failed();
}

bool decodeRange(Reader& in, std::string& text) {
  if (!enter(in) || !shortAhead(in)) return false;
  const auto kind = mmsbrix::readShortInteger(in);
  const auto first = mmsbrix::readUintvar(in);
  if (!first || (kind != kByteRange && kind != kSuffixRange)) return false;
  text = std::string(kBytes).append(kind == kByteRange ? "=" : "=-").append(std::to_string(*first));
  if (kind == kSuffixRange) return true;
  text += '-';
  if (in.atEnd()) return true;
  const auto last = mmsbrix::readUintvar(in);
  text += std::to_string(last.value_or(0));
  return last.has_value();
}

bool encodeRange(std::string_view text, Version /*version*/, Writer& out) {
  TextScanner words(text);
  if (!mmsbrix::equalsIgnoringCase(words.word("="), kBytes) || !words.take('=')) return false;
  return writeInside(out, [&] {
    const bool suffix = words.take('-');
    mmsbrix::writeShortInteger(out, suffix ? kSuffixRange : kByteRange);
    if (!writePosition(words.number(), out)) return false;
    if (suffix) return words.atEnd();
    if (!words.take('-')) return false;
    return words.atEnd() || (writePosition(words.number(), out) && words.atEnd());
  });
}

bool decodeContentRange(Reader& in, std::string& text) {
  if (!enter(in)) return false;
  const auto first = mmsbrix::readUintvar(in);
  if (!first) return false;
  text = std::string(kBytes).append(" ").append(std::to_string(*first)).append("-*/");
  if (in.left() == 1 && in.peekOctet() == kUnknownLength) {
    in.skip(1);
    text += '*';
    return true;
  }
  const auto length = mmsbrix::readUintvar(in);
  text += std::to_string(length.value_or(0));
  return length.has_value();
}

bool encodeContentRange(std::string_view text, Version /*version*/, Writer& out) {
  TextScanner words(text);
  if (!mmsbrix::equalsIgnoringCase(words.word(), kBytes)) return false;
  return writeInside(out, [&] {
    // "*" alone, in an answer that no range satisfies, goes out as the position 0.
    const bool unsatisfied = words.take('*');
    if (!writePosition(unsatisfied ? 0 : words.number(), out)) return false;
    if (!unsatisfied && (!words.take('-') || (!words.take('*') && !words.number()))) return false;
    if (!words.take('/')) return false;
    if (!words.take('*')) return writePosition(words.number(), out) && words.atEnd();
    out.octet(kUnknownLength);
    return words.atEnd();
  });
}

// Warnings.
struct WarnCode {
  std::uint8_t octet;  ///< without the high bit
  std::uint16_t code;
};
// In text the first row of an octet.
constexpr auto kWarnCodes = std::to_array<WarnCode>(
    {{10, 110}, {11, 111}, {12, 112}, {13, 113}, {14, 214}, {99, 199}, {99, 299}});
constexpr auto kProfileWarnCodes = std::to_array<WarnCode>(
    {{0x10, 100}, {0x11, 101}, {0x12, 102}, {0x20, 200}, {0x21, 201}, {0x22, 202}, {0x23, 203}});

template <std::size_t kCount>
bool readWarnCode(Reader& in, const std::array<WarnCode, kCount>& codes, std::string& text) {
  if (!shortAhead(in)) return false;
  const auto octet = mmsbrix::readShortInteger(in);
  const auto row = std::ranges::find(codes, octet, &WarnCode::octet);
  if (row != codes.end()) text = std::to_string(row->code);
  return row != codes.end();
}

template <std::size_t kCount>
bool writeWarnCode(TextScanner& words, const std::array<WarnCode, kCount>& codes, Writer& out) {
  const auto row = std::ranges::find(codes, words.number(), &WarnCode::code);
  if (row == codes.end()) return false;
  mmsbrix::writeShortInteger(out, row->octet);
  return !out.failed();
}

// Adds a word of the text behind a warn-code: an agent or a target.
bool appendWord(Reader& in, std::string& text) {
  const auto word = takeText(in);
  if (word) text.append(" ").append(word->empty() ? "-" : *word);
  return word.has_value();
}

bool decodeWarning(Reader& in, std::string& text) {
  if (shortAhead(in)) return readWarnCode(in, kWarnCodes, text);
  if (!enter(in) || !readWarnCode(in, kWarnCodes, text) || !appendWord(in, text)) return false;
  const auto warning = takeText(in);
  text.append(" ").append(mmsbrix::quoted(warning.value_or("")));
  return warning.has_value();
}

bool encodeWarning(std::string_view text, Version /*version*/, Writer& out) {
  TextScanner words(text);
  if (text.find(' ') == std::string_view::npos) {
    return writeWarnCode(words, kWarnCodes, out) && words.atEnd();
  }
  return writeInside(out, [&] {
    if (!writeWarnCode(words, kWarnCodes, out)) return false;
    mmsbrix::writeTextString(out, words.word());
    const auto warning = words.quotedString();
    if (!warning) return false;
    mmsbrix::writeTextString(out, mmsbrix::unescaped(*warning));
    return words.atEnd();
  });
}

bool decodeProfileWarning(Reader& in, std::string& text) {
  if (shortAhead(in)) return readWarnCode(in, kProfileWarnCodes, text);
  if (!enter(in) || !readWarnCode(in, kProfileWarnCodes, text) || !appendWord(in, text)) {
    return false;
  }
  while (!in.atEnd()) {
    DateValue date;
    if (!date.decodeFromFrame(in)) return false;
    text.append(" ").append(mmsbrix::quoted(date.getText()));
  }
  return true;
}

bool encodeProfileWarning(std::string_view text, Version /*version*/, Writer& out) {
  TextScanner words(text);
  if (text.find(' ') == std::string_view::npos) {
    return writeWarnCode(words, kProfileWarnCodes, out) && words.atEnd();
  }
  return writeInside(out, [&] {
    if (!writeWarnCode(words, kProfileWarnCodes, out)) return false;
    mmsbrix::writeTextString(out, words.word());
    while (!words.atEnd()) {
      const auto date = words.quotedString();
      const auto seconds = date ? parseDate(*date) : std::nullopt;
      if (!seconds) return false;
      mmsbrix::writeLongInteger(out, *seconds);
    }
    return true;
  });
}

}  // namespace

const ValueFormat kPragmaFormat{decodePragma, encodePragma};
const ValueFormat kExpectFormat{decodeExpect, encodeExpect};
const ValueFormat kCacheControlFormat{decodeDirective, encodeDirective};
const ValueFormat kRangeFormat{decodeRange, encodeRange};
const ValueFormat kContentRangeFormat{decodeContentRange, encodeContentRange};
const ValueFormat kWarningFormat{decodeWarning, encodeWarning};
const ValueFormat kProfileWarningFormat{decodeProfileWarning, encodeProfileWarning};

}  // namespace WapStack
