// Addresses, times and octets as people write them.
#include <gtest/gtest.h>

#include <array>

#include "command.h"
#include "recipient.h"
#include "when.h"

namespace mmsbrix::tool {
namespace {

struct RecipientCase {
  const char* spelled;
  const char* text;
  CMMAddr::TYPE type;
};

TEST(Recipient, TheKindIsToldByTheTextOrForced) {
  for (const auto& [spelled, text, type] : std::to_array<RecipientCase>({
           {"+358 (40) 123-45.67", "+358401234567", CMMAddr::TYPE_PLMN},
           {"12345", "12345", CMMAddr::TYPE_PLMN},
           {"*123#", "*123#", CMMAddr::TYPE_PLMN},
           {"10.0.0.7", "10.0.0.7", CMMAddr::TYPE_IPV4},
           {"10.0.0.777", "1000777", CMMAddr::TYPE_PLMN},  // no IP address, so a number with points
           {"2001:db8::1", "2001:db8::1", CMMAddr::TYPE_IPV6},
           {"ann@example.com", "ann@example.com", CMMAddr::TYPE_PLAIN},
           {"plmn:ann", "ann", CMMAddr::TYPE_PLMN},
           {"other:+1", "+1", CMMAddr::TYPE_OTHER},
       })) {
    std::string error;
    const auto address = parseRecipient(spelled, false, error);
    ASSERT_TRUE(address.has_value()) << spelled << error;
    EXPECT_EQ(error, "");
    EXPECT_EQ(address->Value()->Text(), text);
    EXPECT_EQ(address->GetType(), type) << spelled;
  }
  for (const char* spelled : {"mail:", "ann", "@example.com", "a b@example.com", "+", ""}) {
    std::string error;
    EXPECT_FALSE(parseRecipient(spelled, false, error)) << spelled;
    EXPECT_NE(error, "") << spelled;
  }
  std::string error;
  EXPECT_EQ(parseRecipient("ann", true, error)->GetType(), CMMAddr::TYPE_OTHER);
}

struct TimeCase {
  const char* spelled;
  std::uint64_t seconds;
};

TEST(When, Intervals) {
  for (const auto& [spelled, seconds] : std::to_array<TimeCase>({
           {"2d", 172800},
           {"36h", 129600},
           {"1w2d3h4min5s", 788645},
           {"90m", 5400},
           {"65536d", 5662310400},
       })) {
    EXPECT_EQ(parseInterval(spelled), seconds) << spelled;
  }
  for (const char* none : {"65537d", "99999999999999999999s", "2", "d", "2d ", "", "-1d"}) {
    EXPECT_FALSE(parseInterval(none)) << none;
  }
}

TEST(When, InstantsAreLocalUnlessAZoneIsGiven) {
  for (const auto& [spelled, seconds] : std::to_array<TimeCase>({
           {"2026-11-21T10:30:05Z", 1795257005},
           {"2026-11-21T12:30:05+02:00", 1795257005},
           {"2026-11-21 06:00:05-0430", 1795257005},
           {"2026-11-21T12:30:05", 1795257005},  // Helsinki
           {"2026-11-21 12:30", 1795257000},
           {"2026-07-01", 1782853200},  // summer time
           {"@1795257005", 1795257005},
           {"2050-01-01T00:00:00Z", 2524608000},
       })) {
    EXPECT_EQ(parseInstant(spelled), seconds) << spelled;
  }
  for (const char* none :
       {"2026-13-01", "2026-02-29", "2026-11-21T24:00", "2026-11-21T10", "2026-11-21T10:30:05X",
        "2026-1-1", "1969-01-01T00:00Z", "@", "tomorrow"}) {
    EXPECT_FALSE(parseInstant(none)) << none;
  }
}

TEST(When, RecordsOfBoth) {
  EXPECT_EQ(parseWhen("36h")->wDay, 1);
  EXPECT_EQ(parseWhen("36h")->wHour, 12);
  EXPECT_EQ(parseWhen("2026-11-21T10:30:05Z")->wHour, 12);
  EXPECT_FALSE(parseWhen("0s"));  // unset, not now
  EXPECT_NE(parseWhen("2026-10-25T00:30Z").has_value(),
            parseWhen("2026-10-25T01:30Z").has_value());  // half past three, twice, in Helsinki
  EXPECT_FALSE(parseWhen("1999-01-01"));                  // would be an interval
}

TEST(Base64, BothWays) {
  for (const auto& [octets, text] : std::to_array<std::pair<std::string, const char*>>(
           {{"", ""}, {"f", "Zg=="}, {"fo", "Zm8="}, {"foo", "Zm9v"}, {"\xFB\xFF", "+/8="}})) {
    EXPECT_EQ(toBase64(octets), text);
    EXPECT_EQ(fromBase64(text), octets);
  }
  for (const char* bad : {"Zg=", "Z", "Zg=a", "Z!==", "===="}) EXPECT_FALSE(fromBase64(bad)) << bad;
}

struct EndpointCase {
  const char* text;
  const char* host;
  int port;
};

TEST(Endpoint, HostsAndPorts) {
  std::string read;
  std::uint16_t readPort = 0;
  for (const auto& [text, host, port] : std::to_array<EndpointCase>({
           {"10.1.1.1:8080", "10.1.1.1", 8080},
           {"proxy", "proxy", 80},
           {"proxy:", "proxy", 80},
           {"[::1]:81", "::1", 81},
           {"[::1]", "::1", 80},
       })) {
    ASSERT_TRUE(parseEndpoint(text, 80, read, readPort)) << text;
    EXPECT_EQ(read, host);
    EXPECT_EQ(readPort, port);
  }
  for (const char* none : {":80", "a:b", "a:70000", "[::1", "[::1]80"}) {
    EXPECT_FALSE(parseEndpoint(none, 80, read, readPort)) << none;
  }
}

TEST(Printable, ControlCharactersDoNotReachTheTerminal) {
  EXPECT_EQ(printable("a\x1B[2J\n\x7F\xC3\xA4"), "a\\x1B[2J\\x0A\\x7F\xC3\xA4");
  EXPECT_EQ(printable("\xE4"), "\\xE4");
}

}  // namespace
}  // namespace mmsbrix::tool
