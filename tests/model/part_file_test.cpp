// Content to and from files: nothing half written, nothing left behind.
#include <gtest/gtest.h>

#include "model/mmpart.h"
#include "platform/files.h"
#include "support/temporary_folder.h"

namespace mmsbrix::test {
namespace {

TEST(PartFile, RoundTripReplacesContentAndFile) {
  const TemporaryFolder folder;
  CMMPart part;
  part.SetContent("new\0octets", 10);
  const std::string path = folder.put("f", "something that was there before");
  EXPECT_TRUE(part.Save(path.c_str()));
  EXPECT_EQ(folder.get("f"), std::string("new\0octets", 10));
  EXPECT_EQ(folder.entries(), 1);
  CMMPart read;
  EXPECT_TRUE(read.Load(path.c_str()));
  EXPECT_EQ(read.GetContentLen(), 10);
  EXPECT_EQ(read.GetContent()[10], 0);
}

TEST(PartFile, WithoutContentNoFileIsTouched) {
  const TemporaryFolder folder;
  const std::string path = folder.put("f", "old");
  EXPECT_FALSE(CMMPart().Save(path.c_str()));
  EXPECT_EQ(folder.get("f"), "old");
}

TEST(PartFile, WhatCannotBeOpenedLeavesThePartAlone) {
  const TemporaryFolder folder;
  CMMPart part;
  part.SetContent("kept", -1);
  EXPECT_FALSE(part.Load(folder.path("none").c_str()));
  EXPECT_FALSE(part.Load(folder.path().c_str()));
  EXPECT_FALSE(part.Load(nullptr));
  EXPECT_STREQ(reinterpret_cast<char*>(part.GetContent()), "kept");
  EXPECT_FALSE(part.Save(folder.path("none/f").c_str()));
  EXPECT_FALSE(part.Save(folder.path().c_str()));
}

TEST(Files, ErrorsAreTheNumbersThatCallersKnow) {
  const TemporaryFolder folder;
  unsigned error = 0;
  EXPECT_FALSE(platform::InputFile::open(folder.path("none").c_str(), &error));
  EXPECT_EQ(error, 2U);
  folder.put("f", "x");
  EXPECT_FALSE(platform::InputFile::open(folder.path("f/x").c_str(), &error));
  EXPECT_EQ(error, 3U);
}

}  // namespace
}  // namespace mmsbrix::test
