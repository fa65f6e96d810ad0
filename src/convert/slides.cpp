#include "convert/slides.h"

#include <algorithm>
#include <limits>

#include "convert/media_types.h"
#include "platform/ascii.h"

namespace mmsbrix {
namespace {

constexpr char kImageRegion[] = "Image";
constexpr char kTextRegion[] = "Text";

template <class T>
T& append(CSMILNode& parent, T* child) {
  parent.AddElement(child);
  return *child;
}

void put(CSMILNode& node, const char* name, const std::string& value) {
  CSMILAttr attribute(name, value.c_str());
  node.AddAttribute(&attribute);
}

// With all four edges stated, zero included: phones do not agree on what a missing one means.
void addRegion(CSMILLayout& layout, const char* id, int top, const ScreenSize& size) {
  CSMILRegion& region = append(layout, new CSMILRegion);
  region.PutId(id);
  put(region, "left", "0");
  put(region, "top", std::to_string(top));
  put(region, "width", std::to_string(size.width));
  put(region, "height", std::to_string(size.height));
  region.PutFit(std::string_view(id) == kImageRegion ? "meet" : "scroll");
}

void addLayout(CSMILHead& head, bool hasImages, bool hasTexts, const ScreenSize& screen) {
  CSMILLayout& layout = append(head, new CSMILLayout);
  CSMILRootLayout& root = append(layout, new CSMILRootLayout);
  root.PutWidth(screen.width);
  root.PutHeight(screen.height);
  const int imageHeight = !hasImages ? 0 : hasTexts ? screen.height * 2 / 3 : screen.height;
  if (hasImages) addRegion(layout, kImageRegion, 0, {screen.width, imageHeight});
  if (hasTexts) {
    addRegion(layout, kTextRegion, imageHeight, {screen.width, screen.height - imageHeight});
  }
}

void addSlide(CSMILBody& body, const Slide& slide, std::size_t number) {
  CSMILPar& par = append(body, new CSMILPar);
  par.PutDur(static_cast<int>(std::clamp<std::chrono::milliseconds::rep>(
      slide.duration.count(), 0, std::numeric_limits<int>::max())));
  if (!slide.image.empty()) {
    const bool moves = startsWithIgnoringCase(mediaTypeOfFile(slide.image), "video/");
    CSMILMedia& image = append(par, new CSMILMedia(moves ? "video" : "img"));
    image.PutSrc(slide.image.c_str());
    image.PutRegion(kImageRegion);
  }
  if (!slide.text.empty()) {
    CSMILMedia& text = append(par, new CSMILMedia("text"));
    text.PutSrc(("text" + std::to_string(number) + ".txt").c_str());
    text.PutRegion(kTextRegion);
    text.PutContent(slide.text.data(), static_cast<int>(slide.text.size()));
  }
  if (!slide.audio.empty()) append(par, new CSMILMedia("audio")).PutSrc(slide.audio.c_str());
}

}  // namespace

void buildSlides(std::span<const Slide> slides, CSMIL& smil, const ScreenSize& screen) {
  CSMIL built;
  CSMILHead& head = append(built, new CSMILHead);
  const auto any = [&](std::string Slide::*member) {
    return std::any_of(slides.begin(), slides.end(),
                       [member](const Slide& slide) { return !(slide.*member).empty(); });
  };
  addLayout(head, any(&Slide::image), any(&Slide::text), screen);
  CSMILBody& body = append(built, new CSMILBody);
  std::size_t number = 0;
  for (const Slide& slide : slides) addSlide(body, slide, ++number);
  smil = built;
}

}  // namespace mmsbrix
