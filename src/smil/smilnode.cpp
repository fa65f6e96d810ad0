#include "smil/smilnode.h"

#include <memory>
#include <new>
#include <utility>

#include "platform/ascii.h"
#include "platform/subscript.h"
#include "platform/text.h"
#include "smil/attribute_values.h"
#include "smil/smil.h"
#include "smil/tree_moves.h"

using mmsbrix::equalsIgnoringCase;
using mmsbrix::orEmpty;

CSMILAttr::CSMILAttr() = default;
CSMILAttr::CSMILAttr(const char* name, const char* value)
    : name_(orEmpty(name)), value_(orEmpty(value)) {}
CSMILAttr::CSMILAttr(std::string_view name, std::string_view value) : name_(name), value_(value) {}
CSMILAttr::CSMILAttr(const CSMILAttr& other) = default;
CSMILAttr::CSMILAttr(CSMILAttr&& other) noexcept = default;
CSMILAttr& CSMILAttr::operator=(const CSMILAttr& other) = default;
CSMILAttr& CSMILAttr::operator=(CSMILAttr&& other) noexcept = default;
CSMILAttr::~CSMILAttr() = default;

void CSMILAttr::PutName(const char* name) {
  name_ = orEmpty(name);
}

void CSMILAttr::PutValue(const char* value) {
  value_ = orEmpty(value);
}

namespace {

// A new node of the class that `node` really has, without attributes and children.
std::unique_ptr<CSMILNode> newOfSameClass(const CSMILNode& node) {
  if (const auto* media = dynamic_cast<const CSMILMedia*>(&node)) {
    auto copy = std::make_unique<CSMILMedia>();
    copy->PutContent(media->GetContent(), media->GetContentLen());
    // A copy without the content would be another presentation.
    if (media->GetContent() != nullptr && copy->GetContent() == nullptr) throw std::bad_alloc();
    return copy;
  }
  if (dynamic_cast<const CSMILPar*>(&node) != nullptr) return std::make_unique<CSMILPar>();
  if (dynamic_cast<const CSMILRegion*>(&node) != nullptr) return std::make_unique<CSMILRegion>();
  if (dynamic_cast<const CSMILRootLayout*>(&node) != nullptr) {
    return std::make_unique<CSMILRootLayout>();
  }
  if (dynamic_cast<const CSMILLayout*>(&node) != nullptr) return std::make_unique<CSMILLayout>();
  if (dynamic_cast<const CSMILHead*>(&node) != nullptr) return std::make_unique<CSMILHead>();
  if (dynamic_cast<const CSMILBody*>(&node) != nullptr) return std::make_unique<CSMILBody>();
  return std::make_unique<CSMILNode>();
}

}  // namespace

CSMILNode::CSMILNode() = default;
CSMILNode::CSMILNode(const char* tag) : tag_(orEmpty(tag)) {}

CSMILNode::CSMILNode(const CSMILNode& other) : tag_(other.tag_), attributes_(other.attributes_) {
  CSMILNode copied;  // owns what is copied so far
  copied.CopyElements(other);
  children_.swap(copied.children_);
}

CSMILNode& CSMILNode::operator=(const CSMILNode& other) {
  if (this == &other) return *this;
  // By way of a copy: `other` may be one of this node's own descendants.
  CSMILNode copy(other);
  tag_.swap(copy.tag_);
  attributes_.swap(copy.attributes_);
  children_.swap(copy.children_);
  attributeCursor_ = kNotPositioned;
  elementCursor_ = kNotPositioned;
  return *this;
}

CSMILNode::~CSMILNode() {
  destroyElements();
}

void* CSMILNode::operator new(std::size_t size) {
  return ::operator new(size);
}

void CSMILNode::operator delete(void* node) {
  ::operator delete(node);
}

// Without recursion, since documents decide how deep a tree is.
void CSMILNode::CopyElements(const CSMILNode& other) {
  std::vector<std::pair<const CSMILNode*, CSMILNode*>> open{{&other, this}};
  while (!open.empty()) {
    const auto [source, target] = open.back();
    open.pop_back();
    target->children_.reserve(source->children_.size());
    for (const CSMILNode* child : source->children_) {
      std::unique_ptr<CSMILNode> copy = newOfSameClass(*child);
      copy->tag_ = child->tag_;
      copy->attributes_ = child->attributes_;
      open.emplace_back(child, copy.get());
      target->children_.push_back(copy.release());
    }
  }
}

// Without recursion and without memory: on the way down the slot of a node's last child, which is
// being taken down, holds the way back up, the node's own parent.
void CSMILNode::destroyElements() noexcept {
  CSMILNode* node = this;
  CSMILNode* parent = nullptr;
  for (;;) {
    if (!node->children_.empty()) {
      CSMILNode* const child = node->children_.back();
      node->children_.back() = parent;
      parent = node;
      node = child;
    } else if (node == this) {
      return;
    } else {
      CSMILNode* const above = parent;
      parent = above->children_.back();
      above->children_.pop_back();
      delete node;
      node = above;
    }
  }
}

void CSMILNode::PutTag(const char* tag) {
  tag_ = orEmpty(tag);
}

unsigned int CSMILNode::AttributeCount() const noexcept {
  return static_cast<unsigned int>(attributes_.size());
}

void CSMILNode::AttributeClear() noexcept {
  attributes_.clear();
  attributeCursor_ = kNotPositioned;
}

CSMILAttr* CSMILNode::moveToAttribute(std::size_t position) noexcept {
  const bool there = position < attributes_.size();
  attributeCursor_ = there ? position : kNotPositioned;
  return there ? &attributes_[position] : nullptr;
}

