/// @file
/// CSMILMedia: a text, picture, sound or other medium of a slide. [W3C SMIL 2.0, Media Object]
#ifndef MMSBRIX_SMIL_SMILMEDIA_H
#define MMSBRIX_SMIL_SMILMEDIA_H

#include <memory>

#include "../export.h"
#include "../platform/istream.h"
#include "smilnode.h"
#include "smiltiming.h"

/// An element "text", "img", "audio", "video", "ref", "animation" or "textstream"; the tag tells
/// which. It can keep the medium's octets, which are no part of the document's text; they are
/// followed by one zero octet that does not count, so text content reads as a C string.
class MMSBRIX_API CSMILMedia : public CSMILNode, public CSMILTimingAttr {
 public:
  CSMILMedia();
  /// An element of that tag; null is the empty one.
  explicit CSMILMedia(const char* tag);
  ///@{
  /// Copies have a content of their own.
  CSMILMedia(const CSMILMedia& other);
  CSMILMedia& operator=(const CSMILMedia& other);
  ///@}
  ~CSMILMedia() override;

  ///@{
  /// Those of CSMILNode, where CSMILTimingAttr finds them too.
  CSMILAttr* FindAttribute(const char* name) override;
  void AddAttribute(CSMILAttr* attr) override;
  bool RemoveAttribute(const char* name) override;
  ///@}

  ///@{
  /// Where the medium is: "cid:" and a Content-ID, a Content-Location, or a file's path or URL.
  /// Null when absent.
  const char* GetSrc() { return textOf("src"); }
  void PutSrc(const char* src) { putText("src", src); }
  ///@}
  ///@{
  /// The medium's type, as the presentation states it; null when absent.
  const char* GetType() { return textOf("type"); }
  void PutType(const char* type) { putText("type", type); }
  ///@}
  ///@{
  /// The "id" of the region that the medium is shown in; null when absent.
  const char* GetRegion() { return textOf("region"); }
  void PutRegion(const char* region) { putText("region", region); }
  ///@}

  /// Replaces the content by a copy of `len` octets; null `data`, a negative length and a lack of
  /// memory leave none.  Always true.  `data` may lie within the present content.
  bool PutContent(const void* data, int len);
  /// The content or null; valid until the content changes.
  unsigned char* GetContent() const noexcept { return content_.get(); }
  /// Octets, without the zero behind them.
  int GetContentLen() const noexcept { return length_; }

  /// Drops the content and reads a file into it; a null path leaves none and is no failure.  False,
  /// without content, when the file cannot be opened (or is 2 GiB or more); false with the file's
  /// length kept when the reading fails.
  bool Load(const char* path);
  /// The same from the beginning of a stream.
  bool Load(IStream* stream);
  /// Writes the content to a file, replacing an existing one.  False without content, and with the
  /// old file kept when the writing fails.
  bool Save(const char* path) const;
  /// Writes the content at the stream's position; false without content.
  bool Save(IStream* stream) const;

 private:
  std::unique_ptr<unsigned char[]> content_;
  int length_ = 0;
};

#endif  // MMSBRIX_SMIL_SMILMEDIA_H
