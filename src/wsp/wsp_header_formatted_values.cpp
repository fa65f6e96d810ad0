// The WSP values whose text has a format of its own: versions, quality factors and dates.
#include "wsp/wsp_header_coding.h"

#include <algorithm>
#include <string>

#include "wsp/wap_mms_shared.h"
#include "wsp/wsp_date.h"
#include "wsp/wsp_header_reports.h"

namespace WapStack {
namespace {

constexpr std::uint32_t kNoMinor = 15;
constexpr std::uint32_t kMaxMajor = 7;

// Codes of a Q-value: 1 is zero, up to 100 hundredths plus 1, up to 1099 thousandths plus 100.
constexpr std::uint32_t kZeroQuality = 1;
constexpr std::uint32_t kLastHundredth = 100;
constexpr std::uint32_t kLastThousandth = 1099;

// Takes blanks and a decimal number from the front of `text`, a number above 32 bits as the
// greatest one; what follows the number stays.
std::optional<std::uint32_t> takeNumber(std::string_view& text) noexcept {
  const std::size_t first = text.find_first_not_of(" \t\r\n\v\f");
  if (first == std::string_view::npos) return std::nullopt;
  const char* begin = text.data() + first;
  std::uint32_t number = 0;
  const auto [stop, error] = std::from_chars(begin, text.data() + text.size(), number);
  if (error == std::errc::invalid_argument) return std::nullopt;
  text.remove_prefix(static_cast<std::size_t>(stop - text.data()));
  return error == std::errc{} ? number : 0xFFFFFFFF;
}

// The octet of a version text without its high bit; nothing when it has no such form.
std::optional<std::uint8_t> versionOctet(std::string_view text) noexcept {
  constexpr std::string_view kBlanks = " \t\n";
  text = unquoted(text);
  text = text.substr(0, text.find('/'));
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
  text = text.substr(0, text.find_last_not_of(kBlanks) + 1);
  const auto major = takeNumber(text);
  if (!major || *major < 1 || *major > kMaxMajor) return std::nullopt;
  std::optional<std::uint32_t> minor;
  if (text.starts_with('.')) {
    text.remove_prefix(1);
    minor = takeNumber(text);
    if (minor && *minor >= kNoMinor) return std::nullopt;
  }
  return static_cast<std::uint8_t>(*major << 4 | minor.value_or(kNoMinor));
}

}  // namespace

bool VersionValue::isKind(const Reader& in) const {
  return ShortInteger().isKind(in) || TextString().isKind(in);
}

bool VersionValue::encodeToFrame(Writer& out) const {
  const auto octet = versionOctet(getText());
  if (!octet) return encodeAs<TextString>(getText(), out);
  mmsbrix::writeShortInteger(out, *octet);
  return !out.failed();
}

bool VersionValue::decodeFromFrame(Reader& in) {
  if (!ShortInteger().isKind(in)) return decodeAs<TextString>(in);
  const unsigned octet = mmsbrix::readShortInteger(in).value_or(0);
  std::string text = std::to_string(octet >> 4);
  if ((octet & 15) != kNoMinor) text.append(".").append(std::to_string(octet & 15));
  setText(text);
  return true;
}

bool QValue::isKind(const Reader& in) const {
  return UintvarInteger().isKind(in);
}

bool QValue::encodeToFrame(Writer& out) const {
  std::string_view text = getText();
  if (!text.starts_with('0')) return !out.failed();
  // Every character behind "0." counts as a digit, also one that ends the number.
  const std::size_t digits = std::max<std::size_t>(text.size(), 2) - 2;
  std::uint32_t number = 0;
  if (text.starts_with("0.")) {
    text.remove_prefix(2);
    number = takeNumber(text).value_or(0);
  }
  std::uint32_t code = 0;
  if (number == 0) {
    code = kZeroQuality;
  } else if (digits == 1) {
    code = number * 10 + 1;
  } else if (digits == 2) {
    code = number + 1;
  } else if (digits == 3) {
    code = number + kLastHundredth;
  } else {
    warnValue(*this, "more than three digits");
  }
  if (number >= 1000) warnValue(*this, "numerator of 1000 or more");
  mmsbrix::writeUintvar(out, code);
  return !out.failed();
}

bool QValue::decodeFromFrame(Reader& in) {
  UintvarInteger value;
  if (!value.decodeFromFrame(in)) return false;
  const auto code = parseDecimal(value.getText()).value_or(0);
  if (code == 0 || code > kLastThousandth) return failValue(*this, "code out of range");
  if (code == kZeroQuality) {
    setText("0");
  } else if (code <= kLastHundredth) {
    // One digit at least, so that a hundredth below 0.10 reads as a tenth.
    std::string text = "0." + std::to_string(code - 1);
    if (text.ends_with('0')) text.pop_back();
    setText(text);
  } else {
    const std::string digits = std::to_string(code - kLastHundredth);
    setText("0." + std::string(3 - digits.size(), '0') + digits);
  }
  return true;
}

bool DateValue::isKind(const Reader& in) const {
  return LongInteger().isKind(in);
}

bool DateValue::encodeToFrame(Writer& out) const {
  const auto seconds = parseDate(getText());
  if (!seconds) return failValue(*this, "no date in a known layout from 1970 on");
  mmsbrix::writeLongInteger(out, *seconds);
  return !out.failed();
}

bool DateValue::decodeFromFrame(Reader& in) {
  LongInteger value;
  if (!value.decodeFromFrame(in)) return false;
  const auto seconds = parseDecimal(value.getText());
  setText(seconds ? dateText(dateFields(*seconds)) : std::string());
  return true;
}

}  // namespace WapStack
