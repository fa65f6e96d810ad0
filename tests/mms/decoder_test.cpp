// What is read from octets, of well-behaved peers and of odd ones.
#include <gtest/gtest.h>

#include <array>
#include <utility>

#include "mms/mmscodec.h"
#include "support/hex.h"
#include "support/messages.h"

namespace mmsbrix::test {
namespace {

void decodeHex(const std::string& octets, CMMsg& message) {
  decode(hex(octets), message);
}

TEST(Decoder, WhatIsEncodedReadsBack) {
  CMMsg written;
  fillComplete(written);
  CMMsg read;
  decode(encode(written), read);
  EXPECT_EQ(read.GetDate()->wHour, 12);
  EXPECT_EQ(read.GetDate()->wDayOfWeek, 0);
  EXPECT_EQ(read.GetCc()->Get(0)->GetType(), CMMAddr::TYPE_PLAIN);
  // A relative expiry reads back as unset: kept so, whatever the writing side does.
  EXPECT_EQ(read.GetExpiry()->wDay, 0);
  ASSERT_EQ(read.Content()->ChildCount(), 3U);
  EXPECT_STREQ(read.Content()->Headers()->First()->Params()->Find("START")->GetValue(), "<smil>");
  CMMHdr location("content-location", "HEI.TXT");
  CMMPart* text = read.Content()->FindChild(&location);
  ASSERT_NE(text, nullptr);
  EXPECT_STREQ(reinterpret_cast<const char*>(text->GetContent()), "Hei \xF0\x9F\x98\x80");
  // All but the expiry goes out again as it came.
  read.SetExpiry(written.GetExpiry());
  EXPECT_EQ(toHex(encode(read)), toHex(encode(written)));
}

// From a capture of a relay's answer: type, transaction id, version, status, id.
TEST(Decoder, SendConfirmation) {
  CMMsg message;
  decodeHex("8C 81 98 '1234567' 00 8D 90 92 80 93 05 EA 'fine' 00 8B 'AB12@mmsc' 00", message);
  EXPECT_EQ(message.GetMsgType(), CMMsg::MSG_TYPE_SEND_CONF);
  EXPECT_EQ(message.GetResponseStatus(), CMMsg::MSG_RSPSTATUS_OK);
  EXPECT_STREQ(message.GetResponseText()->Get(), "fine");
  EXPECT_STREQ(message.GetMessageId(), "AB12@mmsc");
  EXPECT_EQ(message.Content()->GetContent(), nullptr);
  EXPECT_EQ(message.Content()->ChildCount(), 0U);
}

TEST(Decoder, ABodyFollowsOnlyInRequestsAndRetrievedMessages) {
  CMMsg message;
  decodeHex("8C 84 84 83 'hello'", message);
  EXPECT_EQ(message.Content()->GetContentLen(), 5);
  EXPECT_STREQ(message.Content()->Headers()->Find("Content-Type")->GetValue(), "text/plain");
  decodeHex("8C 82 84 83 'hello'", message);
  EXPECT_EQ(message.Content()->GetContent(), nullptr);
  decodeHex("8C 84 8D 92", message);
  EXPECT_EQ(message.Content()->Headers()->Count(), 0U);
}

struct AddressCase {
  const char* octets;
  const char* text;
  const char* charset;
  CMMAddr::TYPE type;
};

TEST(Decoder, AddressesAreCutAtTheirSuffix) {
  for (const auto& [octets, text, charset, type] : std::to_array<AddressCase>({
           {"'+123/TYPE=PLMN' 00", "+123", "", CMMAddr::TYPE_PLMN},
           {"'10.1.1.1/TYPE=IPv4' 00", "10.1.1.1", "", CMMAddr::TYPE_IPV4},
           {"'::1/TYPE=IPv6xyz' 00", "::1", "", CMMAddr::TYPE_IPV6},
           {"'a/TYPE=XX' 00", "a", "", CMMAddr::TYPE_OTHER},
           {"'a/type=PLMN' 00", "a/type=PLMN", "", CMMAddr::TYPE_PLAIN},
           {"'a/b/TYPE=PLMN/TYPE=IPv4' 00", "a/b", "", CMMAddr::TYPE_PLMN},
           {"09 EA 'a@b.c' 00 00 00", "a@b.c", "utf-8", CMMAddr::TYPE_PLAIN},
       })) {
    CMMsg message;
    decodeHex(std::string("8C 84 97 ") + octets + "8D 93", message);
    ASSERT_EQ(message.GetTo()->Count(), 1U) << octets;
    EXPECT_STREQ(message.GetTo()->Get(0)->Value()->Get(), text);
    EXPECT_STREQ(message.GetTo()->Get(0)->Value()->GetCharset(), charset);
    EXPECT_EQ(message.GetTo()->Get(0)->GetType(), type);
    EXPECT_STREQ(message.GetVersion(), "1.3") << octets;  // what follows is still found
  }
}

struct SubjectCase {
  const char* octets;
  const char* text;  // null: absent
  const char* charset;
};

TEST(Decoder, TextsThatPeersSend) {
  for (const auto& [octets, text, charset] : std::to_array<SubjectCase>({
           {"00", "", ""},
           {"02 EA 00", "", "utf-8"},
           {"1F 1F EA '01234567890123456789012345678' 00", "01234567890123456789012345678",
            "utf-8"},
           {"7F C3 84 00", "\xC3\x84", ""},
           {"05 84 7F 'abc'", "abc", "iso-8859-1"},  // no zero: as far as the length goes
           {"04 24 'a' 80 00", "$a\x80", ""},        // a length without a charset
           {"05 A4 B0 A1 00 00", "\xB0\xA1", ""},    // charset 36 is not in the table
           {"06 02 03 E8 'ab' 00", "ab", ""},        // charset 1000, a long integer
           {"80", nullptr, ""},                      // another form: skipped
       })) {
    CMMsg message;
    decodeHex(std::string("8C 84 96 ") + octets + "8D 91", message);
    EXPECT_STREQ(message.GetVersion(), "1.1") << octets;
    ASSERT_EQ(message.GetSubject() != nullptr, text != nullptr) << octets;
    if (text == nullptr) continue;
    EXPECT_STREQ(message.GetSubject()->Get(), text) << octets;
    EXPECT_STREQ(message.GetSubject()->GetCharset(), charset) << octets;
  }
}

TEST(Decoder, FromIsSetOnlyByAnAddressThatIsThere) {
  CMMsg message;
  decodeHex("8C 84 89 1A 80 18 83 '+12345678901/TYPE=PLMN' 00", message);
  EXPECT_STREQ(message.GetFrom()->Value()->Get(), "+12345678901");
  EXPECT_STREQ(message.GetFrom()->Value()->GetCharset(), "us-ascii");
  decodeHex("8C 82 89 01 81 8D 90", message);
  EXPECT_STREQ(message.GetFrom()->Value()->Get(), "");
  EXPECT_STREQ(message.GetVersion(), "1.0");
}

struct DateCase {
  const char* octets;
  int year;
  int hour;
};

TEST(Decoder, DatesAreLocalAndUnsetBefore2001) {
  for (const auto& [octets, year, hour] : std::to_array<DateCase>({
           {"85 04 3A 4F C8 80", 2001, 2},  // midnight UTC is two o'clock in Helsinki
           {"85 04 3A 4F 00 00", 0, 0},     // still 2000
           {"85 05 01 00 00 00 00", 2106, 8},
           {"85 08 7F FF FF FF FF FF FF FF", 0, 0},
           {"85 09 01 00 00 00 00 3A 4F C8 80", 2001, 2},  // the earliest octet is shifted out
           {"85 00", 0, 0},
           {"85 80", 0, 0},  // a short integer is another form
       })) {
    CMMsg message;
    decodeHex(std::string("8C 84 ") + octets + "8D 90", message);
    EXPECT_EQ(message.GetDate()->wYear, year) << octets;
    EXPECT_EQ(message.GetDate()->wHour, hour) << octets;
    EXPECT_STREQ(message.GetVersion(), "1.0") << octets;
  }
  CMMsg message;  // absolute and relative tokens are passed over alike
  decodeHex("8C 84 88 06 81 04 3A 4F C8 80 87 06 80 04 3A 4F C8 80", message);
  EXPECT_EQ(message.GetExpiry()->wYear, 2001);
  EXPECT_EQ(message.GetDeliveryTime()->wYear, 2001);
}

TEST(Decoder, OctetsAreKeptAsTheyComeAndOtherFormsSkipped) {
  CMMsg message;
  decodeHex("8C 99 8A FF 8F 'high' 00 92 E0 86 85 90 80 94 81 8D FF", message);
  EXPECT_EQ(static_cast<int>(message.GetMsgType()), 0x99);
  EXPECT_EQ(static_cast<int>(message.GetMsgClass()), 0xFF);
  EXPECT_EQ(static_cast<int>(message.GetPriority()), 0);
  EXPECT_EQ(static_cast<int>(message.GetResponseStatus()), 0xE0);
  EXPECT_EQ(message.GetDeliveryReport(), 0);  // anything but yes
  EXPECT_EQ(message.GetReadReply(), 1);
  EXPECT_EQ(message.GetSenderVisibility(), 1);
  EXPECT_STREQ(message.GetVersion(), "7.15");
}

TEST(Decoder, LongIdsKeepTheirFirst1023Octets) {
  CMMsg message;
  const std::string id(2000, 'x');
  decodeHex("8C 81 98 7F '" + id + "' 00 8B '" + id + "' 00 8D 90", message);
  EXPECT_EQ(std::string_view(message.GetTransactionId()).size(), 1023U);
  EXPECT_EQ(std::string_view(message.GetMessageId()).size(), 1023U);
  EXPECT_STREQ(message.GetVersion(), "1.0");
}

TEST(Decoder, FieldsOnOtherPagesZerosAndUnknownCodesArePassedOver) {
  CMMsg message;
  decodeHex(
      "8C 84 00 00 7F 02 98 'a' 00 84 83 01 98 'b' 00 10 98 'c' 00 01 B9 83"
      "A0 03 'xyz' 8D 92",
      message);
  EXPECT_STREQ(message.GetTransactionId(), "b");
  EXPECT_EQ(message.Content()->Headers()->Count(),
            0U);  // Content-Type on page 2 is no content type
  decodeHex("8C 84 B9 83 A0 03 'xyz' 8D 92", message);
  EXPECT_STREQ(message.GetVersion(), "1.2");
}

TEST(Decoder, ATextHeaderLosesItsFirstCharacter) {
  CMMsg message;
  decodeHex("8C 84 'X-Mms-Own' 00 7F 'v' 00 84 83 'b'", message);
  EXPECT_STREQ(message.Content()->Headers()->Get(0)->Get(), "-Mms-Own");
  EXPECT_STREQ(message.Content()->Headers()->Get(0)->GetValue(), "v");
  EXPECT_EQ(message.Content()->GetContentLen(), 1);
}

struct ContentTypeCase {
  const char* octets;
  const char* type;
  const char* parameters;  // "name=value;" for each
  int bodyOctets;          // left of "BODY"
};

TEST(Decoder, ContentTypes) {
  for (const auto& [octets, type, parameters, bodyOctets] : std::to_array<ContentTypeCase>({
           {"9E", "image/jpeg", "", 4},
           {"CD", "", "", 4},  // 0x4D is past the codec's 76 types
           {"'audio/amr' 00", "audio/amr", "", 4},
           {"'application/octet-stream'", "application/octet-stream", "", 4},
           {"'application/octet-stream' 00", "application/octet-stream", "", 4},
           {"05 83 81 EA 85 00", "text/plain", "Charset=utf-8;Name=;", 4},
           {"07 83 81 02 03 E8 88 83", "text/plain", "Charset=iso-10646-ucs-2;Padding=3;", 4},
           {"07 83 81 02 08 CC 99 00", "text/plain", "Charset=2252;Start=;", 4},
           {"0B 'a/b' 00 'x' 00 22 'y z' 00", "a/b", "x=y z;", 4},
           {"07 83 'n' 00 85 'm' 00 80", "text/plain", "n=5;m=0;", 4},
           {"05 83 80 24 FD 80", "text/plain", "q=0.35;", 4},
           {"1F 09 'a/b' 00 82 92 83 84 00", "a/b", "Level=1.2;Type=4;", 4},
           {"03 02 02 0B", "application/vnd.nokia.syncset+wbxml", "", 4},
           {"06 B3 89 'a/b' 00", "application/vnd.wap.multipart.related", "Type=a/b;", -1},
           {"04 83 81 EA FF", "text/plain", "Charset=utf-8;", 4},  // stops at what it cannot read
       })) {
    CMMsg message;
    decodeHex(std::string("8C 84 84 ") + octets + "'BODY'", message);
    CMMHdr* header = message.Content()->Headers()->Find("Content-Type");
    ASSERT_NE(header, nullptr) << octets;
    EXPECT_STREQ(header->GetValue(), type) << octets;
    std::string read;
    for (const CMMParam& parameter : *header->Params()) {
      read += std::string(parameter.Name()) + '=' + std::string(parameter.Value()) + ';';
    }
    EXPECT_EQ(read, parameters) << octets;
    if (bodyOctets >= 0) {
      EXPECT_EQ(message.Content()->GetContentLen(), bodyOctets) << octets;
    }
  }
}

TEST(Decoder, PartHeadersOfEveryForm) {
  const auto headers =
      hex("9E"
          "C0 22 '<a>' 00"                    // Content-ID, quoted
          "C0 '<b>' 00"                       // without its quote
          "AE 08 81 86 'f.jpg' 00"            // Content-Disposition with a file name
          "C5 02 82 00"                       // its newer number; a parameter without a name
          "8D 02 01 00"                       // Content-Length, long integer
          "92 04 00 00 00 01"                 // Date
          "8C 99 8B 80"                       // Content-Language, Content-Encoding
          "'X-Text' 00 'v' 00 'Short' 00 85"  // a number under a textual name is left out
          "02 8E 'other page' 00 01"
          "9C 03 'abc'"  // Location by length is not understood and left out
          "F0 80"        // so is a number that is not assigned
          "8E 'a.jpg' 00");
  auto pdu = hex("8C 84 84 A3 07");  // seven parts announced, one there
  pdu.push_back(static_cast<std::uint8_t>(headers.size()));
  pdu.push_back(2);
  pdu.insert(pdu.end(), headers.begin(), headers.end());
  pdu.insert(pdu.end(), 2, 'x');
  CMMsg message;
  decode(pdu, message);
  ASSERT_EQ(message.Content()->ChildCount(), 1U);
  CMMPart* part = message.Content()->FirstChild();
  std::string read;
  for (const CMMHdr& header : *part->Headers()) {
    read += std::string(header.Name()) + '=' + std::string(header.Value());
    for (const CMMParam& parameter : *header.Params()) {
      read += ',' + std::string(parameter.Name()) + '=' + std::string(parameter.Value());
    }
    read += '\n';
  }
  EXPECT_EQ(read,
            "Content-Type=image/jpeg\n"
            "Content-ID=<a>\n"
            "Content-ID=<b>\n"
            "Content-Disposition=attachment,Filename=f.jpg\n"
            "Content-Disposition=inline\n"
            "Content-Length=256\n"
            "Date=Thu, 01 Jan 1970 00:00:01 GMT\n"
            "Content-Language=en\n"
            "Content-Encoding=Gzip\n"
            "X-Text=v\n"
            "Content-Location=a.jpg\n");
  EXPECT_EQ(part->GetContentLen(), 2);
}

TEST(Decoder, NestedMultipartsStayRaw) {
  CMMsg message;
  decodeHex("8C 84 84 A3 01 01 05 A3 01 01 01 83 'x'", message);
  ASSERT_EQ(message.Content()->ChildCount(), 1U);
  EXPECT_EQ(message.Content()->FirstChild()->GetContentLen(), 5);
  EXPECT_EQ(message.Content()->FirstChild()->ChildCount(), 0U);
}

TEST(Decoder, LengthsAreClampedToTheData) {
  CMMsg message;
  decodeHex("8C 84 84 A3 02 01 8F FF FF FF 7F 83 'tail'", message);
  ASSERT_EQ(message.Content()->ChildCount(), 1U);
  EXPECT_EQ(message.Content()->FirstChild()->GetContentLen(), 4);
  decodeHex("8C 84 84 A3 02 8F FF FF FF 7F 05 83", message);
  ASSERT_EQ(message.Content()->ChildCount(), 1U);
  EXPECT_STREQ(message.Content()->FirstChild()->Headers()->First()->GetValue(), "text/plain");
  decodeHex("8C 84 84 A3 02 80 80 80 80 80 80", message);
  EXPECT_EQ(message.Content()->ChildCount(), 0U);
  decodeHex("8C 84 97 1F 8F FF FF FF 7F EA 'x'", message);
  EXPECT_STREQ(message.GetTo()->Get(0)->Value()->Get(), "x");
}

// The contents of a message that is read lie in one block, of which its parts must know nothing.
TEST(Decoder, PartsKeepTheirContentsWhateverBecomesOfTheOthers) {
  CMMsg written;
  fillComplete(written);
  const auto octets = encode(written);
  CMMPart taken;
  {
    CMMsg read;
    decode(octets, read);
    CMMPart& first = *read.Content()->FirstChild();
    CMMPart& second = *read.Content()->NextChild();
    for (const CMMPart* part : {&first, &second}) {
      EXPECT_EQ(part->GetContent()[part->GetContentLen()], 0);
    }
    const CMMPart copy(second);
    first.SetContent("a longer content than before", -1);
    EXPECT_STREQ(reinterpret_cast<const char*>(second.GetContent()), "Hei \xF0\x9F\x98\x80");
    second.GetContent()[0] = 'h';
    EXPECT_EQ(copy.GetContent()[0], 'H');
    second.SetContent(second.GetContent() + 1, 2);
    EXPECT_STREQ(reinterpret_cast<const char*>(second.GetContent()), "ei");
    taken = std::move(*read.Content()->NextChild());
  }
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(taken.GetContent()), 5),
            std::string("\xFF\xD8\x00\xFF\xD9", 5));
}

}  // namespace
}  // namespace mmsbrix::test
