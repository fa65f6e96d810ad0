// The charsets of encoded strings: the codec's own short table of names and IANA MIBenum numbers.
#ifndef MMSBRIX_MMS_CHARSET_NAMES_H
#define MMSBRIX_MMS_CHARSET_NAMES_H

#include <array>
#include <cstdint>
#include <string_view>

#include "platform/ascii.h"

namespace mmsbrix {

struct CharsetRow {
  std::string_view name;
  std::uint32_t mibEnum;
};

inline constexpr auto kCharsetRows = std::to_array<CharsetRow>({
    {"us-ascii", 3},
    {"iso-8859-1", 4},
    {"iso-8859-2", 5},
    {"iso-8859-3", 6},
    {"iso-8859-4", 7},
    {"iso-8859-5", 8},
    {"iso-8859-6", 9},
    {"iso-8859-7", 10},
    {"iso-8859-8", 11},
    {"iso-8859-9", 12},
    {"shift_jis", 17},
    {"utf-8", 106},
});

/// The number of a charset name, case disregarded; 0 for a name not in the table.
constexpr std::uint32_t charsetNumber(std::string_view name) noexcept {
  for (const CharsetRow& row : kCharsetRows) {
    if (equalsIgnoringCase(row.name, name)) return row.mibEnum;
  }
  return 0;
}

/// The name of a number; empty for one not in the table.
constexpr std::string_view charsetName(std::uint64_t mibEnum) noexcept {
  for (const CharsetRow& row : kCharsetRows) {
    if (row.mibEnum == mibEnum) return row.name;
  }
  return {};
}

}  // namespace mmsbrix

#endif  // MMSBRIX_MMS_CHARSET_NAMES_H
