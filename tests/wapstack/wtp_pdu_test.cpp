// WTP PDUs: vectors seen on the wire in both directions, broken PDUs of every kind, concatenation.
#include "wapstack/wtp_pdu.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/hex.h"

namespace mmsbrix::wtp {
namespace {

using test::hex;
using testing::ElementsAre;
using testing::ElementsAreArray;

std::vector<std::uint8_t> encoded(const Pdu& pdu) {
  Writer out;
  encodePdu(pdu, out);
  return {out.written().begin(), out.written().end()};
}

/// Everything that a PDU says, as one line.
std::string described(const Pdu& pdu) {
  constexpr const char* kNames[] = {"",      "Invoke",    "Result",    "Ack",
                                    "Abort", "SegInvoke", "SegResult", "Nack"};
  std::string text = kNames[static_cast<int>(pdu.type)];
  const auto number = [&](const char* name, std::optional<std::uint32_t> value) {
    if (value) text += std::string(" ") + name + "=" + std::to_string(*value);
  };
  const auto flag = [&](const char* name, bool value) {
    if (value) text += std::string(" ") + name;
  };
  number("tid", pdu.tid);
  flag("gtr", pdu.groupEnd);
  flag("ttr", pdu.last);
  flag("rid", pdu.resent);
  flag("tve", pdu.verify);
  flag("new", pdu.tidNew);
  flag("up", pdu.userAck);
  if (pdu.type == PduType::invoke) number("class", pdu.classBits);
  if (pdu.version != 0) number("version", pdu.version);
  if (pdu.psn != 0) number("psn", pdu.psn);
  if (pdu.type == PduType::abort) number("type", pdu.abortType);
  if (pdu.type == PduType::abort) number("reason", pdu.abortReason);
  for (const std::uint8_t psn : pdu.missing) number("missing", psn);
  number("PSN", pdu.tpis.psn);
  number("MRU", pdu.tpis.maxUnit);
  number("total", pdu.tpis.totalSize);
  number("delay", pdu.tpis.delay);
  number("group", pdu.tpis.maxGroup);
  number("current", pdu.tpis.currentTid);
  if (pdu.tpis.info) text += " info=" + std::string(asText(*pdu.tpis.info));
  if (!pdu.data.empty()) text += " data=" + std::string(asText(pdu.data));
  return text;
}

struct Vector {
  const char* octets;
  const char* meaning;
};

// Octets as dissected from traffic with a gateway, and TPIs built from the standard's pictures.
const Vector kVectors[] = {
    {"0E 5B D0 02 'abc'", "Invoke tid=23504 gtr ttr class=2 data=abc"},
    {"0A 00 01 31", "Invoke tid=1 ttr new up class=1"},
    {"0E 00 01 40", "Invoke tid=1 gtr ttr class=0 version=1"},
    {"16 DB D0 'x'", "Result tid=56272 gtr ttr data=x"},
    {"18 5B D0", "Ack tid=23504"},
    {"1C 80 06", "Ack tid=32774 tve"},
    {"1D 00 06", "Ack tid=6 rid tve"},
    {"08 5C 73 02 60", "Invoke tid=23667 class=2 data=`"},
    {"28 5C 73 01 'm'", "SegInvoke tid=23667 psn=1 data=m"},
    {"2C 5C 73 03", "SegInvoke tid=23667 gtr psn=3"},
    {"2B 5C 73 15", "SegInvoke tid=23667 ttr rid psn=21"},
    {"32 DC 73 FF", "SegResult tid=56435 ttr psn=255"},
    {"98 DC 73 19 03", "Ack tid=56435 PSN=3"},
    {"38 64 5A 01 01", "Nack tid=25690 missing=1"},
    {"39 64 5A 00", "Nack tid=25690 rid"},
    {"21 E6 F2 E1", "Abort tid=59122 type=1 reason=225"},
    {"20 E0 A0 08", "Abort tid=57504 type=0 reason=8"},
    {"8A 00 07 02 13 01 05 78 'd'", "Invoke tid=7 ttr class=2 MRU=1400 data=d"},
    {"88 00 07 02 93 02 09 28 12 04 F0", "Invoke tid=7 class=2 total=2344 group=240"},
    {"98 80 07 99 03 12 03 0A", "Ack tid=32775 PSN=3 delay=10"},
    {"9C 80 07 13 05 00 2A", "Ack tid=32775 tve current=42"},
    {"98 00 07 0B 'end'", "Ack tid=7 info=end"},
    {"98 00 07 99 05 0C 04 'done'", "Ack tid=7 PSN=5 info=done"},
};

TEST(WtpPdu, VectorsReadAndWriteAlike) {
  for (const Vector& vector : kVectors) {
    const auto octets = hex(vector.octets);
    const DecodedPdu decoded = decodePdu(octets);
    EXPECT_EQ(decoded.error, PduError::none) << vector.octets;
    EXPECT_EQ(described(decoded.pdu), vector.meaning) << vector.octets;
    EXPECT_THAT(encoded(decoded.pdu), ElementsAreArray(octets)) << vector.octets;
  }
}

TEST(WtpPdu, PrefixesAndFlippedOctetsStayInBounds) {
  for (const Vector& vector : kVectors) {
    const auto octets = hex(vector.octets);
    for (std::size_t cut = 0; cut < octets.size(); ++cut) {
      const std::vector<std::uint8_t> prefix(octets.begin(),
                                             octets.begin() + static_cast<std::ptrdiff_t>(cut));
      const DecodedPdu decoded = decodePdu(prefix);
      EXPECT_EQ(decoded.hasTid, cut >= 3);
      for (int bit = 0; bit < 256; ++bit) {
        auto flipped = octets;
        flipped[cut] = static_cast<std::uint8_t>(flipped[cut] ^ bit);
        const DecodedPdu other = decodePdu(flipped);
        if (other.error == PduError::none) {
          // What could be read is written so that it reads back the same.
          EXPECT_EQ(described(decodePdu(encoded(other.pdu)).pdu), described(other.pdu));
        }
      }
    }
  }
}

TEST(WtpPdu, BrokenOnesAreToldApart) {
  struct Case {
    const char* octets;
    PduError error;
    bool hasTid;
  };
  const Case cases[] = {
      {"", PduError::tooShort, false},
      {"18", PduError::tooShort, false},
      {"18 00", PduError::tooShort, false},
      {"0A 00 01", PduError::tooShort, true},             // Invoke without its fourth octet
      {"20 00 01", PduError::tooShort, true},             // Abort without reason
      {"28 00 01", PduError::tooShort, true},             // segment without number
      {"38 00 01", PduError::tooShort, true},             // negative Ack without count
      {"04 00 01 02", PduError::unknownType, true},       // type 0
      {"40 00 01 02", PduError::unknownType, true},       // type 8
      {"78 00 01 02", PduError::unknownType, true},       // type 15
      {"38 00 01 02 05", PduError::listOverrun, true},    // two packets announced, one there
      {"98 00 01", PduError::tpiOverrun, true},           // TPIs announced, none there
      {"98 00 01 1A 03", PduError::tpiOverrun, true},     // a short one cut off
      {"98 00 01 0C 09 41", PduError::tpiOverrun, true},  // a long one cut off
      {"98 00 01 0C", PduError::tpiOverrun, true},        // a long one without length
      {"98 00 01 99 03", PduError::tpiOverrun, true},     // another announced, none there
  };
  for (const Case& bad : cases) {
    const DecodedPdu decoded = decodePdu(hex(bad.octets));
    EXPECT_EQ(decoded.error, bad.error) << bad.octets;
    EXPECT_EQ(decoded.hasTid, bad.hasTid) << bad.octets;
  }
}

TEST(WtpPdu, UnknownAndUnusableTpisArePassedOver) {
  const auto meaning = [](const char* octets) { return described(decodePdu(hex(octets)).pdu); };
  EXPECT_EQ(meaning("98 00 01 A9 FF 19 04"), "Ack tid=1 PSN=4");           // identity 5
  EXPECT_EQ(meaning("98 00 01 A4 02 01 02 19 04"), "Ack tid=1 PSN=4");     // identity 4, long form
  EXPECT_EQ(meaning("98 00 01 82 11 91 19 04"), "Ack tid=1 PSN=4");        // an Error item
  EXPECT_EQ(meaning("98 00 01 84 03 21 09 AA 19 04"), "Ack tid=1 PSN=4");  // the same, long
  EXPECT_EQ(meaning("98 00 01 1C 01 04"), "Ack tid=1 PSN=4");  // a packet number in long form
  EXPECT_EQ(meaning("98 00 01 1A 01 02"), "Ack tid=1");        // packet number of two octets
  EXPECT_EQ(meaning("98 00 01 91 03 11 07"), "Ack tid=1");     // options without value
  EXPECT_EQ(meaning("98 00 01 90 12 09 01"), "Ack tid=1");     // no option id, unknown id
  EXPECT_EQ(meaning("98 00 01 14 06 01 01 02 03 04 05"), "Ack tid=1");  // number of five octets
}

std::vector<std::string> separated(const std::vector<std::uint8_t>& datagram) {
  std::vector<std::string> parts;
  Separation separation(datagram);
  while (const auto part = separation.next()) parts.emplace_back(asText(*part));
  return parts;
}

TEST(WtpPdu, ConcatenationTakesOneAndTwoOctetLengths) {
  const std::string large(0x1234, 'z');
  Writer out;
  for (const std::string& part : {std::string("first"), large, std::string("last")}) {
    const std::size_t before = out.size();
    concatenate(asOctets(part), out);
    EXPECT_EQ(out.size() - before, concatenatedSize(part.size()) + (before == 0 ? 1 : 0));
  }
  const std::vector<std::uint8_t> datagram(out.written().begin(), out.written().end());
  EXPECT_EQ(datagram[7], 0x92);  // 0x1234 with the top bit set: not a uintvar
  EXPECT_EQ(datagram[8], 0x34);
  EXPECT_THAT(separated(datagram), ElementsAre("first", large, "last"));
  EXPECT_THAT(separated(hex("18 00 01")), ElementsAre(std::string("\x18\0\1", 3)));

  // A length past the end ends the datagram; what stood before it counts.
  EXPECT_THAT(separated(hex("00 02 'ab' 03 'cd'")), ElementsAre("ab"));
  EXPECT_THAT(separated(hex("00 01 'a' 80")), ElementsAre("a"));
  EXPECT_THAT(separated(hex("00 FF FF 'a'")), ElementsAre());
  EXPECT_THAT(separated(hex("00")), ElementsAre());
  EXPECT_THAT(separated({}), ElementsAre());
}

}  // namespace
}  // namespace mmsbrix::wtp
