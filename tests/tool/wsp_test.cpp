// `wsp decode` and `wsp encode`.
#include <gtest/gtest.h>

#include "command_line.h"
#include "support/temporary_folder.h"
#include "wsp_headers.h"

namespace mmsbrix::test {
namespace {

std::string run(tool::WspCommand command, const std::string& in = "", int expected = 0) {
  Caught caught;
  caught.in.str(in);
  EXPECT_EQ(tool::runWsp(command, caught.streams()), expected) << caught.err.str();
  return caught.out.str() + caught.err.str();
}

const std::string kLines =
    "Accept: image/jpeg\nAccept-Language: en; q=0.7\nContent-Length: 1000\nX-Own: v\n"
    "[page 5] 0x10: w\n";

TEST(WspCommand, WhatIsEncodedDecodesToTheSameLines) {
  const std::string hex = run({.input = "-", .encode = true}, kLines);
  EXPECT_EQ(hex.substr(0, 6), "80 9E ");
  EXPECT_EQ(run({.input = hex}), kLines);
  const TemporaryFolder folder;
  run({.input = "-", .output = folder.path("octets"), .encode = true}, kLines);
  EXPECT_EQ(run({.input = folder.path("octets")}), kLines);
  const std::string json = run({.input = "80 9E", .json = true});
  EXPECT_NE(json.find("\"value\": \"image/jpeg\""), std::string::npos) << json;
}

TEST(WspCommand, NewerCodesGoOutAsTextForOlderPeers) {
  const std::string line = "Content-ID: \"a\"\n";
  const std::string old = run({.input = "-", .version = "1.2", .encode = true}, line);
  const std::string recent = run({.input = "-", .version = "1.3", .encode = true}, line);
  EXPECT_EQ(recent.substr(0, 2), "C0");
  EXPECT_NE(old.substr(0, 2), "C0");
  EXPECT_EQ(run({.input = old}), run({.input = recent}));
}

TEST(WspCommand, CredentialsAreShownOnRequestOnly) {
  const std::string hex = "87 05 80 75 00 70 00";  // Basic, "u" and "p"
  EXPECT_EQ(run({.input = hex}), "Authorization: Basic ***\n");
  EXPECT_EQ(run({.input = hex, .secrets = true}), "Authorization: Basic dTpw\n");
  EXPECT_EQ(run({.input = hex, .json = true}).find("dTpw"), std::string::npos);
  EXPECT_NE(run({.input = hex, .json = true, .secrets = true}).find("dTpw"), std::string::npos);
}

TEST(WspCommand, WhatCannotBeReadIsNamedAndTheRestShown) {
  const std::string text = run({.input = "80 9E 92 85 83 99"}, "", 1);
  EXPECT_NE(text.find("Accept: image/jpeg\n"), std::string::npos) << text;
  EXPECT_NE(text.find("Accept-Language: en\n"), std::string::npos) << text;
  EXPECT_NE(text.find("offset 2, Date: "), std::string::npos) << text;
  EXPECT_NE(run({.input = "8"}, "", 1).find("neither a file nor hex"), std::string::npos);
  EXPECT_NE(run({.input = "-", .encode = true}, "no colon\n", 1).find("line 1"), std::string::npos);
}

}  // namespace
}  // namespace mmsbrix::test
