#include "wsp/wsp_header_filter.h"

#include "platform/ascii.h"
#include "wsp/header_format_tools.h"

namespace WapStack {

std::string CodePage::nameOf(std::uint8_t code) const {
  return numberName(code);
}

std::optional<std::uint8_t> CodePage::codeOf(std::string_view name,
                                             const HeaderEncodingFilter& filter) const {
  const auto number = numberOfName(name);
  if (!number || *number > 0x7F || !filter.allowsPage(number_)) return std::nullopt;
  return static_cast<std::uint8_t>(*number);
}

std::unique_ptr<Wap_value> CodePage::valueOf(std::uint8_t /*code*/) const {
  return std::make_unique<Wap_value>();
}

std::string DefaultCodePage::nameOf(std::uint8_t code) const {
  const HeaderRow* row = findHeader(std::size_t{code});
  return row != nullptr ? std::string(row->name) : CodePage::nameOf(code);
}

std::optional<std::uint8_t> DefaultCodePage::codeOf(std::string_view name,
                                                    const HeaderEncodingFilter& filter) const {
  const HeaderRow* chosen = nullptr;
  for (const HeaderRow& row : kHeaderTable) {
    if (row.from > filter.version() || !filter.allowsHeader(row.code)) continue;
    if (!mmsbrix::equalsIgnoringCase(row.name, name)) continue;
    if (chosen == nullptr || row.from >= chosen->from) chosen = &row;
  }
  if (chosen != nullptr && filter.allowsPage(number())) return chosen->code;
  const auto code = CodePage::codeOf(name, filter);
  if (!code || findHeader(std::size_t{*code}) != nullptr) return std::nullopt;
  return filter.allowsHeader(*code) ? code : std::nullopt;
}

std::unique_ptr<Wap_value> DefaultCodePage::valueOf(std::uint8_t code) const {
  return makeHeaderValue(code);
}

bool Shift_sequence::encodeToFrame(Writer& out) const noexcept {
  if (page_ == 0) return false;
  if (page_ > mmsbrix::kLastShortCutShift) out.octet(mmsbrix::kShiftDelimiter);
  out.octet(page_);
  return !out.failed();
}

}  // namespace WapStack
