#include "wsp/wsp_header_coding.h"

#include <limits>

#include "wsp/wap_mms_shared.h"
#include "wsp/wsp_header_reports.h"

namespace WapStack {
namespace {

using mmsbrix::kLengthQuote;
using mmsbrix::kMaxUintvarOctets;
using mmsbrix::kShortIntegerBit;

// The number of the value's text when it is at most `limit`; its absence is reported.
std::optional<std::uint64_t> numberUpTo(std::uint64_t limit, const WapBase& value,
                                        Line at = currentLine()) {
  const auto number = parseDecimal(value.getText());
  if (number && *number <= limit) return number;
  failValue(value, "no number or one out of range", at);
  return std::nullopt;
}

}  // namespace

bool UintvarInteger::isKind(const Reader& in) const {
  return mmsbrix::isUintvar(in.peek(1, kMaxUintvarOctets));
}

bool UintvarInteger::encodeToFrame(Writer& out) const {
  const auto number = numberUpTo(std::numeric_limits<std::uint32_t>::max(), *this);
  if (!number) return false;
  mmsbrix::writeUintvar(out, static_cast<std::uint32_t>(*number));
  return !out.failed();
}

bool UintvarInteger::decodeFromFrame(Reader& in) {
  if (in.atEnd()) return failEndOfInput();
  const bool whole = in.left() >= kMaxUintvarOctets;
  const auto number = mmsbrix::readUintvar(in);
  if (!number) return whole ? false : failEndOfInput();
  setText(std::to_string(*number));
  return true;
}

bool ShortInteger::isKind(const Reader& in) const {
  return in.peekOctet() >= kShortIntegerBit;
}

bool ShortInteger::encodeToFrame(Writer& out) const {
  const auto number = numberUpTo(0x7F, *this);
  if (!number) return false;
  mmsbrix::writeShortInteger(out, static_cast<std::uint8_t>(*number));
  return !out.failed();
}

bool ShortInteger::decodeFromFrame(Reader& in) {
  const auto number = mmsbrix::readShortInteger(in);
  if (!number) return failEndOfInput();
  setText(std::to_string(*number));
  return true;
}

bool LongInteger::isKind(const Reader& in) const {
  const auto first = in.peekOctet();
  return first && *first < kLengthQuote;
}

bool LongInteger::encodeToFrame(Writer& out) const {
  const auto number = numberUpTo(std::numeric_limits<std::uint64_t>::max(), *this);
  if (!number) return false;
  mmsbrix::writeLongInteger(out, *number);
  return !out.failed();
}

bool LongInteger::decodeFromFrame(Reader& in) {
  const auto length = in.peekOctet();
  if (!length) return failEndOfInput();
  if (*length >= kLengthQuote) return failValue(*this, "short-length above 30");
  if (*length >= in.left()) return failEndOfInput();
  const auto number = mmsbrix::readLongInteger(in);
  setText(*length == 0 ? std::string() : std::to_string(number.value_or(0)));
  return true;
}

bool IntegerValue::isKind(const Reader& in) const {
  return ShortInteger().isKind(in) || LongInteger().isKind(in);
}

bool IntegerValue::encodeToFrame(Writer& out) const {
  const auto number = numberUpTo(std::numeric_limits<std::uint64_t>::max(), *this);
  if (!number) return false;
  mmsbrix::writeInteger(out, *number);
  return !out.failed();
}

bool IntegerValue::decodeFromFrame(Reader& in) {
  return ShortInteger().isKind(in) ? decodeAs<ShortInteger>(in) : decodeAs<LongInteger>(in);
}

bool ValueLength::isKind(const Reader& in) const {
  const auto first = in.peekOctet();
  if (!first || *first > kLengthQuote) return false;
  return *first < kLengthQuote || mmsbrix::isUintvar(in.peek(2, kMaxUintvarOctets));
}

bool ValueLength::encodeToFrame(Writer& out) const {
  const auto number = numberUpTo(std::numeric_limits<std::uint32_t>::max(), *this);
  if (!number) return false;
  mmsbrix::writeValueLength(out, static_cast<std::uint32_t>(*number));
  return !out.failed();
}

bool ValueLength::decodeFromFrame(Reader& in) {
  const auto first = in.peekOctet();
  if (!first) return failEndOfInput();
  if (*first > kLengthQuote) {
    in.skip(1);
    return failAssertion(*this, "first octet above 31");
  }
  const bool whole = in.left() > kMaxUintvarOctets;
  const auto length = mmsbrix::readValueLength(in);
  if (!length) return whole ? false : failEndOfInput();
  setText(std::to_string(*length));
  return true;
}

}  // namespace WapStack
