// Presentations by the tool: composed from slides or SMIL, extracted, checked, shown as a page.
#include <gtest/gtest.h>
#include <mmsbrix/mms/mmscodec.h>

#include <array>
#include <filesystem>

#include "clock.h"
#include "command_line.h"
#include "compose.h"
#include "extract.h"
#include "preview.h"
#include "smil_command.h"
#include "support/host.h"
#include "support/temporary_folder.h"

namespace mmsbrix::test {
namespace {

const std::string kMedia = MMSBRIX_SAMPLE_MEDIA;

struct ClockCase {
  const char* text;
  int milliseconds;
};

TEST(Clock, TheFormsOfTheField) {
  for (const auto& [text, milliseconds] : std::to_array<ClockCase>({
           {"5s", 5000},
           {"5000ms", 5000},
           {"5", 5000},
           {" 1.5s ", 1500},
           {"2min", 120000},
           {"0:05", 5000},
           {"01:00:02.5", 3602500},
           {"24h", 86400000},
       })) {
    EXPECT_EQ(tool::parseClock(text), milliseconds) << text;
  }
  for (const char* none : {"25h", "indefinite", "5 s", "0:", "-5s", "1e3", ""}) {
    EXPECT_FALSE(tool::parseClock(none)) << none;
  }
}

std::string composeSlides(const TemporaryFolder& folder, std::vector<std::string> slides,
                          const std::string& smilFile = "") {
  tool::ComposeCommand command;
  command.to = {"+1"};
  command.output = folder.path("m.mms");
  command.slides = std::move(slides);
  command.smilFile = smilFile;
  Caught caught;
  EXPECT_EQ(runCompose(command, caught.streams()), 0) << caught.err.str();
  return command.output;
}

TEST(Presentation, SlidesComposedAndExtractedAreTheSameMedia) {
  const TemporaryFolder folder;
  const std::string message =
      composeSlides(folder, {"text=Hei, you=me,image=" + kMedia + "/photo.jpg,dur=3s",
                             "audio=" + kMedia + "/chime.amr,text=second"});
  Caught caught;
  const tool::ExtractCommand extract{.file = message, .folder = folder.path("out")};
  EXPECT_EQ(runExtract(extract, caught.streams()), 0) << caught.err.str();
  EXPECT_EQ(caught.err.str(), "");
  std::ifstream photo(kMedia + "/photo.jpg", std::ios::binary);
  EXPECT_EQ(folder.get("out/MMSContent.jpg"),
            std::string(std::istreambuf_iterator<char>(photo), {}));
  const std::string smil = folder.get("out/presentation.smil");
  EXPECT_NE(smil.find("<par dur=\"3000ms\">"), std::string::npos) << smil;
  EXPECT_NE(smil.find("MMSContent.amr"), std::string::npos) << smil;
  // A second extraction overwrites nothing.
  EXPECT_EQ(runExtract(extract, caught.streams()), 0);
  EXPECT_FALSE(folder.get("out/presentation #2.smil").empty());
  EXPECT_EQ(folder.get("out/presentation.smil"), smil);
  // Every part, the presentation among them, under names of the message.
  Caught all;
  EXPECT_EQ(runExtract({.file = message, .folder = folder.path("all"), .all = true}, all.streams()),
            0);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path("all")), {}), 5);
}

TEST(Presentation, ReferencesByLocationAndInSequencesAreExtractedToo) {
  const TemporaryFolder folder;
  folder.put("s.smil",
             "<smil><body><seq><par><img src=\"photo.jpg\"/><img src=\"gone.jpg\"/></par></seq>"
             "<img src=\"photo.jpg\"/></body></smil>");
  tool::ComposeCommand command;
  command.to = {"+1"};
  command.attachments = {folder.path("s.smil") + ";type=application/smil", kMedia + "/photo.jpg"};
  command.output = folder.path("m.mms");
  Caught caught;
  ASSERT_EQ(runCompose(command, caught.streams()), 0) << caught.err.str();
  EXPECT_EQ(runExtract({.file = command.output, .folder = folder.path("out")}, caught.streams()),
            0);
  EXPECT_NE(caught.err.str().find("refers to gone.jpg, which the message does not have"),
            std::string::npos);
  EXPECT_FALSE(folder.get("out/MMSContent.jpg").empty());
  const std::string smil = folder.get("out/presentation.smil");
  EXPECT_NE(smil.find("<img src=\"MMSContent.jpg\"/>"), std::string::npos) << smil;  // beside it
  EXPECT_EQ(smil.find("photo.jpg"), std::string::npos) << smil;
  // So what was extracted can be composed again.
  std::filesystem::remove(folder.path("m.mms"));
  tool::ComposeCommand again;
  again.to = {"+1"};
  again.smilFile =
      folder.put("out/p2.smil", "<smil><body><img src=\"MMSContent.jpg\"/></body></smil>");
  again.output = folder.path("again.mms");
  EXPECT_EQ(runCompose(again, caught.streams()), 0) << caught.err.str();
}

