// References as peers write them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "convert/references.h"
#include "support/messages.h"
#include "support/smil.h"

namespace mmsbrix::test {
namespace {

using ::testing::ElementsAre;

CMMPart* add(CMMPart& parent, const char* type, const char* header, const char* value,
             const char* name = "") {
  CMMPart* part = parent.NewChild();
  CMMHdr contentType("Content-Type", type);
  CMMParam parameter("name", name);
  contentType.Params()->Add(&parameter);
  part->Headers()->Add(&contentType);
  CMMHdr other(header, value);
  part->Headers()->Add(&other);
  part->SetContent("x", 1);
  return part;
}

TEST(References, InAllTheirForms) {
  CMMsg message;
  CMMPart& root = *message.Content();
  add(root, "application/smil", "Content-ID", "<smil>");
  add(root, "image/jpeg", "Content-ID", "<a@b>");
  add(root, "image/jpeg", "Content-ID", "bare");
  add(root, "image/jpeg", "Content-Location", "dir/L 1.jpg");
  add(root, "image/jpeg", "Content-Location", "<1>");
  add(root, "image/jpeg", "X", "", "n.jpg");
  add(root, "image/jpeg", "Content-Disposition", "attachment");
  CMMParam filename("filename", "f.jpg");
  root.NewChild();  // a part without any header
  const_cast<CMMHdrList*>(root.Child(6)->Headers())
      ->Find("Content-Disposition")
      ->Params()
      ->Add(&filename);
  add(root, "image/jpeg", "Content-ID", "<both>");
  add(root, "image/jpeg", "Content-Location", "both");
  CMMPart* nested = add(root, "application/vnd.wap.multipart.mixed", "X", "");
  add(*nested, "image/jpeg", "Content-ID", "<inner>");
  std::vector<const CMMPart*> parts;
  for (unsigned i = 0; i < root.ChildCount(); ++i) parts.push_back(root.Child(i));
  parts.push_back(nested->Child(0));

  const std::pair<const char*, int> kSources[] = {
      {"cid:a@b", 1},        {"CID:A%40B", 1}, {"a@b", 1},
      {"cid:<a@b>", 1},      {"cid:bare", 2},  {"dir/L 1.jpg", 3},
      {"DIR/l%201.JPG", 3},  {"L 1.jpg", 3},   {"cid:L 1.jpg", 3},
      {"other/l 1.jpg", 3},  {"cid:1", 4},     {"1", 4},
      {"n.jpg", 5},          {"cid:n.jpg", 5}, {"f.jpg", 6},
      {"cid:both", 8},       {"both", 9},      {"cid:inner", 11},
      {"cid:none", -1},      {"cid:", -1},     {"cid:smil", -1},
      {"http://x/n.jpg", 5}, {"%", -1},
  };
  CSMIL smil;
  CSMILPar* par = append(*append(smil, new CSMILBody), new CSMILPar);
  append(*par, new CSMILMedia("img"));  // without a source: no reference
  for (const auto& [source, part] : kSources) appendMedia(*par, "img", source);
  const References references = resolveReferences(smil, message);
  ASSERT_EQ(references.media.size(), std::size(kSources));
  for (std::size_t i = 0; i < std::size(kSources); ++i) {
    const auto& [source, part] = kSources[i];
    EXPECT_STREQ(references.media[i].media->GetSrc(), source);
    EXPECT_EQ(references.media[i].part,
              part < 0 ? nullptr : parts.at(static_cast<std::size_t>(part)))
        << source;
  }
  EXPECT_THAT(references.unmentioned, ElementsAre(parts[7]));
}

TEST(References, ThePresentationIsFoundDespiteItsStart) {
  const auto find = [](const char* start, std::vector<std::pair<const char*, const char*>> parts) {
    CMMsg message;
    CMMHdr type("Content-Type", "application/vnd.wap.multipart.related");
    CMMParam parameter("start", start);
    type.Params()->Add(&parameter);
    message.Content()->Headers()->Add(&type);
    for (const auto& [mediaType, id] : parts) add(*message.Content(), mediaType, "Content-ID", id);
    const CMMPart* found = findPresentation(message);
    for (unsigned i = 0; i < parts.size(); ++i) {
      if (message.Content()->Child(i) == found) return static_cast<int>(i);
    }
    return -1;
  };
  constexpr const char* kSmil = "application/smil";
  EXPECT_EQ(find("<b>", {{kSmil, "<a>"}, {kSmil, "<b>"}}), 1);
  EXPECT_EQ(find("b", {{kSmil, "<a>"}, {"Application/SMIL", "<B>"}}), 1);
  EXPECT_EQ(find("<b>", {{"text/plain", "<b>"}, {kSmil, "<a>"}}), 1);
  EXPECT_EQ(find("", {{"text/plain", ""}, {kSmil, ""}, {kSmil, ""}}), 1);
  EXPECT_EQ(find("<b>", {{"text/plain", "<b>"}}), -1);
}

}  // namespace
}  // namespace mmsbrix::test
