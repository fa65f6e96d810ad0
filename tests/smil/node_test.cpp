// Nodes, their two cursors, typed accessors with their deliberate oddities, and copies.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <stdexcept>
#include <type_traits>
#include <typeinfo>
#include <vector>

#include "support/smil.h"

namespace mmsbrix::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsNull;
using ::testing::StrEq;

std::vector<std::string> attributes(const CSMILNode& node) {
  std::vector<std::string> texts;
  for (unsigned i = 0; i < node.AttributeCount(); ++i) {
    texts.push_back(std::string(node.Attribute(i)->GetName()) + "=" +
                    node.Attribute(i)->GetValue());
  }
  return texts;
}

template <class... Text>
std::vector<std::string> texts(Text... text) {
  return {text...};
}

std::vector<std::string> children(const CSMILNode& node) {
  std::vector<std::string> tags;
  for (unsigned i = 0; i < node.ElementCount(); ++i) tags.emplace_back(node.Element(i)->GetTag());
  return tags;
}

TEST(SmilAttributes, AreFoundWithoutCaseAndOverwrittenInPlaceNameIncluded) {
  CSMILNode node("x");
  put(node, "id", "1");
  put(node, "class", "c");
  EXPECT_STREQ(node.FindAttribute("ID")->GetValue(), "1");
  put(node, "Id", "2");
  EXPECT_THAT(attributes(node), ElementsAre("Id=2", "class=c"));
  EXPECT_TRUE(node.RemoveAttribute("iD"));
  EXPECT_FALSE(node.RemoveAttribute("iD"));
  node.PutTitle(nullptr);
  EXPECT_THAT(attributes(node), ElementsAre("class=c", "title="));
}

TEST(SmilAttributes, TheOneCursorIsMovedBySearchesAndTypedGetters) {
  CSMILNode node("x");
  for (const char* name : {"a", "id", "c", "d"}) put(node, name, "");
  EXPECT_STREQ(node.FirstAttribute()->GetName(), "a");
  node.GetId();
  EXPECT_STREQ(node.NextAttribute()->GetName(), "c");
  node.RemoveAttribute("a");  // "id" now stands under the cursor
  EXPECT_STREQ(node.NextAttribute()->GetName(), "c");
  EXPECT_STREQ(node.NextAttribute()->GetName(), "d");
  EXPECT_EQ(node.NextAttribute(), nullptr);
  EXPECT_EQ(node.NextAttribute(), nullptr);
  node.FirstAttribute();
  node.AttributeClear();
  EXPECT_EQ(node.AttributeCount(), 0U);
  EXPECT_EQ(node.NextAttribute(), nullptr);
}

TEST(SmilElements, WalksMayBeFilteredAndSearchesLeaveTheCursor) {
  CSMILNode node("x");
  for (const char* tag : {"par", "seq", "PAR", "par"}) append(node, new CSMILNode(tag));
  EXPECT_EQ(node.FirstElement("Par"), node.Element(0));
  EXPECT_EQ(node.FindElement("seq"), node.Element(1));
  EXPECT_EQ(node.NextElement("par"), node.Element(2));
  EXPECT_EQ(node.NextElement(nullptr), node.Element(3));
  EXPECT_EQ(node.NextElement(nullptr), nullptr);
  EXPECT_EQ(node.NextElement(nullptr), nullptr);
  EXPECT_EQ(node.FirstElement("none"), nullptr);
}

TEST(SmilElements, InsertionPositions) {
  CSMILNode node("x");
  auto spare = std::make_unique<CSMILNode>("spare");
  EXPECT_FALSE(node.InsertElement(-1, spare.get()));
  for (const int index : {0, 7, -2}) {
    try {
      node.InsertElement(index, spare.get());
      ADD_FAILURE() << index;
    } catch (const std::out_of_range& error) {
      EXPECT_STREQ(error.what(), "invalid vector<T> subscript");
    }
  }
  append(node, new CSMILNode("b"));
  EXPECT_FALSE(node.InsertElement(-1, spare.get())) << "no child was returned yet";
  EXPECT_TRUE(node.InsertElement(0, new CSMILNode("a")));
  append(node, new CSMILNode("c"));
  node.FirstElement("b");
  // Two in a row stay in order, and the walk goes on behind the child that it stood on.
  EXPECT_TRUE(node.InsertElement(-1, new CSMILNode("1")));
  EXPECT_TRUE(node.InsertElement(-1, new CSMILNode("2")));
  EXPECT_TRUE(node.InsertElement(0, new CSMILNode("0")));
  EXPECT_STREQ(node.NextElement(nullptr)->GetTag(), "c");
  EXPECT_THAT(children(node), ElementsAre("0", "a", "1", "2", "b", "c"));
}

TEST(SmilElements, ClearForgetsWithoutDestroying) {
  CSMILNode from("x");
  CSMILNode to("y");
  to.AddElement(append(from, new CSMILNode("moved")));
  from.ElementClear();
  EXPECT_EQ(from.ElementCount(), 0U);
  EXPECT_STREQ(to.FirstElement(nullptr)->GetTag(), "moved");
}

