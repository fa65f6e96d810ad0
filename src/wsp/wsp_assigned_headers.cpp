#include "wsp/wsp_assigned_headers.h"

#include <algorithm>
#include <array>
#include <span>

#include "platform/ascii.h"
#include "wsp/report.h"
#include "wsp/wsp_assigned_content_types.h"
#include "wsp/wsp_assigned_keywords.h"
#include "wsp/wsp_assigned_languages.h"
#include "wsp/wsp_assigned_names.h"

namespace WapAssignments {
namespace {

constexpr std::string_view kSource = "wsp_assigned_headers";

template <std::size_t Count>
constexpr AssignmentsBase anyCase(const std::array<StringInt, Count>& rows) noexcept {
  return {rows.data(), Count, 0};
}
template <std::size_t Count>
constexpr AssignmentsBase exactCase(const std::array<StringInt, Count>& rows) noexcept {
  return {rows.data(), Count, 1};
}

// Indexed by kind.
constexpr auto kTables = [] {
  std::array<AssignmentsBase, kSecurity + 1> tables{};
  tables[kParameters] = anyCase(kParameterRows);
  tables[kHeaders] = anyCase(kHeaderRows);
  tables[kContentTypes] = anyCase(kContentTypeRows);
  tables[kRegisteredContentTypes] = anyCase(kRegisteredContentTypeRows);
  tables[kLanguages] = anyCase(kLanguageRows);
  tables[kCharsets] = anyCase(kCharsetRows);
  tables[kContentEncodings] = anyCase(kContentEncodingRows);
  tables[kAcceptRanges] = anyCase(kAcceptRangeRows);
  tables[kPduTypes] = exactCase(kPduTypeRows);
  tables[kCacheControl] = anyCase(kCacheControlRows);
  tables[kConnection] = anyCase(kConnectionRows);
  tables[kTransferEncoding] = anyCase(kTransferEncodingRows);
  tables[kTe] = anyCase(kTeRows);
  tables[kExpect] = anyCase(kExpectRows);
  tables[kSecurity] = anyCase(kSecurityRows);
  return tables;
}();
static_assert(kTables.size() == 15);
static_assert(std::ranges::all_of(kTables, [](const auto& table) { return table.rowCount > 0; }));

// The rows up to the first one without a name.
std::span<const StringInt> namedRows(const AssignmentsBase& table) noexcept {
  const std::span<const StringInt> rows(table.rows, table.rowCount);
  const auto end = std::ranges::find(rows, nullptr, &StringInt::name);
  return rows.first(static_cast<std::size_t>(end - rows.begin()));
}

}  // namespace

const AssignmentsBase* getTable(int kind) noexcept {
  if (kind < 0 || static_cast<std::size_t>(kind) >= kTables.size()) {
    MMSBRIX_REPORT_ERROR(kSource, "More WSP Header assignments?");
    return nullptr;
  }
  return &kTables[static_cast<std::size_t>(kind)];
}

std::int32_t nameToNumber(const AssignmentsBase& table, std::string_view name) noexcept {
  const bool exact = table.caseSensitive != 0;
  for (const StringInt& row : namedRows(table)) {
    const std::string_view candidate = row.name;
    if (exact ? candidate == name : mmsbrix::equalsIgnoringCase(candidate, name)) {
      return static_cast<std::int32_t>(row.number);
    }
  }
  return -1;
}

const char* numberToName(const AssignmentsBase& table, std::uint32_t code) noexcept {
  for (const StringInt& row : namedRows(table)) {
    if (row.code() == code) return row.name;
  }
  return nullptr;
}

const char* statusText(int status) noexcept {
  for (const auto& [number, text] : kStatusRows) {
    if (number == status) return text;
  }
  return nullptr;
}

}  // namespace WapAssignments
