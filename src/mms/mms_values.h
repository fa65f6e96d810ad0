// The value encodings private to MMS: version octet, dates, encoded strings and addresses.
// [OMA-MMS-ENC 7.2]
#ifndef MMSBRIX_MMS_MMS_VALUES_H
#define MMSBRIX_MMS_MMS_VALUES_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "model/mmaddr.h"
#include "model/mmstring.h"
#include "platform/systemtime.h"
#include "wsp/octets.h"

namespace mmsbrix {

inline constexpr std::uint8_t kYes = 0x80;  ///< of Delivery-Report, Read-Reply and the like
inline constexpr std::uint8_t kNo = 0x81;
inline constexpr std::uint8_t kHide = 0x80;  ///< of Sender-Visibility
inline constexpr std::uint8_t kShow = 0x81;
inline constexpr std::uint8_t kAbsoluteToken = 0x80;
inline constexpr std::uint8_t kRelativeToken = 0x81;
inline constexpr std::uint8_t kAddressPresentToken = 0x80;
inline constexpr std::uint8_t kInsertAddressToken = 0x81;

/// The octet of a version text "major.minor"; nothing when two numbers cannot be read.  A minor
/// number above 15 runs into the bits of the major one.
[[nodiscard]] std::optional<std::uint8_t> versionOctet(const char* version) noexcept;

/// The text of a version octet.
struct VersionText {
  char characters[4];
  std::size_t length;
  [[nodiscard]] std::string_view view() const noexcept { return {characters, length}; }
};
[[nodiscard]] VersionText versionText(std::uint8_t octet) noexcept;

/// What a date record stands for.
struct MmsDate {
  bool absolute;  ///< seconds since 1970; else an interval in seconds
  std::uint64_t seconds;
};
/// Nothing when day, hour, minute and second are all zero, which is unset.  A year below 2001 makes
/// an interval of days, hours, minutes and seconds; other records are local times.
[[nodiscard]] std::optional<MmsDate> dateValue(const SYSTEMTIME& record) noexcept;
/// Writes value-length, token and long integer, as Expiry and Delivery-Time have them.
void writeTokenDate(Writer& out, MmsDate date) noexcept;
/// Sets `record` to the local time of an instant after the year 2000, else to all zero; 0 leaves
/// it.
void setDate(SYSTEMTIME& record, std::uint64_t secondsSince1970) noexcept;

/// An encoded string as it stands on the wire.
struct EncodedString {
  std::string_view text;
  std::string_view charset;                    ///< name, "" when none is stated or it is unknown
  std::optional<std::uint64_t> charsetNumber;  ///< as stated
};
/// Reads an encoded string: a text, or value-length, charset number and text.
[[nodiscard]] EncodedString readEncodedString(Reader& in) noexcept;
/// Reads one into a text with charset.
void readEncodedString(Reader& in, CMMString& out);
/// Writes a text, with its charset when that has a number.
void writeEncodedString(Writer& out, std::string_view text, std::string_view charset) noexcept;

/// An address text split at its "/TYPE=" suffix.
struct SplitAddress {
  std::string_view text;
  CMMAddr::TYPE type;
};
[[nodiscard]] SplitAddress splitAddress(std::string_view text) noexcept;
/// Reads an encoded string as an address.
void readAddress(Reader& in, CMMAddr& out);
/// Writes an address: with the suffix of its kind and then never a charset, else as encoded string.
void writeAddress(Writer& out, const CMMAddr& address) noexcept;

}  // namespace mmsbrix

#endif  // MMSBRIX_MMS_MMS_VALUES_H
