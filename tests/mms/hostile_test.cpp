// Broken and hostile octets: no step outside the buffer (the sanitizers watch), no time beyond
// linear (the test's time limit watches), and the decoder agrees with the inspector about where
// things lie.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "mms/inspector.h"
#include "mms/item_budget.h"
#include "support/hex.h"
#include "support/messages.h"
#include "wsp/header_walker.h"

namespace mmsbrix::test {
namespace {

void tryOut(const std::vector<std::uint8_t>& octets) {
  CMMsg message;
  decode(octets, message);
  const Inspection seen = inspect(octets.data(), octets.size());
  ASSERT_LE(seen.headerLength + seen.bodyLength, octets.size());
  // The inspector opens multiparts that the decoder leaves raw, and counts more things as items.
  const bool all = std::ranges::none_of(
      seen.remarks, [](const Remark& remark) { return remark.kind == RemarkKind::tooMany; });
  if (!all || message.Content()->GetContent() != nullptr) return;
  ASSERT_EQ(seen.parts.size(), message.Content()->ChildCount()) << toHex(octets);
  for (std::size_t i = 0; i < seen.parts.size(); ++i) {
    const CMMPart* part = message.Content()->Child(static_cast<unsigned>(i));
    ASSERT_EQ(seen.parts[i].dataLength, static_cast<std::size_t>(part->GetContentLen()));
    ASSERT_LE(seen.parts[i].dataOffset + seen.parts[i].dataLength, octets.size());
  }
}

TEST(Hostile, EveryTruncationIsReadAsFarAsItGoes) {
  CMMsg message;
  fillComplete(message);
  const auto octets = encode(message);
  std::size_t silent = 0;
  for (std::size_t length = 0; length < octets.size(); ++length) {
    const std::vector<std::uint8_t> cut(octets.begin(),
                                        octets.begin() + static_cast<std::ptrdiff_t>(length));
    tryOut(cut);
    if (inspect(cut.data(), cut.size()).remarks.empty()) ++silent;
  }
  EXPECT_EQ(silent, 0U);  // no cut goes unnoticed
}

TEST(Hostile, EverySingleOctetChange) {
  CMMsg message;
  fillComplete(message);
  auto octets = encode(message);
  for (std::size_t i = 0; i < octets.size(); ++i) {
    const std::uint8_t original = octets[i];
    for (int value = 0; value < 256; ++value) {
      octets[i] = static_cast<std::uint8_t>(value);
      ASSERT_NO_FATAL_FAILURE(tryOut(octets)) << "octet " << i << " = " << value;
    }
    octets[i] = original;
  }
}

TEST(Hostile, LargeInputsTakeLinearTime) {
  constexpr std::size_t kOctets = 1 << 18;
  for (const char* pattern : std::to_array<const char*>(
           {"00", "01", "7F", "1F 81 80", "'a'", "'a' 00", "97 00", "84 1E", "98 1F 8F FF FF FF 7F",
            "8E 'a'", "01 00 80", "00 00", "02 02 A3 01 00 00", "81 01 00"})) {
    for (const char* start : {"8C 80 ", "8C 84 84 A3 01 "}) {
      auto octets = hex(start);
      const auto repeated = hex(pattern);
      while (octets.size() < kOctets) octets.insert(octets.end(), repeated.begin(), repeated.end());
      ASSERT_NO_FATAL_FAILURE(tryOut(octets)) << start << pattern;
    }
  }
}

TEST(Hostile, WhatIsKeptOfAPduIsBounded) {
  // Large enough for the number to be what bounds them, not the memory.
  constexpr std::size_t kOctets = 1 << 21;
  struct Case {
    const char* start;
    const char* pattern;
  };
  for (const auto& [start, pattern] :
       std::to_array<Case>({{"8C 84 ", "97 00"},
                            {"8C 84 ", "'a' 00 00"},
                            {"8C 84 84 A3 01 ", "00 00"},
                            {"8C 84 84 A3 01 8F FF 7F 00 83", "8E 00"},
                            {"8C 84 84 1F 8F FF 7F 83", "'a' 00 00"}})) {
    auto octets = hex(start);
    const auto repeated = hex(pattern);
    while (octets.size() < kOctets) octets.insert(octets.end(), repeated.begin(), repeated.end());
    CMMsg message;
    decode(octets, message);
    std::size_t kept = message.GetTo()->Count() + message.Content()->Headers()->Count() +
                       message.Content()->ChildCount();
    for (CMMHdr& header : *message.Content()->Headers()) kept += header.Params()->Count();
    if (CMMPart* first = message.Content()->FirstChild()) kept += first->Headers()->Count();
    EXPECT_GE(kept, kMaxItems - 1) << pattern;  // the case reaches the limit ...
    EXPECT_LE(kept, kMaxItems + 1) << pattern;  // ... and ends there
    const Inspection seen = inspect(octets.data(), octets.size());
    EXPECT_LE(seen.fields.size() + seen.parts.size() + seen.remarks.size(), 2 * kMaxItems + 2);
    EXPECT_TRUE(std::ranges::any_of(seen.remarks, [](const Remark& remark) {
      return remark.kind == RemarkKind::tooMany || remark.text.find("more parameters") == 0 ||
             remark.text.find(": more parameters") != std::string::npos;
    })) << pattern;
  }
}

}  // namespace
}  // namespace mmsbrix::test
