// Presentations that several tests build, and their text.
#ifndef MMSBRIX_TESTS_SUPPORT_SMIL_H
#define MMSBRIX_TESTS_SUPPORT_SMIL_H

#include <memory>
#include <string>

#include "smil/smil.h"

namespace mmsbrix::test {

/// Adds an attribute as it stands.
inline void put(CSMILNode& node, const char* name, const char* value) {
  CSMILAttr attribute(name, value);
  node.AddAttribute(&attribute);
}

/// Appends a child, which belongs to `parent`.
template <class T>
T* append(CSMILNode& parent, T* child) {
  parent.AddElement(child);
  return child;
}

inline CSMILMedia* appendMedia(CSMILNode& parent, const char* tag, const char* src) {
  auto* media = append(parent, new CSMILMedia(tag));
  media->PutSrc(src);
  return media;
}

/// A chain of `depth` nodes below `root`.
inline void deepen(CSMILNode& root, int depth) {
  CSMILNode* node = &root;
  for (int i = 0; i < depth; ++i) node = append(*node, new CSMILNode("a"));
}

/// The whole tree on one line: "tag[name=value ...](children)", media nodes with a "*".
inline std::string dump(const CSMILNode& node) {
  std::string text = node.GetTag();
  if (dynamic_cast<const CSMILMedia*>(&node) != nullptr) text += '*';
  if (node.AttributeCount() > 0) text += '[';
  for (unsigned i = 0; i < node.AttributeCount(); ++i) {
    if (i > 0) text += ' ';
    text.append(node.Attribute(i)->GetName()).append("=").append(node.Attribute(i)->GetValue());
  }
  if (node.AttributeCount() > 0) text += ']';
  if (node.ElementCount() > 0) text += '(';
  for (unsigned i = 0; i < node.ElementCount(); ++i) {
    if (i > 0) text += ' ';
    text += dump(*node.Element(i));
  }
  if (node.ElementCount() > 0) text += ')';
  return text;
}

}  // namespace mmsbrix::test

#endif  // MMSBRIX_TESTS_SUPPORT_SMIL_H
