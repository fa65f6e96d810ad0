// State tables as data: how the row that takes an event is found.  A row asks for facts that must
// hold (`with`) and facts that must not (`without`), both sets of bits.
#ifndef MMSBRIX_WAPSTACK_STATE_TABLE_H
#define MMSBRIX_WAPSTACK_STATE_TABLE_H

#include <span>

namespace mmsbrix {

/// The first row that takes the event, or null.
template <typename Row>
[[nodiscard]] const Row* findRow(std::span<const Row> table, decltype(Row::state) state,
                                 decltype(Row::trigger) trigger,
                                 decltype(Row::with) facts) noexcept {
  const Row* const end = table.data() + table.size();
  for (const Row* row = table.data(); row != end; ++row) {
    if (row->state == state && row->trigger == trigger && (row->with & facts) == row->with &&
        (row->without & facts) == 0) {
      return row;
    }
  }
  return nullptr;
}

}  // namespace mmsbrix

#endif  // MMSBRIX_WAPSTACK_STATE_TABLE_H
