/// @file
/// Text: how the model holds a text in 16 octets.
#ifndef MMSBRIX_MODEL_MMTEXT_H
#define MMSBRIX_MODEL_MMTEXT_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "../export.h"

namespace mmsbrix {

/// A text that lives as long as the program and is followed by a zero: a name from a table.
struct StaticText {
  std::string_view text;  ///< with a zero behind it
};

/// A text in which there is no zero, as readers of octets know that have looked for it: it is not
/// looked for again.
struct ZeroFreeText {
  std::string_view text;  ///< copied as it is
};

/// A zero-terminated 8-bit text.  Up to 15 octets stay in place; a longer one is on the library's
/// heap; a name from a table is only pointed at.  So a header as peers write it takes 40 octets and
/// mostly no allocation, where two std::strings and a vector took 96 and one or two.
///
/// Throws std::bad_alloc when there is no memory, for 4 GiB and more too.
class MMSBRIX_API Text {
 public:
  Text() noexcept { setEmpty(); }
  /// A copy up to the first zero.
  explicit Text(std::string_view text) : Text() { assign(text); }
  /// Points at the text and copies nothing.
  explicit Text(StaticText text) noexcept : Text() { setOutside(text.text, kStatic); }
  ///@{
  /// A copy has a heap text of its own; a text that was moved from is empty.
  Text(const Text& other) : Text() { copyFrom(other); }
  Text(Text&& other) noexcept {
    std::memcpy(storage_, other.storage_, sizeof storage_);
    other.setEmpty();
  }
  Text& operator=(const Text& other) {
    if (this != &other) copyFrom(other);
    return *this;
  }
  Text& operator=(Text&& other) noexcept {
    if (this == &other) return *this;
    releaseHeap();
    std::memcpy(storage_, other.storage_, sizeof storage_);
    other.setEmpty();
    return *this;
  }
  ///@}
  ~Text() { releaseHeap(); }

  /// Becomes a copy of `text` up to its first zero; `text` may lie within this text.
  void assign(std::string_view text);
  /// Becomes a copy of a text that does not lie within this one.
  void assign(ZeroFreeText text) {
    if (text.text.size() > kMostInPlace) return assign(text.text);
    releaseHeap();
    setEmpty();
    text.text.copy(storage_, kMostInPlace);
    storage_[kMostInPlace] = static_cast<char>(kMostInPlace - text.text.size());
  }
  /// Points at `text` from now on.
  void assign(StaticText text) noexcept {
    releaseHeap();
    setOutside(text.text, kStatic);
  }
  /// Becomes the empty text and gives its heap back.
  void clear() noexcept {
    releaseHeap();
    setEmpty();
  }
  ///@{
  /// The text, never null; valid until the text changes, is moved or destroyed.
  [[nodiscard]] const char* c_str() const noexcept {
    return tag() <= kMostInPlace ? storage_ : outside();
  }
  [[nodiscard]] std::string_view view() const noexcept {
    return tag() <= kMostInPlace ? std::string_view(storage_, kMostInPlace - tag())
                                 : std::string_view(outside(), outsideLength());
  }
  ///@}

 private:
  static constexpr std::uint8_t kMostInPlace = 15;
  static constexpr std::uint8_t kHeap = 0x80;
  static constexpr std::uint8_t kStatic = 0x81;

  // The last octet is the room that a text in place leaves, so that it is the terminating zero of a
  // text that leaves none; or it says what the first octets point at.
  [[nodiscard]] std::uint8_t tag() const noexcept {
    return static_cast<std::uint8_t>(storage_[kMostInPlace]);
  }
  [[nodiscard]] const char* outside() const noexcept {
    const char* text;
    std::memcpy(&text, storage_, sizeof text);
    return text;
  }
  [[nodiscard]] std::uint32_t outsideLength() const noexcept {
    std::uint32_t length;
    std::memcpy(&length, storage_ + sizeof(const char*), sizeof length);
    return length;
  }
  void setEmpty() noexcept {
    std::memset(storage_, 0, sizeof storage_);
    storage_[kMostInPlace] = kMostInPlace;
  }
  void setOutside(std::string_view text, std::uint8_t kind) noexcept {
    const char* data = text.data();
    if (data == nullptr) return setEmpty();
    const auto length = static_cast<std::uint32_t>(text.size());
    std::memcpy(storage_, &data, sizeof data);
    std::memcpy(storage_ + sizeof data, &length, sizeof length);
    storage_[kMostInPlace] = static_cast<char>(kind);
  }
  void copyFrom(const Text& other) {
    if (other.tag() == kHeap) return assign(other.view());
    releaseHeap();
    std::memcpy(storage_, other.storage_, sizeof storage_);
  }
  void releaseHeap() noexcept {
    if (tag() == kHeap) release(outside());
  }
  static void release(const char* heap) noexcept;

  alignas(const char*) char storage_[kMostInPlace + 1] = {};
};

}  // namespace mmsbrix

#endif  // MMSBRIX_MODEL_MMTEXT_H
