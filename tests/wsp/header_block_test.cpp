#include "wsp/header_block.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "support/diagnostics.h"
#include "support/hex.h"
#include "wsp/content_type_reader.h"
#include "wsp/header_table.h"
#include "wsp/header_vectors.h"

namespace mmsbrix {

void PrintTo(const HeaderField& field, std::ostream* out) {
  *out << int{field.page} << ' ' << field.name << ": " << field.value;
}

namespace test {
namespace {

using Fields = std::vector<HeaderField>;

DecodedHeaders decode(std::string_view octets, HeaderLists lists = HeaderLists::joined) {
  const auto data = hex(octets);
  return decodeHeaderBlock(data.data(), data.size(), lists);
}
std::string encode(const Fields& fields, EncodingVersion version = EncodingVersion::v1_2) {
  return toHex(encodeHeaderBlock(fields, version).octets);
}

TEST(HeaderBlock, EveryVectorBothWays) {
  for (const HeaderVector& vector : kHeaderVectors) {
    SCOPED_TRACE(std::string(vector.name) + ": " + vector.value);
    const Fields fields = {{vector.name, vector.value}};
    EXPECT_EQ(encode(fields, vector.version), toHex(hex(vector.octets)));
    const auto decoded = decode(vector.octets);
    EXPECT_TRUE(decoded.problems.empty());
    EXPECT_EQ(decoded.fields, fields);
  }
}

TEST(HeaderBlock, EveryCodeAndEveryParameterHasAVector) {
  std::set<int> codes;
  std::set<int> parameters;
  for (const HeaderVector& vector : kHeaderVectors) {
    const auto octets = hex(vector.octets);
    if (octets.front() < 0x80) continue;
    codes.insert(octets.front() & 0x7F);
    const std::string_view name = vector.name;
    if (name != "Accept" && name != "Content-Type" && name != "Content-Disposition") continue;
    ContentTypeReader reader(Octets(octets).subspan(1));
    for (Parameter parameter; reader.next(parameter);) parameters.insert(parameter.code);
  }
  for (int code = 0; code <= 0x4A; ++code) EXPECT_TRUE(codes.contains(code)) << code;
  for (int code = 0; code <= 0x1D; ++code) EXPECT_TRUE(parameters.contains(code)) << code;
}

struct OddForm {
  const char* octets;
  const char* name;
  const char* value;
};

TEST(HeaderBlock, OddFormsAreReadForWhatTheyAre) {
  constexpr auto kForms = std::to_array<OddForm>({
      // A text where the header has a number, and no value at all.
      {"85 'soon' 00", "Age", "soon"},
      {"94 '0' 00", "Expires", "0"},
      {"85 00", "Age", ""},
      {"80 00", "Accept", ""},
      {"91 'text/plain; charset=x' 00", "Content-Type", "text/plain; charset=x"},
      // A name in text with the octets of its code, and with none.
      {"'encoding-version' 00 93", "encoding-version", "1.3"},
      {"'X-Foo' 00 00", "X-Foo", ""},
      // Numbers in more octets than they need.
      {"85 02 00 05", "Age", "5"},
      {"8D 00", "Content-Length", ""},
      // A form of the standard that is never written.
      {"8C 01 1F", "Content-Language", "fi"},
      {"86 'PATCH' 00", "Allow", "PATCH"},
      {"83 03 01 19 47", "Accept-Language", "en; q=0.7"},
      {"BB 04 'a' 00 80 33", "Accept-Charset", "a; q=0.5"},
      {"AC E3", "Warning", "199"},
      {"C0 '<a>' 00", "Content-ID", "<a>"},
      {"C0 22 '<a>' 22 00", "Content-ID", "<a>"},
      {"C0 22 7F C3 A9 00", "Content-ID", "\xC3\xA9"},
      {"'Content-ID' 00 22 '<a>' 22 00", "Content-ID", "<a>"},
      {"'Content-ID' 00 '<a>' 22 00", "Content-ID", "<a>\""},
      {"AE 82", "Content-Disposition", "inline"},
      {"AE 06 'own' 00 88 00", "Content-Disposition", "own; Padding"},
      // A quoted-string where a text-string belongs, with and without its end.
      {"91 06 83 85 22 'ab' 00", "Content-Type", "text/plain; Name=\"ab\""},
      {"91 07 83 85 22 'ab' 22 00", "Content-Type", "text/plain; Name=\"ab\""},
      // Values of a parameter that are not of its type.
      {"91 03 83 85 85", "Content-Type", "text/plain; Name=5"},
      {"91 07 83 96 22 '4 k' 00", "Content-Type", "text/plain; Size=\"4 k\""},
      {"91 03 83 81 00", "Content-Type", "text/plain; Charset"},
      {"91 02 83 81", "Content-Type", "text/plain; Charset"},
      {"91 05 83 81 02 08 CC", "Content-Type", "text/plain; Charset=2252"},
      {"91 03 83 A0 85", "Content-Type", "text/plain; 0x20=5"},
      // Quotation marks inside stay apart from those around.
      {"91 08 83 'x' 00 22 'a' 22 'b' 00", "Content-Type", "text/plain; x=\"a\\\"b\""},
      {"C2 05 '0.0' 00 00", "", ""},  // no cookie in it
      {"C7 03 82 01 0A", "Cache-Control", "Max-age=10"},
      {"C7 03 82 02 0A", "", ""},  // seconds without all octets of them
      // Codes of nothing, whose values are of any form.
      {"CB 85", "0x4B", "0x85"},
      {"FF 'x' 00", "0x7F", "x"},
  });
  for (const OddForm& form : kForms) {
    SCOPED_TRACE(form.octets);
    const auto decoded = decode(form.octets);
    const Fields expected = *form.name == '\0' ? Fields{} : Fields{{form.name, form.value}};
    EXPECT_EQ(decoded.fields, expected);
    EXPECT_EQ(decoded.problems.empty(), *form.name != '\0');
  }
}

// No value, a text where a number is due, a number where a text is due, an empty and a foreign
// length: the header is read or named as left out, and those around it stay.
TEST(HeaderBlock, OddFormsOfEveryHeaderCostNoOther) {
  const std::string before = "A9 'agent' 00 ";  // User-Agent
  const std::string after = " 9C 'place' 00";   // Location
  for (const auto& row : WapStack::kHeaderTable) {
    if (row.code == 0x29 || row.code == 0x1C) continue;
    for (const char* form :
         {"00", "'odd text' 00", "22 'quoted' 00", "FF", "01 80", "03 FE 'xy'"}) {
      const std::vector<std::uint8_t> code = {static_cast<std::uint8_t>(row.code | 0x80)};
      const std::string octets = before + toHex(code) + ' ' + form + after;
      SCOPED_TRACE(octets);
      const DecodedHeaders decoded = decode(octets);
      ASSERT_FALSE(decoded.fields.empty());
      EXPECT_EQ(decoded.fields.front(), (HeaderField{"User-Agent", "agent"}));
      EXPECT_EQ(decoded.fields.back(), (HeaderField{"Location", "place"}));
      EXPECT_EQ(decoded.fields.size() + decoded.problems.size(), 3U);
    }
  }
}

TEST(HeaderBlock, AnUndecodableValueCostsThatHeaderOnly) {
  constexpr auto kBad = std::to_array<const char*>({"80 FF",
                                                    "83 02 01 8D",
                                                    "84 85",
                                                    "86 81",
                                                    "8B 83",
                                                    "96 85",
                                                    "AA FF",
                                                    "AC 81",
                                                    "B7 93",
                                                    "C6 81",
                                                    "87 02 80 'u'",
                                                    "87 03 ' ' 00 00",
                                                    "8F 02 01 02",
                                                    "90 02 85 81",
                                                    "91 04 83 81 02 03",
                                                    "91 03 FF 81 EA",
                                                    "93 03 01 02 03",
                                                    "94 84",
                                                    "A3 02 82 01",
                                                    "A3 01 80",
                                                    "A5 02 82 81",
                                                    "A5 02 80 85",
                                                    "AD 02 80 'r'",
                                                    "B4 1F 03 01 02 03",
                                                    "C1 04 9F 'a' 00 'b'",
                                                    "C2 03 9F 7F 'a'",
                                                    "C3 02 05 93",
                                                    "BB 03 EA 88 4C",
                                                    "C7 02 85 81",
                                                    "C7 01 80",
                                                    "9F 01 00",
                                                    "B8 01 85",
                                                    "'X-Foo' 00 85",
                                                    "'X Foo' 00 'a' 00",
                                                    "95 'a' 0D 0A 'b' 00",
                                                    "C5 01 83",
                                                    "A6 7F 'a' 00",
                                                    "87 06 80 7F 'u' 00 'p' 00",
                                                    "B6 85"});
  for (const char* bad : kBad) {
    SCOPED_TRACE(bad);
    const auto decoded = decode(std::string("85 81 ") + bad + " 9E 82");
    EXPECT_EQ(decoded.fields, (Fields{{"Age", "1"}, {"Max-Forwards", "2"}}));
    ASSERT_EQ(decoded.problems.size(), 1U);
    EXPECT_EQ(decoded.problems[0].position, 2U);
    EXPECT_FALSE(decoded.problems[0].reason.empty());
  }
}

TEST(HeaderBlock, AMissingEndCostsTheRestOnly) {
  for (const char* cut :
       {"95", "95 'abc'", "'X-Foo' 00", "'X-Foo'", "91 03 83 81", "8D 02 01", "7F", "95 1F",
        "95 1F 85", "95 1F 8F FF FF FF FF 'abc'", "95 1F 87 'a'"}) {
    const auto decoded = decode(std::string("85 81 ") + cut);
    EXPECT_EQ(decoded.fields, (Fields{{"Age", "1"}})) << cut;
    ASSERT_EQ(decoded.problems.size(), 1U) << cut;
    EXPECT_EQ(decoded.problems[0].position, 2U) << cut;
  }
  EXPECT_EQ(decode("00 85 81").problems.size(), 1U);  // a zero octet is no header
}

TEST(HeaderBlock, TheNewestCodeOfTheVersionIsSent) {
  const Fields cache = {{"cache-control", "no-store"}};
  EXPECT_EQ(encode(cache, v11), "88 81");
  EXPECT_EQ(encode(cache, v12), "88 81");
  EXPECT_EQ(encode(cache, v13), "BD 81");
  EXPECT_EQ(encode(cache, v15), "C7 81");
  EXPECT_EQ(encode({{"Accept-Encoding", "gzip"}}, v12), "82 80");
  EXPECT_EQ(encode({{"Expect", "100-Continue"}}, v14), "B8 80");
  EXPECT_EQ(encode({{"Vary", "Accept-Charset"}}, v12), "AA 81");
  EXPECT_EQ(encode({{"Vary", "Accept-Charset"}}, v13), "AA BB");
  EXPECT_EQ(encode({{"Vary", "Cookie"}}, v12), toHex(hex("AA 'Cookie' 00")));
  // Parameters and media types keep to the version too.
  const Fields type = {{"Content-Type", "text/css; name=x"}};
  EXPECT_EQ(encode(type, v12), toHex(hex("91 0C 'text/css' 00 85 'x' 00")));
  EXPECT_EQ(encode(type, v14), toHex(hex("91 04 BD 97 'x' 00")));
  EXPECT_EQ(encode({{"Content-Type", "a/b; size=5"}}, v13),
            toHex(hex("91 0A 'a/b' 00 'size' 00 85")));
}

TEST(HeaderBlock, TextsOfOtherSpellingMeanTheSame) {
  constexpr auto kTexts = std::to_array<HeaderVector>({
      {v11, "ACCEPT", " TEXT/html ;q=\"0.50\" , ,image/png;Q=1.0", "80 03 82 80 33 80 A0"},
      {v11, "accept-language", "EN ; q = 0.700", "83 03 99 86 20"},
      {v11, "Content-Type", "text/plain; charset=\"UTF-8\";", "91 03 83 81 EA"},
      {v11, "Content-Type", "no media type", "91 'no media type' 00"},
      {v12, "Content-Type", "multipart/related;type=application/smil;start=<a>",
       "91 1F 29 'multipart/related' 00 89 'application/smil' 00 8A '<a>' 00"},
      {v11, "Content-Type", "a/b; q=high", "91 0B 'a/b' 00 'q' 00 'high' 00"},
      {v11, "Content-Type", "a/b; q=0.1234", "91 0D 'a/b' 00 'q' 00 '0.1234' 00"},
      {v11, "Content-Type", "a/b; padding=200", "91 09 'a/b' 00 88 '200' 00"},
      {v11, "Authorization", "basic dTpw", "87 05 80 'u' 00 'p' 00"},
      {v11, "Content-Range", "bytes 0-499/1025", "90 03 00 88 01"},  // the last position is lost
      {v11, "Content-Range", "bytes */1025", "90 03 00 88 01"},
      {v11, "Warning", "299 a \"b\"", "AC 05 E3 'a' 00 'b' 00"},  // as 199, the wire has one code
      {v11, "Via", "1.0 a (\\), b), 1.1 c", "AB '1.0 a (\\), b)' 00 AB '1.1 c' 00"},
      {v11, "WWW-Authenticate", "a/b realm=\"r\"",
       "'WWW-Authenticate' 00 'a/b realm=' 22 'r' 22 00"},
      {v11, "Date", "Sunday, 06-Nov-94 08:49:37 GMT", "92 04 2E BC 98 A1"},
      {v11, "Cache-Control", "no-cache=Age, private", "88 02 80 85 88 87"},
      {v13, "Content-ID", "\"<a>\"", "C0 22 '<a>' 00"},
      {v11, "If-None-Match", "\"a,b\" , \"c\"", "99 22 'a,b' 22 00 99 22 'c' 22 00"},
      {v12, "X-Wap-Application-Id", "X-WAP-Application:MMS.ua", "AF 84"},
      {v13, "Cookie", "$Path=/x; a=b", "'Cookie' 00 '$Path=/x; a=b' 00"},  // whose path?
      {v13, "Cookie", "a=b; $Domain=d", "C2 0A '0' 00 07 'a' 00 'b' 00 00 'd' 00"},
      {v11, "Set-Cookie", "a=b; expires=Wed, 09-Nov-99 23:12:40 GMT",
       "'Set-Cookie' 00 'a=b; expires=Wed, 09-Nov-99 23:12:40 GMT' 00"},
  });
  for (const HeaderVector& text : kTexts) {
    EXPECT_EQ(encode({{text.name, text.value}}, text.version), toHex(hex(text.octets)))
        << text.value;
  }
}

TEST(HeaderBlock, WhatWasReadIsWrittenAsItStood) {
  const auto kFields = std::to_array<HeaderField>({
      {"Accept", "text/html; Level=>1"},
      {"Accept", "text/html; Level=1"},
      {"Content-Type", "a/b; x=c\\"},
      {"Content-Type", "a/b; x=c\\d"},
      {"Content-Type", "a/b; Name=c\\"},
      {"Content-ID", "a\""},
      {"Content-ID", "\"a"},
      {"Content-ID", "\"a\""},
      {"Content-ID", "\"\"a\"\""},
      {"Content-ID", "\"\""},
      {"Content-ID", "\""},
      {"Content-ID", "\"\"\""},
      {"Pragma", "No-cache;"},
      {"Expect", "100-continue;"},
      {"Cookie", "$Version=\"\"; a=b"},
      {"Cookie", "$Version=0.0; a=b"},
      {"Set-Cookie", "a=b; Version=\"\""},
      {"Set-Cookie", "a=b; Version=1; Version=2"},
      {"Profile-Diff", "AwVqAAV="},
      {"WWW-Authenticate", "Negotiate"},
      {"WWW-Authenticate", "Digest nonce=x, Negotiate, Basic realm=\"a\""},
  });
  for (const HeaderField& field : kFields) {
    for (const EncodingVersion version : {v11, v12, v13, v14, v15}) {
      SCOPED_TRACE(field.name + ": " + field.value);
      const auto first = encodeHeaderBlock({field}, version).octets;
      const auto read = decodeHeaderBlock(first.data(), first.size());
      EXPECT_TRUE(read.problems.empty());
      EXPECT_EQ(toHex(encodeHeaderBlock(read.fields, version).octets), toHex(first));
    }
  }
  EXPECT_EQ(encode({{"Accept", "text/html; Level=>1"}}), toHex(hex("80 06 82 82 22 '>1' 00")));
}

TEST(HeaderBlock, ListsAreJoinedWhereTheFirstElementStood) {
  const char* octets =
      "80 82 85 81 80 A0 'accept' 00 'a/b, c/d' 00 'X-Foo' 00 'a' 00 'X-Foo' 00 'b' 00";
  EXPECT_EQ(decode(octets).fields, (Fields{{"Accept", "text/html, image/png, a/b, c/d"},
                                           {"Age", "1"},
                                           {"X-Foo", "a"},
                                           {"X-Foo", "b"}}));
  EXPECT_EQ(decode(octets, HeaderLists::split).fields.size(), 6U);
  // All codes of a name are one header; no value has nothing to join.
  EXPECT_EQ(decode("88 80 C7 81 BD 00").fields,
            (Fields{{"Cache-Control", "No-cache, No-store"}, {"Cache-Control", ""}}));
  EXPECT_EQ(decode("C1 06 9F 'a' 00 'b' 00 C1 06 9F 'c' 00 'd' 00").fields.size(), 2U);
}

TEST(HeaderBlock, CodePagesAreShiftedToAndBack) {
  const Fields fields = {{"Age", "1"},         {"0x05", "0x81", 16},
                         {"0x05", "text", 16}, {"0x7F", "0x0201FF", 64},
                         {"X-Foo", "a"},       {"0x00", "", 2}};
  const char* octets =
      "85 81 10 85 81 85 'text' 00 7F 40 FF 02 01 FF 01 'X-Foo' 00 'a' 00 02 80 00";
  EXPECT_EQ(encode(fields), toHex(hex(octets)));
  EXPECT_EQ(decode(octets).fields, fields);
  // The long form reaches every page; a page that does not exist has no headers.
  EXPECT_EQ(decode("7F 02 85 81 7F 01 85 81").fields, (Fields{{"0x05", "0x81", 2}, {"Age", "1"}}));
  EXPECT_EQ(decode("7F 00 85 81 01 85 81").fields, (Fields{{"Age", "1"}}));
  // Numbers are of the page, not of its text names, and a header with a name has its own.
  const auto refused = encodeHeaderBlock(
      {{"Age", "1", 16}, {"0x05", "1", 0}, {"0x80", "1", 16}, {"0x4B", "x"}, {"0x05", "1"}});
  EXPECT_EQ(refused.problems.size(), 3U);
  EXPECT_EQ(toHex(refused.octets), toHex(hex("CB 'x' 00 '0x05' 00 '1' 00")));
}

TEST(HeaderBlock, WhatHasNoFormOnTheWireIsNamed) {
  const auto encoded = encodeHeaderBlock({{"Age", "1"},
                                          {"", "x"},
                                          {"X Foo", "x"},
                                          {"X-Foo", "a\r\nSet-Cookie: b"},
                                          {"Age", "\x01"},
                                          {"Server", std::string("a\0b", 3)},
                                          {"Max-Forwards", "2"}});
  EXPECT_EQ(toHex(encoded.octets), "85 81 9E 82");
  ASSERT_EQ(encoded.problems.size(), 5U);
  EXPECT_EQ(encoded.problems[4].name, "Server");
  EXPECT_EQ(encoded.problems[2].position, 3U);
  EXPECT_EQ(encoded.problems[2].name, "X-Foo");
}

TEST(HeaderBlock, CredentialsAreMaskedInPrintAndKeptOutOfReports) {
  EXPECT_EQ(printHeader({"authorization", "Basic dXNlcjpwYXNz"}), "authorization: Basic ***");
  EXPECT_EQ(printHeader({"Proxy-Authorization", "dXNlcjpwYXNz"}), "Proxy-Authorization: ***");
  EXPECT_EQ(printHeader({"WWW-Authenticate", "Basic realm=\"a\""}),
            "WWW-Authenticate: Basic realm=\"a\"");
  Reports reports;
  (void)encodeHeaderBlock({{"Authorization", "Basic secret!"}, {"Authorization", "secret\x01"}});
  (void)decode("87 08 80 'secret' 00 87 08 'secret' 00 01 A1 08 80 'secret' 07");
  EXPECT_FALSE(reports.texts().empty());
  EXPECT_EQ(reports.texts().find("secret"), std::string::npos) << reports.texts();
}

}  // namespace
}  // namespace test
}  // namespace mmsbrix