CSMILAttr* CSMILNode::FirstAttribute() noexcept {
  return moveToAttribute(0);
}

CSMILAttr* CSMILNode::NextAttribute() noexcept {
  return attributeCursor_ == kNotPositioned ? nullptr : moveToAttribute(attributeCursor_ + 1);
}

const CSMILAttr* CSMILNode::Attribute(unsigned int index) const noexcept {
  return index < attributes_.size() ? &attributes_[index] : nullptr;
}

CSMILAttr* CSMILNode::FindAttribute(const char* name) {
  const std::string_view wanted = orEmpty(name);
  CSMILAttr* attribute = CSMILNode::FirstAttribute();
  while (attribute != nullptr && !equalsIgnoringCase(attribute->Name(), wanted)) {
    attribute = CSMILNode::NextAttribute();
  }
  return attribute;
}

void CSMILNode::AddAttribute(CSMILAttr* attr) {
  if (attr == nullptr) return;
  if (CSMILAttr* existing = CSMILNode::FindAttribute(attr->GetName())) {
    *existing = *attr;
  } else {
    attributes_.push_back(*attr);
  }
}

void CSMILNode::PutAttribute(std::string_view name, std::string_view value) {
  for (CSMILAttr& existing : attributes_) {
    if (!equalsIgnoringCase(existing.Name(), name)) continue;
    existing = CSMILAttr(name, value);
    return;
  }
  AppendAttribute(name, value);
}

bool CSMILNode::RemoveAttribute(const char* name) {
  if (CSMILNode::FindAttribute(name) == nullptr) return false;
  attributes_.erase(attributes_.begin() + static_cast<std::ptrdiff_t>(attributeCursor_));
  return true;
}

unsigned int CSMILNode::ElementCount() const noexcept {
  return static_cast<unsigned int>(children_.size());
}

void CSMILNode::ElementClear() noexcept {
  children_.clear();
  elementCursor_ = kNotPositioned;
}

CSMILNode* CSMILNode::moveToElement(std::size_t position, const char* tag) noexcept {
  while (position < children_.size() && tag != nullptr &&
         !equalsIgnoringCase(children_[position]->tag_, tag)) {
    ++position;
  }
  const bool there = position < children_.size();
  elementCursor_ = there ? position : kNotPositioned;
  return there ? children_[position] : nullptr;
}

CSMILNode* CSMILNode::FirstElement(const char* tag) noexcept {
  return moveToElement(0, tag);
}

CSMILNode* CSMILNode::NextElement(const char* tag) noexcept {
  return elementCursor_ == kNotPositioned ? nullptr : moveToElement(elementCursor_ + 1, tag);
}

CSMILNode* CSMILNode::FindElement(const char* tag) const noexcept {
  const std::string_view wanted = orEmpty(tag);
  for (CSMILNode* child : children_) {
    if (equalsIgnoringCase(child->tag_, wanted)) return child;
  }
  return nullptr;
}

CSMILNode* CSMILNode::Element(unsigned int index) const noexcept {
  return index < children_.size() ? children_[index] : nullptr;
}

void CSMILNode::AddElement(CSMILNode* element) {
  if (element == nullptr) return;
  // Room for one child is as large as for three, where the heap hands out 24 octets and more.
  constexpr std::size_t kAtFirst = 3;
  if (children_.capacity() == 0) children_.reserve(kAtFirst);
  children_.push_back(element);
}

void mmsbrix::TreeMoves::exchangeContents(CSMILNode& one, CSMILNode& other) noexcept {
  one.attributes_.swap(other.attributes_);
  one.children_.swap(other.children_);
  for (CSMILNode* node : {&one, &other}) {
    node->attributeCursor_ = CSMILNode::kNotPositioned;
    node->elementCursor_ = CSMILNode::kNotPositioned;
  }
}

void mmsbrix::TreeMoves::append(CSMILNode& to, CSMILNode& from) {
  CSMILNode merged;
  merged.attributes_ = to.attributes_;
  for (CSMILAttr& attribute : from.attributes_) merged.AddAttribute(&attribute);
  to.children_.reserve(to.children_.size() + from.children_.size());
  // From here on nothing fails.
  to.attributes_.swap(merged.attributes_);
  to.attributeCursor_ = CSMILNode::kNotPositioned;
  to.children_.insert(to.children_.end(), from.children_.begin(), from.children_.end());
  from.ElementClear();
}

bool CSMILNode::InsertElement(int index, CSMILNode* element) {
  std::size_t position = elementCursor_;
  if (index != -1) {
    position = static_cast<unsigned int>(index);
    if (position >= children_.size()) mmsbrix::throwInvalidSubscript();
  } else if (position >= children_.size()) {
    return false;
  }
  if (element == nullptr) return false;
  children_.insert(children_.begin() + static_cast<std::ptrdiff_t>(position), element);
  if (elementCursor_ != kNotPositioned && position <= elementCursor_) ++elementCursor_;
  return true;
}

const char* CSMILNode::textOf(const char* name) {
  const CSMILAttr* attribute = FindAttribute(name);
  return attribute == nullptr ? nullptr : attribute->GetValue();
}

void CSMILNode::putText(const char* name, const char* value) {
  CSMILAttr attribute(name, value);
  AddAttribute(&attribute);
}

int CSMILNode::numberOf(const char* name) {
  return mmsbrix::leadingNumber(textOf(name));
}

void CSMILNode::putNumber(const char* name, int value) {
  if (value == 0) {
    RemoveAttribute(name);
  } else {
    putText(name, std::to_string(value).c_str());
  }
}
