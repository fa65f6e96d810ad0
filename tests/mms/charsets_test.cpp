#include "mms/charsets.h"

#include <gtest/gtest.h>

#include <array>

namespace mmsbrix {
namespace {

TEST(Charsets, OnlyWellFormedUtf8IsUtf8) {
  for (const char* good :
       {"", "a", "\xC2\x80", "\xE0\xA0\x80", "\xED\x9F\xBF", "\xF4\x8F\xBF\xBF"}) {
    EXPECT_TRUE(isUtf8(good)) << good;
  }
  for (const char* bad : {"\x80", "\xC0\x80", "\xC2", "\xE0\x9F\x80", "\xED\xA0\x80",
                          "\xF0\x8F\x80\x80", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xE2\x82"}) {
    EXPECT_FALSE(isUtf8(bad)) << bad;
  }
}

TEST(Charsets, TextsConvertBothWaysOrNotAtAll) {
  EXPECT_EQ(toUtf8("\xE9", "iso-8859-1"), "\xC3\xA9");
  EXPECT_EQ(toUtf8("\xE9", ""), "\xC3\xA9");  // no UTF-8, so Latin-1
  EXPECT_EQ(toUtf8("\xC3\xA9", ""), "\xC3\xA9");
  EXPECT_EQ(toUtf8("\x82\xA0", "shift_jis"), "\xE3\x81\x82");
  EXPECT_EQ(toUtf8("\xE9", "utf-8"), std::nullopt);
  EXPECT_EQ(toUtf8("a", "no-such-charset"), std::nullopt);
  EXPECT_EQ(fromUtf8("\xC3\xA9", "ISO-8859-1"), "\xE9");
  EXPECT_EQ(fromUtf8("\xE2\x82\xAC", "iso-8859-1"), std::nullopt);  // no euro sign there
  const std::string many(5000, 'x');
  EXPECT_EQ(fromUtf8(many, "us-ascii"), many);
}

}  // namespace
}  // namespace mmsbrix
