#include "wsp/wsp_header_list.h"

#include <array>
#include <optional>
#include <utility>

#include "platform/ascii.h"
#include "wsp/header_format_tools.h"
#include "wsp/wsp_header_reports.h"

namespace WapStack {
namespace {

using mmsbrix::HeaderItem;

const CodePage& defaultPage() noexcept {
  static const DefaultCodePage page;
  return page;
}

std::string describe(const HeaderFault& fault) {
  return "header " + (fault.name.empty() ? std::string("without name") : fault.name) + " at " +
         std::to_string(fault.position) + " left out: " + fault.reason;
}

// Adds headers to a list, the repeated ones of a comma list on page 1 to the first of them.
class Collector {
 public:
  Collector(std::vector<Header>& headers, RepeatedHeaders repeated)
      : headers_(headers), repeated_(repeated) {}

  void add(Header header, const HeaderRow* row) {
    const bool joinable = repeated_ == RepeatedHeaders::joined && header.page() == kDefaultPage &&
                          row != nullptr && row->list != ListRule::single &&
                          !header.value().empty();
    // All codes of a name lead to the same place, that of the first of them.
    const HeaderRow* group = joinable ? findHeader(row->name) : nullptr;
    if (group == nullptr) return headers_.push_back(std::move(header));
    auto& place = places_[group->code];
    if (place) return headers_[*place].addElement(header.value());
    place = headers_.size();
    headers_.push_back(std::move(header));
  }

