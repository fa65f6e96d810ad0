// The one list behind CMMAddrList, CMMParamList, CMMHdrList and a part's children: elements by
// value in insertion order and one built-in cursor.
#ifndef MMSBRIX_MODEL_MMLIST_H
#define MMSBRIX_MODEL_MMLIST_H

#include <cstddef>
#include <utility>
#include <vector>

#include "../export.h"
#include "../platform/subscript.h"

namespace mmsbrix {

/// Elements held by value, with a cursor.  Pointers handed out point into the list's own storage
/// and stay valid until the next Add, Remove, Clear, assignment or destruction.  Not locked; one
/// walk at a time, since Find and Remove move the cursor too.  A copied list's cursor is not
/// positioned.
template <class T>
class CMMList {
 public:
  CMMList() = default;
  CMMList(const CMMList& other) : elements_(other.elements_) {}
  CMMList(CMMList&& other) noexcept
      : elements_(std::move(other.elements_)),
        cursor_(std::exchange(other.cursor_, kNotPositioned)) {}
  CMMList& operator=(const CMMList& other) {
    if (this != &other) {
      elements_ = other.elements_;
      cursor_ = kNotPositioned;
    }
    return *this;
  }
  CMMList& operator=(CMMList&& other) noexcept {
    elements_ = std::move(other.elements_);
    cursor_ = std::exchange(other.cursor_, kNotPositioned);
    return *this;
  }
  ~CMMList() = default;

  /// Appends a copy of `*item`; the caller keeps its own.  `item` may point into this list.
  void Add(const T* item) { elements_.push_back(*item); }
  unsigned int Count() const noexcept { return static_cast<unsigned int>(elements_.size()); }
  /// Moves the cursor to the first element and returns it; null in an empty list.
  T* First() noexcept { return moveTo(0); }
  /// Moves the cursor on and returns that element; null past the last one, and again null until
  /// First is called.
  T* Next() noexcept { return cursor_ == kNotPositioned ? nullptr : moveTo(cursor_ + 1); }
  /// The element at a zero-based index; throws std::out_of_range, negative indexes included.
  T* Get(int index) {
    if (static_cast<std::size_t>(static_cast<unsigned int>(index)) >= elements_.size()) {
      throwInvalidSubscript();
    }
    return &elements_[static_cast<std::size_t>(index)];
  }
  /// The element at a zero-based index that the caller guarantees.
  T* operator[](int index) noexcept { return &elements_[static_cast<std::size_t>(index)]; }
  void Clear() noexcept {
    elements_.clear();
    cursor_ = kNotPositioned;
  }

  /// Appends an empty element and returns it, so that it can be filled in place without a copy.
  T* AddNew() { return &elements_.emplace_back(); }
  auto begin() noexcept { return elements_.begin(); }
  auto end() noexcept { return elements_.end(); }
  auto begin() const noexcept { return elements_.begin(); }
  auto end() const noexcept { return elements_.end(); }

 protected:
  static constexpr std::size_t kNotPositioned = static_cast<std::size_t>(-1);

  T* moveTo(std::size_t position) noexcept {
    if (position >= elements_.size()) {
      cursor_ = kNotPositioned;
      return nullptr;
    }
    cursor_ = position;
    return &elements_[position];
  }
  /// Removes the element under the cursor; the cursor then stands on the element that followed it.
  void removeCurrent() {
    elements_.erase(elements_.begin() + static_cast<std::ptrdiff_t>(cursor_));
  }

 private:
  std::vector<T> elements_;
  std::size_t cursor_ = kNotPositioned;
};

/// A list whose elements have a name (`T::Get()`), found without regard to the case of its letters.
template <class T>
class CMMNamedList : public CMMList<T> {
 public:
  /// The first element of that name, null without one.  The cursor is left on it, so that Next goes
  /// on behind it.
  T* Find(const char* name) noexcept;
  /// Removes the first element of that name; false, with nothing changed, when there is none.  The
  /// cursor is left at the removed position, which then holds the following element.
  bool Remove(const char* name);
};

}  // namespace mmsbrix

#endif  // MMSBRIX_MODEL_MMLIST_H
