#include "wsp/octets.h"

#include <gtest/gtest.h>

#include <array>

#include "support/hex.h"
#include "wsp/wap_mms_shared.h"

namespace mmsbrix {
namespace {

using test::hex;
using test::toHex;

TEST(Reader, NeverLeavesItsSpanAndKeepsTheFirstFailure) {
  const auto octets = hex("01 02 03 'ab'");
  Reader in{Octets(octets)};
  EXPECT_EQ(in.take(2).size(), 2U);
  Reader child = in.sub(1);
  EXPECT_EQ(child.octet(), 3);
  EXPECT_FALSE(child.octet());
  EXPECT_TRUE(child.failed());
  EXPECT_FALSE(in.failed());
  EXPECT_EQ(in.text(), "ab");  // no zero: what there is, and the reader has failed
  EXPECT_TRUE(in.failed());
  EXPECT_TRUE(in.take(static_cast<std::size_t>(-1)).empty());
  EXPECT_TRUE(in.peek(1, 5).empty());
}

TEST(Writer, CapacityIsTheNextMultipleOf1024AboveTheNeed) {
  Writer out;
  out.octet(1);
  EXPECT_EQ(out.capacity(), 1024U);
  for (int i = 1; i < 1024; ++i) out.octet(2);
  EXPECT_EQ(out.capacity(), 1024U);
  out.octet(3);
  EXPECT_EQ(out.capacity(), 2048U);
  out.reserve(4096);
  EXPECT_EQ(out.capacity(), 5120U);
  EXPECT_EQ(out.size(), 1025U);
}

struct UintvarCase {
  std::uint32_t value;
  const char* octets;
};

TEST(Uintvar, EncodesAndDecodes) {
  const auto cases = std::to_array<UintvarCase>({{0, "00"},
                                                 {127, "7F"},
                                                 {128, "81 00"},
                                                 {0x3FFF, "FF 7F"},
                                                 {0x4000, "81 80 00"},
                                                 {0x0FFFFFFF, "FF FF FF 7F"},
                                                 {0x10000000, "81 80 80 80 00"},
                                                 {0xFFFFFFFF, "8F FF FF FF 7F"}});
  for (const auto& [value, octets] : cases) {
    Writer out;
    writeUintvar(out, value);
    EXPECT_EQ(toHex(out.written()), octets);
    Reader in(out.written());
    EXPECT_EQ(readUintvar(in), value);
    EXPECT_TRUE(in.atEnd());
  }
}

TEST(FieldSize, FollowsTheFirstOctet) {
  const auto size = [](const char* octets) {
    const auto data = hex(octets);
    return fieldSize(Reader{Octets(data)});
  };
  EXPECT_EQ(size("00"), 1U);
  EXPECT_EQ(size("1E"), 31U);  // as stated, whether or not the octets are there
  EXPECT_EQ(size("1F 1F"), 33U);
  EXPECT_EQ(size("1F 80 80 80 80 80"), 0U);
  EXPECT_EQ(size("80 00"), 1U);
  EXPECT_EQ(size("'ab' 00 'c'"), 3U);
  EXPECT_EQ(size("'ab'"), 3U);  // no zero: one past the end
}

}  // namespace
}  // namespace mmsbrix