 private:
  std::vector<Header>& headers_;
  RepeatedHeaders repeated_;
  std::array<std::optional<std::size_t>, kHeaderCodes> places_{};
};

// Decodes the header of an item; nothing when it cannot be.
std::optional<Header> decodeHeader(const HeaderItem& item, const CodePage& page,
                                   const HeaderRow*& row) {
  const bool isText = item.kind == HeaderItem::Kind::text;
  const HeaderRow* named = isText ? findHeader(item.name) : nullptr;
  std::unique_ptr<Wap_value> value;
  if (named != nullptr) {
    value = makeHeaderValue(named->code);
  } else if (isText && item.form != mmsbrix::ValueForm::text) {
    return std::nullopt;  // a name without a format has a text
  } else {
    value = isText ? std::make_unique<Wap_value>() : page.valueOf(item.code);
  }
  Reader in(item.value);
  if (isText && value->row() != nullptr && value->row()->format.readsTexts && textAhead(in)) {
    // Behind a textual name the marks are those of HTTP, which come as a pair.
    const auto text = takeText(in);
    if (!text || !mmsbrix::isHeaderText(*text)) return std::nullopt;
    return Header(item.name, withoutMarks(*text));
  }
  if (!value->decodeFromFrame(in)) return std::nullopt;
  row = value->row();
  if (isText) return Header(item.name, value->getText());
  return Header(page.nameOf(item.code), value->getText(), page.number());
}

// What is wrong with an item before its value is looked at; "" when nothing is.
std::string_view faultOf(const HeaderItem& item, bool broken) noexcept {
  if (item.kind == HeaderItem::Kind::zero) return "a zero octet where a header should begin";
  if (item.kind == HeaderItem::Kind::shift) {
    return item.cutShort() || item.page == 0 ? "a shift without a page" : "";
  }
  if (broken) return "the length of the value is broken";
  if (item.cutShort()) return "the value ends behind the block";
  if (item.kind == HeaderItem::Kind::wellKnown && item.page == 0) return "there is no page 0";
  if (item.kind == HeaderItem::Kind::text && !mmsbrix::isToken(item.name)) {
    return "the name is no token";
  }
  return "";
}

}  // namespace

std::string Header::print() const {
  const HeaderRow* row = page_ == kDefaultPage ? findHeader(name_) : nullptr;
  return std::string(name_).append(": ").append(printedValue(row, value_));
}

bool Header::encodeInBinary(Writer& out, const CodePage& page,
                            const HeaderEncodingFilter& filter) const {
  const auto code = page.codeOf(name_, filter);
  // A value ends at its first zero, so what stands behind one would be lost.
  if (!code || value_.find('\0') != std::string::npos) return false;
  const auto whole = page.valueOf(*code);
  whole->setText(value_);
  const auto element = page.valueOf(*code);
  element->setVersion(filter.version());
  for (const std::string_view text : whole->elements()) {
    const std::size_t begin = out.size();
    element->setText(text);
    mmsbrix::writeShortInteger(out, *code);
    if (element->encodeToFrame(out)) continue;
    // Each challenge is one of its own, whatever stands beside it.
    const bool isChallenge = whole->row() != nullptr && whole->row()->list == ListRule::challenges;
    out.truncate(begin);
    if (!isChallenge || !writeAsText(text, out)) return false;
  }
  return !out.failed();
}

bool Header::writeAsText(std::string_view value, Writer& out) const {
  std::string_view text = mmsbrix::trimmed(value);
  const HeaderRow* row = findHeader(name_);
  if (row != nullptr && row->format.readsTexts) text = withoutMarks(text);
  if (name_.empty() || page_ != kDefaultPage) return false;
  if (!mmsbrix::isToken(name_) || !mmsbrix::isHeaderText(text)) return false;
  mmsbrix::writeTokenText(out, name_);
  mmsbrix::writeTextString(out, text);
  return !out.failed();
}

bool Header::encodeToFrame(Writer& out, const CodePage& page,
                           const HeaderEncodingFilter& filter) const {
  const std::size_t begin = out.size();
  if (encodeInBinary(out, page, filter)) return true;
  out.truncate(begin);
  if (writeAsText(value_, out)) return true;
  out.truncate(begin);
  return false;
}

void Message_header::usePage(std::shared_ptr<const CodePage> page) {
  if (page != nullptr) pages_.push_back(std::move(page));
}

const CodePage* Message_header::knownPage(std::uint8_t number) const noexcept {
  for (auto page = pages_.rbegin(); page != pages_.rend(); ++page) {
    if ((*page)->number() == number) return page->get();
  }
  return number == kDefaultPage ? &defaultPage() : nullptr;
}

const Header* Message_header::find(std::string_view name) const noexcept {
  for (const Header& header : headers_) {
    const bool here = header.page() == kDefaultPage;
    if (here && mmsbrix::equalsIgnoringCase(header.name(), name)) return &header;
  }
  return nullptr;
}

std::vector<HeaderFault> Message_header::encodeToFrame(Writer& out,
                                                       const HeaderEncodingFilter& filter) const {
  std::vector<HeaderFault> faults;
  std::uint8_t current = kDefaultPage;
  for (std::size_t i = 0; i < headers_.size(); ++i) {
    const Header& header = headers_[i];
    const CodePage* known = knownPage(header.page());
    const CodePage byNumber(header.page());
    const CodePage& page = known != nullptr ? *known : byNumber;
    const std::size_t begin = out.size();
    const bool shifted =
        header.page() == current || Shift_sequence(page.number()).encodeToFrame(out);
    if (shifted && header.encodeToFrame(out, page, filter)) {
      current = header.page();
      continue;
    }
    out.truncate(begin);
    faults.push_back({i, header.name(), "no form on the wire"});
    reportHere(mmsbrix::DiagnosticKind::error, describe(faults.back()), currentLine());
  }
  return faults;
}

std::vector<HeaderFault> Message_header::decodeFromFrame(Reader& in, RepeatedHeaders repeated) {
  std::vector<HeaderFault> faults;
  Collector collector(headers_, repeated);
  mmsbrix::HeaderWalker walker(in.take(in.left()));
  HeaderItem item;
  while (walker.next(item)) {
    const CodePage* known = knownPage(item.page);
    const CodePage byNumber(item.page);
    const CodePage& page = known != nullptr ? *known : byNumber;
    std::string_view reason = faultOf(item, walker.broken());
    if (reason.empty()) {
      if (item.kind == HeaderItem::Kind::shift) continue;
      const HeaderRow* row = nullptr;
      if (auto header = decodeHeader(item, page, row)) {
        collector.add(std::move(*header), row);
        continue;
      }
      reason = "unsupported or not well known value";
    }
    const bool named = item.kind == HeaderItem::Kind::wellKnown;
    faults.push_back({item.offset, named ? page.nameOf(item.code) : std::string(item.name),
                      std::string(reason)});
    if (!mmsbrix::diagnosticsWanted()) continue;
    reportHere(mmsbrix::DiagnosticKind::error, describe(faults.back()), currentLine());
  }
  return faults;
}

}  // namespace WapStack
