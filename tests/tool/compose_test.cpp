// Messages composed from options and from JSON.
#include "compose.h"

#include <gtest/gtest.h>
#include <mmsbrix/mms/inspector.h>
#include <mmsbrix/mms/mmscodec.h>

#include <array>
#include <functional>

#include "command_line.h"
#include "message_json.h"
#include "show.h"
#include "support/host.h"
#include "support/temporary_folder.h"

namespace mmsbrix::test {
namespace {

using tool::ComposeCommand;
using tool::Json;

const std::string kMedia = MMSBRIX_SAMPLE_MEDIA;

ComposeCommand completeCommand() {
  ComposeCommand command;
  command.to = {"+358 40 123", "ann@example.com"};
  command.cc = {"10.0.0.7"};
  command.bcc = {"2001:db8::1", "other:short"};
  command.from = "+35850111";
  command.subject = "Grüße";
  command.hasSubject = true;
  command.texts = {"Hei \xC3\xA4", "second"};
  command.attachments = {kMedia + "/photo.jpg", kMedia + "/photo.jpg;name=b.jpg;id=second-photo",
                         kMedia + "/chime.amr;type=audio/x-own"};
  command.date = "2026-11-21T10:30:05Z";
  command.expiry = "2d";
  command.deliveryTime = "2026-11-22T06:00Z";
  command.messageClass = "informational";
  command.priority = "low";
  command.deliveryReport = "no";
  command.readReply = "yes";
  command.visibility = "hide";
  command.transactionId = "T-1";
  return command;
}

std::string composed(const ComposeCommand& command, int expected = 0) {
  ComposeCommand copy = command;
  copy.output = "-";
  Caught caught;
  EXPECT_EQ(runCompose(copy, caught.streams()), expected) << caught.err.str();
  return caught.out.str();
}

TEST(Compose, EveryOptionReachesTheMessage) {
  const std::string pdu = composed(completeCommand());
  const Inspection seen = inspect(pdu.data(), pdu.size());
  for (const Remark& remark : seen.remarks) ADD_FAILURE() << remark.text;
  std::string fields;
  for (const InspectedField& field : seen.fields) fields += field.name + ": " + field.value + "\n";
  EXPECT_EQ(fields,
            "X-Mms-Message-Type: m-send-req\n"
            "X-Mms-Transaction-Id: T-1\n"
            "X-Mms-MMS-Version: 1.2\n"
            "Date: 2026-11-21T10:30:05Z\n"
            "From: +35850111/TYPE=PLMN\n"
            "To: +35840123/TYPE=PLMN\n"
            "To: ann@example.com\n"
            "Cc: 10.0.0.7/TYPE=IPv4\n"
            "Bcc: 2001:db8::1/TYPE=IPv6\n"
            "Bcc: short\n"
            "Subject: Grüße\n"
            "X-Mms-Delivery-Report: No\n"
            "X-Mms-Sender-Visibility: Hide\n"
            "X-Mms-Read-Reply: Yes\n"
            "X-Mms-Message-Class: Informational\n"
            "X-Mms-Expiry: in 2 d\n"
            "X-Mms-Delivery-Time: 2026-11-22T06:00:00Z\n"
            "X-Mms-Priority: Low\n"
            "Content-Type: application/vnd.wap.multipart.mixed\n");
  std::string parts;
  for (const InspectedPart& part : seen.parts) {
    parts += part.contentType;
    for (const InspectedParameter& parameter : part.parameters) {
      parts += " " + parameter.name + "=" + parameter.value;
    }
    for (const InspectedHeader& header : part.headers)
      parts += " " + header.name + "=" + header.value;
    parts += "\n";
  }
  EXPECT_EQ(
      parts,
      "text/plain Charset=utf-8 Name=text1.txt Content-ID=<text1.txt> Content-Location=text1.txt\n"
      "text/plain Charset=utf-8 Name=text2.txt Content-ID=<text2.txt> Content-Location=text2.txt\n"
      "image/jpeg Name=photo.jpg Content-ID=<photo.jpg> Content-Location=photo.jpg\n"
      "image/jpeg Name=b.jpg Content-ID=<second-photo> Content-Location=b.jpg\n"
      "audio/x-own Name=chime.amr Content-ID=<chime.amr> Content-Location=chime.amr\n");
}

TEST(Compose, ShowAndComposeAgainGiveTheSameOctets) {
  std::vector<ComposeCommand> commands(5, completeCommand());
  commands[1].charset = "iso-8859-1";
  commands[1].from.clear();
  commands[2].container = tool::Container::related;
  commands[2].start = "second-photo";
  commands[3].container = tool::Container::single;
  commands[3].texts = {"only"};
  commands[3].attachments.clear();
  commands[4].texts.clear();
  commands[4].hasSubject = false;
  commands[4].date.clear();
  commands[4].expiry = "2030-01-01";
  commands[4].version = "1.0";
  const TemporaryFolder folder;
  for (const ComposeCommand& command : commands) {
    const std::string pdu = composed(command);
    ASSERT_FALSE(pdu.empty());
    Caught shown;
    shown.in.str(pdu);
    ASSERT_EQ(tool::runShow({{"-"}, true, false}, shown.streams()), 0);
    ComposeCommand again;
    again.jsonFile = folder.put("m.json", shown.out.str());
    EXPECT_EQ(composed(again), pdu) << shown.out.str();
  }
}

TEST(Compose, TransactionIdsAreUnique) {
  ComposeCommand command = completeCommand();
  command.transactionId.clear();
  EXPECT_NE(composed(command), composed(command));
}

struct RefusalCase {
  const char* what;
  std::function<void(ComposeCommand&)> change;
  const char* reason;
};

TEST(Compose, WhatMakesNoMessageIsRefusedWithTheReasonAndTheOldFileStays) {
  const TemporaryFolder folder;
  const std::string output = folder.put("out.mms", "old");
  const std::string latin = folder.put("latin.txt", "\xE4");
  const std::string noFile = "none.jpg: " + noSuchFile();
  const auto cases = std::to_array<RefusalCase>({
      {"no recipient", [](auto& c) { c.to = c.cc = c.bcc = {}; }, "no recipient"},
      {"odd recipient", [](auto& c) { c.to = {"ann"}; }, "'ann' is no telephone number"},
      {"missing file", [](auto& c) { c.attachments = {"none.jpg"}; }, noFile.c_str()},
      {"folder", [&](auto& c) { c.attachments = {folder.path()}; }, "is a directory"},
      {"bad option", [](auto& c) { c.attachments = {"a;b=c"}; }, "'b=c' of a is none of"},
      {"nothing", [](auto& c) { c.texts = c.attachments = {}; }, "nothing to send"},
      {"two in one", [](auto& c) { c.container = tool::Container::single; },
       "--body single takes one part"},
      {"bad time", [](auto& c) { c.expiry = "soon"; }, "--expiry: 'soon' is no time"},
      {"interval as date", [](auto& c) { c.date = "2d"; }, "an interval is no date"},
      {"charset lacks it", [](auto& c) { c.charset = "us-ascii"; },
       "has no form in the charset us-ascii"},
      {"charset has no number", [](auto& c) { c.charset = "iso-8859-15"; },
       "has no number in a header"},
      {"no such start",
       [](auto& c) {
         c.container = tool::Container::related;
         c.start = "x";
       },
       "no part has the id x"},
      {"control character", [](auto& c) { c.subject = "\x05"; }, "begins with a control character"},
  });
  for (const RefusalCase& refused : cases) {
    ComposeCommand command = completeCommand();
    command.output = output;
    refused.change(command);
    Caught caught;
    EXPECT_EQ(runCompose(command, caught.streams()), 1) << refused.what;
    EXPECT_NE(caught.err.str().find(refused.reason), std::string::npos)
        << refused.what << ": " << caught.err.str();
    EXPECT_EQ(folder.get("out.mms"), "old") << refused.what;
    command.force = true;
    Caught forced;
    EXPECT_EQ(runCompose(command, forced.streams()), 0) << refused.what;
    EXPECT_NE(forced.err.str().find("warning: "), std::string::npos);
    EXPECT_NE(folder.get("out.mms"), "old") << refused.what;
    folder.put("out.mms", "old");
  }
  EXPECT_EQ(folder.entries(), 2);  // no litter
}

struct JsonCase {
  const char* json;
  const char* reason;
};

TEST(Compose, JsonThatMakesNoMessageIsRefusedByMember) {
  const TemporaryFolder folder;
  for (const auto& [json, reason] : std::to_array<JsonCase>({
           {"{", "parse error"},
           {"[]", "no JSON object"},
           {R"({"to": 5})", "\"to\": no text"},
           {R"({"to": "ann"})", "'ann' is no telephone"},
           {R"({"to": {"address": "x", "kind": "fax"}})", "kind is none of"},
           {R"({"type": "m-delivery-ind"})", "only an m-send-req"},
           {R"({"sbject": "x"})", "\"sbject\": is not known"},
           {R"({"priority": "Urgent"})", "none of Low, Normal, High"},
           {R"({"deliveryReport": "yes"})", "neither true nor false"},
           {R"({"expiry": "soon"})", "no time or interval"},
           {R"({"subject": {"text": "\u20AC", "charset": "iso-8859-1"}})",
            "no form in the charset"},
           {R"({"subject": {"base64": "?"}})", "base64 cannot be read"},
           {R"({"to": "+1", "parts": 1})", "\"parts\": is no list"},
           {R"({"to": "+1", "parts": [1]})", "\"parts[0]\": is no object"},
           {R"({"to": "+1", "parts": [{"file": "none"}]})", "none cannot be read"},
           {R"({"to": "+1", "parts": [{"text": "x", "headers": [{"name": "n"}]}]})",
            "no name and value"},
           {R"({"to": "+1", "contentType": "text/plain", "parts": [{"text": "x"}]})",
            "no multipart"},
           {R"({"to": "+1", "content": {"text": "l"}, "parts": [{"text": "x"}]})", "stands beside"},
           {R"({"to": "+1", "subject": "a\u0000b"})", "has a zero octet"},
           {R"({"to": "+1", "parts": [{"tpye": "a/b", "text": "x"}]})",
            "parts[0].tpye\": is not known"},
           {R"({"to": "+1", "parts": [{"type": "\u0001bad", "text": "x"}]})", "control character"},
           {R"({"to": "+1", "parts": [{"text": "x", "headers": [{"name": "", "value": "v"}]}]})",
            "no header name"},
           {R"({"to": "+1", "transactionId": "\tT", "parts": [{"text": "x"}]})",
            "control character"},
           {R"({"to": "+1", "version": "1.99", "parts": [{"text": "x"}]})", "no MMS version"},
           {R"({"to": [[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[1]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]})",
            "deeply nested"},
           {R"({"to": "+1"})", "there is no content type"},
           {R"({"parts": [{"text": "x"}]})", "there is no recipient"},
       })) {
    ComposeCommand command;
    command.jsonFile = folder.put("m.json", json);
    command.output = "-";
    Caught caught;
    EXPECT_EQ(runCompose(command, caught.streams()), 1) << json;
    EXPECT_NE(caught.err.str().find(reason), std::string::npos) << json << caught.err.str();
    EXPECT_EQ(caught.out.str(), "");
  }
}

TEST(Compose, JsonFilesAreFoundBesideTheDescription) {
  const TemporaryFolder folder;
  folder.put("a.txt", "content");
  ComposeCommand command;
  command.jsonFile =
      folder.put("m.json", R"({"to": ["+1", {"address": "b@c"}], "parts": [{"file": "a.txt"}]})");
  const std::string pdu = composed(command);
  CMMsg message;
  MMS_LoadFromMemory(pdu.data(), static_cast<unsigned>(pdu.size()), &message, 0);
  ASSERT_EQ(message.Content()->ChildCount(), 1U);
  EXPECT_STREQ(message.Content()->FirstChild()->Headers()->First()->GetValue(), "text/plain");
  EXPECT_STREQ(reinterpret_cast<char*>(message.Content()->FirstChild()->GetContent()), "content");
  EXPECT_NE(message.GetTransactionId(), nullptr);
}

}  // namespace
}  // namespace mmsbrix::test
