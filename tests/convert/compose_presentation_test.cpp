// Presentations made into messages, and the whole way back.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>

#include "convert/mmsconvert.h"
#include "convert/slides.h"
#include "smil/smilcodec.h"
#include "support/messages.h"
#include "support/parse_errors.h"
#include "support/smil.h"
#include "support/temporary_folder.h"

namespace mmsbrix::test {
namespace {

using ::testing::ElementsAre;

std::string chars(const CMMPart& part) {
  return {reinterpret_cast<const char*>(part.GetContent()),
          static_cast<std::size_t>(part.GetContentLen())};
}

// "Content-Type=text/plain;charset=utf-8 Content-ID=<a> ..." of one part.
std::string headers(const CMMPart& part) {
  std::string text;
  for (const CMMHdr& header : *part.Headers()) {
    if (!text.empty()) text += ' ';
    text.append(header.Name()).append("=").append(header.Value());
    for (const CMMParam& parameter : *header.Params()) {
      text.append(";").append(parameter.Name()).append("=").append(parameter.Value());
    }
  }
  return text;
}

std::vector<std::string> parts(const CMMsg& message) {
  std::vector<std::string> all;
  for (unsigned i = 1; i < message.Content()->ChildCount(); ++i) {
    all.push_back(headers(*message.Content()->Child(i)));
  }
  return all;
}

// A presentation with one slide, to which media are added.
struct OneSlide {
  CSMIL smil;
  CSMILPar* par = append(*append(smil, new CSMILBody), new CSMILPar);

