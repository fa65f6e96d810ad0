// CMMString: a text with the name of its character set.
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
  CMMString(const char* text);  // NOLINT(google-explicit-constructor): callers pass plain texts
  CMMString(const char* text, const char* charset);

  /// Replaces the text; null empties it.
  void Set(const char* text);
  /// Replaces the charset name; null empties it.
  void SetCharset(const char* charset);
  const char* Get() const noexcept { return text_.c_str(); }
  operator const char*() const noexcept { return Get(); }
  operator char*() const noexcept { return const_cast<char*>(Get()); }
  const char* GetCharset() const noexcept { return charset_.c_str(); }

  /// The same from views, whose length is then known; a text ends at its first zero.
  void Assign(std::string_view text);
  void AssignCharset(std::string_view charset);
  void AssignCharset(mmsbrix::StaticText charset) noexcept { charset_.assign(charset); }
  std::string_view Text() const noexcept { return text_.view(); }
  std::string_view Charset() const noexcept { return charset_.view(); }

 private:
  mmsbrix::Text text_;
  mmsbrix::Text charset_;
};

#endif  // MMSBRIX_MODEL_MMSTRING_H
