// Who gets a reply to everybody, and what the kind of an address is told by.
#include "convert/replies.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "model/address_text.h"

namespace mmsbrix::test {
namespace {

TEST(Replies, GoToEverybodyOnceButNotToOneself) {
  CMMsg received;
  const auto address = [](const char* text) { return *addressFromText(text); };
  const CMMAddr sender = address("+358401111111");
  received.SetFrom(&sender);
  for (const char* to : {"+358402222222", "0403333333", "Ann@example.com", "+358 40 1111111"}) {
    const CMMAddr one = address(to);
    received.AddTo(&one);
  }
  for (const char* cc : {"ann@EXAMPLE.com", "+4670444444", "+358403333333"}) {
    const CMMAddr one = address(cc);
    received.AddCc(&one);
  }
  const std::array own = {address("040 222 2222")};
  ReplyRecipients reply = replyToAll(received, own);
  std::string all;
  for (const CMMAddr& to : reply.to) all += std::string(to.Value()->Text()) + " ";
  all += "cc ";
  for (const CMMAddr& cc : reply.cc) all += std::string(cc.Value()->Text()) + " ";
  EXPECT_EQ(all, "+358401111111 0403333333 Ann@example.com cc +4670444444 ");
}

struct SameCase {
  const char* one;
  const char* other;
  bool same;
};

TEST(Addresses, SubscribersAreComparedAsPeopleWriteThem) {
  for (const auto& [one, other, same] : std::to_array<SameCase>({
           {"+358401234567", "040 123 4567", true},
           {"00358401234567", "+358401234567", true},
           {"0401234567", "401234567", true},
           {"+358401234567", "+46401234567", false},
           {"112", "+358112", false},  // services are every country's own
           {"a@b.c", "A@b.C", true},
           {"a@b.c", "a@b.d", false},
           {"10.0.0.1", "10.0.0.10", false},
           {"::1", "::1", true},
       })) {
    EXPECT_EQ(sameSubscriber(*addressFromText(one), *addressFromText(other)), same)
        << one << " " << other;
    EXPECT_EQ(sameSubscriber(*addressFromText(other), *addressFromText(one)), same)
        << other << " " << one;
  }
}

struct KindCase {
  const char* text;
  int kind;  // -1 for none
};

TEST(Addresses, TheTextTellsTheKind) {
  constexpr int kNone = -1;
  for (const auto& [text, kind] : std::to_array<KindCase>({
           {"10.0.0.1", CMMAddr::TYPE_IPV4},
           {"10.0.0.256", CMMAddr::TYPE_PLMN},  // a number with points in it
           {"10.0.0.01", CMMAddr::TYPE_PLMN},
           {"::", CMMAddr::TYPE_IPV6},
           {"2001:db8::1", CMMAddr::TYPE_IPV6},
           {"1:2:3:4:5:6:7:8", CMMAddr::TYPE_IPV6},
           {"1:2:3:4:5:6:7:8:9", kNone},
           {"1::2::3", kNone},
           {"1:2:3:4:5:6:7::", CMMAddr::TYPE_IPV6},
           {"1:2:3:4:5:6:7:8::", kNone},
           {"::ffff:10.0.0.1", CMMAddr::TYPE_IPV6},
           {"::10.0.0.1:1", kNone},
           {"12345::", kNone},
           {"1:", kNone},
           {"+358 (40) 123-4567", CMMAddr::TYPE_PLMN},
           {"*100#", CMMAddr::TYPE_PLMN},
           {"ann@example.com", CMMAddr::TYPE_PLAIN},
           {"@b", kNone},
           {"ann", kNone},
           {"", kNone},
       })) {
    const auto address = addressFromText(text);
    EXPECT_EQ(address ? int{address->GetType()} : kNone, kind) << text;
  }
}

}  // namespace
}  // namespace mmsbrix::test
