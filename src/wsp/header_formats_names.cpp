// Value formats that are names with numbers, alone, with a quality, or with parameters.
#include <array>

#include "platform/ascii.h"
#include "wsp/content_type_reader.h"
#include "wsp/header_format_tools.h"
#include "wsp/header_formats.h"
#include "wsp/header_table.h"
#include "wsp/wsp_header_coding.h"

namespace WapStack {
namespace {

using namespace WapAssignments;

constexpr std::uint32_t kKeywordBit = mmsbrix::kShortIntegerBit;
constexpr std::uint32_t kFirstMethod = 0x40;  // PDU types below it are no methods

constexpr Vocabulary kMethods{.table = kPduTypes, .first = kFirstMethod};
constexpr Vocabulary kLanguageNames{.table = kLanguages};
constexpr Vocabulary kRangeUnits{.table = kAcceptRanges, .bit = kKeywordBit};
constexpr Vocabulary kConnectionOptions{.table = kConnection, .bit = kKeywordBit};
constexpr Vocabulary kEncodings{.table = kContentEncodings, .bit = kKeywordBit};
constexpr Vocabulary kTransferCodings{.table = kTransferEncoding, .bit = kKeywordBit};
constexpr Vocabulary kSecurityKeywords{.table = kSecurity, .bit = kKeywordBit};

enum class Unknown { isText, isRefused };

// One name: a number or a token.
template <const Vocabulary& kNames>
bool decodeName(Reader& in, std::string& text) {
  return readName(in, kNames, text);
}
template <const Vocabulary& kNames, Unknown kUnknown = Unknown::isText>
bool encodeName(std::string_view text, Version /*version*/, Writer& out) {
  if (const auto number = kNames.numberOf(text)) {
    mmsbrix::writeInteger(out, *number);
    return !out.failed();
  }
  return kUnknown == Unknown::isText && writeToken(text, out);
}

bool decodeFieldName(Reader& in, std::string& text) {
  const auto code = mmsbrix::readInteger(in);
  const HeaderRow* row =
      code && *code <= 0x7F ? findHeader(static_cast<std::size_t>(*code)) : nullptr;
  if (row != nullptr) text = row->name;
  return row != nullptr;
}

// Application ids: a URN with a number, or any URI.
constexpr std::string_view kApplicationPrefix = "x-wap-application:";
constexpr auto kApplications =
    std::to_array<std::string_view>({"*", "push.sia", "wml.ua", "wta.ua", "mms.ua", "push.syncml",
                                     "loc.ua", "syncml.dm", "drm.ua", "emn.ua", "wv.ua"});

bool decodeApplication(Reader& in, std::string& text) {
  const auto number = mmsbrix::readInteger(in);
  if (!number) return false;
  text =
      *number < kApplications.size()
          ? std::string(kApplicationPrefix).append(kApplications[static_cast<std::size_t>(*number)])
          : std::to_string(*number);
  return true;
}

bool encodeApplication(std::string_view text, Version version, Writer& out) {
  auto number = mmsbrix::plainDecimal(text);
  if (mmsbrix::startsWithIgnoringCase(text, kApplicationPrefix)) {
    const std::string_view name = text.substr(kApplicationPrefix.size());
    for (std::size_t i = 0; i < kApplications.size(); ++i) {
      if (mmsbrix::equalsIgnoringCase(name, kApplications[i])) number = i;
    }
  }
  if (!number) return kTextFormat.encode(text, version, out);
  mmsbrix::writeInteger(out, *number);
  return !out.failed();
}

constexpr std::uint8_t kAnyApplication = 0x80;

bool decodeAcceptApplication(Reader& in, std::string& text) {
  if (in.peekOctet() != kAnyApplication) return decodeApplication(in, text);
  in.skip(1);
  text = "*";
  return true;
}

bool encodeAcceptApplication(std::string_view text, Version version, Writer& out) {
  if (text != "*") return encodeApplication(text, version, out);
  out.octet(kAnyApplication);
  return !out.failed();
}

// Names with a quality.
struct Weighted {
  Vocabulary names;
  std::uint32_t shortForms;   ///< numbers below this one may stand alone, as short-integers
  bool tokenAlone = true;     ///< a name without a number may stand alone, as a text
  bool qualityToken = false;  ///< the quality follows the token 0x80
};

constexpr Weighted kAcceptCharset{.names = {.table = kCharsets, .any = 0, .decimals = true},
                                  .shortForms = 0x80};
constexpr Weighted kAcceptEncoding{
    .names = {.table = kContentEncodings, .bit = kKeywordBit, .any = 3}, .shortForms = 3};
constexpr Weighted kAcceptLanguage{.names = {.table = kLanguages, .any = 0}, .shortForms = 0x80};
// Only "trailers", number 1, stands alone.
constexpr Weighted kTransferCoding{.names = {.table = kTe, .bit = kKeywordBit},
                                   .shortForms = 2,
                                   .tokenAlone = false,
                                   .qualityToken = true};

template <const Weighted& kWeighted>
bool decodeWeighted(Reader& in, std::string& text) {
  if (shortAhead(in)) return readName(in, kWeighted.names, text);
  if (!enter(in) || !readName(in, kWeighted.names, text)) return false;
  if (in.atEnd()) return true;
  if (kWeighted.qualityToken && in.octet() != mmsbrix::kShortIntegerBit) return false;
  QValue quality;
  if (!quality.decodeFromFrame(in)) return false;
  text.append("; q=").append(quality.getText());
  return true;
}

template <const Weighted& kWeighted>
bool encodeWeighted(std::string_view text, Version /*version*/, Writer& out) {
  const auto parts = mmsbrix::splitParameterised(text);
  if (!parts || parts->parameters.size() > 1) return false;
  std::string_view quality = "1";
  if (!parts->parameters.empty()) {
    if (!mmsbrix::equalsIgnoringCase(parts->parameters.front().name, "q")) return false;
    quality = parts->parameters.front().value;
  }
  const bool isFull = mmsbrix::trimmed(quality).empty() || isFullQuality(quality);
  if (!isFull && !isQuality(quality)) return false;
  const auto number = kWeighted.names.numberOf(parts->head);
  const auto writeHead = [&] {
    if (!number) return writeToken(parts->head, out);
    mmsbrix::writeInteger(out, *number);
    return !out.failed();
  };
  if (isFull && (number ? *number < kWeighted.shortForms : kWeighted.tokenAlone)) {
    return writeHead();
  }
  return writeInside(out, [&] {
    if (!writeHead()) return false;
    if (isFull) return true;
    if (kWeighted.qualityToken) out.octet(mmsbrix::kShortIntegerBit);
    return QValue(quality).encodeToFrame(out);
  });
}

// Names with parameters.
bool decodeMedia(Reader& in, std::string& text) {
  mmsbrix::ContentTypeReader reader(in.take(in.left()));
  if (reader.mediaType().empty()) return false;
  text = reader.mediaType();
  Reader parameters = reader.parameters();
  return readParameters(parameters, "; ", text);
}

bool encodeMedia(std::string_view text, Version version, Writer& out) {
  const auto parts = mmsbrix::splitParameterised(text);
  const bool readable = parts && parts->head.find_first_of(" \t\",") == std::string_view::npos;
  // What is no media type with parameters is a text on the wire too.
  if (!readable) {
    mmsbrix::writeTextString(out, text);
    return !out.failed();
  }
  const std::size_t begin = out.size();
  if (!writeMediaType(parts->head, MediaNumbers::all, version, out)) return false;
  const std::size_t end = out.size();
  const bool longNumber = out.written()[begin] < mmsbrix::kLengthQuote;
  for (const auto& parameter : parts->parameters) {
    if (!writeParameter(parameter, version, out)) return false;
  }
  if (longNumber || out.size() > end) mmsbrix::insertValueLength(out, begin);
  return !out.failed();
}

constexpr auto kDispositions =
    std::to_array<std::string_view>({"form-data", "attachment", "inline"});

bool decodeDisposition(Reader& in, std::string& text) {
  // Tolerance: a number that stands alone, without the length that the standard has around it.
  if (!shortAhead(in) && !enter(in)) return false;
  if (shortAhead(in)) {
    const std::size_t number = mmsbrix::readShortInteger(in).value_or(0);
    if (number >= kDispositions.size()) return false;
    text = kDispositions[number];
  } else {
    const auto token = takeText(in);
    if (!token || token->empty()) return false;
    text = *token;
  }
  return readParameters(in, "; ", text);
}

bool encodeDisposition(std::string_view text, Version version, Writer& out) {
  const auto parts = mmsbrix::splitParameterised(text);
  if (!parts) return false;
  return writeInside(out, [&] {
    bool written = false;
    for (std::size_t i = 0; i < kDispositions.size(); ++i) {
      if (!mmsbrix::equalsIgnoringCase(parts->head, kDispositions[i])) continue;
      mmsbrix::writeShortInteger(out, static_cast<std::uint8_t>(i));
      written = true;
    }
    if (!written && !writeToken(parts->head, out)) return false;
    for (const auto& parameter : parts->parameters) {
      if (!writeParameter(parameter, version, out)) return false;
    }
    return true;
  });
}

}  // namespace

const ValueFormat kMethodFormat{decodeName<kMethods>, encodeName<kMethods, Unknown::isRefused>};
const ValueFormat kMethodOrTokenFormat{decodeName<kMethods>, encodeName<kMethods>};
const ValueFormat kFieldNameFormat{decodeFieldName, writeFieldName};
const ValueFormat kLanguageFormat{decodeName<kLanguageNames>, encodeName<kLanguageNames>};
const ValueFormat kAcceptRangesFormat{decodeName<kRangeUnits>, encodeName<kRangeUnits>};
const ValueFormat kConnectionFormat{decodeName<kConnectionOptions>, encodeName<kConnectionOptions>};
const ValueFormat kContentEncodingFormat{decodeName<kEncodings>, encodeName<kEncodings>};
const ValueFormat kTransferEncodingFormat{decodeName<kTransferCodings>,
                                          encodeName<kTransferCodings>};
const ValueFormat kSecurityFormat{decodeName<kSecurityKeywords>, encodeName<kSecurityKeywords>};
const ValueFormat kApplicationFormat{decodeApplication, encodeApplication};
const ValueFormat kAcceptApplicationFormat{decodeAcceptApplication, encodeAcceptApplication};
const ValueFormat kAcceptCharsetFormat{decodeWeighted<kAcceptCharset>,
                                       encodeWeighted<kAcceptCharset>};
const ValueFormat kAcceptEncodingFormat{decodeWeighted<kAcceptEncoding>,
                                        encodeWeighted<kAcceptEncoding>};
const ValueFormat kAcceptLanguageFormat{decodeWeighted<kAcceptLanguage>,
                                        encodeWeighted<kAcceptLanguage>};
const ValueFormat kTeFormat{decodeWeighted<kTransferCoding>, encodeWeighted<kTransferCoding>};
const ValueFormat kMediaFormat{decodeMedia, encodeMedia};
const ValueFormat kContentDispositionFormat{decodeDisposition, encodeDisposition};

}  // namespace WapStack
