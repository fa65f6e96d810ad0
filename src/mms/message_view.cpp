#include "mms/message_view.h"

#include "mms/content_type.h"
#include "mms/field_table.h"
#include "mms/mms_values.h"
#include "model/mmsg.h"
#include "platform/ascii.h"
#include "wsp/multipart_walker.h"
#include "wsp/wap_mms_shared.h"

namespace mmsbrix {
namespace {

FieldView fieldOf(const HeaderItem& item) noexcept {
  const bool wellKnown = item.kind == HeaderItem::Kind::wellKnown;
  return {wellKnown ? int{item.code} : -1, item.name, item.form, item.value};
}

HeaderView headerOf(const HeaderItem& item) noexcept {
  return {partHeaderName(item), item.form, partHeaderText(item), item.value};
}

// What stands behind value-length and token; nothing for a value of another form.
std::optional<Reader> behindToken(Octets value, std::optional<std::uint8_t>& token) noexcept {
  Reader in(value);
  const auto length = readValueLength(in);
  if (!length) return std::nullopt;
  Reader inside = in.sub(*length);
  token = inside.octet();
  return inside;
}

}  // namespace

std::optional<std::uint8_t> FieldView::octet() const noexcept {
  if (form != ValueForm::shortInteger) return std::nullopt;
  return value.front();
}

std::optional<std::uint64_t> FieldView::number() const noexcept {
  const FieldRow* row = code < 0 ? nullptr : findField(static_cast<std::uint8_t>(code));
  if (row != nullptr && row->kind == FieldKind::tokenDate) {
    std::optional<std::uint8_t> token;
    auto inside = behindToken(value, token);
    return inside ? readInteger(*inside) : std::nullopt;
  }
  Reader in(value);
  return readInteger(in);
}

TextView FieldView::text() const noexcept {
  if (form == ValueForm::none || form == ValueForm::shortInteger) return {};
  Reader in(value);
  const EncodedString string = readEncodedString(in);
  return {string.text, string.charset};
}

AddressView FieldView::address() const noexcept {
  Octets octets = value;
  if (code == MessageView::kFrom) {
    std::optional<std::uint8_t> token;
    const auto inside = behindToken(value, token);
    if (!inside || token != kAddressPresentToken) return {};
    octets = inside->rest();
  }
  Reader in(octets);
  const EncodedString string = readEncodedString(in);
  const SplitAddress address = splitAddress(string.text);
  return {address.text, string.charset, address.type};
}

ContentTypeView::ContentTypeView(std::span<const std::uint8_t> value) noexcept
    : value_(value), mediaType_(contentTypeReader(value).mediaType()) {}

void ContentTypeView::walk(detail::Visitor<ParameterView> visitor) const {
  ContentTypeReader reader = contentTypeReader(value_);
  Parameter parameter;
  while (reader.next(parameter)) {
    if (!visitor.call(visitor.function, {parameter.name, parameter.value})) return;
  }
}

void PartView::walk(detail::Visitor<HeaderView> visitor) const {
  HeaderWalker walker(headers);
  HeaderItem item;
  while (walker.next(item)) {
    if (item.kind != HeaderItem::Kind::wellKnown && item.kind != HeaderItem::Kind::text) continue;
    if (!visitor.call(visitor.function, headerOf(item))) return;
  }
}

std::string_view PartView::header(std::string_view name) const noexcept {
  HeaderWalker walker(headers);
  HeaderItem item;
  while (walker.next(item)) {
    if (equalsIgnoringCase(partHeaderName(item), name)) return partHeaderText(item);
  }
  return {};
}

MessageView::MessageView(const void* data, unsigned int size) noexcept
    : pdu_(static_cast<const std::uint8_t*>(data), data == nullptr ? 0 : size) {
  HeaderWalker walker(pdu_, kMessageBlock);
  HeaderItem item;
  while (walker.next(item)) {
    if (item.kind != HeaderItem::Kind::wellKnown || item.page != kFirstPage) continue;
    const FieldRow* row = findField(item.code);
    if (row == nullptr || !fits(row->kind, item.form)) continue;
    fields_[item.code] = {static_cast<std::uint32_t>(item.valueOffset),
                          static_cast<std::uint32_t>(item.value.size())};
  }
  const Place& type = fields_[kContentType];
  if (type.size == 0) return;
  contentType_ = ContentTypeView(pdu_.subspan(type.offset, type.size));
  const int messageType = this->messageType();
  if (messageType != CMMsg::MSG_TYPE_SEND_REQ && messageType != CMMsg::MSG_TYPE_RETRIEVE_CONF) {
    return;
  }
  body_ = pdu_.subspan(walker.position());
  isMultipart_ = mmsbrix::isMultipart(contentType_.mediaType());
}

std::optional<FieldView> MessageView::find(int code) const noexcept {
  if (code < 0 || static_cast<std::size_t>(code) >= fields_.size()) return std::nullopt;
  const Place& place = fields_[static_cast<std::size_t>(code)];
  if (place.size == 0) return std::nullopt;
  const Octets value = pdu_.subspan(place.offset, place.size);
  return FieldView{code, {}, formOf(value), value};
}

void MessageView::walk(detail::Visitor<FieldView> visitor) const {
  HeaderWalker walker(pdu_, kMessageBlock);
  HeaderItem item;
  while (walker.next(item)) {
    const bool isField = item.kind == HeaderItem::Kind::wellKnown && item.page == kFirstPage;
    if (!isField && item.kind != HeaderItem::Kind::text) continue;
    if (!visitor.call(visitor.function, fieldOf(item))) return;
  }
}

void MessageView::walk(detail::Visitor<PartView> visitor) const {
  if (!isMultipart_) return;
  MultipartWalker walker(body_);
  MultipartItem item;
  while (walker.next(item)) {
    PartView part;
    part.contentType = ContentTypeView(item.contentType);
    part.content = item.data;
    part.headers = item.headers;
    if (!visitor.call(visitor.function, part)) return;
  }
}

}  // namespace mmsbrix
