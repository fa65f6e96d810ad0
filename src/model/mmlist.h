/// @file
/// The one list behind CMMAddrList, CMMParamList, CMMHdrList and a part's children: elements by
/// value in insertion order and one built-in cursor.
#ifndef MMSBRIX_MODEL_MMLIST_H
#define MMSBRIX_MODEL_MMLIST_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>
#include <utility>

#include "../export.h"
#include "../platform/subscript.h"

namespace mmsbrix {

/// Elements held by value, with a cursor.  Pointers handed out point into the list's own storage
/// and stay valid until the next Add, Remove, Clear, assignment or destruction.  Not locked; one
/// walk at a time, since Find and Remove move the cursor too.  A copied list's cursor is not
/// positioned.
///
/// A list is one pointer, null for a list that never had an element: a message has a list for every
/// header and two for every part, and most of them stay empty.
template <class T>
class CMMList {
 public:
  CMMList() noexcept = default;
  /// Copies the elements.
  CMMList(const CMMList& other) {
    if (other.size() > 0) *this = copyOf(other);
  }
  /// Takes the elements over with the cursor; `other` is left empty.
  CMMList(CMMList&& other) noexcept : block_(std::exchange(other.block_, nullptr)) {}
  /// Copies the elements in the place of its own.
  CMMList& operator=(const CMMList& other) {
    if (this != &other) *this = copyOf(other);
    return *this;
  }
  /// Takes the elements over with the cursor in the place of its own.
  CMMList& operator=(CMMList&& other) noexcept {
    CMMList taken(std::move(other));
    std::swap(block_, taken.block_);
    return *this;
  }
  ~CMMList() { release(); }

  /// Appends a copy of `*item`; the caller keeps its own.  `item` may point into this list.
  void Add(const T* item) {
    T copy(*item);
    makeRoom();
    append(std::move(copy));
  }
  /// How many elements there are.
  unsigned int Count() const noexcept { return size(); }
  /// Moves the cursor to the first element and returns it; null in an empty list.
  T* First() noexcept { return moveTo(0); }
  /// Moves the cursor on and returns that element; null past the last one, and again null until
  /// First is called.
  T* Next() noexcept {
    return block_ == nullptr || block_->cursor == kNotPositioned ? nullptr
                                                                 : moveTo(block_->cursor + 1);
  }
  /// The element at a zero-based index; throws std::out_of_range, negative indexes included.
  T* Get(int index) {
    if (static_cast<unsigned int>(index) >= size()) throwInvalidSubscript();
    return begin() + index;
  }
  /// The element at a zero-based index that the caller guarantees.
  T* operator[](int index) noexcept { return begin() + index; }
  /// Destroys all elements and keeps their room; the cursor is not positioned any more.
  void Clear() noexcept {
    if (block_ == nullptr) return;
    std::destroy(begin(), end());
    block_->size = 0;
    block_->cursor = kNotPositioned;
  }

  /// Appends an empty element and returns it, so that it can be filled in place without a copy.
  T* AddNew() {
    makeRoom();
    return append();
  }
  /// Removes the last element, which must be there.
  void DropLast() noexcept {
    std::destroy_at(end() - 1);
    --block_->size;
  }
  /// Makes room for `count` elements in all, so that a known number costs one allocation.
  void Reserve(std::uint32_t count) {
    if (block_ == nullptr ? count > 0 : count > block_->capacity) reallocate(count);
  }
  /// The elements stand one behind the other; a range loop leaves the cursor alone.
  T* begin() noexcept { return elementsOf(block_); }
  /// Behind the last element.
  T* end() noexcept { return begin() + size(); }
  /// As above.
  const T* begin() const noexcept { return elementsOf(block_); }
  /// As above.
  const T* end() const noexcept { return begin() + size(); }

 protected:
  /// Where the cursor is when it stands on no element.
  static constexpr std::uint32_t kNotPositioned = std::numeric_limits<std::uint32_t>::max();

  /// Puts the cursor on the element at a zero-based position and returns it; past the last one
  /// null, and no position.
  T* moveTo(std::uint32_t position) noexcept {
    if (block_ == nullptr) return nullptr;
    const bool there = position < block_->size;
    block_->cursor = there ? position : kNotPositioned;
    return there ? begin() + position : nullptr;
  }
  /// Removes the element under the cursor; the cursor then stands on the element that followed it.
  void removeCurrent() {
    std::move(begin() + block_->cursor + 1, end(), begin() + block_->cursor);
    DropLast();
  }

 private:
  // Stands before the elements.  Aligned as every heap aligns: not all do more for the widest type.
  struct alignas(std::uint64_t) Block {
    std::uint32_t size;
    std::uint32_t capacity;
    std::uint32_t cursor;
  };

  [[nodiscard]] std::uint32_t size() const noexcept { return block_ == nullptr ? 0 : block_->size; }
  static T* elementsOf(Block* block) noexcept {
    return block == nullptr ? nullptr : reinterpret_cast<T*>(block + 1);
  }

  static Block* newBlock(std::uint32_t capacity) {
    static_assert(alignof(T) <= alignof(Block));
    constexpr std::size_t kMost = (std::numeric_limits<std::size_t>::max() / 2) / sizeof(T);
    if (capacity > kMost) throw std::bad_alloc();
    void* memory = ::operator new(sizeof(Block) + capacity * sizeof(T));
    return ::new (memory) Block{0, capacity, kNotPositioned};
  }
  static CMMList copyOf(const CMMList& other) {
    CMMList copy;
    copy.Reserve(other.size());
    for (const T& element : other) copy.append(element);
    return copy;
  }
  void reallocate(std::uint32_t capacity) {
    CMMList bigger;
    bigger.block_ = newBlock(capacity);
    for (T& element : *this) bigger.append(std::move(element));
    if (block_ != nullptr) bigger.block_->cursor = block_->cursor;
    std::swap(block_, bigger.block_);
  }
  // Small elements begin with two; long lists grow by a quarter, so that they take little more than
  // they need.
  void makeRoom() {
    const std::uint32_t count = size();
    if (block_ != nullptr && count < block_->capacity) return;
    constexpr std::uint32_t kLong = 64;
    constexpr std::uint32_t kMost = std::numeric_limits<std::uint32_t>::max() / 2;
    if (count > kMost) throw std::bad_alloc();
    constexpr std::uint32_t kFirst = sizeof(T) <= 32 ? 2 : 1;
    reallocate(std::max(kFirst, count + (count < kLong ? count / 2 : count / 4) + 1));
  }
  // There must be room.
  template <class... Arguments>
  T* append(Arguments&&... arguments) {
    T* element = ::new (static_cast<void*>(end())) T(std::forward<Arguments>(arguments)...);
    ++block_->size;
    return element;
  }
  void release() noexcept {
    if (block_ == nullptr) return;
    std::destroy(begin(), end());
    ::operator delete(block_);
  }

  Block* block_ = nullptr;
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
