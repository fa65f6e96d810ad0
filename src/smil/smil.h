// The presentation of a message: CSMIL with head, layout, body, slides and media.  [W3C SMIL 2.0]
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
  CSMILPar(const CSMILPar& other);
  CSMILPar& operator=(const CSMILPar& other);
  ~CSMILPar() override;

  CSMILAttr* FindAttribute(const char* name) override;
  void AddAttribute(CSMILAttr* attr) override;
  bool RemoveAttribute(const char* name) override;
};

class MMSBRIX_API CSMILHead : public CSMILNode {
 public:
  CSMILHead();
  CSMILHead(const CSMILHead& other);
  CSMILHead& operator=(const CSMILHead& other);
  ~CSMILHead() override;

  /// The first of its kind, null without one.
  CSMILLayout* GetLayout() const noexcept;
  /// Appends, whether or not there is one already, and takes it over.
  void PutLayout(CSMILLayout* layout) { AddElement(layout); }
};

class MMSBRIX_API CSMILBody : public CSMILNode {
 public:
  CSMILBody();
  CSMILBody(const CSMILBody& other);
  CSMILBody& operator=(const CSMILBody& other);
  ~CSMILBody() override;
};

/// A whole presentation.
class MMSBRIX_API CSMIL : public CSMILNode {
 public:
  CSMIL();
  CSMIL(const CSMIL& other);
  CSMIL& operator=(const CSMIL& other);
  ~CSMIL() override;

  /// The first of its kind, null without one.
  CSMILHead* GetHead() const noexcept;
  CSMILBody* GetBody() const noexcept;
  /// Appends, whether or not there is one already, and takes it over.
  void PutHead(CSMILHead* head) { AddElement(head); }
  void PutBody(CSMILBody* body) { AddElement(body); }
  const char* GetXmlns() { return textOf("xmlns"); }
  void PutXmlns(const char* xmlns) { putText("xmlns", xmlns); }
};

#endif  // MMSBRIX_SMIL_SMIL_H
