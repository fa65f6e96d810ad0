// A message's presentation with its media as files.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <thread>

#include "convert/media_types.h"
#include "convert/mmsconvert.h"
#include "support/host.h"
#include "support/messages.h"
#include "support/parse_errors.h"
#include "support/smil.h"
#include "support/temporary_folder.h"

namespace mmsbrix::test {
namespace {

namespace fs = std::filesystem;

struct Part {
  const char* id;
  const char* type;
  std::string content;
  const char* charset = "";
};

// A multipart/related message with a presentation and parts.
CMMsg message(const std::string& smil, const std::vector<Part>& parts,
              const char* type = "application/vnd.wap.multipart.related") {
  CMMsg message;
  CMMHdr header("Content-Type", type);
  CMMParam smilType("type", "application/smil");
  CMMParam start("start", "<smil>");
  header.Params()->Add(&smilType);
  header.Params()->Add(&start);
  message.Content()->Headers()->Add(&header);
  const auto add = [&](const Part& row) {
    CMMPart* part = addPart(message, row.type, "charset", row.charset, row.content);
    CMMHdr id("Content-ID", row.id);
    part->Headers()->Add(&id);
  };
  for (const Part& row : parts) add(row);
  add({"<smil>", "application/smil", smil});
  return message;
}

std::string slides(const std::string& media) {
  return "<smil><body><par>" + media + "</par></body></smil>";
}

// The sources of the media of all slides.
std::vector<std::string> sources(CSMIL& smil) {
  std::vector<std::string> all;
  for (unsigned i = 0; smil.GetBody() != nullptr && i < smil.GetBody()->ElementCount(); ++i) {
    const CSMILNode* slide = smil.GetBody()->Element(i);
    for (unsigned j = 0; j < slide->ElementCount(); ++j) {
      CSMILAttr* src = slide->Element(j)->FindAttribute("src");
      all.emplace_back(src == nullptr ? "(none)" : src->GetValue());
    }
  }
  return all;
}

using ::testing::ElementsAre;

TEST(ExtractPresentation, MediaBecomeFilesThatTheSlidesPointTo) {
  const TemporaryFolder folder;
  const std::string dir = folder.path();
  CMMsg mms = message(slides("<img src='cid:a'/><img src='CID:b'/><audio src='c'/><text src=''/>"
                             "<img/><img src='cid:none'/><b src='cid:a'/>"),
                      {{"<a>", "image/jpeg", "A"},
                       {"<B>", "IMAGE/JPEG", "B"},
                       {"<c>", "audio/amr", "C"},
                       {"d", "text/plain", "D"}},
                      "Application/Vnd.Wap.Multipart.RELATED");
  CSMIL smil;
  put(smil, "old", "goes");
  ASSERT_EQ(MMS_MMSToSmil(&mms, &smil, dir.c_str(), 0), 1);
  EXPECT_THAT(sources(smil),
              ElementsAre(dir + "MMSContent.jpg", dir + "MMSContent #2.jpg", dir + "MMSContent.amr",
                          "", "(none)", "cid:none", "cid:a"));
  EXPECT_EQ(smil.AttributeCount(), 0U);
  EXPECT_EQ(
      folder.get("MMSContent.jpg") + folder.get("MMSContent #2.jpg") + folder.get("MMSContent.amr"),
      "ABC");
  EXPECT_EQ(folder.entries(), 3);
}

TEST(ExtractPresentation, ExtensionsByMediaType) {
  constexpr const char* kTypes[][2] = {
      {"image/jpeg", ".jpg"},
      {"image/tiff", ".tif"},
      {"audio/mpeg", ".mp3"},
      {"audio/midi", ".mid"},
      {"video/3gpp", ".3gp"},
      {"video/mp4", ".mp4"},
      {"text/plain", ".txt"},
      {"text/x-vCard", ".vcf"},
      {"text/vcard", ".vcf"},
      {"audio/amr", ".amr"},
      {"AUDIO/X-AMR", ".amr"},
      {"application/smil", ".smil"},
      {"application/octet-stream", ".dat"},
      {"x-none/of-this", ".tmp"},
      {"", ".tmp"},
  };
  for (const auto& [type, extension] : kTypes) {
    const TemporaryFolder folder;
    CMMsg mms = message(slides("<ref src='cid:a'/>"), {{"<a>", type, "A"}});
    CSMIL smil;
    ASSERT_EQ(MMS_MMSToSmil(&mms, &smil, folder.path().c_str(), 0), 1);
    EXPECT_EQ(folder.get(std::string("MMSContent") + extension), "A") << type;
  }
}

TEST(ExtractPresentation, Utf8TextBecomesUtf16AlsoInTheMessage) {
  const TemporaryFolder folder;
  const std::string dir = folder.path();
  CMMsg mms = message(
      slides("<text src='cid:a'/><text src='cid:a'/><text src='cid:b'/><text src='cid:c'/>"),
      {{"<a>", "text/plain",
        "\xC3\xA4\xF0\x9F\x98\x80\xC3"
        "z",
        "UTF-8"},
       {"<b>", "text/plain", "\xE4", "iso-8859-1"},
       {"<c>", "application/text", "c", "utf-8"}});
  CSMIL smil;
  ASSERT_EQ(MMS_MMSToSmil(&mms, &smil, dir.c_str(), 0), 1);
  // The octet that is no UTF-8 costs itself and nothing else.
  const std::string utf16("\xFF\xFE\xE4\0\x3D\xD8\x00\xDE\xFD\xFFz\0", 12);
  EXPECT_EQ(folder.get("MMSContent.txt"), utf16);
  EXPECT_EQ(folder.get("MMSContent #2.txt"), utf16);
  EXPECT_EQ(folder.get("MMSContent #3.txt"), "\xE4");
  EXPECT_EQ(folder.get("MMSContent.tmp"), "c");
  const CMMPart* text = mms.Content()->Child(0);
  ASSERT_EQ(text->GetContentLen(), 12);
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(text->GetContent()), 12), utf16);
  // A second extraction takes that for UTF-8 once more.
  ASSERT_EQ(MMS_MMSToSmil(&mms, &smil, dir.c_str(), 0), 1);
  EXPECT_EQ(text->GetContentLen(), 2 + 2 * 12);
}

