#include "wsp/wsp_assigned_headers.h"

#include <algorithm>
#include <array>
#include <span>

#include "platform/ascii.h"
#include "wsp/assignment_index.h"
#include "wsp/report.h"
#include "wsp/wsp_assigned_content_types.h"
#include "wsp/wsp_assigned_keywords.h"
#include "wsp/wsp_assigned_languages.h"
#include "wsp/wsp_assigned_names.h"

namespace WapAssignments {
namespace {

constexpr std::string_view kSource = "wsp_assigned_headers";

// Rows of one name or code are among these, so that fewer cannot be asked of every table.
constexpr std::size_t kMaxChain = 4;

template <const auto& kRows, std::uint8_t kCaseSensitive>
constexpr AssignmentsBase indexed() noexcept {
  static_assert(kIndexData<kRows>.longestChain() <= kMaxChain, "lookups walk the table again");
  return {kRows.data(), kRows.size(), kCaseSensitive, &kIndex<kRows>};
}
template <const auto& kRows>
constexpr AssignmentsBase anyCase() noexcept {
  return indexed<kRows, 0>();
}
template <const auto& kRows>
constexpr AssignmentsBase exactCase() noexcept {
  return indexed<kRows, 1>();
}

// Indexed by kind.
constexpr auto kTables = [] {
  std::array<AssignmentsBase, kSecurity + 1> tables{};
  tables[kParameters] = anyCase<kParameterRows>();
  tables[kHeaders] = anyCase<kHeaderRows>();
  tables[kContentTypes] = anyCase<kContentTypeRows>();
  tables[kRegisteredContentTypes] = anyCase<kRegisteredContentTypeRows>();
  tables[kLanguages] = anyCase<kLanguageRows>();
  tables[kCharsets] = anyCase<kCharsetRows>();
  tables[kContentEncodings] = anyCase<kContentEncodingRows>();
  tables[kAcceptRanges] = anyCase<kAcceptRangeRows>();
  tables[kPduTypes] = exactCase<kPduTypeRows>();
  tables[kCacheControl] = anyCase<kCacheControlRows>();
  tables[kConnection] = anyCase<kConnectionRows>();
  tables[kTransferEncoding] = anyCase<kTransferEncodingRows>();
  tables[kTe] = anyCase<kTeRows>();
  tables[kExpect] = anyCase<kExpectRows>();
  tables[kSecurity] = anyCase<kSecurityRows>();
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

bool equals(const AssignmentsBase& table, std::string_view a, std::string_view b) noexcept {
  return table.caseSensitive != 0 ? a == b : mmsbrix::equalsIgnoringCase(a, b);
}

const StringInt* findName(const AssignmentsBase& table, std::string_view name) noexcept {
  if (table.index == nullptr) {
    for (const StringInt& row : namedRows(table)) {
      if (equals(table, row.name, name)) return &row;
    }
    return nullptr;
  }
  const AssignmentsIndex& index = *table.index;
  std::uint16_t at = index.byName[AssignmentsIndex::hashOf(name) & index.bucketMask];
  while (at != kNoRow) {
    const IndexedRow& indexed = index.rows[at];
    if (indexed.nameLength == name.size() &&
        equals(table, {table.rows[at].name, indexed.nameLength}, name)) {
      return &table.rows[at];
    }
    at = indexed.nextByName;
  }
  return nullptr;
}

std::string_view findCode(const AssignmentsBase& table, std::uint32_t code) noexcept {
  if (table.index == nullptr) {
    for (const StringInt& row : namedRows(table)) {
      if (row.code() == code) return row.name;
    }
    return {};
  }
  const AssignmentsIndex& index = *table.index;
  std::uint16_t at = index.byCode[AssignmentsIndex::hashOf(code) & index.bucketMask];
  while (at != kNoRow && table.rows[at].code() != code) at = index.rows[at].nextByCode;
  if (at == kNoRow) return {};
  return {table.rows[at].name, index.rows[at].nameLength};
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
  const StringInt* row = findName(table, name);
  return row == nullptr ? -1 : static_cast<std::int32_t>(row->number);
}

const char* numberToName(const AssignmentsBase& table, std::uint32_t code) noexcept {
  return findCode(table, code).data();
}

std::string_view nameOfNumber(const AssignmentsBase& table, std::uint32_t code) noexcept {
  return findCode(table, code);
}

const char* statusText(int status) noexcept {
  for (const auto& [number, text] : kStatusRows) {
    if (number == status) return text;
  }
  return nullptr;
}

}  // namespace WapAssignments
