// What a receiving client reads and answers, octet for octet.
#include "mms/receiving.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "mms/inspector.h"
#include "support/hex.h"

namespace mmsbrix::test {
namespace {

struct AnswerCase {
  const char* name;
  std::vector<std::uint8_t> pdu;
  const char* octets;
};

TEST(Receiving, AnswersAreWrittenInTheStandardsOrderAndWithoutRemarks) {
  ReadRecInd read;
  read.messageId = "m-1@relay";
  read.to = CMMAddr("+358401234567", CMMAddr::TYPE_PLMN);
  ReadRecInd deleted = read;
  deleted.from = CMMAddr("ann@example.com", CMMAddr::TYPE_PLAIN);
  deleted.date = 1795257005;
  deleted.status = ReadStatus::deletedUnread;
  for (const auto& [name, pdu, octets] : std::vector<AnswerCase>{
           {"retrieved", encodePdu(NotifyRespInd{.transactionId = "T9"}),
            "8C 83 98 'T9' 00 8D 92 95 81"},
           {"deferred, no report",
            encodePdu(NotifyRespInd{"T9", "1.0", DeliveryStatus::deferred, false}),
            "8C 83 98 'T9' 00 8D 90 95 83 91 81"},
           {"acknowledge", encodePdu(AcknowledgeInd{.transactionId = "T9", .reportAllowed = true}),
            "8C 85 98 'T9' 00 8D 92 91 80"},
           {"a transaction id that begins above 127",
            encodePdu(AcknowledgeInd{.transactionId = "\xC3\xA9"}), "8C 85 98 7F C3 A9 00 8D 92"},
           {"read", encodePdu(read),
            "8C 87 8D 92 8B 'm-1@relay' 00 97 '+358401234567/TYPE=PLMN' 00 89 01 81 9B 80"},
           {"deleted", encodePdu(deleted),
            "8C 87 8D 92 8B 'm-1@relay' 00 97 '+358401234567/TYPE=PLMN' 00"
            "89 11 80 'ann@example.com' 00 85 04 6B 01 72 AD 9B 81"},
       }) {
    EXPECT_EQ(toHex(pdu), toHex(hex(octets))) << name;
    for (const Remark& remark : inspect(pdu.data(), pdu.size()).remarks) {
      ADD_FAILURE() << name << ": " << remark.text;
    }
  }
}

// As a relay pushes it: fields in another order than ours, a relative expiry, a long size.
TEST(Receiving, ReadsANotificationOfWhatItUnderstands) {
  const auto pdu =
      hex("8C 82 98 'N-7' 00 8D 91 89 19 80 '+358409876543/TYPE=PLMN' 00 96 07 EA 'Gr' C3 BC 'n' 00"
          "8A 80 8E 03 01 86 A0 88 05 81 03 02 A3 00 83 'http://10.0.0.1/m?17' 00");
  const auto read = readNotification(pdu.data(), pdu.size());
  ASSERT_TRUE(read);
  EXPECT_EQ(read->transactionId, "N-7");
  EXPECT_EQ(read->version, "1.1");
  EXPECT_STREQ(read->from.Value()->Get(), "+358409876543");
  EXPECT_EQ(read->subject, "Gr\xC3\xBCn");
  EXPECT_EQ(read->messageSize, 100000u);
  EXPECT_EQ(read->contentLocation, "http://10.0.0.1/m?17");

  for (std::size_t size = 0; size < pdu.size(); ++size) {
    const std::vector<std::uint8_t> cut(pdu.begin(), pdu.begin() + static_cast<long>(size));
    EXPECT_EQ(readNotification(cut.data(), size).has_value(), size >= 2) << size;
  }
  EXPECT_FALSE(readNotification("\x8C\x84\x8D\x92", 4));
}

}  // namespace
}  // namespace mmsbrix::test
