/// @file
/// CSMILAttr and CSMILNode: elements of a presentation with their attributes and children. [W3C
/// SMIL 2.0]
#ifndef MMSBRIX_SMIL_SMILNODE_H
#define MMSBRIX_SMIL_SMILNODE_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "../export.h"

namespace mmsbrix {
class TreeMoves;
}

/// A name and a value.  Getters never return null; null given to a putter empties the text.
class MMSBRIX_API CSMILAttr {
 public:
  CSMILAttr();
  ///@{
  /// Copies both texts; null is the empty one.
  CSMILAttr(const char* name, const char* value);
  CSMILAttr(std::string_view name, std::string_view value);
  ///@}
  ///@{
  /// A copy has texts of its own; an attribute that was moved from may only be assigned to.
  CSMILAttr(const CSMILAttr& other);
  CSMILAttr(CSMILAttr&& other) noexcept;
  CSMILAttr& operator=(const CSMILAttr& other);
  CSMILAttr& operator=(CSMILAttr&& other) noexcept;
  ///@}
  ~CSMILAttr();

  ///@{
  /// The attribute's own texts, in UTF-8; valid until they are replaced.
  const char* GetName() const noexcept { return name_.c_str(); }
  const char* GetValue() const noexcept { return value_.c_str(); }
  std::string_view Name() const noexcept { return name_; }
  std::string_view Value() const noexcept { return value_; }
  ///@}
  ///@{
  /// Copies the text, without escapes: the writer adds those that XML needs.
  void PutName(const char* name);
  void PutValue(const char* value);
  ///@}

 private:
  std::string name_;
  std::string value_;
};

/// An element: a tag, attributes in order, children in order.  Owns its children, which come from
/// `new` and are destroyed with it; a tree may be as deep as memory allows.
///
/// Two cursors are part of every node, one for its attributes and one for its children, so one walk
/// of each kind runs at a time.  Every search for an attribute uses the attribute cursor, and so do
/// the typed getters and putters.  Names and tags are compared without regard to case.  Attributes
/// handed out point into the node and stay valid until an attribute is added or removed.
class MMSBRIX_API CSMILNode {
 public:
  CSMILNode();
  /// An element of that tag; null is the empty one.
  explicit CSMILNode(const char* tag);
  ///@{
  /// Copies are deep, and each child keeps its class.  The cursors of a copy are not positioned.
  CSMILNode(const CSMILNode& other);
  CSMILNode& operator=(const CSMILNode& other);
  ///@}
  virtual ~CSMILNode();

  /// The first attribute of that name, which the attribute cursor is left on; null without one.
  virtual CSMILAttr* FindAttribute(const char* name);
  /// Adds a copy of `*attr`.  An attribute of that name is overwritten in its place, the case of
  /// its name included.  The caller keeps `attr`; null adds nothing.
  virtual void AddAttribute(CSMILAttr* attr);
  /// The same from views.
  void PutAttribute(std::string_view name, std::string_view value);
  /// Appends an attribute whose name, in any case, the node does not have yet: readers that know so
  /// need no search.
  void AppendAttribute(std::string_view name, std::string_view value) {
    attributes_.emplace_back(name, value);
  }
  /// Makes room for `count` attributes in all, so that a known number costs one allocation.
  void ReserveAttributes(unsigned int count) { attributes_.reserve(count); }
  /// False when there is none of that name.  The attribute cursor is left at the removed position,
  /// which then holds the following attribute.
  virtual bool RemoveAttribute(const char* name);

  ///@{
  /// Nodes come from the library's own heap, whoever creates or destroys them.
  static void* operator new(std::size_t size);
  static void operator delete(void* node);
  ///@}

  ///@{
  /// The element's name, "par" or "img"; never null.
  const char* GetTag() const noexcept { return tag_.c_str(); }
  void PutTag(const char* tag);
  ///@}

  /// How many attributes there are.
  unsigned int AttributeCount() const noexcept;
  /// Removes all attributes.
  void AttributeClear() noexcept;
  /// Null without attributes.
  CSMILAttr* FirstAttribute() noexcept;
  /// Null past the last one, and again null until FirstAttribute is called.
  CSMILAttr* NextAttribute() noexcept;
  /// The attribute at a zero-based index without touching the cursor; null past the last one.
  const CSMILAttr* Attribute(unsigned int index) const noexcept;

  /// How many children there are, those within them not counted.
  unsigned int ElementCount() const noexcept;
  /// Forgets the children without destroying them: whoever moves them elsewhere keeps them.
  void ElementClear() noexcept;
  /// The first child, of that tag unless `tag` is null; null without one.
  CSMILNode* FirstElement(const char* tag) noexcept;
  /// The next child behind the cursor, of that tag unless `tag` is null; null past the last one,
  /// and again null until FirstElement is called.
  CSMILNode* NextElement(const char* tag) noexcept;
  /// The first child of that tag, null without one.  Leaves the cursor alone.
  CSMILNode* FindElement(const char* tag) const noexcept;
  /// The child at a zero-based index without touching the cursor; null past the last one.
  CSMILNode* Element(unsigned int index) const noexcept;
  /// Appends a child and takes it over.  Null adds nothing.
  void AddElement(CSMILNode* element);
  /// Inserts a child before a zero-based index and takes it over; -1 means before the child that
  /// FirstElement or NextElement last returned, on which the cursor stays.  False, with nothing
  /// changed, when there is no such child or `element` is null.  Throws std::out_of_range for any
  /// other index that no child has.
  bool InsertElement(int index, CSMILNode* element);

  ///@{
  /// The name by which others refer to the element; unique in a presentation.  Null when absent.
  const char* GetId() { return textOf("id"); }
  void PutId(const char* id) { putText("id", id); }
  ///@}
  ///@{
  /// A class for style sheets, which phones do not know; null when absent.
  const char* GetClass() { return textOf("class"); }
  void PutClass(const char* value) { putText("class", value); }
  ///@}
  ///@{
  /// The language of texts and attributes, "fi" or "en-GB"; null when absent.  [W3C XML 1.0 2.12]
  const char* GetXmlLang() { return textOf("xml:lang"); }
  void PutXmlLang(const char* language) { putText("xml:lang", language); }
  ///@}
  ///@{
  /// What the element is, for people; null when absent.
  const char* GetTitle() { return textOf("title"); }
  void PutTitle(const char* title) { putText("title", title); }
  ///@}

 protected:
  /// The value of an attribute, null when it is absent.
  const char* textOf(const char* name);
  /// Stores a copy; null stores the empty text.
  void putText(const char* name, const char* value);
  /// The number that an attribute's value begins with, 0 when it is absent.
  int numberOf(const char* name);
  /// Stores a number in decimal; 0 removes the attribute.
  void putNumber(const char* name, int value);

 private:
  friend class mmsbrix::TreeMoves;
  static constexpr std::size_t kNotPositioned = static_cast<std::size_t>(-1);

  CSMILAttr* moveToAttribute(std::size_t position) noexcept;
  CSMILNode* moveToElement(std::size_t position, const char* tag) noexcept;
  void CopyElements(const CSMILNode& other);
  void destroyElements() noexcept;

  std::string tag_;
  std::vector<CSMILAttr> attributes_;
  std::size_t attributeCursor_ = kNotPositioned;
  std::vector<CSMILNode*> children_;
  std::size_t elementCursor_ = kNotPositioned;
};

#endif  // MMSBRIX_SMIL_SMILNODE_H
