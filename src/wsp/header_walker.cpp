#include "wsp/header_walker.h"

#include "wsp/content_type_reader.h"
#include "wsp/wap_mms_shared.h"

namespace mmsbrix {
namespace {

// Octets that a textual header's value claims, a quote octet and the zero included.
std::size_t textSize(const Reader& in) noexcept {
  const Octets ahead = in.rest();
  const void* zero = ahead.empty() ? nullptr : std::memchr(ahead.data(), 0, ahead.size());
  if (zero == nullptr) return ahead.size() + 1;
  return static_cast<std::size_t>(static_cast<const std::uint8_t*>(zero) - ahead.data()) + 1;
}

}  // namespace

ValueForm formOf(Octets value) noexcept {
  if (value.empty()) return ValueForm::none;
  const std::uint8_t first = value.front();
  if (first >= kShortIntegerBit) return ValueForm::shortInteger;
  return first >= 1 && first <= kLengthQuote ? ValueForm::lengthPrefixed : ValueForm::text;
}

void HeaderWalker::takeValue(HeaderItem& item, std::size_t stated) noexcept {
  item.valueOffset = in_.position();
  item.statedSize = stated;
  item.form = formOf(in_.rest());
  if (stated == 0 && item.form != ValueForm::none) broken_ = done_ = true;
  if (item.form == ValueForm::none) item.statedSize = 1;  // a value of one octet at least is due
  item.value = in_.take(stated);
}

bool HeaderWalker::next(HeaderItem& item) noexcept {
  if (done_ || in_.atEnd()) return false;
  item = HeaderItem{};
  item.offset = in_.position();
  const std::uint8_t first = *in_.octet();
  if (first >= kShortIntegerBit) {
    item.kind = HeaderItem::Kind::wellKnown;
    item.code = first & 0x7F;
    item.page = page_;
    if (page_ == kFirstPage && rules_.lastField == item.code) {
      takeValue(item, contentTypeSize(in_));
      done_ = true;
    } else {
      takeValue(item, fieldSize(in_));
    }
  } else if (first == kShiftDelimiter || (first >= 1 && first <= kLastShortCutShift)) {
    item.kind = HeaderItem::Kind::shift;
    page_ = first == kShiftDelimiter ? in_.octet().value_or(page_) : first;
    item.page = page_;
    item.valueOffset = in_.position();
    item.statedSize = in_.failed() ? 1 : 0;
  } else if (first == 0) {
    item.kind = HeaderItem::Kind::zero;
    item.page = page_;
    item.valueOffset = in_.position();
  } else {
    item.kind = HeaderItem::Kind::text;
    item.page = page_;
    Reader name = in_;
    const std::string_view behindFirst = name.text();
    item.name = {behindFirst.data() - 1, behindFirst.size() + 1};
    in_.skip(name.position() - in_.position());
    takeValue(item, rules_.textAfterTextName ? textSize(in_) : fieldSize(in_));
  }
  return true;
}

}  // namespace mmsbrix
