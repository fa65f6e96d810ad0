/// @file
/// CMMString: a text with the name of its character set.
#ifndef MMSBRIX_MODEL_MMSTRING_H
#define MMSBRIX_MODEL_MMSTRING_H

#include <string_view>

#include "../export.h"
#include "mmtext.h"

/// An 8-bit text in the character set that it names; an empty charset means none is stated.  The
/// class never converts.  Text getters never return null and stay valid until the text changes.
class MMSBRIX_API CMMString {
 public:
  CMMString() = default;
  /// Null is the empty text; the charset is not stated.
  CMMString(const char* text);  // NOLINT(google-explicit-constructor): callers pass plain texts
  /// Null is the empty text, and no charset.
  CMMString(const char* text, const char* charset);

  /// Replaces the text; null empties it.
  void Set(const char* text);
  /// Replaces the charset name; null empties it.
  void SetCharset(const char* charset);
  ///@{
  /// The text.  What is written through the plain pointer must not be longer than it was, and must
  /// not be written at all where the text may be one of `StaticText`.
  const char* Get() const noexcept { return text_.c_str(); }
  operator const char*() const noexcept { return Get(); }
  operator char*() const noexcept { return const_cast<char*>(Get()); }
  ///@}
  /// Name of the charset, such as "utf-8"; "" when none is stated.
  const char* GetCharset() const noexcept { return charset_.c_str(); }

  ///@{
  /// The same from views, whose length is then known; a text ends at its first zero.
  void Assign(std::string_view text);
  void AssignCharset(std::string_view charset);
  void Assign(mmsbrix::ZeroFreeText text) { text_.assign(text); }
  void AssignCharset(mmsbrix::StaticText charset) noexcept { charset_.assign(charset); }
  ///@}
  ///@{
  /// The texts of Get and GetCharset with their lengths.
  std::string_view Text() const noexcept { return text_.view(); }
  std::string_view Charset() const noexcept { return charset_.view(); }
  ///@}

 private:
  mmsbrix::Text text_;
  mmsbrix::Text charset_;
};

#endif  // MMSBRIX_MODEL_MMSTRING_H
