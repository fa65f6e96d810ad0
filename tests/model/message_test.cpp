// A message, its defaults, its optional members and its copies.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "model/mmsg.h"
#include "support/messages.h"

namespace mmsbrix::test {
namespace {

void expectCleared(CMMsg& message) {
  const int numbers[] = {message.GetMsgType(),          message.GetMsgClass(),
                         message.GetPriority(),         message.GetResponseStatus(),
                         message.GetSenderVisibility(), message.GetDeliveryReport(),
                         message.GetReadReply()};
  EXPECT_THAT(numbers, testing::ElementsAre(0, 0, 0, 0, -1, -1, -1));
  EXPECT_STREQ(message.GetVersion(), "");
  EXPECT_EQ(message.GetTransactionId(), nullptr);
  EXPECT_EQ(message.GetMessageId(), nullptr);
  EXPECT_EQ(message.GetSubject(), nullptr);
  EXPECT_EQ(message.GetResponseText(), nullptr);
  EXPECT_STREQ(message.GetFrom()->Value()->Get(), "");
  EXPECT_EQ(message.GetFrom()->GetType(), CMMAddr::TYPE_OTHER);
  EXPECT_EQ(message.GetTo()->Count() + message.GetCc()->Count() + message.GetBcc()->Count(), 0U);
  EXPECT_EQ(message.GetDate()->wYear + message.GetExpiry()->wDay + message.GetDeliveryTime()->wDay,
            0);
  EXPECT_EQ(message.Content()->ChildCount(), 0U);
  EXPECT_EQ(message.Content()->GetContent(), nullptr);
  EXPECT_EQ(message.Content()->Headers()->Count(), 0U);
}

TEST(Message, ClearMakesItEqualToANewOne) {
  CMMsg message;
  expectCleared(message);
  fillComplete(message);
  message.SetMessageId("m");
  message.SetResponseStatus(CMMsg::MSG_RSPSTATUS_OK);
  CMMString text("t", "utf-8");
  message.SetResponseText(&text);
  message.Clear();
  expectCleared(message);
}

TEST(Message, AbsentIsNotEmpty) {
  CMMsg message;
  message.SetTransactionId("");
  EXPECT_STREQ(message.GetTransactionId(), "");
  message.SetTransactionId(message.GetTransactionId());  // its own text
  EXPECT_STREQ(message.GetTransactionId(), "");
  message.SetTransactionId(nullptr);
  EXPECT_EQ(message.GetTransactionId(), nullptr);
  CMMString subject("s", "us-ascii");
  message.SetSubject(&subject);
  subject.Set(nullptr);
  subject.SetCharset(nullptr);
  EXPECT_STREQ(static_cast<const char*>(*message.GetSubject()), "s");
  EXPECT_STREQ(message.GetSubject()->GetCharset(), "us-ascii");
  EXPECT_STREQ(static_cast<char*>(subject), "");
  EXPECT_STREQ(subject.GetCharset(), "");
  message.SetSubject(nullptr);
  EXPECT_EQ(message.GetSubject(), nullptr);
}

TEST(Message, CopiesShareNothing) {
  CMMsg source;
  fillComplete(source);
  CMMPart* nested = source.Content()->FirstChild()->NewChild();
  nested->SetContent("deep", -1);
  CMMsg copy(source);
  CMMsg assigned;
  assigned.SetMessageId("dropped");
  assigned = source;
  for (CMMsg* other : {&copy, &assigned}) {
    EXPECT_EQ(other->GetMessageId(), nullptr);  // absent members stay absent
    EXPECT_STREQ(other->GetTransactionId(), "T-1");
    EXPECT_NE(other->GetTransactionId(), source.GetTransactionId());
    EXPECT_NE(other->GetSubject(), source.GetSubject());
    CMMPart* part = other->Content()->FirstChild()->FirstChild();
    EXPECT_STREQ(reinterpret_cast<char*>(part->GetContent()), "deep");
    part->SetContent("changed", -1);
  }
  EXPECT_STREQ(reinterpret_cast<char*>(nested->GetContent()), "deep");
}

TEST(Part, ContentIsFollowedByAZero) {
  CMMPart part;
  part.SetContent("abc", -1);
  EXPECT_EQ(part.GetContentLen(), 3);
  part.SetContent(part.GetContent() + 1, 2);  // from its own buffer
  EXPECT_STREQ(reinterpret_cast<char*>(part.GetContent()), "bc");
  part.SetContent(nullptr, 10);
  EXPECT_EQ(part.GetContent(), nullptr);
  EXPECT_EQ(part.GetContentLen(), 0);
}

TEST(Part, AssigningAChildToItsParentKeepsTheChild) {
  CMMPart part;
  part.NewChild()->SetContent("child", -1);
  part = *part.FirstChild();
  EXPECT_STREQ(reinterpret_cast<char*>(part.GetContent()), "child");
  EXPECT_EQ(part.ChildCount(), 0U);
  part.AddChild(&part);
  part = part;  // NOLINT: on purpose
  EXPECT_EQ(part.ChildCount(), 1U);
  part.Headers()->AddNew();
  part.Clear();
  EXPECT_EQ(part.ChildCount() + part.Headers()->Count(), 0U);
  EXPECT_EQ(part.GetContent(), nullptr);
}

// Texts of 15 octets and more are held in different ways; each may be given a piece of itself.
TEST(Texts, MayBeSetFromThemselvesWhateverTheirLength) {
  for (const std::size_t length : {1U, 14U, 15U, 16U, 17U, 100U}) {
    std::string expected(length, 'a');
    expected.back() = 'z';
    CMMString text(expected.c_str(), "utf-8");
    text.Set(text.Get());
    EXPECT_EQ(text.Text(), expected);
    text.Set(text.Get() + length / 2);
    EXPECT_EQ(text.Text(), expected.substr(length / 2));
    CMMsg message;
    message.SetTransactionId(expected.c_str());
    message.SetTransactionId(message.GetTransactionId());
    EXPECT_EQ(message.GetTransactionId(), expected);
    CMMsg moved(std::move(message));
    message = moved;
    moved.Clear();
    EXPECT_EQ(message.GetTransactionId(), expected);
  }
}

TEST(Part, FindChildComparesTheFirstHeaderOfThatName) {
  CMMPart part;
  for (const char* name : {"one", "two"}) {
    CMMPart child;
    CMMHdr id("Content-ID", name);
    CMMHdr second("content-id", "three");
    child.Headers()->Add(&id);
    child.Headers()->Add(&second);
    part.AddChild(&child);
  }
  part.FirstChild();
  CMMHdr wanted("CONTENT-ID", "TWO");
  CMMPart* found = part.FindChild(&wanted);
  EXPECT_EQ(found, part.NextChild());  // the child cursor has not moved
  wanted.SetValue("three");
  EXPECT_EQ(part.FindChild(&wanted), nullptr);
}

}  // namespace
}  // namespace mmsbrix::test
