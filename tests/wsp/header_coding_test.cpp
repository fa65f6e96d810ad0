#include "wsp/wsp_header_coding.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/diagnostics.h"
#include "support/hex.h"
#include "wsp/wap_mms_shared.h"
#include "wsp/wsp_date.h"

namespace WapStack {
namespace {

using mmsbrix::Octets;
using mmsbrix::test::hex;
using mmsbrix::test::Reports;
using mmsbrix::test::toHex;

constexpr const char* kEndOfInput = "error wsp_header_coding: Header decoding, end of input.\n";
constexpr const char* kUintvarError = "error wap_mms_shared: decodeUintvar(): error\n";
constexpr const char* kUnknown =
    "error wsp_header_coding: unsupported or not well known Wap value (unknown value)\n";

// One value of each kind, found by its type name.
template <class... Kinds>
std::vector<std::unique_ptr<WapBase>> oneOfEach() {
  std::vector<std::unique_ptr<WapBase>> values;
  (values.push_back(std::make_unique<Kinds>()), ...);
  return values;
}
std::vector<std::unique_ptr<WapBase>> everyKind() {
  auto values = oneOfEach<UintvarInteger, ShortInteger, LongInteger, IntegerValue, ValueLength,
                          TextString, QuotedString, TokenText, ExtensionMedia, ConstrainedEncoding,
                          ConstrainedMedia, ConstrainedCharset, TextValue, UntypedValue, FieldName,
                          UriValue, WellKnownCharset, NoValue, VersionValue, QValue, DateValue>();
  return values;
}
std::unique_ptr<WapBase> make(std::string_view typeName, std::string_view text = {}) {
  for (const auto& value : everyKind()) {
    if (value->typeName() != typeName) continue;
    auto copy = value->clone();
    copy->setText(text);
    return copy;
  }
  throw std::invalid_argument("no such kind of value");
}

// The octets of an encoded value, "refused" when it was.
std::string encoded(const WapBase& value) {
  Writer out;
  if (value.encodeToFrame(out)) return toHex(out.written());
  EXPECT_EQ(out.size(), 0U) << "a refused value leaves no octets";
  return "refused";
}
// The text of decoded octets and what is left of them, "refused" when they were.
std::string decoded(WapBase& value, std::string_view octets) {
  const auto data = hex(octets);
  Reader in{Octets(data)};
  if (!value.decodeFromFrame(in)) return "refused";
  return in.atEnd() ? value.getText() : value.getText() + " + " + toHex(in.rest());
}

struct Vector {
  const char* kind;
  const char* text;
  const char* octets;
};

// Texts that encode to the octets and read back from them.
constexpr auto kVectors = std::to_array<Vector>({
    {"Uintvar-integer", "0", "00"},
    {"Uintvar-integer", "4294967295", "8F FF FF FF 7F"},
    {"Short-integer", "0", "80"},
    {"Short-integer", "127", "FF"},
    {"Long-integer", "0", "01 00"},
    {"Long-integer", "256", "02 01 00"},
    {"Long-integer", "72057594037927936", "08 01 00 00 00 00 00 00 00"},
    {"Long-integer", "18446744073709551615", "08 FF FF FF FF FF FF FF FF"},
    {"Integer-value", "127", "FF"},
    {"Integer-value", "128", "01 80"},
    {"Value-length", "30", "1E"},
    {"Value-length", "31", "1F 1F"},
    {"Value-length", "128", "1F 81 00"},
    {"Text-string", "abc", "'abc' 00"},
    {"Text-string", "", "00"},
    {"Text-string", "\xE9t\xE9", "7F E9 't' E9 00"},
    {"Uri-value", "http://a/", "'http://a/' 00"},
    {"Quoted-string", "a b", "22 'a b' 00"},
    {"Token-text", "Foo", "'Foo' 00"},
    {"Extension-media", "application/smil", "'application/smil' 00"},
    {"Constrained-encoding", "5", "85"},
    {"Constrained-encoding", "x/y", "'x/y' 00"},
    {"Constrained-media", "application/vnd.wap.mms-message", "BE"},
    {"Constrained-media", "application/smil", "'application/smil' 00"},
    {"Constrained-media", "application/vnd.uplanet.signal", "'application/vnd.uplanet.signal' 00"},
    {"Constrained-charset", "utf-8", "EA"},
    {"Constrained-charset", "*", "80"},
    {"Constrained-charset", "utf-16", "'utf-16' 00"},  // its number needs more than seven bits
    {"Field-name", "Accept-Encoding", "BC"},
    {"Field-name", "X-Foo", "'X-Foo' 00"},
    {"Text-value", "", "00"},
    {"Text-value", "abc", "'abc' 00"},
    {"Text-value", "a/b c", "22 'a/b c' 00"},
    {"Untyped-value", "7", "87"},
    {"Untyped-value", "2026", "02 07 EA"},
    {"Untyped-value", "007", "'007' 00"},  // as a number it would lose its zeros
    {"Untyped-value", "a b", "22 'a b' 00"},
    {"Untyped-value", "", "00"},
    {"Well-known-charset (Parameter)", "*", "80"},
    {"Well-known-charset (Parameter)", "utf-8", "EA"},
    {"Well-known-charset (Parameter)", "utf-16", "02 03 F7"},
    {"Well-known-charset (Parameter)", "113", "F1"},
    {"Well-known-charset (Parameter)", "2252", "02 08 CC"},
    {"Well-known-charset (Parameter)", "65542", "03 01 00 06"},  // not 6 in sixteen bits
    {"Well-known-charset (Parameter)", "x-unknown", "'x-unknown' 00"},
    {"No-value", "", "00"},
    {"Version-value", "1.2", "92"},
    {"Version-value", "7.14", "FE"},
    {"Version-value", "1", "9F"},
    {"Version-value", "8.0", "'8.0' 00"},
    {"Version-value", "1.15", "'1.15' 00"},
    {"Version-value", "0.9", "'0.9' 00"},
    {"Q-value", "0", "01"},
    {"Q-value", "0.1", "0B"},
    {"Q-value", "0.5", "33"},
    {"Q-value", "0.99", "64"},
    {"Q-value", "0.333", "83 31"},
    {"Q-value", "0.001", "65"},
    {"Q-value", "0.999", "88 4B"},
    {"Date-value", "Thu, 01 Jan 1970 00:00:00 GMT", "01 00"},
    {"Date-value", "Sun, 06 Nov 1994 08:49:37 GMT", "04 2E BC 98 A1"},
    {"Date-value", "Tue, 19 Jan 2038 03:14:08 GMT", "04 80 00 00 00"},
    {"Date-value", "Sun, 07 Feb 2106 06:28:16 GMT", "05 01 00 00 00 00"},
    {"Date-value", "Fri, 31 Dec 9999 23:59:59 GMT", "05 3A FF F4 41 7F"},
    {"Date-value", "Sat, 01 Jan 10000 00:00:00 GMT", "05 3A FF F4 41 80"},
});

TEST(WapValues, VectorsEncodeAndDecode) {
  Reports reports;
  for (const auto& [kind, text, octets] : kVectors) {
    SCOPED_TRACE(std::string(kind) + " \"" + text + '"');
    const auto value = make(kind, text);
    EXPECT_EQ(encoded(*value), toHex(hex(octets)));
    EXPECT_EQ(decoded(*value, octets), text);
    const auto data = hex(octets);
    EXPECT_TRUE(value->isKind(Reader{Octets(data)}));
    EXPECT_EQ(reports.take(), "");
  }
}

TEST(WapValues, EveryProperPrefixReportsEndOfInputAndKeepsTheText) {
  Reports reports;
  for (const auto& [kind, text, octets] : kVectors) {
    const auto data = hex(octets);
    for (std::size_t size = 0; size < data.size(); ++size) {
      SCOPED_TRACE(std::string(kind) + " \"" + text + "\" cut to " + std::to_string(size));
      // A copy of the exact size, so that a read past its end is seen.
      const std::vector<std::uint8_t> cut(data.begin(), data.begin() + static_cast<int>(size));
      const auto value = make(kind, "before");
      Reader in{Octets(cut)};
      EXPECT_FALSE(value->decodeFromFrame(in));
      EXPECT_EQ(value->getText(), "before");
      EXPECT_NE(reports.take().find(kEndOfInput), std::string::npos);
    }
  }
}

TEST(WapValues, AnyChangedOctetDecodesOrFailsWithAReport) {
  Reports reports;
  for (const auto& [kind, text, octets] : kVectors) {
    const auto good = hex(octets);
    for (std::size_t at = 0; at < good.size(); ++at) {
      for (int octet = 0; octet < 256; ++octet) {
        auto data = good;
        data[at] = static_cast<std::uint8_t>(octet);
        Reader in{Octets(data)};
        const auto value = make(kind);
        (void)value->isKind(in);
        const bool read = value->decodeFromFrame(in);
        Writer out;  // a number without octets is the empty text, which is no number
        EXPECT_TRUE(!read || value->encodeToFrame(out) || value->getText().empty())
            << kind << ' ' << toHex(data);
        EXPECT_TRUE(read || !reports.texts().empty()) << kind << ' ' << toHex(data);
        (void)reports.take();
      }
    }
  }
}

TEST(WapValues, CopiesKeepKindTextAndFlag) {
  TokenText token("a/b");
  token.setRelaxed(true);
  const auto copy = token.clone();
  token.setText("other");
  EXPECT_EQ(copy->print(), "a/b");
  EXPECT_EQ(copy->typeName(), "Token-text");
  EXPECT_TRUE(dynamic_cast<TokenText&>(*copy).isRelaxed());
  EXPECT_EQ(UriValue("http://a/").clone()->typeName(), "Uri-value");
}

TEST(WapValues, TextEndsAtItsFirstZero) {
  EXPECT_EQ(encoded(TextString(std::string_view("ab\0cd", 5))), "61 62 00");
}

struct OneWay {
  const char* kind;
  const char* input;
  const char* output;  // "refused" when the operation fails
  const char* reports;
};

TEST(WapValues, TextsThatDoNotReadBackAsTheyWere) {
  const auto cases = std::to_array<OneWay>({
      // Numbers out of range, signed or with something behind them.
      {"Short-integer", "128", "refused",
       "error wsp_header_coding: Short-integer: no number or one out of range\n"},
      {"Uintvar-integer", "4294967296", "refused",
       "error wsp_header_coding: Uintvar-integer: no number or one out of range\n"},
      {"Long-integer", "18446744073709551616", "refused",
       "error wsp_header_coding: Long-integer: no number or one out of range\n"},
      {"Integer-value", "-1", "refused",
       "error wsp_header_coding: Integer-value: no number or one out of range\n"},
      {"Value-length", "12x", "refused",
       "error wsp_header_coding: Value-length: no number or one out of range\n"},
      {"Integer-value", " 5 ", "85", ""},
      // Names in any case, charsets in HTTP quotes, aliases.
      {"Constrained-media", "TEXT/PLAIN", "83", ""},
      {"Constrained-charset", "Latin-1", "84", ""},
      {"Field-name", "cache-control", "88", ""},
      {"Well-known-charset (Parameter)", "\"UTF-8\"", "EA", ""},
      {"Text-value", "\"a b\"", "22 61 20 62 00", ""},
      {"Text-value", "\"", "22 22 00", ""},
      // Versions: quoted, with a comment, with blanks, with something behind them.
      {"Version-value", "\"1.3\"", "93", ""},
      {"Version-value", " 1.2 \t/x", "92", ""},
      {"Version-value", "1.2beta", "92", ""},
      {"Version-value", "HTTP/1.1", "48 54 54 50 2F 31 2E 31 00", ""},
      {"Version-value", "99999999999.1", "39 39 39 39 39 39 39 39 39 39 39 2E 31 00", ""},
      // Qualities: the default is nothing, no digits are zero, more than three lose the value.
      {"Q-value", "1", "", ""},
      {"Q-value", "", "", ""},
      {"Q-value", ".5", "", ""},
      {"Q-value", "0.05", "06", ""},
      {"Q-value", "0.50", "33", ""},
      {"Q-value", "0.500", "84 58", ""},
      {"Q-value", "0.000", "01", ""},
      {"Q-value", "0,5", "01", ""},
      {"Q-value", "0.0625", "00", "warning wsp_header_coding: Q-value: more than three digits\n"},
      {"Q-value", "0.99999999999", "00",
       "warning wsp_header_coding: Q-value: more than three digits\n"
       "warning wsp_header_coding: Q-value: numerator of 1000 or more\n"},
      {"No-value", "x", "00", ""},
  });
  Reports reports;
  for (const auto& [kind, input, output, expected] : cases) {
    SCOPED_TRACE(std::string(kind) + " \"" + input + '"');
    EXPECT_EQ(encoded(*make(kind, input)), output);
    EXPECT_EQ(reports.take(), expected);
  }
}

TEST(WapValues, OctetsThatNoEncoderOfOursWrites) {
  const auto cases = std::to_array<OneWay>({
      {"Uintvar-integer", "80 80 80 80 80 00", "refused", kUintvarError},
      {"Uintvar-integer", "81 7F 01", "255 + 01", ""},
      {"Uintvar-integer", "FF FF FF FF 7F", "4294967295", ""},  // bits above 32 are lost
      {"Long-integer", "00", "", ""},
      {"Long-integer", "09 FF 00 00 00 00 00 00 00 01", "1", ""},  // the earliest is shifted out
      {"Long-integer", "1F 00", "refused",
       "error wsp_header_coding: Long-integer: short-length above 30\n"},
      {"Integer-value", "'a' 00", "refused",
       "error wsp_header_coding: Long-integer: short-length above 30\n"},
      {"Value-length", "20 01", "refused",
       "assertion wsp_header_coding: Value-length: first octet above 31\n"},
      {"Value-length", "1F 80 80 80 80 80 00", "refused", kUintvarError},
      {"Text-string", "7F 'a' 00", "refused",
       "assertion wsp_header_coding: Text-string: quote octet ahead of a character below 128\n"},
      {"Text-string", "'a' 00 'b'", "a + 62", ""},
      {"Uri-value", "7F E9 00", "\xE9", ""},
      {"Quoted-string", "'a' 00", "refused",
       "assertion wsp_header_coding: Quoted-string: first octet is no double-quote character\n"},
      {"Quoted-string", "22 7F E9 00", "\xE9", ""},
      {"No-value", "80", "refused", "assertion wsp_header_coding: No-value: octet is not zero\n"},
      {"Text-value", "80", "refused",
       "error wsp_header_coding: Text-value: first octet opens no text\n"},
      {"Text-value", "'a b' 00", "a b",
       "warning wsp_header_coding: Invalid chars in Token-text \"a b\" but decoding still "
       "succeeded.\n"},
      {"Untyped-value", "1F 00", "refused",
       "error wsp_header_coding: Text-value: first octet opens no text\n"},
      {"Constrained-encoding", "BE", "62", ""},
      {"Constrained-media", "CE", "refused", kUnknown},
      {"Constrained-charset", "81", "refused", kUnknown},
      {"Constrained-charset", "84", "iso-8859-1", ""},
      {"Field-name", "BD", "Cache-Control", ""},
      {"Field-name", "C8", "refused", kUnknown},
      {"Well-known-charset (Parameter)", "01 6A", "utf-8", ""},
      {"Well-known-charset (Parameter)", "00", "", ""},
      {"Version-value", "80", "0.0", ""},
      {"Q-value", "06", "0.5", ""},
      {"Q-value", "84 58", "0.500", ""},
      {"Q-value", "00", "refused", "error wsp_header_coding: Q-value: code out of range\n"},
      {"Q-value", "88 4C", "refused", "error wsp_header_coding: Q-value: code out of range\n"},
      {"Date-value", "00", "", ""},
      {"Date-value", "08 FF FF FF FF FF FF FF FF", "Thu, 09 Nov 584554051223 07:00:15 GMT", ""},
  });
  Reports reports;
  for (const auto& [kind, input, output, expected] : cases) {
    SCOPED_TRACE(std::string(kind) + ' ' + input);
    EXPECT_EQ(decoded(*make(kind), input), output);
    EXPECT_EQ(reports.take(), expected);
  }
}

TEST(WapValues, KindTestsTellAlternativesApart) {
  struct Case {
    const char* kind;
    const char* yes;
    const char* no;
  };
  const auto cases = std::to_array<Case>({
      {"Uintvar-integer", "81 00", "80 01"},           // a leading zero group
      {"Uintvar-integer", "8F FF FF FF 7F", "81 82"},  // no last octet
      {"Short-integer", "80", "7F"},
      {"Long-integer", "1E", "1F"},
      {"Value-length", "1F 81 00", "1F 80 01"},
      {"Value-length", "1E", "20"},
      {"Value-length", "00", "1F"},
      {"Text-string", "09", "0B"},
      {"Text-string", "7F", "80"},
      {"Quoted-string", "22", "27"},
      {"Token-text", "'a' 00", "'a'"},
      {"Token-text", "'a-1' 00", "'a/b' 00"},
      {"Token-text", "7E 00", "00"},
      {"Extension-media", "'a/b:c' 00", "'a b' 00"},
      {"Text-value", "00", "80"},
      {"Untyped-value", "80", "1F"},
      {"No-value", "00", "01"},
      {"Version-value", "'1' 00", "01"},
      {"Q-value", "01", "80 01"},
  });
  for (const auto& [kind, yes, no] : cases) {
    const auto yesOctets = hex(yes);
    const auto noOctets = hex(no);
    EXPECT_TRUE(make(kind)->isKind(Reader{Octets(yesOctets)})) << kind << ' ' << yes;
    EXPECT_FALSE(make(kind)->isKind(Reader{Octets(noOctets)})) << kind << ' ' << no;
    EXPECT_FALSE(make(kind)->isKind(Reader{})) << kind << " of nothing";
  }
}

TEST(TokenText, StrictTokenWarnsOncePerInvalidCharacter) {
  Reports reports;
  EXPECT_EQ(encoded(TokenText("a/b:c")), "61 2F 62 3A 63 00");
  const std::string line =
      "warning wsp_header_coding: Invalid characters in token-text \"a/b:c\"\n";
  EXPECT_EQ(reports.take(), line + line);
  // Every separator, and the limits of the printable characters.
  EXPECT_NE(encoded(TokenText("()<>@,;:\\\"/[]?={} \t\x1F\x7F\x80!~")), "refused");
  const std::string texts = reports.take();
  EXPECT_EQ(std::count(texts.begin(), texts.end(), '\n'), 22);
}

TEST(TokenText, RelaxedTokenKeepsSlash) {
  Reports reports;
  TokenText token("text/plain:x");
  token.setRelaxed(true);
  EXPECT_EQ(encoded(token), toHex(hex("'text/plain:x' 00")));
  EXPECT_EQ(decoded(token, "'a/b' 00"), "a/b");
  EXPECT_EQ(reports.take(), "");
  token.setText("a b");
  (void)encoded(token);
  EXPECT_EQ(reports.take(),
            "warning wsp_header_coding: Invalid characters in token-text \"a b\"\n");
}

TEST(TokenText, EncodingWarningCutsTheValueAt128Characters) {
  Reports reports;
  const std::string longText = std::string(130, 'x') + ' ';
  EXPECT_EQ(encoded(TokenText(longText)).size(), 132 * 3 - 1U);
  EXPECT_EQ(reports.take(), "warning wsp_header_coding: Invalid characters in token-text \"" +
                                std::string(128, 'x') + "\"\n");
  Writer out;
  EXPECT_TRUE(TextString(longText).encodeToFrame(out));
  EXPECT_EQ(decoded(*make("Token-text"), toHex(out.written())), longText);
  EXPECT_EQ(reports.take(), "warning wsp_header_coding: Invalid chars in Token-text \"" + longText +
                                "\" but decoding still succeeded.\n");
}

TEST(Uintvar, StatedCountMayBeExceededByOneOctetButNeverTheBuffer) {
  Reports reports;
  const auto data = hex("81 82 83 04");
  EXPECT_EQ(mmsbrix::decodeUintvar(Octets(data), 3).octets, 4U);
  EXPECT_EQ(reports.take(), "");
  const auto twoPast = mmsbrix::decodeUintvar(Octets(data), 2);
  EXPECT_TRUE(twoPast.error);
  EXPECT_EQ(twoPast.octets, 3U);
  EXPECT_EQ(twoPast.value, 0x4103U);
  EXPECT_EQ(reports.take(), kUintvarError);
  const std::vector<std::uint8_t> cut(data.begin(), data.begin() + 2);
  EXPECT_EQ(mmsbrix::decodeUintvar(Octets(cut), static_cast<std::size_t>(-1)).octets, 2U);
}

struct DateCase {
  const char* text;
  std::uint64_t seconds;
};

TEST(Dates, ThreeLayoutsAreReadAsUtc) {
  const auto cases = std::to_array<DateCase>({
      {"Sun, 06 Nov 1994 08:49:37 GMT", 784111777},
      {"Sunday, 06-Nov-94 08:49:37 GMT", 784111777},
      {"Sun, 06-Nov-1994 08:49:37 GMT", 784111777},
      {"Sun Nov  6 08:49:37 1994", 784111777},
      {" sun, 6 NOV 1994 08:49:37 utc ", 784111777},
      {"Mon, 06 Nov 1994 08:49:37", 784111777},  // not that day's weekday, no zone
      {"Wed, 01 Jan 70 00:00:00 GMT", 0},
      {"Thu, 29 Feb 2024 23:59:60 GMT", 1709251200},
      {"Sun, 01 Jan 103 00:00:00 GMT", 1041379200},  // years below 1900 count from there
  });
  for (const auto& [text, seconds] : cases) EXPECT_EQ(parseDate(text), seconds) << text;
  // Out of range, before 1970, another zone or layout.
  for (const char* text :
       {"Wed, 29 Feb 2023 00:00:00 GMT", "Wed, 00 Feb 2023 00:00:00 GMT",
        "Wed, 01 Feb 2023 24:00:00 GMT", "Wed, 01 Feb 2023 00:60:00 GMT",
        "Sun, 06 Nov 05 08:49:37 GMT", "Sun, 06 Nov 1994 08:49:37 +0200",
        "Sun, 06 Nov 1994 08:49:37 EST", "Sun, 06 Non 1994 08:49:37 GMT",
        "Sun, 06 Nov -1994 08:49:37 GMT", "Sun, 06 Nov 1994 08:49", "Sun, 06-Nov 1994 08:49:37 GMT",
        "Sun, 06 Nov 18446744073709551615 08:49:37 GMT",
        "Sun, 06 Nov 18446744073709551616 08:49:37 GMT", "Sun", ""}) {
    EXPECT_FALSE(parseDate(text)) << text;
  }
}

TEST(Dates, UnreadableDateIsRefusedWithAReport) {
  const std::string refusal =
      "error wsp_header_coding: Date-value: no date in a known layout from 1970 on\n";
  Reports reports;
  EXPECT_EQ(encoded(DateValue("Sun, 32 Nov 1994 08:49:37 GMT")), "refused");
  EXPECT_EQ(reports.take(), refusal);
  EXPECT_EQ(weekdayNumber("Someday"), -1);
  EXPECT_EQ(reports.take(), "assertion wsp_header_coding: Date-value: unknown weekday\n");
  EXPECT_EQ(encoded(DateValue("06 Nov 1994 08:49:37 GMT")), "refused");
  EXPECT_EQ(reports.take(), "assertion wsp_header_coding: Date-value: unknown weekday\n" + refusal);
}

TEST(Dates, FieldsOutOfRangePrintAsError) {
  DateFields date;
  date.weekday = 7;
  date.month = -1;
  EXPECT_EQ(dateText(date), "(error), 01 (error) 1970 00:00:00 GMT");
}

#if defined(__GXX_ABI_VERSION) && (defined(__x86_64__) || defined(__i386__))
// A pointer to a virtual function holds 1 and the offset of its slot there.
template <class Function>
std::ptrdiff_t slotOf(Function function) {
  std::ptrdiff_t offset = 0;
  std::memcpy(&offset, &function, sizeof offset);
  return (offset - 1) / static_cast<std::ptrdiff_t>(sizeof(void*));
}

TEST(Values, VirtualFunctionsKeepTheirOrder) {
  // The destructor has the first two slots.
  EXPECT_EQ(slotOf(&WapBase::isKind), 2);
  EXPECT_EQ(slotOf(&WapBase::clone), 3);
  EXPECT_EQ(slotOf(&WapBase::setText), 4);
  EXPECT_EQ(slotOf(&WapBase::getText), 5);
  EXPECT_EQ(slotOf(&WapBase::print), 6);
  EXPECT_EQ(slotOf(&WapBase::encodeToFrame), 7);
  EXPECT_EQ(slotOf(&WapBase::decodeFromFrame), 8);
  EXPECT_EQ(slotOf(&WapBase::typeName), 9);
}
#endif

}  // namespace
}  // namespace WapStack
