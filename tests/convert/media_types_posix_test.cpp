// Types beyond the everyday ones are the platform's business, here the desktop's shared database; a
// machine without one has none of them.
#include <gtest/gtest.h>

#include <filesystem>

#include "convert/media_types.h"
#include "support/host.h"
#include "support/temporary_folder.h"

namespace mmsbrix::test {
namespace {

TEST(MediaTypes, ThePlatformsDatabaseHasTheRest) {
  const TemporaryFolder data;
  std::filesystem::create_directory(data.path("mime"));
  data.put("mime/globs2",
           "# comment\nbroken\n50:x/y:README*\n50:x/y:*.a[bc]\n50:x/y:*.a/b\n50:X/Y:*.xy:cs\n"
           "50:x/y:*.second\n50:image/jpeg:*.jpeg\n");
  const EnvironmentVariable home("XDG_DATA_HOME", data.path());
  const EnvironmentVariable systems("XDG_DATA_DIRS", "/nonexistent");
  EXPECT_EQ(extensionOfMediaType("x/Y"), ".xy");
  EXPECT_EQ(mediaTypeOfFile("a/b.SECOND"), "x/y");
  EXPECT_EQ(extensionOfMediaType("image/jpeg"), ".jpg");
  const EnvironmentVariable none("XDG_DATA_HOME", "/nonexistent");
  EXPECT_EQ(extensionOfMediaType("x/y"), "");
  EXPECT_EQ(extensionOfMediaType("image/jpeg"), ".jpg");
}

}  // namespace
}  // namespace mmsbrix::test
