// How much of a PDU is kept as objects.  A hostile one can name an address, a header or a part with
// two octets, while the object for it takes twenty times that and more: so they are counted, and so
// is the memory that they take.
#ifndef MMSBRIX_MMS_ITEM_BUDGET_H
#define MMSBRIX_MMS_ITEM_BUDGET_H

#include <cstddef>
#include <cstdint>
#include <limits>

namespace mmsbrix {

/// Fields, headers, parameters and parts that are kept of one PDU, and remarks about it.  Messages
/// of real peers have some hundred; what goes beyond is walked over and left out.
inline constexpr std::size_t kMaxItems = 20000;

/// What decoding a PDU of n octets takes on the heap is at most `kMemoryPerOctet` * n +
/// `kMemoryBesides` octets, a copy of the body included; what goes beyond is left out likewise.
inline constexpr std::uint64_t kMemoryPerOctet = 3;
inline constexpr std::uint64_t kMemoryBesides = std::uint64_t{64} << 10;

class ItemBudget {
 public:
  ItemBudget() = default;
  /// Of a PDU of `octets` octets.
  explicit ItemBudget(std::size_t octets) noexcept
      : memory_(kMemoryPerOctet * octets + kMemoryBesides - kUncounted) {}

  /// True while there is room for one more thing, which takes `octets` octets of memory.  Once
  /// there was no room for one, there is none for any.
  bool take(std::size_t octets) noexcept {
    if (left_ == 0) return false;
    if (octets > memory_) {
      left_ = 0;
      return false;
    }
    --left_;
    memory_ -= octets;
    return true;
  }
  /// Sets `octets` octets of memory aside for what is kept anyway.
  void setAside(std::size_t octets) noexcept { memory_ -= octets < memory_ ? octets : memory_; }
  [[nodiscard]] bool exhausted() const noexcept { return left_ == 0; }
  /// Things of `octets` octets each that there is room for.
  [[nodiscard]] std::size_t roomFor(std::size_t octets) const noexcept {
    const std::uint64_t room = memory_ / octets;
    return room < left_ ? static_cast<std::size_t>(room) : left_;
  }
  /// Takes no more than `items` things from now on.
  void limit(std::size_t items) noexcept { left_ = items < left_ ? items : left_; }

 private:
  /// Of the memory besides: the beginnings of lists.
  static constexpr std::uint64_t kUncounted = std::uint64_t{4} << 10;

  std::size_t left_ = kMaxItems;
  std::uint64_t memory_ = std::numeric_limits<std::uint64_t>::max();
};

}  // namespace mmsbrix

#endif  // MMSBRIX_MMS_ITEM_BUDGET_H
