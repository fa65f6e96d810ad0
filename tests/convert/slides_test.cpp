// Slides in the shape that every phone shows.
#include <gtest/gtest.h>

#include "convert/slides.h"
#include "support/smil.h"

namespace mmsbrix::test {
namespace {

std::string built(const std::vector<Slide>& slides, const ScreenSize& screen = {}) {
  CSMIL smil;
  put(smil, "old", "goes");
  buildSlides(slides, smil, screen);
  return dump(smil);
}

TEST(Slides, PictureAboveText) {
  EXPECT_EQ(built({{"Hi", "a.jpg", "s.amr", std::chrono::seconds(5)}}),
            "smil(head(layout(root-layout[width=320 height=240] "
            "region[id=Image left=0 top=0 width=320 height=160 fit=meet] "
            "region[id=Text left=0 top=160 width=320 height=80 fit=scroll])) "
            "body(par[dur=5000ms](img*[src=a.jpg region=Image] text*[src=text1.txt region=Text] "
            "audio*[src=s.amr])))");
}

TEST(Slides, RegionsOnlyAsFarAsTheyAreUsed) {
  EXPECT_EQ(built({{"", "a.mp4", "", std::chrono::milliseconds(-1)}}, {100, 50}),
            "smil(head(layout(root-layout[width=100 height=50] "
            "region[id=Image left=0 top=0 width=100 height=50 fit=meet])) "
            "body(par(video*[src=a.mp4 region=Image])))");
  EXPECT_EQ(built({{}, {"b", "", "", std::chrono::hours(1000)}}, {100, 50}),
            "smil(head(layout(root-layout[width=100 height=50] "
            "region[id=Text left=0 top=0 width=100 height=50 fit=scroll])) "
            "body(par[dur=5000ms] par[dur=2147483647ms](text*[src=text2.txt region=Text])))");
  EXPECT_EQ(built({}, {0, 0}), "smil(head(layout(root-layout)) body)");
}

TEST(Slides, TextsAreContent) {
  CSMIL smil;
  const Slide slide{"t\xC3\xA4xt", "", "", {}};
  buildSlides({&slide, 1}, smil);
  const auto* text = dynamic_cast<CSMILMedia*>(smil.GetBody()->Element(0)->Element(0));
  ASSERT_NE(text, nullptr);
  EXPECT_STREQ(reinterpret_cast<char*>(text->GetContent()), "t\xC3\xA4xt");
}

}  // namespace
}  // namespace mmsbrix::test
