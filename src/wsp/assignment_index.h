// Finds the rows of an assignment table without walking it: two hash tables of row numbers, by name
// and by code, which the compiler builds from the rows.  Rows that share a bucket are chained in
// the order of the table, so the first matching row wins as it does in a walk.  A lookup costs
// about as much as comparing one name; walking the 281 languages cost 400 times that.
#ifndef MMSBRIX_WSP_ASSIGNMENT_INDEX_H
#define MMSBRIX_WSP_ASSIGNMENT_INDEX_H

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "wsp/wsp_assigned_headers.h"

namespace WapAssignments {

/// What is kept of a row beside the table.
struct IndexedRow {
  std::uint8_t nameLength;
  std::uint16_t nextByName;  ///< the next row of the bucket, kNoRow at its end
  std::uint16_t nextByCode;
};
inline constexpr std::uint16_t kNoRow = 0xFFFF;

struct AssignmentsIndex {
  const IndexedRow* rows;
  const std::uint16_t* byName;  ///< the first row of each bucket, kNoRow for none
  const std::uint16_t* byCode;
  std::uint32_t bucketMask;

  [[nodiscard]] static constexpr std::uint32_t hashOf(std::string_view name) noexcept {
    // Names differ in their first octets, their last ones or their length.  The bit that makes
    // small letters is set in all octets, so that case does not count.
    constexpr std::size_t kEnd = 4;
    constexpr std::uint32_t kSmall = 0x20202020;
    const auto octets = [name](std::size_t from, std::size_t count) {
      std::uint32_t value = kSmall;
      for (std::size_t i = 0; i < count; ++i) {
        value |= std::uint32_t{static_cast<std::uint8_t>(name[from + i])} << 8 * i;
      }
      return value;
    };
    std::uint64_t ends = name.size();
    if (name.size() >= kEnd) {
      ends += std::uint64_t{octets(0, kEnd)} << 32 | octets(name.size() - kEnd, kEnd);
    } else {
      ends += octets(0, name.size());
    }
    return static_cast<std::uint32_t>(ends * 0x9E3779B97F4A7C15 >> 40);
  }
  [[nodiscard]] static constexpr std::uint32_t hashOf(std::uint32_t code) noexcept {
    return code ^ code >> 7;
  }
};

/// The tables behind the index of some rows.
template <std::size_t RowCount>
struct AssignmentsIndexData {
  static constexpr std::size_t kBuckets = std::bit_ceil(2 * RowCount);

  std::array<IndexedRow, RowCount> rows{};
  std::array<std::uint16_t, kBuckets> byName{};
  std::array<std::uint16_t, kBuckets> byCode{};

  explicit constexpr AssignmentsIndexData(const std::array<StringInt, RowCount>& table) noexcept {
    byName.fill(kNoRow);
    byCode.fill(kNoRow);
    std::size_t named = 0;  // a row without name ends the table
    while (named < RowCount && table[named].name != nullptr) ++named;
    // From the last row to the first, each put in front of its bucket: so the first row leads it.
    for (std::size_t i = named; i-- > 0;) {
      const std::string_view name = table[i].name;
      std::uint16_t& sameName = byName[AssignmentsIndex::hashOf(name) & (kBuckets - 1)];
      std::uint16_t& sameCode = byCode[AssignmentsIndex::hashOf(table[i].code()) & (kBuckets - 1)];
      rows[i] = {static_cast<std::uint8_t>(name.size()), sameName, sameCode};
      sameName = sameCode = static_cast<std::uint16_t>(i);
    }
  }
  /// The most rows of one bucket, by name or by code: what a lookup compares at most.
  [[nodiscard]] constexpr std::size_t longestChain() const noexcept {
    std::size_t longest = 0;
    const auto walk = [&](std::uint16_t at, std::uint16_t IndexedRow::*next) {
      std::size_t length = 0;
      for (; at != kNoRow; at = rows[at].*next) ++length;
      if (length > longest) longest = length;
    };
    for (const std::uint16_t first : byName) walk(first, &IndexedRow::nextByName);
    for (const std::uint16_t first : byCode) walk(first, &IndexedRow::nextByCode);
    return longest;
  }
};

/// The index of a table of constant rows.
template <const auto& kRows>
inline constexpr AssignmentsIndexData kIndexData{kRows};
template <const auto& kRows>
inline constexpr AssignmentsIndex kIndex{
    kIndexData<kRows>.rows.data(), kIndexData<kRows>.byName.data(), kIndexData<kRows>.byCode.data(),
    static_cast<std::uint32_t>(kIndexData<kRows>.kBuckets - 1)};

}  // namespace WapAssignments

#endif  // MMSBRIX_WSP_ASSIGNMENT_INDEX_H
