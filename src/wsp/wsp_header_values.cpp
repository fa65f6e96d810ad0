#include "wsp/wsp_header_values.h"

#include <array>
#include <utility>

#include "platform/ascii.h"
#include "wsp/header_format_tools.h"
#include "wsp/wsp_header_reports.h"

namespace WapStack {
namespace {

constexpr std::size_t kContentType = 0x11;

using Maker = std::unique_ptr<Wap_value> (*)();

template <std::size_t Code>
std::unique_ptr<Wap_value> make() {
  if constexpr (Code == kContentType) {
    return std::make_unique<Content_type_value>();
  } else {
    return std::make_unique<Header_value<Code>>();
  }
}

// Indexed by code.
constexpr auto kMakers = []<std::size_t... Codes>(std::index_sequence<Codes...>) {
  return std::array<Maker, sizeof...(Codes)>{make<Codes>...};
}
(std::make_index_sequence<kHeaderCodes>());

const ValueFormat& formatOf(const HeaderRow* row) noexcept {
  return row == nullptr ? kOpaqueFormat : row->format;
}

// Decodes a value of a whole field size.
bool decodeWhole(const ValueFormat& format, mmsbrix::Octets octets, std::string& text) {
  if (octets.size() == 1 && octets.front() == 0) return true;
  Reader value(octets);
  if (textAhead(value) && !format.readsTexts) {
    const auto asItStands = takeText(value);
    text = asItStands.value_or("");
    return asItStands.has_value();
  }
  return format.decode(value, text) && isWhole(value);
}

}  // namespace

std::vector<std::string_view> Wap_value::elements() const {
  std::vector<std::string_view> elements;
  const ListRule rule = row_ == nullptr ? ListRule::single : row_->list;
  if (rule == ListRule::elements) elements = mmsbrix::splitList(getText());
  if (rule == ListRule::challenges) elements = mmsbrix::splitChallenges(getText());
  if (elements.empty()) elements.push_back(mmsbrix::trimmed(getText()));
  return elements;
}

bool Wap_value::isKind(const Reader& in) const {
  const auto copy = clone();
  Reader ahead = in;
  return copy->decodeFromFrame(ahead);
}

std::string Wap_value::print() const {
  return printedValue(row_, getText());
}

bool Wap_value::encodeToFrame(Writer& out) const {
  const std::string_view text = mmsbrix::trimmed(getText());
  if (text.empty()) {
    out.octet(0);
    return !out.failed();
  }
  if (!mmsbrix::isHeaderText(text)) return failValue(*this, "control characters");
  const std::size_t begin = out.size();
  if (formatOf(row_).encode(text, version_, out)) return true;
  out.truncate(begin);
  return failValue(*this, "a text that the format of the header cannot hold");
}

bool Wap_value::decodeFromFrame(Reader& in) {
  const std::size_t size = mmsbrix::fieldSize(in);
  if (size == 0 || size > in.left()) {
    in.skip(in.left());
    return failEndOfInput();
  }
  std::string text;
  const bool decoded = decodeWhole(formatOf(row_), in.take(size), text);
  if (!decoded) {
    failValue(*this, "value not decoded");
    return failUnknownValue();
  }
  if (!mmsbrix::isHeaderText(text)) return failValue(*this, "control characters");
  setText(text);
  return true;
}

std::string_view Content_type_value::mediaType() const {
  const std::string_view text = getText();
  return mmsbrix::trimmed(text.substr(0, text.find(';')));
}

std::optional<std::string> Content_type_value::parameter(std::string_view name) const {
  const auto parts = mmsbrix::splitParameterised(getText());
  if (!parts) return std::nullopt;
  for (const mmsbrix::TextParameter& parameter : parts->parameters) {
    if (mmsbrix::equalsIgnoringCase(parameter.name, name)) return parameter.plainValue();
  }
  return std::nullopt;
}

bool Content_type_value::isMultipart() const {
  return mmsbrix::startsWithIgnoringCase(mediaType(), "application/vnd.wap.multipart.") ||
         mmsbrix::startsWithIgnoringCase(mediaType(), "multipart/");
}

std::unique_ptr<Wap_value> makeHeaderValue(std::size_t code) {
  return code < kMakers.size() ? kMakers[code]() : std::make_unique<Wap_value>();
}

std::string printedValue(const HeaderRow* row, std::string_view text) {
  if (row == nullptr || !row->secret) return std::string(text);
  const std::size_t blank = text.find(' ');
  return std::string(text.substr(0, blank == std::string_view::npos ? 0 : blank + 1)).append("***");
}

}  // namespace WapStack
