// Octet cursors: the one Reader and the one Writer through which every octet of a PDU goes.
//
// Reader is a cursor over octets that it does not own and that it cannot leave.  Writer appends to
// a growable buffer from malloc, which is how finished PDUs are handed to callers.
#ifndef MMSBRIX_WSP_OCTETS_H
#define MMSBRIX_WSP_OCTETS_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <span>
#include <string_view>
#include <utility>

namespace mmsbrix {

using Octets = std::span<const std::uint8_t>;

/// Views octets as text; the bytes are the same.
inline std::string_view asText(Octets octets) noexcept {
  return {reinterpret_cast<const char*>(octets.data()), octets.size()};
}
/// Views text as octets; the bytes are the same.
inline Octets asOctets(std::string_view text) noexcept {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

/// A cursor over octets it does not own; it cannot leave its span.  A read that asks for more than
/// is left returns nothing (or what there is, where that is said) and marks the reader as failed.
class Reader {
 public:
  Reader() = default;
  explicit Reader(Octets octets) noexcept : octets_(octets) {}

  [[nodiscard]] std::size_t left() const noexcept { return octets_.size() - position_; }
  [[nodiscard]] bool atEnd() const noexcept { return left() == 0; }
  /// Octets consumed since construction.
  [[nodiscard]] std::size_t position() const noexcept { return position_; }
  /// True once any read has asked for more than was there; the first failure sticks.
  [[nodiscard]] bool failed() const noexcept { return failed_; }
  /// The octets not yet read.
  [[nodiscard]] Octets rest() const noexcept { return octets_.subspan(position_); }

  /// Where a reader is, to come back to.  A whole reader is not kept for that: it is copied as two
  /// words of 16 octets right after its position was written as one of 8, which takes long.
  struct Place {
    std::size_t position;
    bool failed;
  };
  [[nodiscard]] Place place() const noexcept { return {position_, failed_}; }
  void returnTo(Place place) noexcept {
    position_ = place.position;
    failed_ = place.failed;
  }

  /// Up to `count` octets starting at the 1-based `place` ahead of the cursor; consumes nothing.
  [[nodiscard]] Octets peek(std::size_t place, std::size_t count) const noexcept {
    if (place == 0 || place > left()) return {};
    const Octets ahead = octets_.subspan(position_ + place - 1);
    return ahead.first(count < ahead.size() ? count : ahead.size());
  }
  /// The next octet without consuming it.
  [[nodiscard]] std::optional<std::uint8_t> peekOctet() const noexcept {
    if (atEnd()) return std::nullopt;
    return octets_[position_];
  }

  std::optional<std::uint8_t> octet() noexcept {
    if (atEnd()) {
      failed_ = true;
      return std::nullopt;
    }
    return octets_[position_++];
  }
  /// Skips `count` octets, or what is left of them.
  void skip(std::size_t count) noexcept { (void)take(count); }
  /// The next `count` octets, clamped to what is left.
  Octets take(std::size_t count) noexcept {
    if (count > left()) {
      failed_ = true;
      count = left();
    }
    const Octets taken = octets_.subspan(position_, count);
    position_ += count;
    return taken;
  }
  /// A bounded child over the next `count` octets (clamped); this reader moves past them.
  Reader sub(std::size_t count) noexcept { return Reader(take(count)); }
  /// The characters up to the next zero octet, which is consumed but not returned.  Without a zero
  /// the text is all that is left and the reader has failed.
  std::string_view text() noexcept {
    const Octets ahead = rest();
    const void* zero = ahead.empty() ? nullptr : std::memchr(ahead.data(), 0, ahead.size());
    if (zero == nullptr) {
      failed_ = true;
      position_ = octets_.size();
      return asText(ahead);
    }
    const auto length =
        static_cast<std::size_t>(static_cast<const std::uint8_t*>(zero) - ahead.data());
    position_ += length + 1;
    return asText(ahead.first(length));
  }

 private:
  Octets octets_;
  std::size_t position_ = 0;
  bool failed_ = false;
};

/// Appends octets to a buffer from malloc whose capacity is always a multiple of 1024 octets, the
/// next one above what is needed.  When memory runs out the write is lost and `failed()` stays
/// true.
class Writer {
 public:
  Writer() = default;
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;
  Writer(Writer&& other) noexcept { swap(other); }
  Writer& operator=(Writer&& other) noexcept {
    swap(other);
    return *this;
  }
  ~Writer() { std::free(data_); }

  [[nodiscard]] std::size_t size() const noexcept { return size_; }
  [[nodiscard]] std::size_t capacity() const noexcept { return capacity_; }
  [[nodiscard]] bool failed() const noexcept { return failed_; }
  [[nodiscard]] Octets written() const noexcept { return {data_, size_}; }

  /// Makes room for `octets` in all, so that a known size costs one allocation.
  void reserve(std::size_t octets) noexcept {
    if (octets > capacity_) grow(octets);
  }
  void octet(std::uint8_t value) noexcept {
    if (size_ == capacity_ && !grow(size_ + 1)) return;
    data_[size_++] = value;
  }
  void append(Octets octets) noexcept {
    if (octets.empty()) return;
    if (octets.size() > capacity_ - size_ && !grow(size_ + octets.size())) return;
    std::memcpy(data_ + size_, octets.data(), octets.size());
    size_ += octets.size();
  }
  void append(std::string_view text) noexcept { append(asOctets(text)); }

  /// Puts octets in at `position`, moving what stands behind it: for lengths known only afterwards.
  void insert(std::size_t position, Octets octets) noexcept {
    if (octets.size() > capacity_ - size_ && !grow(size_ + octets.size())) return;
    std::memmove(data_ + position + octets.size(), data_ + position, size_ - position);
    std::memcpy(data_ + position, octets.data(), octets.size());
    size_ += octets.size();
  }

  /// Drops what was written from `size` on.
  void truncate(std::size_t size) noexcept {
    if (size < size_) size_ = size;
  }

  /// Hands the buffer over to the caller, who frees it with `free`; the writer is empty afterwards.
  [[nodiscard]] std::uint8_t* release() noexcept {
    size_ = capacity_ = 0;
    return std::exchange(data_, nullptr);
  }

 private:
  bool grow(std::size_t needed) noexcept {
    constexpr std::size_t kStep = 1024;
    const std::size_t capacity = (needed / kStep + 1) * kStep;
    void* bigger = capacity < needed ? nullptr : std::realloc(data_, capacity);
    if (bigger == nullptr) {
      failed_ = true;
      return false;
    }
    data_ = static_cast<std::uint8_t*>(bigger);
    capacity_ = capacity;
    return true;
  }
  void swap(Writer& other) noexcept {
    std::swap(data_, other.data_);
    std::swap(size_, other.size_);
    std::swap(capacity_, other.capacity_);
    std::swap(failed_, other.failed_);
  }

  std::uint8_t* data_ = nullptr;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
  bool failed_ = false;
};

}  // namespace mmsbrix

#endif  // MMSBRIX_WSP_OCTETS_H
