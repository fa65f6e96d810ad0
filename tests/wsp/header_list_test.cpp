// The typed header values, header lists and multipart entries under the public face.
#include "wsp/wsp_header_list.h"

#include <gtest/gtest.h>

#include <memory>

#include "support/diagnostics.h"
#include "support/hex.h"
#include "wsp/multipart_entries.h"

namespace WapStack {
namespace {

using mmsbrix::Octets;
using mmsbrix::test::hex;
using mmsbrix::test::toHex;

TEST(HeaderValues, EachHeaderHasAClassOfItsOwn) {
  for (std::size_t code = 0; code < kHeaderCodes; ++code) {
    const auto value = makeHeaderValue(code);
    EXPECT_EQ(value->typeName(), code == 0x11 ? "Content-type-value" : kHeaderTable[code].name);
    EXPECT_EQ(value->row(), &kHeaderTable[code]);
    value->setText("x");
    EXPECT_EQ(value->clone()->typeName(), value->typeName());
    EXPECT_EQ(value->clone()->getText(), "x");
  }
  EXPECT_EQ(makeHeaderValue(kHeaderCodes)->typeName(), "Wap-value");
  const Header_value<0x07> credentials("Digest response=\"x\"");
  EXPECT_EQ(credentials.print(), "Digest ***");
  EXPECT_EQ(credentials.getText(), "Digest response=\"x\"");
}

TEST(HeaderValues, ARefusedValueChangesNothing) {
  mmsbrix::test::Reports reports;
  Header_value<0x0B> value("Gzip");
  const auto octets = hex("02 81 82 99");
  Reader in{Octets(octets)};
  EXPECT_FALSE(value.isKind(in));
  EXPECT_FALSE(value.decodeFromFrame(in));
  EXPECT_EQ(value.getText(), "Gzip");
  EXPECT_EQ(in.left(), 1U);  // the field size is taken all the same
  EXPECT_NE(reports.take().find("unsupported or not well known Wap value (unknown value)"),
            std::string::npos);
  Writer out;
  out.octet(1);
  EXPECT_FALSE(Header_value<0x05>("ten").encodeToFrame(out));
  EXPECT_EQ(out.size(), 1U);
}

TEST(HeaderValues, ContentTypeIsTakenApart) {
  Content_type_value value(
      "Application/vnd.wap.multipart.related ; TYPE=\"a/b\";Start=\"<\\a>\"; x");
  EXPECT_EQ(value.mediaType(), "Application/vnd.wap.multipart.related");
  EXPECT_TRUE(value.isMultipart());
  EXPECT_EQ(value.parameter("type"), "a/b");
  EXPECT_EQ(value.parameter("start"), "<a>");
  EXPECT_EQ(value.parameter("x"), "");
  EXPECT_EQ(value.parameter("y"), std::nullopt);
  EXPECT_FALSE(Content_type_value("text/plain").isMultipart());
}

TEST(HeaderList, TheFilterSaysWhatIsBinary) {
  Message_header list;
  list.add({"Age", "1"});
  list.add({"Expect", "100-continue"});
  list.add({"0x05", "0x81", 16});
  list.add({"Server", "x"});
  HeaderEncodingFilter filter;
  filter.setVersion(WapAssignments::kVersion13);
  filter.allowHeader(0x05, false);
  filter.allowPage(16, false);
  Writer out;
  EXPECT_EQ(list.encodeToFrame(out, filter).size(), 1U);  // a number has no form but its own
  EXPECT_EQ(toHex(out.written()), toHex(hex("'Age' 00 '1' 00 B8 80 A6 'x' 00")));
  filter.allowPage(kDefaultPage, false);
  Writer texts;
  list.encodeToFrame(texts, filter);
  EXPECT_EQ(toHex(texts.written()),
            toHex(hex("'Age' 00 '1' 00 'Expect' 00 '100-continue' 00 'Server' 00 'x' 00")));
}

TEST(HeaderList, TheNewestCodeThatIsLetThroughIsSent) {
  Message_header list;
  list.add({"Cache-Control", "no-store"});
  list.add({"0x4B", "x"});
  HeaderEncodingFilter filter(WapAssignments::kVersion14);
  filter.allowHeader(0x47, false);
  Writer out;
  EXPECT_TRUE(list.encodeToFrame(out, filter).empty());
  EXPECT_EQ(toHex(out.written()), toHex(hex("BD 81 CB 'x' 00")));
  filter.allowHeader(0x3D, false);
  filter.allowHeader(0x4B, false);
  Writer older;
  EXPECT_TRUE(list.encodeToFrame(older, filter).empty());
  EXPECT_EQ(toHex(older.written()), toHex(hex("88 81 '0x4B' 00 'x' 00")));
}

// A page of an application: its header 5 is named and holds what Age does, its header 7 a list like
// Accept.
class NamedPage : public CodePage {
 public:
  NamedPage() : CodePage(16) {}
  std::string nameOf(std::uint8_t code) const override {
    return code == 5 ? "Lifetime" : CodePage::nameOf(code);
  }
  std::optional<std::uint8_t> codeOf(std::string_view name,
                                     const HeaderEncodingFilter& filter) const override {
    return name == "Lifetime" ? std::uint8_t{5} : CodePage::codeOf(name, filter);
  }
  std::unique_ptr<Wap_value> valueOf(std::uint8_t code) const override {
    if (code == 7) return makeHeaderValue(0x00);
    return code == 5 ? makeHeaderValue(0x05) : CodePage::valueOf(code);
  }
};

TEST(HeaderList, ListsOfAnApplicationPageStayApart) {
  Message_header list;
  list.usePage(std::make_shared<NamedPage>());
  const auto octets = hex("80 82 10 87 A0 87 82 01 80 A0");
  Reader in{Octets(octets)};
  EXPECT_TRUE(list.decodeFromFrame(in).empty());
  ASSERT_EQ(list.headers().size(), 3U);
  EXPECT_EQ(list.headers()[0].print(), "Accept: text/html, image/png");
  EXPECT_EQ(list.headers()[1].print(), "0x07: image/png");
  EXPECT_EQ(list.headers()[2].print(), "0x07: text/html");
}

TEST(HeaderList, AnApplicationCanNameTheHeadersOfItsPage) {
  Message_header list;
  list.usePage(std::make_shared<NamedPage>());
  const auto octets = hex("10 85 87 86 87");
  Reader in{Octets(octets)};
  EXPECT_TRUE(list.decodeFromFrame(in).empty());
  ASSERT_EQ(list.headers().size(), 2U);
  EXPECT_EQ(list.headers()[0].print(), "Lifetime: 7");
  EXPECT_EQ(list.headers()[1].print(), "0x06: 0x87");
  EXPECT_EQ(list.find("Lifetime"), nullptr);  // names are of their page
  Writer out;
  EXPECT_TRUE(list.encodeToFrame(out).empty());
  EXPECT_EQ(toHex(out.written()), "10 85 87 86 87");
}

}  // namespace
}  // namespace WapStack

