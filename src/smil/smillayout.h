/// @file
/// CSMILLayout, CSMILRootLayout and CSMILRegion: where on the screen things are shown. [W3C
/// SMIL 2.0, Layout]
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
  ///@{
  /// Copies are deep, and each child keeps its class.
  CSMILRootLayout(const CSMILRootLayout& other);
  CSMILRootLayout& operator=(const CSMILRootLayout& other);
  ///@}
  ~CSMILRootLayout() override;

  ///@{
  /// Size of the screen that the layout is made for.
  int GetWidth() { return numberOf("width"); }
  void PutWidth(int pixels) { putNumber("width", pixels); }
  int GetHeight() { return numberOf("height"); }
  void PutHeight(int pixels) { putNumber("height", pixels); }
  ///@}
  /// Always `kNoColor`: the stored text is not interpreted, as callers have always had it.
  unsigned int GetBackgroundColor() noexcept { return kNoColor; }
  /// Stores 0x00RRGGBB as "#RRGGBB"; `kNoColor` changes nothing at all.
  void PutBackgroundColor(unsigned int color);
  /// True unless the attribute says "false".
  bool GetSkipContent();
  /// Stores "true" or "false".
  void PutSkipContent(bool skip) { putText("skip-content", skip ? "true" : "false"); }
};

/// A rectangle that media are shown in.  Edges are in pixels; a getter gives the number that the
/// value begins with, 0 when absent, and a putter given 0 removes the attribute.
class MMSBRIX_API CSMILRegion : public CSMILNode {
 public:
  CSMILRegion();
  ///@{
  /// Copies are deep, and each child keeps its class.
  CSMILRegion(const CSMILRegion& other);
  CSMILRegion& operator=(const CSMILRegion& other);
  ///@}
  ~CSMILRegion() override;

  ///@{
  /// Distance from that edge of the screen.
  int GetLeft() { return numberOf("left"); }
  void PutLeft(int pixels) { putNumber("left", pixels); }
  int GetTop() { return numberOf("top"); }
  void PutTop(int pixels) { putNumber("top", pixels); }
  int GetRight() { return numberOf("right"); }
  void PutRight(int pixels) { putNumber("right", pixels); }
  int GetBottom() { return numberOf("bottom"); }
  void PutBottom(int pixels) { putNumber("bottom", pixels); }
  ///@}
  ///@{
  /// All four edges; null does nothing.
  void GetRect(RECT* rect);
  void PutRect(RECT* rect);
  ///@}
  ///@{
  /// What is done with media of another size: "fill", "hidden", "meet", "scroll" or "slice"; null
  /// when absent.
  const char* GetFit() { return textOf("fit"); }
  void PutFit(const char* fit) { putText("fit", fit); }
  ///@}
  ///@{
  /// When the background is shown, "always" or "whenActive"; null when absent.
  const char* GetShowBackground() { return textOf("showBackground"); }
  void PutShowBackground(const char* when) { putText("showBackground", when); }
  ///@}
  ///@{
  /// The name that several regions may have, beside the "id" that one has; null when absent.
  const char* GetRegionName() { return textOf("regionName"); }
  void PutRegionName(const char* name) { putText("regionName", name); }
  ///@}
};

/// The root layout and the regions.
class MMSBRIX_API CSMILLayout : public CSMILNode {
 public:
  CSMILLayout();
  ///@{
  /// Copies are deep, and each child keeps its class.
  CSMILLayout(const CSMILLayout& other);
  CSMILLayout& operator=(const CSMILLayout& other);
  ///@}
  ~CSMILLayout() override;

  /// The first of its kind, null without one.
  CSMILRootLayout* GetRootLayout() const noexcept;
  /// Appends, whether or not there is one already, and takes it over.
  void PutRootLayout(CSMILRootLayout* rootLayout) { AddElement(rootLayout); }
  /// The first region whose "id" is exactly `id`, null without one.
  CSMILRegion* FindRegion(const char* id) const;
  ///@{
  /// The layout language, "text/smil-basic-layout"; null when absent.
  const char* GetType() { return textOf("type"); }
  void PutType(const char* type) { putText("type", type); }
  ///@}
};

#endif  // MMSBRIX_SMIL_SMILLAYOUT_H
