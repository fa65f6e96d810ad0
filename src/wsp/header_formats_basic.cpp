// Value formats that are texts, numbers, dates, octets and versions.
#include "wsp/header_format_tools.h"
#include "wsp/header_formats.h"
#include "wsp/header_walker.h"
#include "wsp/wsp_date.h"
#include "wsp/wsp_header_coding.h"

namespace WapStack {
namespace {

using mmsbrix::plainDecimal;

constexpr std::size_t kDigestOctets = 16;
constexpr std::uint8_t kAbsolute = 0;  // tokens of Retry-After, as short-integers
constexpr std::uint8_t kRelative = 1;

bool noDecode(Reader& /*in*/, std::string& /*text*/) {
  return false;  // these formats are texts on the wire, which need no format
}

bool encodeText(std::string_view text, Version /*version*/, Writer& out) {
  mmsbrix::writeTextString(out, text);
  return !out.failed();
}

bool decodeQuotedText(Reader& in, std::string& text) {
  if (in.peekOctet() != mmsbrix::kStringQuote) {
    // Tolerance: without the mark that opens it, as some relays write Content-ID.
    const auto unmarked = takeText(in);
    text = unmarked.value_or("");
    return unmarked.has_value();
  }
  in.skip(1);
  if (!mmsbrix::zeroAhead(in)) return false;
  // Behind the mark no octet needs a quote; tolerance: with one all the same.
  text = mmsbrix::readTextString(in);
  // Tolerance: some relays write the mark that closes it as well.
  if (text.ends_with('"')) text.pop_back();
  return true;
}

bool encodeQuotedText(std::string_view text, Version /*version*/, Writer& out) {
  const std::string_view inside = withoutMarks(text);
  if (!inside.empty()) {
    out.octet(mmsbrix::kStringQuote);
    out.append(inside);
    // A mark of the text itself at its end must not be taken for the one that closes it.
    if (inside.ends_with('"')) out.octet(mmsbrix::kStringQuote);
  }
  out.octet(0);
  return !out.failed();
}

bool decodeInteger(Reader& in, std::string& text) {
  const auto number = mmsbrix::readInteger(in);
  text = std::to_string(number.value_or(0));
  return number.has_value();
}

template <std::uint64_t kLimit>
bool encodeInteger(std::string_view text, Version /*version*/, Writer& out) {
  const auto number = plainDecimal(text);
  if (!number || *number > kLimit) return false;
  mmsbrix::writeInteger(out, *number);
  return !out.failed();
}

bool decodeDate(Reader& in, std::string& text) {
  DateValue date;
  if (!date.decodeFromFrame(in)) return false;
  text = date.getText();
  return true;
}

bool encodeDate(std::string_view text, Version /*version*/, Writer& out) {
  const auto seconds = parseDate(text);
  if (seconds) mmsbrix::writeLongInteger(out, *seconds);
  return seconds && !out.failed();
}

bool encodeDateOrText(std::string_view text, Version version, Writer& out) {
  const bool isTag = text.ends_with('"');  // an entity tag, weak or not
  const std::size_t begin = out.size();
  if (!isTag && encodeDate(text, version, out)) return true;
  out.truncate(begin);
  return encodeText(text, version, out);
}

bool decodeRetryAfter(Reader& in, std::string& text) {
  if (!enter(in) || !shortAhead(in)) return false;
  const auto token = mmsbrix::readShortInteger(in);
  if (token == kAbsolute) return decodeDate(in, text);
  return token == kRelative && decodeInteger(in, text);
}

bool encodeRetryAfter(std::string_view text, Version version, Writer& out) {
  return writeInside(out, [&] {
    const bool relative = plainDecimal(text).has_value();
    mmsbrix::writeShortInteger(out, relative ? kRelative : kAbsolute);
    return relative ? encodeInteger<~std::uint64_t{0}>(text, version, out)
                    : encodeDate(text, version, out);
  });
}

bool decodeOctets(Reader& in, std::string& text) {
  if (!enter(in)) return false;
  text = mmsbrix::toBase64(in.take(in.left()));
  return true;
}

bool encodeOctets(std::string_view text, Version /*version*/, Writer& out) {
  const auto octets = mmsbrix::fromBase64(text);
  if (!octets) return false;
  mmsbrix::writeValueLength(out, static_cast<std::uint32_t>(octets->size()));
  out.append(*octets);
  return !out.failed();
}

bool decodeDigest(Reader& in, std::string& text) {
  return in.left() == 1 + kDigestOctets && decodeOctets(in, text);
}

bool encodeDigest(std::string_view text, Version version, Writer& out) {
  const std::size_t begin = out.size();
  return encodeOctets(text, version, out) && out.size() - begin == 1 + kDigestOctets;
}

bool decodeVersion(Reader& in, std::string& text) {
  if (shortAhead(in)) return readVersion(in, text);
  if (!enter(in) || !shortAhead(in)) return false;
  const std::string page = std::to_string(mmsbrix::readShortInteger(in).value_or(0));
  if (in.atEnd()) {
    text = page + " -";
    return true;
  }
  if (!readVersion(in, text)) return false;
  text.insert(0, page + ' ');
  return true;
}

bool encodeVersion(std::string_view text, Version /*version*/, Writer& out) {
  mmsbrix::TextScanner words(text);
  const std::string_view first = words.word();
  if (words.atEnd()) {
    writeVersion(first, out);
    return !out.failed();
  }
  return writeInside(out, [&] {
    const auto page = plainDecimal(first);
    if (!page || *page > 0x7F) return false;
    mmsbrix::writeShortInteger(out, static_cast<std::uint8_t>(*page));
    const std::string_view second = words.word();
    if (second != "-") writeVersion(second, out);
    return words.atEnd();
  });
}

bool decodeOpaque(Reader& in, std::string& text) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  text = "0x";
  for (const std::uint8_t octet : in.take(in.left())) {
    text += kDigits[octet >> 4];
    text += kDigits[octet & 0xF];
  }
  return true;
}

// The octets of "0x" and pairs of digits where they are one whole value.
bool writeOpaque(std::string_view text, Writer& out) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  if (!text.starts_with("0x") || text.size() < 4 || text.size() % 2 != 0) return false;
  const std::size_t begin = out.size();
  for (std::size_t i = 2; i < text.size(); i += 2) {
    const std::size_t high = kDigits.find(text[i]);
    const std::size_t low = kDigits.find(text[i + 1]);
    if (high == std::string_view::npos || low == std::string_view::npos) return false;
    out.octet(static_cast<std::uint8_t>(high << 4 | low));
  }
  const Reader value(out.written().subspan(begin));
  const bool isText = mmsbrix::formOf(value.rest()) == mmsbrix::ValueForm::text;
  return !isText && !out.failed() && mmsbrix::fieldSize(value) == value.left();
}

bool encodeOpaque(std::string_view text, Version version, Writer& out) {
  const std::size_t begin = out.size();
  if (writeOpaque(text, out)) return true;
  out.truncate(begin);
  return encodeText(text, version, out);
}

}  // namespace

const ValueFormat kTextFormat{noDecode, encodeText};
const ValueFormat kQuotedTextFormat{decodeQuotedText, encodeQuotedText, true};
const ValueFormat kIntegerFormat{decodeInteger, encodeInteger<~std::uint64_t{0}>};
const ValueFormat kShortIntegerFormat{decodeInteger, encodeInteger<0x7F>};
const ValueFormat kDateFormat{decodeDate, encodeDate};
const ValueFormat kDateOrTextFormat{decodeDate, encodeDateOrText};
const ValueFormat kRetryAfterFormat{decodeRetryAfter, encodeRetryAfter};
const ValueFormat kDigestFormat{decodeDigest, encodeDigest};
const ValueFormat kOctetsFormat{decodeOctets, encodeOctets};
const ValueFormat kVersionFormat{decodeVersion, encodeVersion};
const ValueFormat kOpaqueFormat{decodeOpaque, encodeOpaque};

}  // namespace WapStack