  CSMILMedia* add(const char* tag, const std::string& src, const char* content = nullptr) {
    CSMILMedia* media = appendMedia(*par, tag, src.c_str());
    if (content != nullptr) media->PutContent(content, static_cast<int>(std::strlen(content)));
    return media;
  }
};

TEST(ComposePresentation, PresentationFirstThenAPartForEachMedium) {
  const TemporaryFolder folder;
  OneSlide slide;
  slide.add("img", folder.put("photo.jpg", "JPEG"));
  slide.add("text", "hello.txt", "Hello");
  auto* audio = append(*slide.par, new CSMILMedia("audio"));  // without a source
  audio->PutContent("AMR", 3);
  audio->PutType("audio/amr");
  append(slide.smil, new CSMILNode("switch"))->AddElement(new CSMILMedia("img"));  // no medium
  const std::string before = dump(slide.smil);

  CMMsg mms;
  mms.SetVersion("1.2");
  CMMHdr old("X-Old", "goes");
  mms.Content()->Headers()->Add(&old);
  ASSERT_EQ(MMS_SmilToMMS(&slide.smil, &mms, 0), 1);
  EXPECT_STREQ(mms.GetVersion(), "1.2");
  EXPECT_EQ(
      headers(*mms.Content()),
      "Content-Type=application/vnd.wap.multipart.related;type=application/smil;start=<smil>");
  EXPECT_EQ(headers(*mms.Content()->Child(0)),
            "Content-Type=application/smil;charset=utf-8 Content-ID=<smil> "
            "Content-Location=smil.smil");
  EXPECT_EQ(chars(*mms.Content()->Child(0)),
            "<smil>\r\n\t<body>\r\n\t\t<par>\r\n\t\t\t<img src=\"cid:photo.jpg\"/>\r\n"
            "\t\t\t<text src=\"cid:hello.txt\"/>\r\n"
            "\t\t\t<audio type=\"audio/amr\" src=\"cid:audio.amr\"/></par></body>\r\n"
            "\t<switch>\r\n\t\t<img/></switch></smil>");
  EXPECT_THAT(
      parts(mms),
      ElementsAre("Content-Type=image/jpeg Content-ID=<photo.jpg> Content-Location=photo.jpg",
                  "Content-Type=text/plain;charset=utf-8 Content-ID=<hello.txt> "
                  "Content-Location=hello.txt",
                  "Content-Type=audio/amr Content-ID=<audio.amr> Content-Location=audio.amr"));
  EXPECT_EQ(chars(*mms.Content()->Child(1)), "JPEG");
  EXPECT_EQ(dump(slide.smil), before) << "the caller's tree stays";
}

TEST(ComposePresentation, OnePartForWhatIsUsedTwiceAndNamesThatDiffer) {
  const TemporaryFolder folder;
  const TemporaryFolder other;
  const std::string file = folder.put("A b.jpg", "1");
  OneSlide slide;
  slide.add("img", file);
  slide.add("img", file);
  slide.add("img", other.put("a B.JPG", "2"));
  slide.add("text", "cid:x@y", "one");
  slide.add("text", "cid:x@y", "one");
  slide.add("text", "cid:x@y");
  slide.add("text", "cid:x@y", "two");
  slide.add("text", "smil", "three");
  slide.add("ref", "\xC3\xA4<>%&.x", "four");
  CMMsg mms;
  ASSERT_EQ(MMS_SmilToMMS(&slide.smil, &mms, 0), 1);
  std::vector<std::string> ids;
  for (unsigned i = 1; i < mms.Content()->ChildCount(); ++i) {
    auto* list = const_cast<CMMHdrList*>(mms.Content()->Child(i)->Headers());
    ids.push_back(std::string(list->Find("Content-ID")->GetValue()) +
                  chars(*mms.Content()->Child(i)));
  }
  EXPECT_THAT(ids, ElementsAre("<A_b.jpg>1", "<a_B-2.JPG>2", "<x@y>one", "<x@y-2>two",
                               "<smil-2>three", "<______.x>four"));
  CSMIL read;
  MMS_LoadSmilFromMemory(reinterpret_cast<char*>(mms.Content()->FirstChild()->GetContent()), &read,
                         0);
  EXPECT_EQ(dump(read),
            "smil(body(par(img*[src=cid:A_b.jpg] img*[src=cid:A_b.jpg] img*[src=cid:a_B-2.JPG] "
            "text*[src=cid:x@y] text*[src=cid:x@y] text*[src=cid:x@y] text*[src=cid:x@y-2] "
            "text*[src=cid:smil-2] ref*[src=cid:______.x])))");
}

TEST(ComposePresentation, MediaTypesAndCharsets) {
  struct Case {
    const char* tag;
    const char* src;
    const char* type;
    const char* content;
    const char* contentType;
    const char* stored;
  };
  const Case kCases[] = {
      {"img", "a.png", "image/x-own", "x", "image/x-own", "x"},
      {"img", "a.png", nullptr, "x", "image/png", "x"},
      {"text", "a", nullptr, "x", "text/plain;charset=utf-8", "x"},
      {"img", "a", nullptr, "x", "application/octet-stream", "x"},
      {"text", "a.txt", nullptr, "\xE4", "text/plain;charset=iso-8859-1", "\xE4"},
      {"text", "a.txt", nullptr, "\x80", "text/plain;charset=windows-1252", "\x80"},
      {"text", "a.txt", "Text/HTML; charset=\"x-own\"; b=c", "\xE4", "Text/HTML;charset=x-own",
       "\xE4"},
      {"text", "a.txt", " text/plain ", "\xFF\xFE\xE4", "text/plain;charset=iso-8859-1",
       "\xFF\xFE\xE4"},
  };
  for (const Case& row : kCases) {
    OneSlide slide;
    CSMILMedia* media = slide.add(row.tag, row.src, row.content);
    if (row.type != nullptr) media->PutType(row.type);
    CMMsg mms;
    ASSERT_EQ(MMS_SmilToMMS(&slide.smil, &mms, 0), 1);
    const CMMPart& part = *mms.Content()->Child(1);
    EXPECT_EQ(headers(part).substr(13, headers(part).find(" Content-ID") - 13), row.contentType);
    EXPECT_EQ(chars(part), row.stored);
  }
  // Text in UTF-16 with a mark.
  for (const std::string& text :
       {std::string("\xFF\xFE\xE4\0", 4), std::string("\xFE\xFF\0\xE4", 4)}) {
    OneSlide slide;
    slide.add("text", "t")->PutContent(text.data(), 4);
    slide.add("text", "t")->PutContent(text.data(), 4);
    CMMsg mms;
    ASSERT_EQ(MMS_SmilToMMS(&slide.smil, &mms, 0), 1);
    ASSERT_EQ(mms.Content()->ChildCount(), 2U) << "one part, though it was converted";
    EXPECT_EQ(chars(*mms.Content()->Child(1)), "\xC3\xA4");
  }
}

// The URL of a folder, with a separator at its end; separators and drives have one form in URLs.
std::string fileUrl(const TemporaryFolder& folder) {
  std::string path = std::filesystem::path(folder.path()).generic_string();
  if (!path.starts_with('/')) path.insert(0, 1, '/');
  return "file://" + path;
}

TEST(ComposePresentation, WhatCannotBeReadFailsBeforeTheMessageIsTouched) {
  const TemporaryFolder folder;
  const std::string there = folder.put("there.jpg", "x");
  CMMsg mms;
  fillComplete(mms);
  const std::vector<std::uint8_t> before = encode(mms);
  for (const std::string& source : {folder.path("none.jpg"), folder.path(), std::string("cid:none"),
                                    std::string("file:///none/at/all")}) {
    OneSlide slide;
    slide.add("img", there);
    slide.add("img", source);
    EXPECT_EQ(MMS_SmilToMMS(&slide.smil, &mms, 0), 0) << source;
    EXPECT_EQ(encode(mms), before);
  }
  CSMIL smil;
  EXPECT_EQ(MMS_SmilToMMS(nullptr, &mms, 0) + MMS_SmilToMMS(&smil, nullptr, 0), 0);
  // What lies on a server stays there; a file URL is a file.
  OneSlide slide;
  slide.add("img", "http://127.0.0.1/a.jpg");
  folder.put("b c.jpg", "y");
  slide.add("img", fileUrl(folder) + "b%20c.jpg");
  ASSERT_EQ(MMS_SmilToMMS(&slide.smil, &mms, 0), 1);
  EXPECT_THAT(parts(mms), ElementsAre(testing::HasSubstr("Content-ID=<b_20c.jpg>")));
  EXPECT_THAT(chars(*mms.Content()->Child(0)), testing::HasSubstr("\"http://127.0.0.1/a.jpg\""));
}

// Slides, message, octets, message, files: the same slides and media.
TEST(ComposePresentation, SlidesSurviveTheWholeWay) {
  const TemporaryFolder folder;
  const std::string jpeg("\xFF\xD8\0\r\n\xFF\xD9", 7);
  const std::string text = "Moi \xC3\xA4\xF0\x9F\x98\x80 <&>\r\n";
  const Slide slides[] = {
      {text, folder.put("a.jpg", jpeg), "", std::chrono::seconds(3)},
      {"", folder.path("a.jpg"), folder.put("c.amr", "#!AMR\n"), std::chrono::milliseconds(0)},
      {"two", "", "", std::chrono::milliseconds(1500)}};
  CSMIL smil;
  buildSlides(slides, smil);
  CMMsg sent;
  sent.SetMsgType(CMMsg::MSG_TYPE_SEND_REQ);
  ASSERT_EQ(MMS_SmilToMMS(&smil, &sent, 0), 1);
  CMMsg received;
  decode(encode(sent), received);
  const TemporaryFolder out;
  CSMIL shown;
  ASSERT_EQ(MMS_MMSToSmil(&received, &shown, out.path().c_str(), 0), 1);

  ASSERT_EQ(dump(*shown.GetHead()), dump(*smil.GetHead()));
  EXPECT_EQ(dump(*shown.GetBody()),
            "body(par[dur=3000ms](img*[src=" + out.path("MMSContent.jpg") +
                " region=Image] text*[src=" + out.path("MMSContent.txt") +
                " region=Text]) par(img*[src=" + out.path("MMSContent #2.jpg") +
                " region=Image] audio*[src=" + out.path("MMSContent.amr") +
                "]) par[dur=1500ms](text*[src=" + out.path("MMSContent #2.txt") +
                " region=Text]))");
  EXPECT_EQ(out.get("MMSContent.jpg"), jpeg);
  EXPECT_EQ(out.get("MMSContent #2.jpg"), jpeg);
  EXPECT_EQ(out.get("MMSContent.amr"), "#!AMR\n");
  EXPECT_EQ(out.get("MMSContent #2.txt"), std::string("\xFF\xFEt\0w\0o\0", 8));
  // And what was extracted makes a message of the same media again, texts in UTF-8.
  CMMsg again;
  ASSERT_EQ(MMS_SmilToMMS(&shown, &again, 0), 1);
  EXPECT_EQ(chars(*again.Content()->Child(1)), jpeg);
  EXPECT_EQ(chars(*again.Content()->Child(2)), text);
}

}  // namespace
}  // namespace mmsbrix::test
