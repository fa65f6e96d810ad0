// The view shows what the decoder keeps, of whole PDUs and of broken ones.
#include "mms/message_view.h"

#include <gtest/gtest.h>

#include "support/hex.h"
#include "support/messages.h"

namespace mmsbrix::test {
namespace {

std::string_view orAbsent(const char* text) {
  return text == nullptr ? "absent" : text;
}

std::string_view textOf(const MessageView& view, int code) {
  const auto field = view.find(code);
  return field ? field->text().text.substr(0, 1023) : "absent";
}

// A content type or header as "name: value; parameter=value".
std::string shown(const CMMHdr& header) {
  std::string text = std::string(header.Name()) + ": " + std::string(header.Value());
  for (const CMMParam& parameter : *header.Params()) {
    text.append("; ").append(parameter.Name()).append("=").append(parameter.Value());
  }
  return text;
}

std::string shown(const ContentTypeView& type) {
  std::string text = "Content-Type: " + std::string(type.mediaType());
  type.eachParameter([&](const ParameterView& parameter) {
    if (parameter.name.empty()) return;
    text.append("; ").append(parameter.name).append("=").append(parameter.value);
  });
  return text;
}

void expectSame(const std::vector<std::uint8_t>& octets) {
  SCOPED_TRACE(toHex(octets));
  CMMsg message;
  decode(octets, message);
  const MessageView view(octets.data(), static_cast<unsigned>(octets.size()));
  ASSERT_EQ(view.messageType(), message.GetMsgType());
  ASSERT_EQ(textOf(view, 0x18), orAbsent(message.GetTransactionId()));
  ASSERT_EQ(textOf(view, 0x0B), orAbsent(message.GetMessageId()));
  const CMMString* subject = message.GetSubject();
  ASSERT_EQ(textOf(view, 0x16), subject == nullptr ? "absent" : subject->Text());
  if (subject != nullptr) {
    ASSERT_EQ(view.find(0x16)->text().charset, subject->Charset());
  }
  unsigned recipients = 0;
  view.eachField([&](const FieldView& field) {
    if (field.code != 0x17 || field.form == ValueForm::none ||
        field.form == ValueForm::shortInteger) {
      return;
    }
    ASSERT_LT(recipients, message.GetTo()->Count());
    const CMMAddr& kept = *message.GetTo()->Get(static_cast<int>(recipients++));
    EXPECT_EQ(field.address().text, kept.Value()->Text());
    EXPECT_EQ(field.address().type, kept.GetType());
  });
  ASSERT_EQ(recipients, message.GetTo()->Count());
  unsigned parts = 0;
  view.eachPart([&](const PartView& part) {
    const CMMPart* kept = message.Content()->Child(parts++);
    ASSERT_NE(kept, nullptr);
    EXPECT_TRUE(std::ranges::equal(
        part.content,
        std::span(kept->GetContent(), static_cast<std::size_t>(kept->GetContentLen()))));
    for (const CMMHdr& header : *kept->Headers()) {
      if (header.Name() == "Content-Type" && &header == kept->Headers()->begin()) {
        EXPECT_EQ(shown(part.contentType), shown(header));
      }
    }
    if (CMMHdr* id = const_cast<CMMPart*>(kept)->Headers()->Find("Content-ID")) {
      EXPECT_EQ(part.header("content-id"), id->Value());
    }
  });
  ASSERT_EQ(parts, message.Content()->ChildCount());
}

std::vector<std::uint8_t> completePdu() {
  CMMsg message;
  fillComplete(message);
  return encode(message);
}

TEST(MessageView, ShowsWhatTheDecoderKeepsOfEveryTruncation) {
  const auto octets = completePdu();
  for (std::size_t length = 0; length <= octets.size(); ++length) {
    expectSame({octets.begin(), octets.begin() + static_cast<std::ptrdiff_t>(length)});
  }
}

TEST(MessageView, ShowsWhatTheDecoderKeepsWhenAnOctetIsChanged) {
  auto octets = completePdu();
  for (std::size_t i = 0; i < octets.size() && !HasFailure(); ++i) {
    const std::uint8_t original = octets[i];
    for (const int value : {0x00, 0x01, 0x1F, 0x22, 0x41, 0x7F, 0x80, 0x83, 0x84, 0x8E, 0xFF}) {
      octets[i] = static_cast<std::uint8_t>(value);
      expectSame(octets);
    }
    octets[i] = original;
  }
}

TEST(MessageView, PointsIntoTheCallersOctets) {
  const auto octets = completePdu();
  const MessageView view(octets.data(), static_cast<unsigned>(octets.size()));
  EXPECT_TRUE(view.isMultipart());
  EXPECT_EQ(view.find(0x0D)->octet(), 0x92);
  EXPECT_EQ(view.find(0x08)->number(), 2 * 86400U);
  EXPECT_EQ(view.find(0x05)->number(), 1795257005U);
  EXPECT_EQ(view.body().data() + view.body().size(), octets.data() + octets.size());
  EXPECT_EQ(view.find(MessageView::kFrom)->address().text, "+358401234567");
  EXPECT_EQ(shown(view.contentType()),
            "Content-Type: application/vnd.wap.multipart.related; Type=application/smil; "
            "Start=<smil>");
  std::vector<std::string> names;
  view.eachPart([&](const PartView& part) {
    EXPECT_GE(part.content.data(), octets.data());
    EXPECT_LE(part.content.data() + part.content.size(), octets.data() + octets.size());
    EXPECT_EQ(part.header("X-None"), "");
    part.eachHeader([&](const HeaderView& header) {
      names.push_back(std::string(header.name) + "=" + std::string(header.text));
    });
    return names.size() < 2;  // ends the walk behind the second part
  });
  EXPECT_EQ(names, (std::vector<std::string>{"Content-ID=<smil>", "Content-Location=hei.txt"}));
}

}  // namespace
}  // namespace mmsbrix::test
