// What a message looks like on the wire, octet for octet.
#include <gtest/gtest.h>

#include <array>

#include "mms/mmscodec.h"
#include "support/hex.h"
#include "support/messages.h"
#include "support/temporary_folder.h"

namespace mmsbrix::test {
namespace {

std::string encoded(CMMsg& message, int expected = 1) {
  return toHex(encode(message, expected));
}

std::string normal(const char* octets) {
  return toHex(hex(octets));
}

void startRequest(CMMsg& message) {
  message.SetMsgType(CMMsg::MSG_TYPE_SEND_REQ);
}

TEST(Encoder, EveryFieldInItsOrder) {
  CMMsg message;
  fillComplete(message);
  EXPECT_EQ(encoded(message),
            normal("8C 80 98 'T-1' 00 8D 92"
                   "85 04 6B 01 72 AD"  // 2026-11-21 12:30:05 in Helsinki
                   "89 19 80 '+358401234567/TYPE=PLMN' 00"
                   "97 '+358409876543/TYPE=PLMN' 00"
                   "82 'ann@example.com' 00"
                   "81 '10.0.0.7/TYPE=IPv4' 00"
                   "96 09 EA 'Gr' C3 BC C3 9F 'e' 00"  // charset 106
                   "86 80 94 80 90 81 8A 80"
                   "88 05 81 03 02 A3 00"     // relative, 172800 s
                   "87 06 80 04 6B 02 84 E0"  // absolute, 2026-11-22 08:00
                   "8F 82"
                   "84 1B B3 89 'application/smil' 00 8A '<smil>' 00"
                   "03"
                   "1D 07 13 'application/smil' 00 81 EA C0 22 '<smil>' 00 '<smil/>'"
                   "0D 08 03 83 81 EA 8E 'hei.txt' 00 'Hei ' F0 9F 98 80"
                   "13 05 0A 9E 85 'a b.jpg' 00 'X-Own' 00 '1' 00 FF D8 00 FF D9"));
}

TEST(Encoder, WithoutFieldsOnlyTypeAndAnEmptyFromGoOut) {
  CMMsg message;
  startRequest(message);
  EXPECT_EQ(encoded(message), "8C 80 89 01 81");
}

TEST(Encoder, OtherTypesGiveNothing) {
  CMMsg message;
  message.SetMsgType(CMMsg::MSG_TYPE_NOTIFYRESP_IND);
  void* data = &message;
  unsigned int size = 7;
  EXPECT_EQ(MMS_SaveToMemory(&message, &data, &size, 0), 1);
  EXPECT_EQ(data, nullptr);
  EXPECT_EQ(size, 0U);
}

struct VersionCase {
  const char* version;
  const char* octets;
};

TEST(Encoder, VersionIsWrittenWhenTwoNumbersAreRead) {
  for (const auto& [version, octets] : std::to_array<VersionCase>({
           {"1.0", "8D 90"},
           {" 1. 3rd", "8D 93"},  // read like "%d.%d"
           {"1.17", "8D A1"},     // a minor number above 15 spills into the major one
           {"", ""},
           {"1", ""},
           {"1.x", ""},
           {"99999999999.0", ""},
       })) {
    CMMsg message;
    startRequest(message);
    message.SetVersion(version);
    const std::string field = *octets == 0 ? "" : std::string(octets) + ' ';
    EXPECT_EQ(encoded(message), "8C 80 " + field + "89 01 81") << version;
  }
}

struct DateCase {
  const char* what;
  SYSTEMTIME record;
  const char* octets;  // of Expiry
};

TEST(Encoder, DatesAreInstantsFrom2001OnAndIntervalsBefore) {
  SYSTEMTIME unset = date(2026, 5, 0);
  unset.wMilliseconds = 5;
  for (const auto& [what, record, octets] : std::to_array<DateCase>({
           {"one day", date(0, 0, 1), "88 05 81 03 01 51 80 "},
           {"36 hours of the year 2000", date(2000, 1, 1, 12), "88 05 81 03 01 FA 40 "},
           {"five seconds", date(0, 0, 0, 0, 0, 5), "88 03 81 01 05 "},
           {"first instant of 2001", date(2001, 1, 1, 2), "88 06 80 04 3A 4F C8 80 "},
           {"past 2038", date(2050, 1, 1, 2), "88 06 80 04 96 7A 76 00 "},
           {"nothing but year, month and milliseconds", unset, ""},
       })) {
    CMMsg message;
    startRequest(message);
    message.SetExpiry(&record);
    EXPECT_EQ(encoded(message), normal((std::string("8C 80 89 01 81 ") + octets).c_str())) << what;
  }
}

struct TextCase {
  const char* text;
  const char* charset;
  const char* octets;
};

TEST(Encoder, SubjectCarriesTheCharsetNumberAndTheQuote) {
  for (const auto& [text, charset, octets] : std::to_array<TextCase>({
           {"Hi", "", "96 'Hi' 00"},
           {"", "utf-8", "96 02 EA 00"},
           {"Hi", "ISO-8859-1", "96 04 84 'Hi' 00"},
           {"Hi", "koi8-r", "96 'Hi' 00"},  // no number: no charset
           {"\xE9t\xE9", "iso-8859-1", "96 06 84 7F E9 't' E9 00"},
           {"\xC3\x84", "", "96 7F C3 84 00"},
           {"0123456789012345678901234567890123", "utf-8",
            "96 1F 24 EA '0123456789012345678901234567890123' 00"},
       })) {
    CMMsg message;
    startRequest(message);
    CMMString subject(text, charset);
    message.SetSubject(&subject);
    EXPECT_EQ(encoded(message), "8C 80 89 01 81 " + normal(octets));
  }
}

TEST(Encoder, TypedAddressesNeverCarryACharset) {
  CMMsg message;
  startRequest(message);
  CMMString number(
      "\xE4"
      "1",
      "iso-8859-1");
  CMMAddr typed(&number, CMMAddr::TYPE_IPV6);
  CMMAddr plain(&number, CMMAddr::TYPE_OTHER);
  message.AddTo(&typed);
  message.AddTo(&plain);
  EXPECT_EQ(encoded(message),
            "8C 80 89 01 81 " + normal("97 7F E4 '1/TYPE=IPv6' 00 97 05 84 7F E4 '1' 00"));
}

struct ContentTypeCase {
  const char* type;
  std::array<std::array<const char*, 2>, 2> parameters;
  const char* octets;
};

TEST(Encoder, ContentTypesAndParameters) {
  for (const auto& [type, parameters, octets] : std::to_array<ContentTypeCase>({
           {"text/plain", {}, "83"},
           {"TEXT/PLAIN", {}, "83"},
           {"*/*", {}, "'*/*' 00"},  // number 0 goes out as text
           {"application/vnd.oma.drm.rights+wbxml", {}, "CB"},
           {"application/vnd.wv.csp+xml", {}, "'application/vnd.wv.csp+xml' 00"},  // 0x4C
           {"audio/amr", {{{"name", "x"}}}, "0D 'audio/amr' 00 85 'x' 00"},
           {"text/plain", {{{"charset", "latin-1"}, {"q", "0.5"}}}, "05 83 81 84 80 33"},
           {"text/plain", {{{"charset", "big5"}}}, "05 83 81 02 07 EA"},
           {"text/plain", {{{"charset", "2252"}}}, "05 83 81 02 08 CC"},
           {"text/plain", {{{"charset", "koi8-r"}}}, "09 83 81 'koi8-r' 00"},
           {"text/plain", {{{"charset", "*"}, {"padding", "3"}}}, "05 83 81 80 88 83"},
           {"text/plain", {{{"type", "3"}, {"level", "1.2"}}}, "05 83 83 83 82 92"},
           {"multipart/x", {{{"type", "text/html"}}}, "0E 'multipart/x' 00 89 82"},
           {"text/plain", {{{"filename", "a"}, {"size", "7"}}}, "0B 83 86 'a' 00 'size' 00 '7' 00"},
           {"text/plain", {{{"q", "1"}}}, "05 83 'q' 00 '1' 00"},  // 1 has no octets of its own
           {"text/plain", {{{"x", "a b"}, {"y", ""}}}, "0B 83 'x' 00 22 'a b' 00 'y' 00 00"},
       })) {
    CMMsg message;
    startRequest(message);
    CMMHdr header("content-type", type);
    for (const auto& [name, value] : parameters) {
      if (name == nullptr) continue;
      CMMParam parameter(name, value);
      header.Params()->Add(&parameter);
    }
    message.Content()->Headers()->Add(&header);
    const bool multipart = std::string_view(type).starts_with("multipart");
    EXPECT_EQ(encoded(message), "8C 80 89 01 81 84 " + normal(octets) + (multipart ? " 00" : ""));
  }
}

TEST(Encoder, AnUncodableChildEndsTheBody) {
  CMMsg message;
  startRequest(message);
  CMMHdr header("Content-Type", "Multipart/mixed");  // this case is no multipart: upper case counts
  message.Content()->Headers()->Add(&header);
  message.Content()->NewChild();
  EXPECT_EQ(encoded(message), "8C 80 89 01 81 84 8C");
  message.Content()->Headers()->First()->SetValue("multipart/mixed");
  addPart(message, "text/plain", "q", "1", "x");
  EXPECT_EQ(encoded(message, 0), "8C 80 89 01 81 84 8C 02");
  message.Content()->FirstChild()->SetContent("", 0);
  CMMHdr type("Content-Type", "text/html");
  message.Content()->FirstChild()->Headers()->Add(&type);
  EXPECT_EQ(encoded(message),
            "8C 80 89 01 81 84 8C 02 01 00 82 " + normal("06 01 05 83 'q' 00 '1' 00 'x'"));
}

const char* contentOf(const CMMPart* part) {
  return reinterpret_cast<const char*>(part->GetContent());
}

TEST(SavedFile, HoldsWhatMemoryHoldsAndReadsBack) {
  CMMsg message;
  fillComplete(message);
  message.Content()->FirstChild()->SetContent("", 0);
  const TemporaryFolder folder;
  const std::string path = folder.put("m", "something longer than nothing, to be replaced");
  const auto octets = encode(message);
  EXPECT_EQ(MMS_Save(&message, path.c_str(), 0), octets.size());
  EXPECT_EQ(folder.get("m"), std::string(octets.begin(), octets.end()));
  CMMsg read;
  EXPECT_EQ(MMS_Load(path.c_str(), &read, 0), 1);
  EXPECT_STREQ(read.GetTransactionId(), "T-1");
  EXPECT_STREQ(contentOf(read.Content()->FirstChild()), "");
  EXPECT_STREQ(contentOf(read.Content()->NextChild()), "Hei \xF0\x9F\x98\x80");
  for (const char* body : {"", "x"}) {  // no multipart
    const std::string single = folder.put("s", std::string("\x8C\x84\x84\x83") + body);
    EXPECT_EQ(MMS_Load(single.c_str(), &read, 0), 1);
    EXPECT_STREQ(contentOf(read.Content()), body);
  }
}

TEST(SavedFile, StaysWhenTheMessageCannotBeEncoded) {
  CMMsg message;
  fillComplete(message);
  message.Content()->NewChild();
  const TemporaryFolder folder;
  const std::string path = folder.put("m", "old");
  EXPECT_EQ(MMS_Save(&message, path.c_str(), 0), 0U);
  EXPECT_EQ(folder.get("m"), "old");
  message.SetMsgType(CMMsg::MSG_TYPE_DELIVERY_IND);
  EXPECT_EQ(MMS_Save(&message, path.c_str(), 0), 0U);
  EXPECT_EQ(folder.get("m"), "");  // no m-send-req: an empty file
}

TEST(SavedFile, AMissingFileLeavesTheMessageAlone) {
  const TemporaryFolder folder;
  CMMsg message;
  message.SetVersion("1.1");
  EXPECT_EQ(MMS_Load(folder.path("none").c_str(), &message, 0), 0);
  EXPECT_EQ(MMS_Load(folder.path().c_str(), &message, 0), 0);
  EXPECT_STREQ(message.GetVersion(), "1.1");
  EXPECT_EQ(MMS_Save(&message, folder.path("none/x").c_str(), 0), 0U);
}

}  // namespace
}  // namespace mmsbrix::test