TEST(ExtractPresentation, WhatIsNoPresentationIsRefused) {
  const std::string good = slides("<img src='cid:a'/>");
  const std::vector<Part> parts = {{"<a>", "image/jpeg", "A"}};
  const TemporaryFolder folder;
  const std::string dir = folder.path();
  const auto extract = [&](CMMsg mms) {
    CSMIL smil;
    return MMS_MMSToSmil(&mms, &smil, dir.c_str(), 0);
  };
  const auto changed = [&](const auto& change) {
    CMMsg mms = message(good, parts);
    change(*mms.Content());
    return extract(std::move(mms));
  };
  const auto params = [](CMMPart& root) { return root.Headers()->First()->Params(); };
  EXPECT_EQ(extract(CMMsg()), 0);
  EXPECT_EQ(extract(message(good, parts, "application/vnd.wap.multipart.mixed")), 0);
  EXPECT_EQ(changed([&](CMMPart& root) { params(root)->Remove("type"); }), 0);
  EXPECT_EQ(changed([&](CMMPart& root) { params(root)->Find("type")->SetValue("text/xml"); }), 0);
  EXPECT_EQ(changed([&](CMMPart& root) { params(root)->Remove("start"); }), 0);
  EXPECT_EQ(changed([&](CMMPart& root) { params(root)->Find("start")->SetValue("smil"); }), 0);
  EXPECT_EQ(changed([&](CMMPart& root) {
              root.FirstChild();
              root.NextChild()->SetContent(nullptr, 0);
            }),
            0);
  EXPECT_EQ(folder.entries(), 0);
  ParseErrors errors;
  EXPECT_EQ(extract(message("<smil><body>", parts)), 0);
  EXPECT_NE(errors.take(), "");
  EXPECT_EQ(extract(message("<html/>", parts)), 0);
  for (const char* empty : {"<smil/>", "<smil><body/></smil>", "<smil><body>x</body></smil>"}) {
    EXPECT_EQ(extract(message(empty, parts)), 1) << empty;
  }
  EXPECT_EQ(folder.entries(), 0);
  CSMIL smil;
  EXPECT_EQ(MMS_MMSToSmil(nullptr, &smil, nullptr, 0), 0);
}

