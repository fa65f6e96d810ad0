// What the inspector shows, and what it finds odd.
#include "mms/inspector.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "support/hex.h"
#include "support/messages.h"

namespace mmsbrix::test {
namespace {

Inspection inspectHex(const std::string& octets) {
  const auto data = hex(octets);
  return inspect(data.data(), data.size());
}

TEST(Inspector, ShowsFieldsAndPartsWithTheirOffsets) {
  CMMsg message;
  fillComplete(message);
  const auto octets = encode(message);
  const Inspection seen = inspect(octets.data(), octets.size());
  for (const Remark& remark : seen.remarks) ADD_FAILURE() << remark.offset << ' ' << remark.text;
  EXPECT_EQ(seen.messageTypeName, "m-send-req");
  std::size_t next = 0;
  for (const InspectedField& field : seen.fields) {  // the fields cover the block without a gap
    EXPECT_EQ(field.offset, next) << field.name;
    next = field.offset + field.length;
  }
  EXPECT_EQ(next, seen.headerLength);
  EXPECT_EQ(seen.find(0x08)->value, "in 2 d");
  EXPECT_EQ(seen.find(0x08)->number, 172800U);
  EXPECT_EQ(seen.find(0x05)->value, "2026-11-21T10:30:05Z");
  EXPECT_EQ(seen.find(0x16)->charsetNumber, 106U);
  EXPECT_EQ(seen.find(0x04)->value,
            "application/vnd.wap.multipart.related; Type=application/smil; Start=<smil>");
  ASSERT_EQ(seen.parts.size(), 3U);
  const InspectedPart& last = seen.parts[2];
  EXPECT_EQ(last.contentType, "image/jpeg");
  EXPECT_EQ(last.headers[0].name, "X-Own");
  EXPECT_EQ(octets[last.dataOffset], 0xFF);
  EXPECT_EQ(last.dataOffset + last.dataLength, octets.size());
  const Inspection disposed = inspectHex("8C 84 84 A3 01 07 01 83 AE 04 81 86 'f' 00 'x'");
  const InspectedHeader& disposition = disposed.parts.at(0).headers.at(0);
  EXPECT_EQ(disposition.value, "attachment");
  EXPECT_EQ(disposition.parameters.at(0).name + "=" + disposition.parameters[0].value,
            "Filename=f");
}

struct ValueCase {
  const char* field;  // octets, code included
  const char* name;
  const char* value;
};

TEST(Inspector, FieldsThatAMessageHasNoMemberFor) {
  for (const auto& [field, name, value] : std::to_array<ValueCase>({
           {"83 'http://m/x' 00", "X-Mms-Content-Location", "http://m/x"},
           {"8E 02 75 30", "X-Mms-Message-Size", "30000"},
           {"91 80", "X-Mms-Report-Allowed", "Yes"},
           {"95 81", "X-Mms-Status", "Retrieved"},
           {"99 E2", "X-Mms-Retrieve-Status", "Error-permanent-message-not-found"},
           {"9A 05 EA C3 A4 00 00", "X-Mms-Retrieve-Text", "\xC3\xA4"},
           {"9B 81", "X-Mms-Read-Status", "Deleted without being read"},
           {"9D 03 81 01 3C", "X-Mms-Reply-Charging-Deadline", "in 1 min"},
           {"A0 05 82 'a/b' 00", "X-Mms-Previously-Sent-By", "2: a/b"},
           {"A1 06 81 04 3A 4F C8 80", "X-Mms-Previously-Sent-Date", "1: 2001-01-01T00:00:00Z"},
           {"A4 04 80 'kw' 00", "X-Mms-MM-Flags", "Add: kw"},
           {"AA 03 81 01 05", "X-Mms-Mbox-Totals", "Bytes: 5"},
           {"A8 97", "X-Mms-Attributes", "97"},
           {"AF 02 01 00", "X-Mms-Start", "256"},
           {"BA 82", "X-Mms-Content-Class", "image-rich"},
           {"8A 'my-class' 00", "X-Mms-Message-Class", "my-class"},
           {"'X-Own' 00 'v' 00", "X-Own", "v"},
       })) {
    const Inspection seen = inspectHex(std::string("8C 82 ") + field);
    ASSERT_EQ(seen.fields.size(), 2U) << field;
    EXPECT_EQ(seen.fields[1].name, name);
    EXPECT_EQ(seen.fields[1].value, value) << name;
  }
}

struct OddCase {
  const char* octets;
  RemarkKind kind;
  std::size_t offset;
  const char* text;
};

TEST(Inspector, RemarksOnWhatIsOdd) {
  for (const auto& [octets, kind, offset, text] : std::to_array<OddCase>({
           {"", RemarkKind::notMms, 0, "there is nothing"},
           {"'GIF89a' 00", RemarkKind::notMms, 0, "not with 0x47"},
           {"8C 82 89 40", RemarkKind::crashPattern, 0, "8C 82 89 40"},
           {"8C 82 89 40 00", RemarkKind::wrongForm, 3, "From"},
           {"8C 81 98 'ab'", RemarkKind::missingZero, 3, "X-Mms-Transaction-Id"},
           {"8C 81 93 1E EA 'a' 00", RemarkKind::lengthPastEnd, 3, "claims 31 octets, 4 are there"},
           {"8C 81 92", RemarkKind::truncated, 3, "X-Mms-Response-Status ends before its value"},
           {"8C 81 93 1F 80 80 80 80 80 8D 90", RemarkKind::badValue, 3,
            "length that cannot be read"},
           {"8C 81 93 1F 80 80 80 80 80 8D 90", RemarkKind::trailingOctets, 3, "8 octets"},
           {"8C 81 92 77", RemarkKind::wrongForm, 3, "another form"},
           {"8C 81 92 99", RemarkKind::badValue, 3, "0x99 stands for nothing"},
           {"8C 81 8D 90 98 '1' 00 92 80", RemarkKind::order, 2,
            "X-Mms-MMS-Version stands where X-Mms-Transaction-Id should"},
           {"8C 81 98 '1' 00 98 '2' 00", RemarkKind::duplicate, 5, "a second time"},
           {"8C 81 98 '1' 00 8D 90", RemarkKind::missingField, 7, "X-Mms-Response-Status"},
           {"8C 80 98 '1' 00 8D 90", RemarkKind::missingField, 7, "no recipient"},
           {"8C 86 98 '1' 00", RemarkKind::unexpectedField, 2, "no place in an m-delivery-ind"},
           {"8C 82 D9 80", RemarkKind::unknownField, 2, "field 0x59"},
           {"8C 81 00 00 8D 90 00", RemarkKind::strayZero, 2, "zero"},
           {"8C 81 0A", RemarkKind::codePage, 2, "page 10"},
           {"8C 82 84 83 'xy'", RemarkKind::trailingOctets, 4, "2 octets"},
           {"8C 84 84 D3", RemarkKind::badValue, 3, "number 83 is not assigned"},
           {"8C 84 84 A3", RemarkKind::truncated, 4, "multipart body is missing"},
           {"8C 84 84 A3 02 01 01 83 'x'", RemarkKind::countMismatch, 4,
            "2 parts announced, 1 there"},
           {"8C 84 84 A3 01 01 09 83 'x'", RemarkKind::lengthPastEnd, 5, "9 octets of data, 1 are"},
           {"8C 84 84 A3 01 09 01 83", RemarkKind::lengthPastEnd, 5, "9 octets of headers, 1 are"},
           {"8C 84 84 A3 01 01 01 83 'x' 80 80 80 80 80", RemarkKind::trailingOctets, 9,
            "5 octets"},
           {"8C 84 84 A3 01 03 01 83 8E 82 'x'", RemarkKind::wrongForm, 8, "Content-Location"},
           {"8C 84 84 A3 01 04 01 83 8E 'a' 'b' 'x'", RemarkKind::missingZero, 9,
            "Content-Location"},
       })) {
    const Inspection seen = inspectHex(octets);
    std::string all;
    for (const Remark& remark : seen.remarks) {
      all += std::to_string(remark.offset) + ": " + remark.text + '\n';
    }
    bool found = false;
    for (const Remark& remark : seen.remarks) {
      found = found || (remark.kind == kind && remark.offset == offset &&
                        remark.text.find(text) != std::string::npos);
    }
    EXPECT_TRUE(found) << octets << "\nshould say: " << offset << ": " << text << "\nsays:\n"
                       << all;
  }
}

TEST(Inspector, OpensNestedMultipartsToALimit) {
  std::vector<std::uint8_t> body = hex("01 01 01 83 'x'");
  for (int depth = 0; depth < 40; ++depth) {
    auto outer = hex("01 01");
    ASSERT_LT(body.size(), 16384U);
    if (body.size() >= 128) outer.push_back(static_cast<std::uint8_t>(0x80 | (body.size() >> 7)));
    outer.push_back(static_cast<std::uint8_t>(body.size() & 0x7F));
    outer.push_back(0xA3);
    outer.insert(outer.end(), body.begin(), body.end());
    body = outer;
  }
  auto pdu = hex("8C 84 84 A3");
  pdu.insert(pdu.end(), body.begin(), body.end());
  const Inspection seen = inspect(pdu.data(), pdu.size());
  int depth = 0;
  for (const auto* parts = &seen.parts; !parts->empty(); parts = &parts->front().parts) ++depth;
  EXPECT_EQ(depth, 16);
}

}  // namespace
}  // namespace mmsbrix::test
