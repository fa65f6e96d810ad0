// The MMS header fields, one row each: code, name, kind of value, and for the fields that a message
// has a member for, how the member is read and written.  Encoder, decoder and inspector use the
// same rows. [OMA-MMS-ENC 7.4, table 12]
#ifndef MMSBRIX_MMS_FIELD_TABLE_H
#define MMSBRIX_MMS_FIELD_TABLE_H

#include <cstdint>
#include <span>
#include <string_view>

#include "model/mmsg.h"
#include "wsp/header_walker.h"
#include "wsp/octets.h"
#include "wsp/value_form.h"

namespace mmsbrix {

inline constexpr std::uint8_t kBccField = 0x01;
inline constexpr std::uint8_t kCcField = 0x02;
inline constexpr std::uint8_t kContentTypeField = 0x04;  ///< ends an MMS header block
inline constexpr std::uint8_t kToField = 0x17;
/// The header block of an MMS PDU: Content-Type is the last field, the body follows.
inline constexpr HeaderBlockRules kMessageBlock{.lastField = kContentTypeField,
                                                .textAfterTextName = true};

/// What the value of a field is made of.
enum class FieldKind : std::uint8_t {
  octet,          ///< one octet of a list of names
  version,        ///< one octet, major and minor number
  text,           ///< text-string
  encodedString,  ///< text, or value-length, charset and text
  address,        ///< encoded string with "/TYPE=" suffix
  from,           ///< value-length, address-present token and address, or insert-address token
  longInteger,    ///< a number
  integer,        ///< short-integer or long-integer
  date,           ///< long-integer, seconds since 1970
  tokenDate,      ///< value-length, absolute or relative token, seconds
  contentType,
  messageClass,        ///< an octet, or a text
  previouslySentBy,    ///< value-length, count, encoded string address
  previouslySentDate,  ///< value-length, count, seconds since 1970
  flags,               ///< value-length, token, encoded string
  tokenInteger,        ///< value-length, token, number
  opaque,              ///< shown as octets
};

/// A name of an enumerated octet.
struct OctetName {
  std::uint8_t octet;
  std::string_view name;
};

/// What a field is to a PDU, for remarks.
enum class Occurrence : std::uint8_t { once, many };

struct FieldRow {
  std::uint8_t code;  ///< without the high bit
  std::string_view name;
  FieldKind kind;
  std::span<const OctetName> octets{};
  Occurrence occurrence = Occurrence::once;
  /// Fills the member from a value whose form fits the kind; null when the message has no member.
  void (*read)(Reader& value, CMMsg& message) = nullptr;
  /// Writes the whole field, as often as the member has it; null for fields that are never written.
  void (*write)(Writer& out, CMMsg& message) = nullptr;
};

/// All rows, codes 0x01 to 0x3F in ascending order.
[[nodiscard]] std::span<const FieldRow> fieldRows() noexcept;
/// The row of a code; null for a code that is not assigned.
[[nodiscard]] const FieldRow* findField(std::uint8_t code) noexcept;
/// True when a value of that form can be of that kind.
[[nodiscard]] bool fits(FieldKind kind, ValueForm form) noexcept;
/// The name of an octet in such a list; empty when it is not in it.
[[nodiscard]] std::string_view octetName(std::span<const OctetName> names,
                                         std::uint8_t octet) noexcept;

/// Name lists that are used outside the rows too.
[[nodiscard]] std::span<const OctetName> messageTypeNames() noexcept;
[[nodiscard]] std::span<const OctetName> responseStatusNames() noexcept;
[[nodiscard]] std::span<const OctetName> retrieveStatusNames() noexcept;

}  // namespace mmsbrix

#endif  // MMSBRIX_MMS_FIELD_TABLE_H
