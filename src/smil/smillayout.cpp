#include "smil/smillayout.h"

#include <cstdio>
#include <string_view>

#include "platform/ascii.h"
#include "platform/text.h"

CSMILRootLayout::CSMILRootLayout() : CSMILNode("root-layout") {}
CSMILRootLayout::CSMILRootLayout(const CSMILRootLayout& other) = default;
CSMILRootLayout& CSMILRootLayout::operator=(const CSMILRootLayout& other) = default;
CSMILRootLayout::~CSMILRootLayout() = default;

void CSMILRootLayout::PutBackgroundColor(unsigned int color) {
  if (color == kNoColor) return;
  char text[sizeof "#RRGGBB"];
  (void)std::snprintf(text, sizeof text, "#%02X%02X%02X", (color >> 16) & 0xFF, (color >> 8) & 0xFF,
                      color & 0xFF);
  putText("backgroundColor", text);
}

bool CSMILRootLayout::GetSkipContent() {
  const char* value = textOf("skip-content");
  return value == nullptr || !mmsbrix::equalsIgnoringCase(value, "false");
}

CSMILRegion::CSMILRegion() : CSMILNode("region") {}
CSMILRegion::CSMILRegion(const CSMILRegion& other) = default;
CSMILRegion& CSMILRegion::operator=(const CSMILRegion& other) = default;
CSMILRegion::~CSMILRegion() = default;

void CSMILRegion::GetRect(RECT* rect) {
  if (rect == nullptr) return;
  rect->left = GetLeft();
  rect->top = GetTop();
  rect->right = GetRight();
  rect->bottom = GetBottom();
}

void CSMILRegion::PutRect(RECT* rect) {
  if (rect == nullptr) return;
  PutLeft(static_cast<int>(rect->left));
  PutTop(static_cast<int>(rect->top));
  PutRight(static_cast<int>(rect->right));
  PutBottom(static_cast<int>(rect->bottom));
}

CSMILLayout::CSMILLayout() : CSMILNode("layout") {}
CSMILLayout::CSMILLayout(const CSMILLayout& other) = default;
CSMILLayout& CSMILLayout::operator=(const CSMILLayout& other) = default;
CSMILLayout::~CSMILLayout() = default;

CSMILRootLayout* CSMILLayout::GetRootLayout() const noexcept {
  return dynamic_cast<CSMILRootLayout*>(FindElement("root-layout"));
}

CSMILRegion* CSMILLayout::FindRegion(const char* id) const {
  for (unsigned int i = 0; i < ElementCount(); ++i) {
    auto* region = dynamic_cast<CSMILRegion*>(Element(i));
    if (region == nullptr) continue;
    const char* own = region->GetId();
    if (own != nullptr && std::string_view(own) == mmsbrix::orEmpty(id)) return region;
  }
  return nullptr;
}