TEST(Presentation, ASmilFileBringsItsMediaFromItsOwnFolder) {
  const TemporaryFolder folder;
  std::filesystem::create_directory(folder.path("show"));
  folder.put("show/a.txt", "content");
  const std::string smil = folder.put(
      "show/s.smil", "<smil><body><par dur=\"2s\"><text src=\"a.txt\"/></par></body></smil>");
  const std::string message = composeSlides(folder, {}, smil);
  CMMsg read;
  ASSERT_EQ(MMS_Load(message.c_str(), &read, 0), 1);
  ASSERT_EQ(read.Content()->ChildCount(), 2U);
  const tool::PreviewPage page = tool::describePage(read);
  ASSERT_EQ(page.slides.size(), 1U);
  EXPECT_EQ(page.slides[0].milliseconds, 2000);
  EXPECT_EQ(page.slides[0].items.at(0).text, "content");
}

struct RefusalCase {
  tool::ComposeCommand command;
  std::string reason;
};

TEST(Presentation, WhatCannotBeComposedIsRefused) {
  const TemporaryFolder folder;
  const std::string lacking =
      folder.put("lacking.smil", "<smil><body><img src=\"none.jpg\"/></body></smil>");
  tool::ComposeCommand base;
  base.to = {"+1"};
  std::vector<RefusalCase> cases(4, {base, ""});
  cases[0].command.slides = {"text=a,image=none.jpg"};
  cases[0].reason = "none.jpg: " + noSuchFile();
  cases[1].command.slides = {"txt=a"};
  cases[1].reason = "'txt=a' is none of text=";
  cases[2].command.slides = {"image=foo:missing.jpg"};  // a colon makes no URL
  cases[2].reason = "foo:missing.jpg: " + noSuchFile();
  cases[3].command.smilFile = lacking;
  cases[3].reason = "none.jpg: " + noSuchFile();
  for (RefusalCase& refused : cases) {
    refused.command.output = folder.path("out.mms");
    Caught caught;
    EXPECT_EQ(runCompose(refused.command, caught.streams()), 1);
    EXPECT_NE(caught.err.str().find(refused.reason), std::string::npos) << caught.err.str();
    EXPECT_FALSE(std::filesystem::exists(refused.command.output));
  }
}

TEST(Presentation, BrokenMarkupIsRefusedWithItsPlace) {
  const TemporaryFolder folder;
  tool::ComposeCommand command;
  command.to = {"+1"};
  command.smilFile = folder.put("broken.smil", "<smil>\n<body>\n</smil>");
  command.output = folder.path("out.mms");
  Caught caught;
  EXPECT_EQ(runCompose(command, caught.streams()), 1);
  EXPECT_NE(caught.err.str().find("broken.smil: Error on line 3"), std::string::npos);
  EXPECT_FALSE(std::filesystem::exists(command.output));
}

TEST(SmilCommand, SaysWhereAndWhy) {
  const TemporaryFolder folder;
  const auto run = [&](const std::string& text, bool format, int expected) {
    Caught caught;
    caught.in.str(text);
    EXPECT_EQ(tool::runSmil({.file = "-", .format = format}, caught.streams()), expected);
    return caught.out.str() + caught.err.str();
  };
  EXPECT_EQ(run("<smil/>", false, 0), "-: good\n");
  EXPECT_EQ(run("<smil><body><par/></body></smil>", true, 0),
            "<smil>\r\n\t<body>\r\n\t\t<par/></body></smil>");
  EXPECT_EQ(run("<smil>\n <a></b></smil>", false, 1).find("mmsbrix smil: -: Error on line 2"), 0U);
  EXPECT_NE(run("<html/>", false, 1).find("outermost element is not smil"), std::string::npos);
}

TEST(Extract, MessagesWithoutPresentationGiveEveryPart) {
  const TemporaryFolder folder;
  tool::ComposeCommand command;
  command.to = {"+1"};
  command.texts = {"one"};
  command.attachments = {kMedia + "/photo.jpg;name=../../evil.jpg"};
  command.output = folder.path("m.mms");
  Caught caught;
  ASSERT_EQ(runCompose(command, caught.streams()), 0) << caught.err.str();
  EXPECT_EQ(runExtract({.file = command.output, .folder = folder.path("out")}, caught.streams()),
            0);
  EXPECT_EQ(folder.get("out/text.txt"), "one");
  EXPECT_FALSE(folder.get("out/evil.jpg").empty());
  Caught refused;
  EXPECT_EQ(runExtract({.file = folder.put("no.mms", "text")}, refused.streams()), 1);
  EXPECT_NE(refused.err.str().find("no MMS PDU"), std::string::npos);
}

}  // namespace
}  // namespace mmsbrix::test