namespace QuorvexMms {
namespace {

using mmsbrix::Octets;
using mmsbrix::Reader;
using mmsbrix::Writer;
using mmsbrix::test::hex;
using mmsbrix::test::toHex;

TEST(Multipart, EntriesAreReadAndWritten) {
  MultipartEntryList inner;
  inner.add({"text/plain; Charset=utf-8", Octets(hex("'abc'"))});
  Writer innerOctets;
  ASSERT_TRUE(inner.encodeToFrame(innerOctets));
  MultipartEntryList list;
  list.add({"image/jpeg", Octets(hex("FF D8"))});
  MultipartEntry nested("application/vnd.wap.multipart.mixed", innerOctets.written());
  nested.headers().add({"Content-Location", "a"});
  list.add(nested);
  Writer out;
  ASSERT_TRUE(list.encodeToFrame(out));
  EXPECT_EQ(toHex(out.written()),
            toHex(hex("02 01 02 9E FF D8 04 0A A3 8E 'a' 00 01 04 03 03 83 81 EA 'abc'")));

  MultipartEntryList read;
  Reader in(out.written());
  ASSERT_TRUE(read.decodeFromFrame(in));
  ASSERT_EQ(read.entries().size(), 2U);
  EXPECT_EQ(read.entries()[1].headers().find("content-location")->value(), "a");
  EXPECT_FALSE(read.entries()[0].open());
  const auto opened = read.entries()[1].open();
  ASSERT_TRUE(opened && opened->entries().size() == 1);
  EXPECT_EQ(opened->entries()[0].contentType().getText(), "text/plain; Charset=utf-8");
  EXPECT_EQ(toHex(opened->entries()[0].data()), toHex(hex("'abc'")));
}

TEST(Multipart, AnOctetStreamNeedsNoZero) {
  struct Case {
    const char* octets;
    const char* type;
    std::size_t headers;
  };
  for (const Case& c : std::to_array<Case>({
           {"01 18 01 'application/octet-stream' FF", "application/octet-stream", 0},
           {"01 19 01 'application/octet-stream' 00 FF", "application/octet-stream", 0},
           {"01 1B 01 'application/octet-stream' 8E 'a' 00 FF", "application/octet-stream", 1},
           {"01 1A 01 'application/octet-stream2' 00 FF", "application/octet-stream2", 0},
           {"01 1D 01 'application/octet-stream2' 00 8E 'a' 00 FF", "application/octet-stream2", 1},
           {"01 0A 01 'image/jpeg' FF", "", 0},
       })) {
    const auto octets = hex(c.octets);
    MultipartEntryList list;
    Reader in{Octets(octets)};
    EXPECT_TRUE(list.decodeFromFrame(in)) << c.octets;
    ASSERT_EQ(list.entries().size(), 1U) << c.octets;
    EXPECT_EQ(list.entries()[0].contentType().getText(), c.type);
    EXPECT_EQ(list.entries()[0].headers().headers().size(), c.headers) << c.octets;
    EXPECT_EQ(toHex(list.entries()[0].data()), "FF") << c.octets;
  }
  MultipartEntryList written;
  written.add({"application/octet-stream2", Octets(hex("FF"))});
  Writer out;
  ASSERT_TRUE(written.encodeToFrame(out));
  MultipartEntryList read;
  Reader in(out.written());
  ASSERT_TRUE(read.decodeFromFrame(in));
  EXPECT_EQ(read.entries()[0].contentType().getText(), "application/octet-stream2");
}

TEST(Multipart, OpeningKnowsTheSenderAndFails) {
  const MultipartEntry counted("multipart/mixed", Octets(hex("01 01 00 83 01 00 84")));
  EXPECT_EQ(counted.open()->entries().size(), 1U);
  EXPECT_EQ(counted.open(WapAssignments::kVersion14)->entries().size(), 2U);
  EXPECT_FALSE(MultipartEntry("multipart/mixed", Octets(hex("01 01 05 83 'a'"))).open());
}

TEST(Multipart, TheCountIsTakenFromOldSendersOnly) {
  struct Case {
    const char* octets;
    WapAssignments::Version sender;
    std::size_t entries;
    bool whole;
  };
  for (const Case& c : std::to_array<Case>({
           {"01 01 00 83 01 00 84", WapAssignments::kVersion13, 1, true},
           {"01 01 00 83 01 00 84", WapAssignments::kVersion14, 2, true},
           {"00 01 00 83 01 00 84", WapAssignments::kVersion11, 2, true},
           {"09 01 00 83", WapAssignments::kVersion11, 1, true},
           {"02 01 00 83 01 05 84 'a'", WapAssignments::kVersion11, 2, false},
           {"02 01 00 83 01 8F", WapAssignments::kVersion11, 1, false},
           {"01 01 00 FF", WapAssignments::kVersion11, 1, true},  // an unknown content type
           {"", WapAssignments::kVersion11, 0, true},
       })) {
    const auto octets = hex(c.octets);
    MultipartEntryList list;
    Reader in{Octets(octets)};
    EXPECT_EQ(list.decodeFromFrame(in, c.sender), c.whole) << c.octets;
    EXPECT_EQ(list.entries().size(), c.entries) << c.octets;
  }
}

}  // namespace
}  // namespace QuorvexMms