TEST(SmilAccessors, PuttersAppendAndGettersTakeTheFirst) {
  CSMIL smil;
  EXPECT_EQ(smil.GetHead(), nullptr);
  auto* first = new CSMILHead;
  smil.PutHead(first);
  smil.PutHead(new CSMILHead);
  smil.PutBody(new CSMILBody);
  EXPECT_THAT(children(smil), ElementsAre("head", "head", "body"));
  EXPECT_EQ(smil.GetHead(), first);
  auto* layout = new CSMILLayout;
  first->PutLayout(layout);
  layout->PutRootLayout(new CSMILRootLayout);
  EXPECT_EQ(first->GetLayout()->GetRootLayout(), layout->Element(0));
  for (const char* id : {"image", "Image"}) append(*layout, new CSMILRegion)->PutId(id);
  EXPECT_EQ(layout->FindRegion("Image"), layout->Element(2)) << "ids are compared exactly";
  EXPECT_EQ(layout->FindRegion("IMAGE"), nullptr);
}

TEST(SmilAccessors, StoredTexts) {
  CSMIL smil;
  smil.PutXmlns("n");
  smil.PutXmlLang("fi");
  smil.PutClass("c");
  EXPECT_THAT(attributes(smil), ElementsAre("xmlns=n", "xml:lang=fi", "class=c"));
  EXPECT_THAT(texts(smil.GetXmlns(), smil.GetXmlLang(), smil.GetClass()),
              ElementsAre("n", "fi", "c"));
  EXPECT_THAT(smil.GetTitle(), IsNull());
  CSMILRootLayout root;
  root.PutWidth(320);
  root.PutHeight(-1);
  root.PutSkipContent(true);
  root.PutBackgroundColor(0xAAFF8000);
  EXPECT_THAT(attributes(root), ElementsAre("width=320", "height=-1", "skip-content=true",
                                            "backgroundColor=#FF8000"));
  EXPECT_THAT((std::array{root.GetWidth(), root.GetHeight()}), ElementsAre(320, -1));
  CSMILRegion region;
  RECT rect{1, 2, 3, 4};
  region.PutRect(&rect);
  region.PutFit("meet");
  region.PutShowBackground("always");
  region.PutRegionName("r");
  EXPECT_THAT(attributes(region), ElementsAre("left=1", "top=2", "right=3", "bottom=4", "fit=meet",
                                              "showBackground=always", "regionName=r"));
  EXPECT_THAT(texts(region.GetFit(), region.GetShowBackground(), region.GetRegionName()),
              ElementsAre("meet", "always", "r"));
  rect = {0, 5, 0, 0};
  region.PutRect(&rect);
  region.GetRect(&rect);
  EXPECT_EQ(rect.left + rect.top + rect.right + rect.bottom, 5);
  EXPECT_THAT(region.GetLeft(), 0);
  EXPECT_EQ(region.FindAttribute("left"), nullptr) << "a zero edge is removed";
  CSMILMedia media("img");
  media.PutSrc("s");
  media.PutType("t");
  media.PutRegion("r");
  EXPECT_THAT(attributes(media), ElementsAre("src=s", "type=t", "region=r"));
  EXPECT_THAT(CSMILMedia("img").GetSrc(), IsNull());
  CSMILLayout layout;
  layout.PutType("t");
  EXPECT_STREQ(layout.GetType(), "t");
  EXPECT_THAT(attributes(layout), ElementsAre("type=t"));
}

TEST(SmilAccessors, TimesAreStoredInMillisecondsAndReadWithoutTheirUnit) {
  CSMILPar par;
  par.PutBegin(5);
  par.PutEnd(-7);
  par.PutDur(1500);
  EXPECT_THAT(attributes(par), ElementsAre("begin=5ms", "end=-7ms", "dur=1500ms"));
  EXPECT_THAT((std::array{par.GetBegin(), par.GetEnd(), par.GetDur()}), ElementsAre(5, -7, 1500));
  par.PutDur(0);
  EXPECT_THAT(attributes(par), ElementsAre("begin=5ms", "end=-7ms"));
  EXPECT_EQ(par.GetDur(), 0);
  const std::pair<const char*, int> kTexts[] = {{"2s", 2},
                                                {"500ms", 500},
                                                {" +7", 7},
                                                {"-12x", -12},
                                                {"0:05", 0},
                                                {"indefinite", 0},
                                                {"99999999999999999999", 2147483647},
                                                {"-99999999999", -2147483647 - 1}};
  for (const auto& [text, number] : kTexts) {
    put(par, "begin", text);
    EXPECT_EQ(par.GetBegin(), number) << text;
  }
}

