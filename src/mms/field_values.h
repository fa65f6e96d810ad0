// Field values as people and programs read them: what the inspector shows of one value.
#ifndef MMSBRIX_MMS_FIELD_VALUES_H
#define MMSBRIX_MMS_FIELD_VALUES_H

#include <cstdint>
#include <string>
#include <string_view>

#include "mms/field_table.h"
#include "mms/inspector.h"
#include "mms/item_budget.h"
#include "wsp/header_walker.h"

namespace mmsbrix {

/// Fills the value of `field` (text, number, charset, token, parameters) from an item whose form
/// fits the row.  Returns what is wrong with the value, "" when nothing is.
std::string describeValue(const FieldRow& row, const HeaderItem& item, InspectedField& field,
                          ItemBudget& budget);

/// "2026-11-21T01:28:42Z"; only the number of seconds for a year past 9999.
[[nodiscard]] std::string utcText(std::uint64_t secondsSince1970);
/// "2 d 3 h 4 min 5 s", with the parts that are 0 left out.
[[nodiscard]] std::string intervalText(std::uint64_t seconds);
/// Octets in hex, at most the first 32 of them.
[[nodiscard]] std::string hexText(Octets octets);
/// "0x8B".
[[nodiscard]] std::string octetText(std::uint8_t octet);

}  // namespace mmsbrix

#endif  // MMSBRIX_MMS_FIELD_VALUES_H
