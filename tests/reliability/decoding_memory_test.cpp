// Memory of decoding: at most 3 octets on the heap for each octet of a PDU, and 64 KiB, however
// small the things are that it names; messages as peers write them are kept whole within that.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <string>
#include <string_view>

#include "failing_allocator.h"
#include "mms/item_budget.h"
#include "mms/mmscodec.h"

namespace mmsbrix::test {
namespace {

using namespace std::string_view_literals;

// Its share of what it may take.
double decodingShare(const std::string& pdu, CMMsg& message) {
  const AllocationScope scope;
  MMS_LoadFromMemory(pdu.data(), static_cast<unsigned>(pdu.size()), &message, 0);
  return static_cast<double>(scope.peak()) /
         static_cast<double>(kMemoryPerOctet * pdu.size() + kMemoryBesides);
}

std::string repeated(std::string_view start, std::string_view pattern, std::size_t octets) {
  std::string pdu(start);
  while (pdu.size() < octets) pdu += pattern;
  return pdu;
}

constexpr std::string_view kRequest = "\x8C\x84"sv;
constexpr std::string_view kMultipart = "\x8C\x84\x84\xA3\x01"sv;

TEST(DecodingMemory, IsBoundedWhateverAPduNames) {
  struct Pattern {
    const char* name;
    std::string_view start;
    std::string_view repeated;
  };
  double highest = 0;
  for (const auto& [name, start, pattern] : std::to_array<Pattern>({
           {"recipients of no octet", kRequest, "\x97\0"sv},
           {"recipients of a number", kRequest, "\x97+358401234567/TYPE=PLMN\0"sv},
           {"recipients of sixteen octets", kRequest, "\x97someone@some.net\0"sv},
           {"recipients of every kind", kRequest, "\x97\0\x82\0\x81\0"sv},
           {"application headers", kRequest, "a\0\0"sv},
           {"application headers of sixteen octets", kRequest,
            "abcdefghijklmnopq\0abcdefghijklmnop\0"sv},
           {"empty parts", kMultipart, "\0\0"sv},
           {"parts with a type", kMultipart, "\x01\x00\x83"sv},
           {"parts with a type and a parameter", kMultipart, "\x04\x00\x03\x83\x81\xEA"sv},
           {"parts with a header and an octet", kMultipart,
            "\x04\x01\x83\x8E"
            "a\0x"sv},
           {"headers of a part", "\x8C\x84\x84\xA3\x01\x8F\xFF\x7F\x00\x83"sv, "\x8E\0"sv},
           {"parameters", "\x8C\x84\x84\x1F\x8F\xFF\x7F\x83"sv, "a\0\0"sv},
           {"message ids", kRequest,
            "\x8B"
            "abcdefghijklmnopq\0"sv},
       })) {
    for (const std::size_t octets : {100, 1000, 3000, 10'000, 40'000, 262'144, 2'000'000}) {
      CMMsg message;
      const double share = decodingShare(repeated(start, pattern, octets), message);
      EXPECT_LE(share, 1.0) << name << ", " << octets << " octets";
      highest = std::max(highest, share);
    }
  }
  std::printf("at most %.2f of 3n + 64 KiB\n", highest);
}

TEST(DecodingMemory, RealMessagesAreKeptWhole) {
  CMMsg message;
  constexpr unsigned kRecipients = 5000;
  constexpr std::string_view kRecipient = "\x97somebody.else@mail.example\0"sv;
  decodingShare(repeated(kRequest, kRecipient, 2 + kRecipients * kRecipient.size()), message);
  EXPECT_EQ(message.GetTo()->Count(), kRecipients);
  // A type with name and charset, Content-ID, Content-Location and forty octets.
  constexpr unsigned kParts = 1000;
  std::string entry("\x25\x28\x0D\x83\x85text.txt\0\x81\xEA"sv);
  entry += "\xC0\"<text.txt>\0\x8Etext.txt\0"sv;
  entry[0] = static_cast<char>(entry.size() - 2);
  entry.append(40, 'x');
  decodingShare(repeated(kMultipart, entry, kMultipart.size() + kParts * entry.size()), message);
  ASSERT_EQ(message.Content()->ChildCount(), kParts);
  const CMMPart& last = *message.Content()->Child(kParts - 1);
  EXPECT_EQ(last.GetContentLen(), 40);
  EXPECT_EQ(last.Headers()->Count(), 3u);
}

}  // namespace
}  // namespace mmsbrix::test
