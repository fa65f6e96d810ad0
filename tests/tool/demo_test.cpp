// `demo`: a message all the way there and back.
#include "demo.h"

#include <gtest/gtest.h>

#include "command_line.h"
#include "relay_http.h"
#include "support/temporary_folder.h"

namespace mmsbrix::test {
namespace {

TEST(DemoCommand, TheWholeWay) {
  for (const bool wap : {false, true}) {
    SCOPED_TRACE(wap);
    const TemporaryFolder folder;
    Caught caught;
    const int status = tool::runDemo({folder.path("kept"), wap}, caught.streams());
    if (!wap && !tool::RelayHttpSide::isThere()) {
      EXPECT_EQ(status, 2);
      EXPECT_EQ(caught.err.str(), "mmsbrix demo: this build has no HTTP relay; --wap is there\n");
      continue;
    }
    EXPECT_EQ(status, 0) << caught.err.str();
    EXPECT_EQ(caught.out.str().find(" WAP POST ") != std::string::npos, wap);
    EXPECT_NE(caught.out.str().find("accepted: 0x80 Ok"), std::string::npos);
    EXPECT_NE(caught.out.str().find("that were composed"), std::string::npos);
    EXPECT_NE(caught.out.str().find("the same picture and sound"), std::string::npos);
    EXPECT_NE(folder.get("kept/page.html").find("data:image/jpeg;base64,"), std::string::npos);
  }
}

}  // namespace
}  // namespace mmsbrix::test
