// The lists: one cursor, copies in, pointers to their own storage out.
#include <gtest/gtest.h>

#include <stdexcept>

#include "model/mmaddr.h"
#include "model/mmhdr.h"

namespace {

void fill(CMMParamList& list) {
  for (const char* name : {"charset", "name", "Charset", "start"}) {
    CMMParam parameter(nullptr, std::to_string(list.Count()).c_str());
    parameter.Set(name);
    list.Add(&parameter);
  }
}

TEST(List, AddKeepsACopy) {
  CMMAddrList list;
  CMMAddr address("+1", CMMAddr::TYPE_PLMN);
  list.Add(&address);
  address.Value()->Set("changed");
  EXPECT_STREQ(static_cast<const char*>(*list.Get(0)), "+1");
  EXPECT_EQ(list.Get(0)->GetType(), CMMAddr::TYPE_PLMN);
  for (int i = 0; i < 20; ++i) list.Add(list.Get(0));  // from its own storage, while it grows
  EXPECT_STREQ(static_cast<char*>(*list.Get(20)), "+1");
}

TEST(List, TheWalkEndsAndStaysEnded) {
  CMMParamList list;
  EXPECT_EQ(list.First(), nullptr);
  fill(list);
  EXPECT_EQ(list.Next(), nullptr);  // not positioned yet
  int seen = 0;
  for (CMMParam* p = list.First(); p != nullptr; p = list.Next()) ++seen;
  EXPECT_EQ(seen, 4);
  EXPECT_EQ(list.Next(), nullptr);
  list.First();
  CMMParamList copy(list);
  EXPECT_EQ(copy.Next(), nullptr);  // a copy's cursor is not positioned
  EXPECT_STREQ(list.Next()->Get(), "name");
  list.Clear();
  EXPECT_EQ(list.Next(), nullptr);
}

TEST(List, GetChecksItsIndex) {
  CMMHdrList list;
  CMMHdr header("a", "b");
  list.Add(&header);
  EXPECT_STREQ(list[0]->Get(), "a");
  for (const int index : {1, -1}) {
    try {
      list.Get(index);
      ADD_FAILURE() << index;
    } catch (const std::out_of_range& error) {
      EXPECT_STREQ(error.what(), "invalid vector<T> subscript");
    }
  }
}

TEST(List, FindAndRemoveDisregardCaseAndMoveTheCursor) {
  CMMParamList list;
  fill(list);
  EXPECT_STREQ(list.Find("CHARSET")->GetValue(), "0");
  EXPECT_STREQ(list.Next()->Get(), "name");  // goes on behind what was found
  EXPECT_FALSE(list.Remove("absent"));
  EXPECT_EQ(list.Count(), 4U);
  EXPECT_TRUE(list.Remove("CharSet"));         // the first of two
  EXPECT_STREQ(list.Next()->GetValue(), "2");  // the cursor stood on "name", which moved down
  EXPECT_STREQ(list.Find("charset")->GetValue(), "2");
  EXPECT_TRUE(list.Remove("start"));
  EXPECT_EQ(list.Next(), nullptr);
  EXPECT_EQ(list.Find(nullptr), nullptr);
}

}  // namespace
