// How much of a PDU is kept as objects.  A hostile one can name an address, a header or a part with
// two octets, while the object for it takes a hundred times that: so they are counted.
#ifndef MMSBRIX_MMS_ITEM_BUDGET_H
#define MMSBRIX_MMS_ITEM_BUDGET_H

#include <algorithm>
#include <cstddef>

namespace mmsbrix {

/// Fields, headers, parameters and parts that are kept of one PDU, and remarks about it.  Messages
/// of real peers have some hundred; what goes beyond is walked over and left out.  A small PDU may
/// have fewer, so that a few octets of it never become hundreds.
inline constexpr std::size_t kMaxItems = 20000;

/// The fewest items that a PDU may have, and the octets beyond which each of them must have on
/// average.
inline constexpr std::size_t kMinItems = 1024;
inline constexpr std::size_t kMinOctetsPerItem = 8;

class ItemBudget {
 public:
  ItemBudget() = default;
  /// Of a PDU of `octets` octets.
  explicit ItemBudget(std::size_t octets) noexcept
      : left_(std::min(kMaxItems, kMinItems + octets / kMinOctetsPerItem)) {}

  /// True while there is room for one more.
  bool take() noexcept {
    if (left_ == 0) return false;
    --left_;
    return true;
  }
  [[nodiscard]] bool exhausted() const noexcept { return left_ == 0; }

 private:
  std::size_t left_ = kMaxItems;
};

}  // namespace mmsbrix

#endif  // MMSBRIX_MMS_ITEM_BUDGET_H
