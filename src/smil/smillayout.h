// CSMILLayout, CSMILRootLayout and CSMILRegion: where on the screen things are shown. [W3C
// SMIL 2.0, Layout]
#ifndef MMSBRIX_SMIL_SMILLAYOUT_H
#define MMSBRIX_SMIL_SMILLAYOUT_H

#include "../export.h"
#include "../platform/rect.h"
#include "smilnode.h"

/// The whole screen.  Sizes are in pixels; a getter gives the number that the value begins with, 0
/// when absent, and a putter given 0 removes the attribute.
class MMSBRIX_API CSMILRootLayout : public CSMILNode {
 public:
  /// The colour that stands for none.
  static constexpr unsigned int kNoColor = 0xFFFFFFFF;

  CSMILRootLayout();
  CSMILRootLayout(const CSMILRootLayout& other);
  CSMILRootLayout& operator=(const CSMILRootLayout& other);
  ~CSMILRootLayout() override;

  int GetWidth() { return numberOf("width"); }
  void PutWidth(int pixels) { putNumber("width", pixels); }
  int GetHeight() { return numberOf("height"); }
  void PutHeight(int pixels) { putNumber("height", pixels); }
  /// Always `kNoColor`: the stored text is not interpreted, as callers have always had it.
  unsigned int GetBackgroundColor() noexcept { return kNoColor; }
  /// Stores 0x00RRGGBB as "#RRGGBB"; `kNoColor` changes nothing at all.
  void PutBackgroundColor(unsigned int color);
  /// True unless the attribute says "false".
  bool GetSkipContent();
  void PutSkipContent(bool skip) { putText("skip-content", skip ? "true" : "false"); }
};

/// A rectangle that media are shown in.  Edges are in pixels; a getter gives the number that the
/// value begins with, 0 when absent, and a putter given 0 removes the attribute.
class MMSBRIX_API CSMILRegion : public CSMILNode {
 public:
  CSMILRegion();
  CSMILRegion(const CSMILRegion& other);
  CSMILRegion& operator=(const CSMILRegion& other);
  ~CSMILRegion() override;

  int GetLeft() { return numberOf("left"); }
  void PutLeft(int pixels) { putNumber("left", pixels); }
  int GetTop() { return numberOf("top"); }
  void PutTop(int pixels) { putNumber("top", pixels); }
  int GetRight() { return numberOf("right"); }
  void PutRight(int pixels) { putNumber("right", pixels); }
  int GetBottom() { return numberOf("bottom"); }
  void PutBottom(int pixels) { putNumber("bottom", pixels); }
  /// All four edges; null does nothing.
  void GetRect(RECT* rect);
  void PutRect(RECT* rect);
  const char* GetFit() { return textOf("fit"); }
  void PutFit(const char* fit) { putText("fit", fit); }
  const char* GetShowBackground() { return textOf("showBackground"); }
  void PutShowBackground(const char* when) { putText("showBackground", when); }
  const char* GetRegionName() { return textOf("regionName"); }
  void PutRegionName(const char* name) { putText("regionName", name); }
};

/// The root layout and the regions.
class MMSBRIX_API CSMILLayout : public CSMILNode {
 public:
  CSMILLayout();
  CSMILLayout(const CSMILLayout& other);
  CSMILLayout& operator=(const CSMILLayout& other);
  ~CSMILLayout() override;

  CSMILRootLayout* GetRootLayout() const noexcept;
  /// Appends, whether or not there is one already, and takes it over.
  void PutRootLayout(CSMILRootLayout* rootLayout) { AddElement(rootLayout); }
  /// The first region whose "id" is exactly `id`, null without one.
  CSMILRegion* FindRegion(const char* id) const;
  const char* GetType() { return textOf("type"); }
  void PutType(const char* type) { putText("type", type); }
};

#endif  // MMSBRIX_SMIL_SMILLAYOUT_H
