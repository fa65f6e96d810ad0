// Well-known assignment tables of WSP: names and their numbers, each with the encoding version from
// which the number is valid, and the two lookups every coder uses.  Row order decides which of
// several rows wins and is kept as assigned.  [WAP-230 Appendix A]
#ifndef MMSBRIX_WSP_WSP_ASSIGNED_HEADERS_H
#define MMSBRIX_WSP_WSP_ASSIGNED_HEADERS_H

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace WapAssignments {

/// One row: a name (null in an end row) and a number whose low 16 bits are the code and whose high
/// 16 bits are the encoding-version index from which the code is valid (0 is 1.1 ... 4 is 1.5).
struct StringInt {
  const char* name;
  std::uint32_t number;

  [[nodiscard]] constexpr std::uint16_t code() const noexcept {
    return static_cast<std::uint16_t>(number & 0xFFFF);
  }
  [[nodiscard]] constexpr std::uint16_t version() const noexcept {
    return static_cast<std::uint16_t>(number >> 16);
  }
};

/// Encoding-version indexes as they stand in the high half of a row's number.
enum Version : std::uint32_t { kVersion11, kVersion12, kVersion13, kVersion14, kVersion15 };

/// The number of a row: the version index in the high half, the code in the low one.
constexpr std::uint32_t row(Version from, std::uint32_t code) noexcept {
  return (static_cast<std::uint32_t>(from) << 16) | code;
}

struct AssignmentsIndex;

/// A table: rows in their required order.  A row without name ends it early.
struct AssignmentsBase {
  const StringInt* rows;
  std::size_t rowCount;
  std::uint8_t caseSensitive;
  /// Finds rows without walking them; null for a table that is walked.
  const AssignmentsIndex* index = nullptr;
};

/// The kind number of each table.
enum Kind : int {
  kParameters = 0,
  kHeaders = 1,
  kContentTypes = 2,
  kRegisteredContentTypes = 3,
  kLanguages = 4,
  kCharsets = 5,
  kContentEncodings = 6,
  kAcceptRanges = 7,
  kPduTypes = 8,
  kCacheControl = 9,
  kConnection = 10,
  kTransferEncoding = 11,
  kTe = 12,
  kExpect = 13,
  kSecurity = 14,
};

/// The table of a kind, 0 to 14; null, with the error "More WSP Header assignments?", for any
/// other.
const AssignmentsBase* getTable(int kind) noexcept;
/// The whole number (version index and code) of the first row of that name, -1 without one.
std::int32_t nameToNumber(const AssignmentsBase& table, std::string_view name) noexcept;
/// True for a result of `nameToNumber` that stands for "no such name".
constexpr bool isUnassigned(std::int32_t number) noexcept {
  return number == -1;
}
/// The name of the first row with that code, whatever its version; null without one.
const char* numberToName(const AssignmentsBase& table, std::uint32_t code) noexcept;
/// The same as a view, which is zero-terminated and lives as long as the program; "" without one.
std::string_view nameOfNumber(const AssignmentsBase& table, std::uint32_t code) noexcept;

/// The text of an HTTP status number for logs; null for a number without one.
const char* statusText(int status) noexcept;

}  // namespace WapAssignments

#endif  // MMSBRIX_WSP_WSP_ASSIGNED_HEADERS_H
