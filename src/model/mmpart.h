// CMMPart: a body part with headers, content and nested parts.
#ifndef MMSBRIX_MODEL_MMPART_H
#define MMSBRIX_MODEL_MMPART_H

#include <memory>

#include "../export.h"
#include "mmhdr.h"
#include "mmlist.h"

/// A node of a message's body.  Owns everything and copies deeply; the content is followed by one
/// zero octet that does not count, so text content reads as a C string.
class MMSBRIX_API CMMPart {
 public:
  CMMPart();
  CMMPart(const CMMPart& other);
  CMMPart(CMMPart&& other) noexcept;
  CMMPart& operator=(const CMMPart& other);
  CMMPart& operator=(CMMPart&& other) noexcept;
  ~CMMPart();

  CMMHdrList* Headers() noexcept { return &headers_; }
  const CMMHdrList* Headers() const noexcept { return &headers_; }

  /// The content or null; valid until the content changes.
  unsigned char* GetContent() const noexcept { return content_.get(); }
  /// Content octets, without the zero behind them.
  int GetContentLen() const noexcept { return length_; }
  /// Replaces the content by a copy of `len` octets; -1 measures zero-terminated text, null `data`
  /// leaves no content.  Always true.  `data` may lie within the present content.
  bool SetContent(const void* data, int len);

  /// Reads a whole file into the content; headers and children stay.  False, with the part
  /// unchanged, when it cannot be opened (or is 2 GiB or more); false with the file's length kept
  /// when the reading fails.
  bool Load(const char* path);
  /// Writes the content to a file, replacing an existing one.  False, touching no file, without
  /// content; false with the old file kept when the writing fails.
  bool Save(const char* path) const;

  /// Appends a deep copy; the caller keeps its own.
  void AddChild(const CMMPart* child);
  /// Appends an empty child and returns it, to be filled in place; valid until the next child is
  /// added or the children change.
  CMMPart* NewChild();
  unsigned int ChildCount() const noexcept;
  /// The child walk, with one cursor: null past the last child until FirstChild is called.
  CMMPart* FirstChild() noexcept;
  CMMPart* NextChild() noexcept;
  /// The child at a zero-based index without touching the cursor; null past the last one.
  const CMMPart* Child(unsigned int index) const noexcept;
  /// The first child whose first header of `header`'s name has `header`'s value, names and values
  /// compared without regard to case, parameters left out; null without one.  Moves the header
  /// cursor of the children looked at, not the child cursor.
  CMMPart* FindChild(const CMMHdr* header) noexcept;

  /// Drops content, headers and children.
  void Clear() noexcept;

 private:
  CMMHdrList headers_;
  std::unique_ptr<unsigned char[]> content_;
  int length_ = 0;
  mmsbrix::CMMList<CMMPart> children_;
};

#endif  // MMSBRIX_MODEL_MMPART_H