TEST(ExtractPresentation, FoldersAreJoinedAsTheyStand) {
  const TemporaryFolder folder;
  CMMsg mms = message(slides("<img src='cid:a'/>"), {{"<a>", "image/jpeg", "A"}});
  CSMIL smil;
  EXPECT_EQ(MMS_MMSToSmil(&mms, &smil, folder.path("sub").c_str(), 0), 1);
  EXPECT_EQ(folder.get("subMMSContent.jpg"), "A");
  EXPECT_EQ(MMS_MMSToSmil(&mms, &smil, folder.path("no/such/").c_str(), 0), 1);
  EXPECT_THAT(sources(smil), ElementsAre("cid:a"));
  const EnvironmentVariable temporary(kTemporaryFolderVariable, folder.path());
  EXPECT_EQ(MMS_MMSToSmil(&mms, &smil, nullptr, 0), 1);
  EXPECT_EQ(folder.get("MMSContent.jpg"), "A");
}

TEST(ExtractPresentation, NoFileOrLinkIsOverwrittenOrFollowed) {
  const TemporaryFolder folder;
  const TemporaryFolder elsewhere;
  folder.put("MMSContent.jpg", "mine");
  makeLink(elsewhere.put("target", "kept"), folder.path("MMSContent #2.jpg"));
  makeLink(elsewhere.path("new"), folder.path("MMSContent #3.jpg"));
  fs::create_directory(folder.path("MMSContent #4.jpg"));
  CMMsg mms = message(slides("<img src='cid:a'/>"), {{"<a>", "image/jpeg", "A"}});
  CSMIL smil;
  EXPECT_EQ(MMS_MMSToSmil(&mms, &smil, folder.path().c_str(), 0), 1);
  EXPECT_THAT(sources(smil), ElementsAre(folder.path("MMSContent #5.jpg")));
  EXPECT_EQ(folder.get("MMSContent.jpg"), "mine");
  EXPECT_EQ(elsewhere.get("target"), "kept");
  EXPECT_FALSE(fs::exists(elsewhere.path("new")));
}

TEST(ExtractPresentation, TwoAtOnceInOneFolderKeepTheirFilesApart) {
  const TemporaryFolder folder;
  const auto extract = [&](const std::string& content, int& intact) {
    for (int round = 0; round < 50; ++round) {
      CMMsg mms = message(slides("<img src='cid:a'/>"), {{"<a>", "image/jpeg", content}});
      CSMIL smil;
      if (MMS_MMSToSmil(&mms, &smil, folder.path().c_str(), 0) != 1) continue;
      const std::string path = sources(smil).at(0);
      if (folder.get(fs::path(path).filename().string()) == content) ++intact;
    }
  };
  int first = 0;
  int second = 0;
  std::thread other([&] { extract("second", second); });
  extract("first", first);
  other.join();
  EXPECT_EQ(first + second, 100);
  EXPECT_EQ(folder.entries(), 100);
}

TEST(ExtractPresentation, ASmallMessageCannotFillTheDisk) {
  std::string media;
  for (int i = 0; i < 20000; ++i) media += "<img src='cid:a'/>";
  const TemporaryFolder folder;
  CMMsg mms = message(slides(media), {{"<a>", "image/jpeg", "A"}});
  CSMIL smil;
  EXPECT_EQ(MMS_MMSToSmil(&mms, &smil, folder.path().c_str(), 0), 1);
  EXPECT_EQ(folder.entries(), 1000);
  EXPECT_EQ(sources(smil).back(), "cid:a");
}

}  // namespace
}  // namespace mmsbrix::test
