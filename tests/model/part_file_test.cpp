// Content to and from files: nothing half written, nothing left behind.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <thread>

#include "model/mmpart.h"
#include "platform/files.h"
#include "support/temporary_folder.h"

namespace mmsbrix::test {
namespace {

namespace fs = std::filesystem;

TEST(PartFile, RoundTripReplacesContentAndFile) {
  const TemporaryFolder folder;
  CMMPart part;
  part.SetContent("new\0octets", 10);
  const std::string path = folder.put("f", "something that was there before");
  ::chmod(path.c_str(), 0640);
  EXPECT_TRUE(part.Save(path.c_str()));
  EXPECT_EQ(folder.get("f"), std::string("new\0octets", 10));
  EXPECT_EQ(static_cast<unsigned>(fs::status(path).permissions()), 0640U);
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

TEST(PartFile, LinksAreFollowedAndPipesRead) {
  const TemporaryFolder folder;
  folder.put("target", "old");
  fs::create_symlink("target", folder.path("link"));
  CMMPart part;
  part.SetContent("new", -1);
  EXPECT_TRUE(part.Save(folder.path("link").c_str()));
  EXPECT_TRUE(fs::is_symlink(folder.path("link")));
  EXPECT_EQ(folder.get("target"), "new");

  fs::create_symlink("later", folder.path("dangling"));
  EXPECT_TRUE(part.Save(folder.path("dangling").c_str()));
  EXPECT_TRUE(fs::is_symlink(folder.path("dangling")));
  EXPECT_EQ(folder.get("later"), "new");
  const std::string longest(255, 'n');
  EXPECT_TRUE(part.Save(folder.path(longest).c_str()));
  EXPECT_EQ(folder.get(longest), "new");

  const std::string pipe = folder.path("pipe");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  std::thread writer([&] { part.Save(pipe.c_str()); });
  CMMPart read;
  EXPECT_TRUE(read.Load(pipe.c_str()));
  writer.join();
  EXPECT_STREQ(reinterpret_cast<char*>(read.GetContent()), "new");
}

TEST(Files, ErrorsAreTheNumbersThatCallersKnow) {
  const TemporaryFolder folder;
  unsigned error = 0;
  EXPECT_FALSE(platform::InputFile::open(folder.path("none").c_str(), &error));
  EXPECT_EQ(error, 2U);
  folder.put("f", "x");
  EXPECT_FALSE(platform::InputFile::open(folder.path("f/x").c_str(), &error));
  EXPECT_EQ(error, 3U);
  EXPECT_EQ(platform::writeWholeFile("/dev/full", std::array<std::uint8_t, 1>{}), 112U);
}

}  // namespace
}  // namespace mmsbrix::test
