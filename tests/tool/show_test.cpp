// What `show` prints.
#include "show.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "command_line.h"
#include "support/hex.h"
#include "support/host.h"
#include "support/temporary_folder.h"

namespace mmsbrix::test {
namespace {

std::string bytes(const char* text) {
  const auto octets = hex(text);
  return {octets.begin(), octets.end()};
}

std::string shown(const std::string& pdu, bool asJson, bool asHex, int expected = 0) {
  Caught caught;
  caught.in.str(pdu);
  EXPECT_EQ(tool::runShow({{"-"}, asJson, asHex}, caught.streams()), expected);
  return caught.out.str() + caught.err.str();
}

TEST(Show, APeoplesTable) {
  const std::string text = shown(bytes("8C 84 8D 92 96 04 84 'A' E4 00 84 B3 01 0C 02 03 83 81 EA "
                                       "8E 'x' 1B 'x' 00 C0 7F 00 'ab'"),
                                 false, false);
  EXPECT_EQ(text,
            "m-retrieve-conf, 29 octets\n"
            "\n"
            " offset  octets  field               value\n"
            "      0       2  X-Mms-Message-Type  m-retrieve-conf\n"
            "      2       2  X-Mms-MMS-Version   1.2\n"
            "      4       6  Subject             A\xC3\xA4  (charset iso-8859-1)\n"
            "     10       2  Content-Type        application/vnd.wap.multipart.related\n"
            "\n"
            "parts: 1\n"
            "\n"
            "  1. text/plain; Charset=utf-8\n"
            "     2 octets at offset 27, headers 12 at 15\n"
            "     Content-Location: x\\x1Bx\n"
            "     Content-ID: \n"
            "     \"ab\"\n"
            "\n"
            "remarks:\n"
            "     12  Date is missing\n");
}

TEST(Show, LongTextsAreCutBetweenCharacters) {
  std::string euros;
  for (int i = 0; i < 200; ++i) euros += "\xE2\x82\xAC";
  const std::string text = shown(bytes("8C 84 8D 92 84 03 83 81 EA") + euros, false, false);
  EXPECT_NE(text.find("\"" + euros.substr(0, 99) + "...\""), std::string::npos) << text;
  EXPECT_NE(shown(bytes("8C 84 8D 92 84 03 83 81 85 BE"), false, false).find("\"\xC5\xBE\""),
            std::string::npos);  // iso-8859-2
}

TEST(Show, HexRowsCarryOffsets) {
  const std::string text = shown(bytes("8C 81 98 '0123456789abcdef' 00 92 80"), false, true);
  EXPECT_NE(
      text.find("    000002  98 30 31 32 33 34 35 36 37 38 39 61 62 63 64 65  .0123456789abcde\n"
                "    000012  66 00                                            f.\n"),
      std::string::npos)
      << text;
}

TEST(Show, JsonIsValidWhateverTheOctets) {
  const auto json = nlohmann::json::parse(
      shown(bytes("8C 81 98 FF FE 'x' 92 E0 93 04 EA C3 28 00 B9 'a' 80 00"), true, true));
  EXPECT_EQ(json["type"], "m-send-conf");
  EXPECT_EQ(json["fields"][0]["number"], 0x81);
  EXPECT_FALSE(json["remarks"].empty());
  EXPECT_FALSE(json.contains("message"));
}

TEST(Show, WhatIsNoPduIsRefusedWithOffsetAndReason) {
  EXPECT_EQ(
      shown("GIF89a", false, false, 1),
      "mmsbrix show: -: offset 0: an MMS PDU begins with its message type, 0x8C, not with 0x47\n");
  const TemporaryFolder folder;
  Caught caught;
  EXPECT_EQ(tool::runShow({{folder.path("none"), folder.put("ok", bytes("8C 81"))}, false, false},
                          caught.streams()),
            1);
  EXPECT_NE(caught.err.str().find("none: " + noSuchFile()), std::string::npos);
  EXPECT_NE(caught.out.str().find("m-send-conf"), std::string::npos);  // the others are still shown
}

}  // namespace
}  // namespace mmsbrix::test
