#include "wsp/header_table.h"

#include <algorithm>

#include "platform/ascii.h"
#include "wsp/wsp_assigned_names.h"

namespace WapStack {
namespace {

constexpr bool isIndexedByCode() {
  for (std::size_t i = 0; i < kHeaderTable.size(); ++i) {
    if (kHeaderTable[i].code != i) return false;
  }
  return true;
}
static_assert(isIndexedByCode());
// The names and versions are those of the assignments.
static_assert(std::ranges::all_of(WapAssignments::kHeaderRows, [](const auto& assigned) {
  const HeaderRow& row = kHeaderTable[assigned.code()];
  return row.name == assigned.name && row.from == assigned.version();
}));

}  // namespace

const HeaderRow* findHeader(std::size_t code) noexcept {
  return code < kHeaderTable.size() ? &kHeaderTable[code] : nullptr;
}

const HeaderRow* findHeader(std::string_view name) noexcept {
  const auto found = std::ranges::find_if(kHeaderTable, [=](const HeaderRow& row) {
    return mmsbrix::equalsIgnoringCase(row.name, name);
  });
  return found == kHeaderTable.end() ? nullptr : &*found;
}

const HeaderRow* chooseHeader(std::string_view name, Version version) noexcept {
  const HeaderRow* chosen = nullptr;
  for (const HeaderRow& row : kHeaderTable) {
    if (row.from > version || !mmsbrix::equalsIgnoringCase(row.name, name)) continue;
    if (chosen == nullptr || row.from >= chosen->from) chosen = &row;
  }
  return chosen;
}

}  // namespace WapStack
