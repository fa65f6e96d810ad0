/// @file
/// The inspector: everything that is in an MMS PDU of any type, version 1.0 to 1.3, with offsets,
/// and what is odd about it.  It reads with the same cursor as the decoder and changes nothing
/// there. [OMA-MMS-ENC 6, 7; WAP-230 8.4, 8.5]
#ifndef MMSBRIX_MMS_INSPECTOR_H
#define MMSBRIX_MMS_INSPECTOR_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "../export.h"
#include "../wsp/value_form.h"

namespace mmsbrix {

/// What is odd about a PDU.  The kind is for programs, the text for people.
enum class RemarkKind {
  truncated,        ///< the data ends inside a field, a header or a part
  lengthPastEnd,    ///< a stated length goes past the end of what holds it
  wrongForm,        ///< a value of another form than its field has
  badValue,         ///< the right form, but a value that means nothing
  trailingOctets,   ///< octets behind the last field or the last part
  missingZero,      ///< a text without its terminating zero octet
  order,            ///< fields in another order than the standard has them
  duplicate,        ///< a field that may stand once stands again
  missingField,     ///< a field that the standard requires is not there
  unknownField,     ///< a field code that no version assigns
  unexpectedField,  ///< a field that has no place in a PDU of this type
  strayZero,        ///< a zero octet between fields
  codePage,         ///< a header code page shift
  countMismatch,    ///< a multipart announces another number of parts than it has
  crashPattern,     ///< octets known to have crashed decoders in the field
  tooMany,          ///< there is more than an inspection keeps
  notMms,           ///< the data does not begin like an MMS PDU
};

/// One remark.  `offset` counts octets from the beginning of the PDU.
struct Remark {
  RemarkKind kind;     ///< for programs
  std::size_t offset;  ///< of what is odd
  std::string text;    ///< for people, without line end
};

/// A parameter of a content type or header, name and value as text.
struct InspectedParameter {
  std::string name;   ///< such as "charset"; "parameter 0x1F" for a number without a name
  std::string value;  ///< decoded
};

/// A header of a part, or an application header in text form.
struct InspectedHeader {
  std::size_t offset = 0;  ///< of its first octet
  std::size_t length = 0;  ///< octets, name and value
  int code = -1;           ///< well-known number without the high bit, -1 for a textual name
  int page = 1;            ///< header code page
  std::string name;   ///< such as "Content-Location"; "header 0x4B" for a number without a name
  std::string value;  ///< decoded; hex octets in a form that is not understood
  std::vector<InspectedParameter> parameters;  ///< in their order
};

/// One field of the header block.
struct InspectedField {
  std::size_t offset = 0;  ///< of the field's code octet, or of the first octet of a text header
  std::size_t length = 0;  ///< octets of the whole field that are there
  std::size_t valueOffset = 0;  ///< of its value
  int code = -1;                ///< field code without the high bit, -1 for a header in text form
  int page = 1;                 ///< header code page; codes mean MMS fields on page 1 only
  ValueForm form = ValueForm::none;  ///< how the value stands on the wire
  std::string name;   ///< such as "X-Mms-Transaction-Id"; "field 0x3A" where nothing is assigned
  std::string value;  ///< decoded for people; never empty for a value of unknown form
  std::optional<std::uint64_t> number;  ///< the value where it is a number, an octet or seconds
  std::optional<std::string> text;      ///< the value where it is a text, octets unchanged
  std::string charset;                  ///< of `text`; "" when none is stated or it is unknown
  std::optional<std::uint32_t> charsetNumber;  ///< MIBenum as it stands on the wire
  std::optional<std::uint8_t> token;  ///< absolute/relative, address-present/insert, and the like
  std::vector<InspectedParameter> parameters;  ///< of a content type
};

/// A body part.  Offsets count from the beginning of the PDU.
struct InspectedPart {
  std::size_t offset = 0;                      ///< of the entry: its headers length
  std::size_t headersOffset = 0;               ///< of the content type
  std::size_t headersLength = 0;               ///< octets, as far as they are there
  std::size_t dataOffset = 0;                  ///< of the content
  std::size_t dataLength = 0;                  ///< octets, as far as they are there
  std::size_t statedDataLength = 0;            ///< octets that the entry announces
  std::string contentType;                     ///< media type without parameters
  std::vector<InspectedParameter> parameters;  ///< of the content type
  std::vector<InspectedHeader> headers;        ///< the others, in order
  std::vector<InspectedPart> parts;            ///< of a nested multipart
};

/// All of a PDU.
struct Inspection {
  int messageType = 0;                 ///< message-type octet, 0 when there is none
  std::string messageTypeName;         ///< such as "m-send-req"; "" when unknown
  std::size_t size = 0;                ///< octets of the PDU
  std::size_t headerLength = 0;        ///< octets of the header block
  std::vector<InspectedField> fields;  ///< in their order
  std::size_t bodyOffset = 0;          ///< of the first octet behind the header block
  std::size_t bodyLength = 0;          ///< octets from there to the end
  bool multipart = false;              ///< the body was read as a WSP multipart
  std::vector<InspectedPart> parts;    ///< of a multipart body
  std::vector<Remark> remarks;         ///< in the order of their offsets

  /// The first field of that code on code page 1; null without one.
  [[nodiscard]] const InspectedField* find(int code) const noexcept {
    for (const InspectedField& field : fields) {
      if (field.code == code && field.page == 1) return &field;
    }
    return nullptr;
  }
};

/// Inspects `size` octets at `data`.  Any octets are fine: what cannot be read becomes a remark.
/// Time and memory are linear in `size`.
MMSBRIX_API Inspection inspect(const void* data, std::size_t size);

/// The standard's name of a message type octet, "m-send-req" and so on; "" when none is assigned.
MMSBRIX_API std::string messageTypeName(int type);
/// The standard's name of a response status octet, "Ok", "Error-unspecified" and so on; "" when
/// none.
MMSBRIX_API std::string responseStatusName(int status);
/// The standard's name of a retrieve status octet, "Ok", "Error-transient-failure" and so on; ""
/// when none.
MMSBRIX_API std::string retrieveStatusName(int status);

}  // namespace mmsbrix

#endif  // MMSBRIX_MMS_INSPECTOR_H
