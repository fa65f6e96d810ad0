#include "smil/smil.h"

CSMILPar::CSMILPar() : CSMILNode("par") {}
CSMILPar::CSMILPar(const CSMILPar& other) = default;
CSMILPar& CSMILPar::operator=(const CSMILPar& other) = default;
CSMILPar::~CSMILPar() = default;

CSMILAttr* CSMILPar::FindAttribute(const char* name) {
  return CSMILNode::FindAttribute(name);
}

void CSMILPar::AddAttribute(CSMILAttr* attr) {
  CSMILNode::AddAttribute(attr);
}

bool CSMILPar::RemoveAttribute(const char* name) {
  return CSMILNode::RemoveAttribute(name);
}

CSMILHead::CSMILHead() : CSMILNode("head") {}
CSMILHead::CSMILHead(const CSMILHead& other) = default;
CSMILHead& CSMILHead::operator=(const CSMILHead& other) = default;
CSMILHead::~CSMILHead() = default;

CSMILLayout* CSMILHead::GetLayout() const noexcept {
  return dynamic_cast<CSMILLayout*>(FindElement("layout"));
}

CSMILBody::CSMILBody() : CSMILNode("body") {}
CSMILBody::CSMILBody(const CSMILBody& other) = default;
CSMILBody& CSMILBody::operator=(const CSMILBody& other) = default;
CSMILBody::~CSMILBody() = default;

CSMIL::CSMIL() : CSMILNode("smil") {}
CSMIL::CSMIL(const CSMIL& other) = default;
CSMIL& CSMIL::operator=(const CSMIL& other) = default;
CSMIL::~CSMIL() = default;

CSMILHead* CSMIL::GetHead() const noexcept {
  return dynamic_cast<CSMILHead*>(FindElement("head"));
}

CSMILBody* CSMIL::GetBody() const noexcept {
  return dynamic_cast<CSMILBody*>(FindElement("body"));
}
