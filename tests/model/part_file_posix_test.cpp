// Content to and from what only POSIX systems have: links, pipes, permissions, a device that is
// full.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <array>
#include <filesystem>
#include <thread>

#include "model/mmpart.h"
#include "platform/files.h"
#include "support/temporary_folder.h"

namespace mmsbrix::test {
namespace {

namespace fs = std::filesystem;

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

TEST(PartFile, PermissionsStay) {
  const TemporaryFolder folder;
  const std::string path = folder.put("f", "old");
  ::chmod(path.c_str(), 0640);
  CMMPart part;
  part.SetContent("new", -1);
  EXPECT_TRUE(part.Save(path.c_str()));
  EXPECT_EQ(static_cast<unsigned>(fs::status(path).permissions()), 0640U);
}

TEST(Files, ErrorsThatOnlyThisSystemHas) {
  unsigned error = 0;
  EXPECT_FALSE(platform::InputFile::open(std::string(300, 'n').c_str(), &error));
  EXPECT_EQ(error, platform::kErrorInvalidName);
  rlimit before{};
  ::getrlimit(RLIMIT_NOFILE, &before);
  const rlimit none{0, before.rlim_max};
  ::setrlimit(RLIMIT_NOFILE, &none);
  EXPECT_FALSE(platform::InputFile::open("/dev/null", &error));
  ::setrlimit(RLIMIT_NOFILE, &before);
  EXPECT_EQ(error, platform::kErrorTooManyOpenFiles);
  EXPECT_EQ(platform::writeWholeFile("/dev/full", std::array<std::uint8_t, 1>{}), 112U);
}

}  // namespace
}  // namespace mmsbrix::test
