/// @file
/// CMMPart: a body part with headers, content and nested parts.
#ifndef MMSBRIX_MODEL_MMPART_H
#define MMSBRIX_MODEL_MMPART_H

#include <cstddef>
#include <cstdint>

#include "../export.h"
#include "mmhdr.h"
#include "mmlist.h"

namespace mmsbrix {
class ContentBlock;
}

/// A node of a message's body.  Owns everything and copies deeply; the content is followed by one
/// zero octet that does not count, so text content reads as a C string.
class MMSBRIX_API CMMPart {
 public:
  CMMPart();
  ///@{
  /// Copies are deep; a part that was moved from is empty.
  CMMPart(const CMMPart& other);
  CMMPart(CMMPart&& other) noexcept;
  CMMPart& operator=(const CMMPart& other);
  CMMPart& operator=(CMMPart&& other) noexcept;
  ///@}
  ~CMMPart();

  ///@{
  /// The part's own headers, never null; the media type is that of "Content-Type".
  CMMHdrList* Headers() noexcept { return &headers_; }
  const CMMHdrList* Headers() const noexcept { return &headers_; }
  ///@}

  /// The content or null; valid until the content changes.
  unsigned char* GetContent() const noexcept { return content_; }
  /// Content octets, without the zero behind them.
  int GetContentLen() const noexcept { return length_; }
  /// Replaces the content by a copy of `len` octets; -1 measures zero-terminated text, null `data`
  /// leaves no content.  Always true.  `data` may lie within the present content.
  bool SetContent(const void* data, int len);

  /// Makes `len` octets the content that stand `offset` octets into `block`, which the part holds
  /// from now on; what stands behind them must be the part's too, for the zero that the caller puts
  /// there.  For readers of whole bodies.
  void ShareContent(mmsbrix::ContentBlock& block, std::size_t offset, int len);

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
  /// Makes room for `count` children in all, so that a known number costs one allocation.
  void ReserveChildren(unsigned int count);
  /// Nested parts, those within them not counted.
  unsigned int ChildCount() const noexcept;
  ///@{
  /// The child walk, with one cursor: null past the last child until FirstChild is called.
  CMMPart* FirstChild() noexcept;
  CMMPart* NextChild() noexcept;
  ///@}
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
  /// Takes over a buffer of `length` octets and a zero; null for none.
  void replaceContent(unsigned char* content, int length) noexcept;

  unsigned char* content_ = nullptr;  // with a zero behind it; null for none
  int length_ = 0;
  std::uint32_t blockOffset_ = 0;  // of a shared content: from the beginning of its block, never 0
  mmsbrix::CMMList<CMMPart> children_;
};

#endif  // MMSBRIX_MODEL_MMPART_H
