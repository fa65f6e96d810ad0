// The exact text of presentations.
#include <gtest/gtest.h>

#include "mms/mmscodec.h"
#include "smil/smilcodec.h"
#include "support/smil.h"
#include "support/temporary_folder.h"

namespace mmsbrix::test {
namespace {

std::string text(CSMIL& smil) {
  unsigned char* buffer = nullptr;
  unsigned int length = 0;
  if (MMS_SaveSmilToMemory(&smil, &buffer, &length, 0) != 1) return "(failed)";
  std::string copy(reinterpret_cast<char*>(buffer), length);
  MMS_Free(buffer);
  return copy;
}

constexpr char kNineLines[] =
    "<smil>\r\n"
    "\t<head>\r\n"
    "\t\t<layout>\r\n"
    "\t\t\t<root-layout width=\"320\" height=\"240\"/>\r\n"
    "\t\t\t<region id=\"Image\" fit=\"meet\"/></layout></head>\r\n"
    "\t<body>\r\n"
    "\t\t<par dur=\"5000ms\">\r\n"
    "\t\t\t<img src=\"cid:1\"/>\r\n"
    "\t\t\t<text src=\"cid:2\" region=\"Text\"/></par></body></smil>";

void fill(CSMIL& smil) {
  auto* head = append(smil, new CSMILHead);
  auto* layout = append(*head, new CSMILLayout);
  auto* root = append(*layout, new CSMILRootLayout);
  root->PutWidth(320);
  root->PutHeight(240);
  auto* region = append(*layout, new CSMILRegion);
  region->PutId("Image");
  region->PutFit("meet");
  auto* par = append(*append(smil, new CSMILBody), new CSMILPar);
  par->PutDur(5000);
  appendMedia(*par, "img", "cid:1")->PutContent("not written", 11);
  appendMedia(*par, "text", "cid:2")->PutRegion("Text");
}

TEST(SmilText, HasItsShapeInMemoryAndInFiles) {
  CSMIL smil;
  EXPECT_EQ(text(smil), "<smil/>");
  fill(smil);
  EXPECT_EQ(text(smil), kNineLines);
  const TemporaryFolder folder;
  EXPECT_EQ(MMS_SaveSmil(&smil, folder.put("f", "old").c_str(), 0), 1);
  EXPECT_EQ(folder.get("f"), kNineLines);
}

TEST(SmilText, LengthAndBufferAreBothOptional) {
  CSMIL smil;
  unsigned int length = 0;
  EXPECT_EQ(MMS_SaveSmilToMemory(&smil, nullptr, &length, 0), 0);
  EXPECT_EQ(length, 7U);
  unsigned char* buffer = nullptr;
  EXPECT_EQ(MMS_SaveSmilToMemory(&smil, &buffer, nullptr, 0), 1);
  MMS_Free(buffer);
  EXPECT_EQ(MMS_SaveSmilToMemory(nullptr, &buffer, &length, 0), 0);
  const TemporaryFolder folder;
  EXPECT_EQ(MMS_SaveSmil(&smil, folder.path("no/such").c_str(), 0), 0);
  EXPECT_EQ(MMS_SaveSmil(&smil, nullptr, 0), 0);
  EXPECT_EQ(MMS_SaveSmil(nullptr, folder.path("f").c_str(), 0), 0);
}

TEST(SmilText, ValuesAreEscapedSoThatTheyComeBack) {
  struct Case {
    const char* value;
    const char* written;
  };
  const Case kCases[] = {
      {"a&b<c>d\"e'f", "a&amp;b&lt;c&gt;d&quot;e'f"},
      {"\t\n\r\x7F", "&#9;&#10;&#13;&#127;"},
      {"\x01\xEF\xBF\xBF", "\xEF\xBF\xBD\xEF\xBF\xBD"},  // XML has neither of them
      {"\xC3\xA4 \xF0\x9F\x98\x80", "\xC3\xA4 \xF0\x9F\x98\x80"},
      {"\xE4 \x80 \x81", "\xC3\xA4 \xE2\x82\xAC &#129;"},  // Windows-1252
  };
  for (const Case& row : kCases) {
    CSMIL smil;
    smil.PutTitle(row.value);
    EXPECT_EQ(text(smil), std::string("<smil title=\"") + row.written + "\"/>");
  }
}

TEST(SmilText, WhatXmlHasNoNameForIsLeftOutWithAllThatIsInIt) {
  CSMIL smil;
  for (const char* tag : {"", "#comment", "1a", "a b", "a>", "-a", "\xD7"}) {
    appendMedia(*append(smil, new CSMILNode(tag)), "img", "lost");
  }
  for (const char* tag : {"x:a", "_.-1", "\xE4"}) append(smil, new CSMILNode(tag));
  put(smil, "bad name", "");
  put(smil, "", "");
  put(smil, "good", "");
  EXPECT_EQ(text(smil), "<smil good=\"\">\r\n\t<x:a/>\r\n\t<_.-1/>\r\n\t<\xC3\xA4/></smil>");
  smil.PutTag("");
  EXPECT_EQ(text(smil), "");
}

TEST(SmilText, ARenamedAttributeTakesThePlaceOfItsNamesake) {
  CSMIL smil;
  for (const char* name : {"a", "b", "c"}) put(smil, name, name);
  smil.FindAttribute("c")->PutName("a");
  EXPECT_EQ(text(smil), "<smil a=\"c\" b=\"b\"/>");
  for (const char* name : {"d", "e", "f", "g", "h", "i", "j"}) put(smil, name, "");
  EXPECT_TRUE(text(smil).starts_with("<smil a=\"c\" b=\"b\" d=\"\" e=\"\"")) << "among many";
}

TEST(SmilText, DepthCostsNoStackAndNoSquare) {
  CSMIL smil;
  deepen(smil, 100000);
  const std::string deep = text(smil);
  EXPECT_LT(deep.size(), 30000000U);
  EXPECT_TRUE(deep.ends_with("</a></a></smil>"));
}

}  // namespace
}  // namespace mmsbrix::test
