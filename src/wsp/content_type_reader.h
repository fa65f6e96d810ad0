// Content-type values and parameters, read octet by octet.  Reading never leaves the octets given;
// views handed out point into them or into static tables.
// [WAP-230 8.4.2.4 parameters, 8.4.2.24 Content-type, Appendix A, table 38]
#ifndef MMSBRIX_WSP_CONTENT_TYPE_READER_H
#define MMSBRIX_WSP_CONTENT_TYPE_READER_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "wsp/octets.h"

namespace mmsbrix {

inline constexpr std::uint8_t kAnyCharsetOctet = 0x80;  ///< Any-charset, no MIBenum

/// The media type that some relays send without its terminating zero.
inline constexpr std::string_view kOctetStream = "application/octet-stream";

/// How the value of a parameter is coded.
enum class ParameterKind : std::uint8_t {
  qValue,
  charset,       ///< well-known-charset
  version,       ///< version-value
  integer,       ///< integer-value, delta-seconds
  shortInteger,  ///< a number below 128
  text,          ///< text-string
  fieldName,     ///< field-name
  media,         ///< constrained-encoding of a media type
  textValue,     ///< no-value, token-text or quoted-string
  noValue,
  date,     ///< date-value
  untyped,  ///< untyped-value: an integer-value or a text-value
};

/// The kind of a well-known parameter; untyped for a number that is not assigned and for -1, which
/// stands for a textual name.
[[nodiscard]] ParameterKind parameterKind(int code) noexcept;

/// How a parameter's value stands on the wire.
enum class ParameterForm : std::uint8_t {
  missing,  ///< nothing behind the name
  noValue,  ///< a zero octet
  text,     ///< characters
  quoted,   ///< characters behind a quotation mark, where a quoted-string may stand
  binary,   ///< a number or a date
};

/// A parameter as it stands on the wire.
struct Parameter {
  Parameter() = default;
  Parameter(const Parameter&) = delete;  // the value may lie in `made`
  Parameter& operator=(const Parameter&) = delete;

  std::size_t offset = 0;  ///< of its first octet, in the octets of the content-type value
  int code = -1;           ///< well-known number, -1 for a textual name
  std::string_view name;   ///< empty for a number that is not assigned
  ParameterForm form = ParameterForm::missing;
  std::string_view value;      ///< as text, without the mark that opens a quoted-string
  bool valueIsStatic = false;  ///< the value is a name from a table
  std::string made;            ///< where the value is text that stands nowhere else, a number say
};

/// Names media types by number; empty for a number without a name.
using MediaTypeNames = std::string_view (*)(std::uint64_t number) noexcept;
/// The media type of a well-known or a registered number, empty for one that is not assigned.
[[nodiscard]] std::string_view mediaTypeName(std::uint64_t number) noexcept;

/// Reads one parameter; false, with nothing consumed, at the end or when none can be read there.  A
/// last text without its zero is taken as far as it goes, and `in` has failed then.
bool readParameter(Reader& in, MediaTypeNames mediaTypes, Parameter& parameter);

/// Octets that the content-type value ahead claims, without consuming it; like `fieldSize`, save
/// that "application/octet-stream" needs no terminating zero.
[[nodiscard]] std::size_t contentTypeSize(const Reader& in) noexcept;

/// Reads one content-type value: the media type at once, then parameter by parameter.
class ContentTypeReader {
 public:
  /// `value` holds the whole value, as long as `contentTypeSize` says or as is there.
  explicit ContentTypeReader(Octets value, MediaTypeNames mediaTypes = mediaTypeName) noexcept;

  /// The media type; empty for a number that is not assigned.
  [[nodiscard]] std::string_view mediaType() const noexcept { return mediaType_; }
  /// The media type's number where it stands as one.
  [[nodiscard]] std::optional<std::uint64_t> mediaNumber() const noexcept { return mediaNumber_; }
  /// Reads the next parameter; false at the end, or when none can be read there.
  bool next(Parameter& parameter);
  /// The octets of the parameters not yet read, which may also be read from there.
  [[nodiscard]] Reader& parameters() noexcept { return parameters_; }
  /// True when `next` ended before the octets did.
  [[nodiscard]] bool stoppedEarly() const noexcept { return parameters_.left() > 0; }
  /// Offset, in the value, of what has not been read.
  [[nodiscard]] std::size_t position() const noexcept {
    return parametersOffset_ + parameters_.position();
  }

 private:
  MediaTypeNames mediaTypes_;
  std::string_view mediaType_;
  std::optional<std::uint64_t> mediaNumber_;
  Reader parameters_;
  std::size_t parametersOffset_ = 0;
};

}  // namespace mmsbrix

#endif  // MMSBRIX_WSP_CONTENT_TYPE_READER_H