TEST(SmilAccessors, ABackgroundColourIsWrittenButNeverReadBack) {
  CSMILRootLayout root;
  root.PutBackgroundColor(0x00FF8000);
  root.PutBackgroundColor(0xFFFFFFFF);
  EXPECT_THAT(attributes(root), ElementsAre("backgroundColor=#FF8000"));
  EXPECT_EQ(root.GetBackgroundColor(), 0xFFFFFFFF);
}

TEST(SmilAccessors, ContentIsSkippedUnlessTheAttributeSaysFalse) {
  CSMILRootLayout root;
  EXPECT_TRUE(root.GetSkipContent());
  root.PutSkipContent(false);
  EXPECT_FALSE(root.GetSkipContent());
  for (const auto& [text, skipped] :
       {std::pair{"FALSE", false}, std::pair{"no", true}, std::pair{"", true}}) {
    put(root, "skip-content", text);
    EXPECT_EQ(root.GetSkipContent(), skipped) << text;
  }
}

TEST(SmilTiming, BothBasesShareOneAttributeList) {
  static_assert(!std::has_virtual_destructor_v<CSMILTimingAttr>);
  CSMILPar par;
  CSMILMedia media("img");
  CSMILNode* const nodes[] = {&par, &media};
  CSMILTimingAttr* const timings[] = {&par, &media};
  for (int i = 0; i < 2; ++i) {
    CSMILAttr attribute;
    attribute.PutName("dur");
    attribute.PutValue("3s");
    nodes[i]->AddAttribute(&attribute);
    EXPECT_EQ(timings[i]->GetDur(), 3);
    timings[i]->PutDur(8);
    EXPECT_STREQ(nodes[i]->FindAttribute("DUR")->GetValue(), "8ms");
    EXPECT_TRUE(timings[i]->RemoveAttribute("dur"));
    EXPECT_EQ(nodes[i]->AttributeCount(), 0U);
  }
}

CSMIL sample() {
  CSMIL smil;
  auto* head = append(smil, new CSMILHead);
  auto* layout = append(*head, new CSMILLayout);
  append(*layout, new CSMILRootLayout);
  append(*layout, new CSMILRegion)->PutId("Image");
  auto* body = append(smil, new CSMILBody);
  for (const char* src : {"a", "b"}) {
    appendMedia(*append(*body, new CSMILPar), "img", src)->PutContent("x\0y", 3);
  }
  append(*body, new CSMILNode("seq"));
  return smil;
}

TEST(SmilCopy, ChildrenKeepTheirClassAttributesAndContent) {
  CSMIL original = sample();
  original.GetBody()->FirstElement(nullptr);
  CSMIL copy(original);
  EXPECT_NE(copy.GetHead()->GetLayout()->FindRegion("Image"), nullptr);
  EXPECT_NE(copy.GetHead()->GetLayout()->GetRootLayout(), nullptr);
  CSMILBody* body = copy.GetBody();
  ASSERT_NE(body, original.GetBody());
  EXPECT_EQ(body->NextElement(nullptr), nullptr) << "a copy's cursor is not positioned";
  EXPECT_EQ(typeid(*body->Element(2)), typeid(CSMILNode));
  int slides = 0;
  for (CSMILNode* par = body->FirstElement("par"); par != nullptr; par = body->NextElement("par")) {
    ASSERT_EQ(typeid(*par), typeid(CSMILPar));
    auto* media = dynamic_cast<CSMILMedia*>(par->FirstElement("img"));
    ASSERT_NE(media, nullptr);
    EXPECT_STREQ(media->GetSrc(), slides++ == 0 ? "a" : "b");
    EXPECT_EQ(std::string(reinterpret_cast<char*>(media->GetContent()), 4),
              std::string("x\0y\0", 4));
  }
  EXPECT_EQ(slides, 2);
}

TEST(SmilCopy, AssignmentReplacesAndMayComeFromWithin) {
  CSMIL smil = sample();
  smil = *&smil;
  EXPECT_EQ(smil.ElementCount(), 2U);
  CSMILNode& node = smil;
  node = *smil.GetBody();  // the source goes away with the old children
  EXPECT_STREQ(smil.GetTag(), "body");
  EXPECT_THAT(children(smil), ElementsAre("par", "par", "seq"));
  CSMILMedia media("img");
  media.PutContent("old", 3);
  auto* inner = append(media, new CSMILMedia("audio"));
  inner->PutContent("new", 3);
  media = *inner;
  EXPECT_STREQ(media.GetTag(), "audio");
  EXPECT_STREQ(reinterpret_cast<char*>(media.GetContent()), "new");
}

TEST(SmilCopy, DepthCostsNoStack) {
  CSMIL smil;
  deepen(smil, 100000);
  CSMIL copy(smil);
  smil = copy;
  int depth = 0;
  for (const CSMILNode* node = &smil; node->ElementCount() > 0; node = node->Element(0)) ++depth;
  EXPECT_EQ(depth, 100000);
}

}  // namespace
}  // namespace mmsbrix::test
