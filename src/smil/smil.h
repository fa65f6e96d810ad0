/// @file
/// The presentation of a message: CSMIL with head, layout, body, slides and media.  [W3C SMIL 2.0]
#ifndef MMSBRIX_SMIL_SMIL_H
#define MMSBRIX_SMIL_SMIL_H

#include "../export.h"
#include "smillayout.h"
#include "smilmedia.h"
#include "smilnode.h"
#include "smiltiming.h"

/// A slide: media shown at the same time.
class MMSBRIX_API CSMILPar : public CSMILNode, public CSMILTimingAttr {
 public:
  CSMILPar();
  ///@{
  /// Copies are deep, and each child keeps its class.
  CSMILPar(const CSMILPar& other);
  CSMILPar& operator=(const CSMILPar& other);
  ///@}
  ~CSMILPar() override;

  ///@{
  /// Those of CSMILNode, where CSMILTimingAttr finds them too.
  CSMILAttr* FindAttribute(const char* name) override;
  void AddAttribute(CSMILAttr* attr) override;
  bool RemoveAttribute(const char* name) override;
  ///@}
};

/// What is said of a presentation before it begins: its layout.
class MMSBRIX_API CSMILHead : public CSMILNode {
 public:
  CSMILHead();
  ///@{
  /// Copies are deep, and each child keeps its class.
  CSMILHead(const CSMILHead& other);
  CSMILHead& operator=(const CSMILHead& other);
  ///@}
  ~CSMILHead() override;

  /// The first of its kind, null without one.
  CSMILLayout* GetLayout() const noexcept;
  /// Appends, whether or not there is one already, and takes it over.
  void PutLayout(CSMILLayout* layout) { AddElement(layout); }
};

/// What is shown: a child for each slide, one slide after the other.
class MMSBRIX_API CSMILBody : public CSMILNode {
 public:
  CSMILBody();
  ///@{
  /// Copies are deep, and each child keeps its class.
  CSMILBody(const CSMILBody& other);
  CSMILBody& operator=(const CSMILBody& other);
  ///@}
  ~CSMILBody() override;
};

/// A whole presentation.
class MMSBRIX_API CSMIL : public CSMILNode {
 public:
  CSMIL();
  ///@{
  /// Copies are deep, and each child keeps its class.
  CSMIL(const CSMIL& other);
  CSMIL& operator=(const CSMIL& other);
  ///@}
  ~CSMIL() override;

  ///@{
  /// The first of its kind, null without one.
  CSMILHead* GetHead() const noexcept;
  CSMILBody* GetBody() const noexcept;
  ///@}
  ///@{
  /// Appends, whether or not there is one already, and takes it over.
  void PutHead(CSMILHead* head) { AddElement(head); }
  void PutBody(CSMILBody* body) { AddElement(body); }
  ///@}
  ///@{
  /// The XML namespace, whose version of SMIL the text then is written in; null when absent.
  const char* GetXmlns() { return textOf("xmlns"); }
  void PutXmlns(const char* xmlns) { putText("xmlns", xmlns); }
  ///@}
};

#endif  // MMSBRIX_SMIL_SMIL_H
