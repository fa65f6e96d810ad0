// An independent dissector reads what we encode: no malformed mark, and each field as it was
// composed.
#include <gtest/gtest.h>
#include <mmsbrix/mms/receiving.h>

#include <array>
#include <sstream>
#include <string>

#include "command.h"
#include "compose.h"
#include "support/dissector.h"
#include "support/pcap.h"

namespace mmsbrix::test {
namespace {

const std::string kMedia = MMSBRIX_SAMPLE_MEDIA;

struct FieldCase {
  const char* name;  // the dissector's name of the field
  const char* value;
};

class Dissector : public DissectorTest {
 protected:
  // A capture of the message being submitted; its path.
  std::string capture(const std::string& pdu) {
    const std::string request =
        "POST /mms HTTP/1.1\r\nHost: mmsc.example\r\n"
        "Content-Type: application/vnd.wap.mms-message\r\nContent-Length: " +
        std::to_string(pdu.size()) + "\r\n\r\n" + pdu;
    return folder_.put("m.pcap", captureOf({tcpSegment(80, request)}, 6));
  }
};

TEST_F(Dissector, ReadsEveryFieldAsItWasComposed) {
  tool::ComposeCommand command;
  command.output = "-";
  command.to = {"+358401234567"};
  command.cc = {"ann@example.com"};
  command.bcc = {"10.0.0.7"};
  command.from = "+35850111";
  command.subject = "Grüße";
  command.hasSubject = true;
  command.texts = {"Hei \xF0\x9F\x98\x80"};
  command.attachments = {kMedia + "/photo.jpg", kMedia + "/chime.amr"};
  command.date = "2026-11-21T10:30:05Z";
  command.expiry = "2d";
  command.deliveryTime = "2026-11-22T06:00Z";
  command.messageClass = "personal";
  command.priority = "high";
  command.deliveryReport = "yes";
  command.readReply = "no";
  command.visibility = "hide";
  command.transactionId = "T-1";
  command.container = tool::Container::related;
  std::istringstream in;
  std::ostringstream out;
  std::ostringstream err;
  ASSERT_EQ(tool::runCompose(command, {in, out, err}), 0) << err.str();
  const std::string file = capture(out.str());

  const auto fields = std::to_array<FieldCase>({
      {"mmse.message_type", "0x80"},
      {"mmse.transaction_id", "T-1"},
      {"mmse.mms_version", "1.2"},
      {"mmse.date", "Nov 21, 2026 10:30:05.000000000 UTC"},
      {"mmse.from", "+35850111/TYPE=PLMN"},
      {"mmse.to", "+358401234567/TYPE=PLMN"},
      {"mmse.cc", "ann@example.com"},
      {"mmse.bcc", "10.0.0.7/TYPE=IPv4"},
      {"mmse.delivery_report", "0x80"},
      {"mmse.sender_visibility", "0x80"},
      {"mmse.read_report", "0x81"},
      {"mmse.message_class.id", "0x80"},
      {"mmse.expiry.rel", "172800.000000000"},
      {"mmse.delivery_time.abs", "Nov 22, 2026 06:00:00.000000000 UTC"},
      {"mmse.priority", "0x82"},
      {"wsp.parameter.start", "<text.txt>"},
      {"wsp.header.content_location", "text.txt|photo.jpg|chime.amr"},
      {"wsp.header.content_id", "\"<text.txt>\"|\"<photo.jpg>\"|\"<chime.amr>\""},
      {"wsp.parameter.name", "text.txt|photo.jpg|chime.amr"},
      {"_ws.malformed", ""},
  });
  for (const auto& [name, value] : fields) {
    EXPECT_EQ(run(file, std::string("-T fields -E aggregator='|' -e ") + name),
              std::string(value) + "\n")
        << name;
  }
  // The dissector shows the subject as ASCII; its octets are those that went in.
  EXPECT_NE(run(file, "-T jsonraw").find("4772c3bcc39f65"), std::string::npos);

  const std::string tree = run(file, "-V");
  ASSERT_NE(tree.find("MMS Message Encapsulation, Type: m-send-req"), std::string::npos);
  const std::string message = tree.substr(tree.find("MMS Message Encapsulation"));
  for (const char* mark : {"alformed", "nknown", "ndecoded", "xpert Info", "rror"}) {
    EXPECT_EQ(message.find(mark), std::string::npos) << mark << "\n" << message;
  }
  for (const char* part :
       {"Content-Type: application/vnd.wap.multipart.related", "Type: text/plain",
        "Part: 1, content-type: text/plain", "Content-Type: text/plain; charset=UTF-8",
        "Part: 2, content-type: image/jpeg", "JPEG File Interchange Format",
        "Part: 3, content-type: audio/amr"}) {
    EXPECT_NE(message.find(part), std::string::npos) << part;
  }
}

TEST_F(Dissector, ReadsWhatAReceiverAnswers) {
  ReadRecInd read;
  read.messageId = "m-1";
  read.to = CMMAddr("+358401234567", CMMAddr::TYPE_PLMN);
  read.date = 1795257005;
  const auto fields = [&](const std::vector<std::uint8_t>& pdu) {
    return run(
        capture({pdu.begin(), pdu.end()}),
        "-T fields -e mmse.message_type -e mmse.transaction_id -e mmse.message_id -e mmse.to "
        "-e mmse.status -e mmse.report_allowed -e mmse.read_status -e _ws.malformed");
  };
  EXPECT_EQ(fields(encodePdu(NotifyRespInd{.transactionId = "T9", .reportAllowed = true})),
            "0x83\tT9\t\t\t0x81\t0x80\t\t\n");
  EXPECT_EQ(fields(encodePdu(AcknowledgeInd{.transactionId = "T9"})), "0x85\tT9\t\t\t\t\t\t\n");
  EXPECT_EQ(fields(encodePdu(read)), "0x87\t\tm-1\t+358401234567/TYPE=PLMN\t\t\t0x80\t\n");
}

TEST_F(Dissector, ReadsAMessageWithAlmostNothing) {
  tool::ComposeCommand command;
  command.output = "-";
  command.to = {"ann@example.com"};
  command.texts = {"a"};
  command.container = tool::Container::single;
  std::istringstream in;
  std::ostringstream out;
  std::ostringstream err;
  ASSERT_EQ(tool::runCompose(command, {in, out, err}), 0) << err.str();
  const std::string file = capture(out.str());
  EXPECT_EQ(run(file, "-T fields -e mmse.from -e mmse.to -e _ws.malformed"),
            "<insert address>\tann@example.com\t\n");
  EXPECT_NE(run(file, "-V").find("Content-Type: text/plain; charset=UTF-8"), std::string::npos);
}

}  // namespace
}  // namespace mmsbrix::test
