#include "mms/mms_values.h"

#include <array>
#include <charconv>

#include "mms/charset_names.h"
#include "platform/local_time.h"
#include "wsp/wap_mms_shared.h"

namespace mmsbrix {
namespace {

constexpr std::uint16_t kFirstAbsoluteYear = 2001;

// Reads like "%d": blanks and a sign may come first.
std::optional<int> readDecimal(std::string_view& text) noexcept {
  while (!text.empty() && (text.front() == ' ' || (text.front() >= '\t' && text.front() <= '\r'))) {
    text.remove_prefix(1);
  }
  if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
  int value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc()) return std::nullopt;
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  return value;
}

struct AddressSuffix {
  CMMAddr::TYPE type;
  std::string_view text;
};

constexpr std::string_view kTypeMark = "/TYPE=";
constexpr auto kSuffixes = std::to_array<AddressSuffix>({
    {CMMAddr::TYPE_PLMN, "/TYPE=PLMN"},
    {CMMAddr::TYPE_IPV4, "/TYPE=IPv4"},
    {CMMAddr::TYPE_IPV6, "/TYPE=IPv6"},
});

}  // namespace

std::optional<std::uint8_t> versionOctet(const char* version) noexcept {
  std::string_view text = version;
  const auto major = readDecimal(text);
  if (!major || !text.starts_with('.')) return std::nullopt;
  text.remove_prefix(1);
  const auto minor = readDecimal(text);
  if (!minor) return std::nullopt;
  // Unsigned arithmetic: the minor number is deliberately not masked to its four bits.
  const unsigned octet =
      0x80U + (static_cast<unsigned>(*major) & 0x0F) * 16 + (static_cast<unsigned>(*minor) & 0xFF);
  return static_cast<std::uint8_t>(octet);
}

VersionText versionText(std::uint8_t octet) noexcept {
  const int minor = octet & 0x0F;
  VersionText text{{static_cast<char>('0' + ((octet >> 4) & 0x07)), '.'}, 2};
  if (minor >= 10) text.characters[text.length++] = '1';
  text.characters[text.length++] = static_cast<char>('0' + minor % 10);
  return text;
}

std::optional<MmsDate> dateValue(const SYSTEMTIME& record) noexcept {
  if (record.wDay == 0 && record.wHour == 0 && record.wMinute == 0 && record.wSecond == 0) {
    return std::nullopt;
  }
  if (record.wYear >= kFirstAbsoluteYear) {
    return MmsDate{true, static_cast<std::uint64_t>(platform::fromLocalTime(record))};
  }
  return MmsDate{false, std::uint64_t{record.wDay} * 86400 + std::uint64_t{record.wHour} * 3600 +
                            std::uint64_t{record.wMinute} * 60 + record.wSecond};
}

void writeTokenDate(Writer& out, MmsDate date) noexcept {
  const std::size_t octets = 1 + longIntegerOctets(date.seconds);
  writeValueLength(out, static_cast<std::uint32_t>(octets + 1));
  out.octet(date.absolute ? kAbsoluteToken : kRelativeToken);
  writeLongInteger(out, date.seconds);
}

void setDate(SYSTEMTIME& record, std::uint64_t secondsSince1970) noexcept {
  if (secondsSince1970 == 0) return;
  // An interval of days or weeks, as most of them are: no time zone makes it a date after 2000.
  constexpr std::uint64_t kSurelyBefore2001 = 978'000'000;  // 2000-12-28
  if (secondsSince1970 < kSurelyBefore2001) {
    record = SYSTEMTIME{};
    return;
  }
  const auto local = platform::toLocalTime(secondsSince1970);
  record = local && local->wYear >= kFirstAbsoluteYear ? *local : SYSTEMTIME{};
}

EncodedString readEncodedString(Reader& in) noexcept {
  EncodedString result;
  const auto first = in.peekOctet();
  if (first && *first >= 1 && *first <= kLengthQuote) {
    const auto length = readValueLength(in);
    if (!length) return result;
    Reader inside = in.sub(*length);
    result.charsetNumber = readInteger(inside);
    if (result.charsetNumber) result.charset = charsetName(*result.charsetNumber);
    result.text = readTextString(inside);
  } else {
    result.text = readTextString(in);
  }
  return result;
}

void readEncodedString(Reader& in, CMMString& out) {
  const EncodedString value = readEncodedString(in);
  out.Assign(ZeroFreeText{value.text});
  out.AssignCharset(StaticText{value.charset});
}

void writeEncodedString(Writer& out, std::string_view text, std::string_view charset) noexcept {
  const std::uint32_t number = charset.empty() ? 0 : charsetNumber(charset);
  if (number != 0) {
    writeValueLength(out, static_cast<std::uint32_t>(integerSize(number) + textStringSize(text)));
    writeInteger(out, number);
  }
  writeTextString(out, text);
}

SplitAddress splitAddress(std::string_view text) noexcept {
  const std::size_t mark = text.find(kTypeMark);
  if (mark == std::string_view::npos) return {text, CMMAddr::TYPE_PLAIN};
  const std::string_view suffix = text.substr(mark);
  const std::string_view address = text.substr(0, mark);
  for (const AddressSuffix& known : kSuffixes) {
    if (suffix.starts_with(known.text)) return {address, known.type};
  }
  return {address, CMMAddr::TYPE_OTHER};
}

void readAddress(Reader& in, CMMAddr& out) {
  const EncodedString value = readEncodedString(in);
  const SplitAddress address = splitAddress(value.text);
  out.Value()->Assign(ZeroFreeText{address.text});
  out.Value()->AssignCharset(StaticText{value.charset});
  out.SetType(address.type);
}

void writeAddress(Writer& out, const CMMAddr& address) noexcept {
  const std::string_view text = address.Value()->Text();
  for (const AddressSuffix& known : kSuffixes) {
    if (known.type != address.GetType()) continue;
    writeTextString(out, text);
    // The suffix goes before the terminating zero.
    out.truncate(out.size() - 1);
    out.append(known.text);
    out.octet(0);
    return;
  }
  writeEncodedString(out, text, address.Value()->Charset());
}

}  // namespace mmsbrix
