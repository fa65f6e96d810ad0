// Content-type values and the headers of body parts, read and written.  Reading never leaves the
// octets given; views handed out point into them or into static tables. [WAP-230 8.4.2.24
// Content-type, 8.4.2.4 parameters, 8.5 multipart]
#ifndef MMSBRIX_MMS_CONTENT_TYPE_H
#define MMSBRIX_MMS_CONTENT_TYPE_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "mms/header_walker.h"
#include "model/mmhdr.h"
#include "wsp/octets.h"

namespace mmsbrix {

inline constexpr const char kContentTypeName[] = "Content-Type";

/// Octets that the content-type value ahead claims, without consuming it; like `fieldSize`, save
/// that "application/octet-stream" needs no terminating zero.
[[nodiscard]] std::size_t contentTypeSize(const Reader& in) noexcept;

/// A parameter as it stands on the wire.
struct Parameter {
  std::size_t offset = 0;  ///< of its first octet, in the octets of the content-type value
  int code = -1;           ///< well-known number, -1 for a textual name
  std::string_view name;   ///< empty for a number that is not assigned
  std::string value;
};

/// Reads one content-type value: the media type at once, then parameter by parameter.
class ContentTypeReader {
 public:
  /// `value` holds the whole value, as long as `contentTypeSize` says or as is there.
  explicit ContentTypeReader(Octets value) noexcept;

  /// The media type; empty for a number that is not assigned.
  [[nodiscard]] std::string_view mediaType() const noexcept { return mediaType_; }
  /// The media type's number where it stands as one.
  [[nodiscard]] std::optional<std::uint64_t> mediaNumber() const noexcept { return mediaNumber_; }
  /// Reads the next parameter; false at the end, or when none can be read there.
  bool next(Parameter& parameter);
  /// The octets of the parameters not yet read.
  [[nodiscard]] const Reader& parameters() const noexcept { return parameters_; }
  /// True when `next` ended before the octets did.
  [[nodiscard]] bool stoppedEarly() const noexcept { return parameters_.left() > 0; }
  /// Offset, in the value, of what has not been read.
  [[nodiscard]] std::size_t position() const noexcept {
    return parametersOffset_ + parameters_.position();
  }

 private:
  std::string_view mediaType_;
  std::optional<std::uint64_t> mediaNumber_;
  Reader parameters_;
  std::size_t parametersOffset_ = 0;
};

/// Reads a content-type value into a header named "Content-Type".
void readContentType(Octets value, CMMHdr& header);
/// Writes a header's value and parameters as a content-type value.
void writeContentType(Writer& out, const CMMHdr& header);
/// True for a media type whose body is a WSP multipart; upper and lower case differ.
[[nodiscard]] bool isMultipart(std::string_view mediaType) noexcept;

/// Name of a part header, "" for a number that is not assigned (or stands on another code page).
[[nodiscard]] std::string_view partHeaderName(const HeaderItem& item) noexcept;
/// Reads the value of a part header, parameters included; false, with `header` untouched, for a
/// value that is not understood.
bool readPartHeaderValue(const HeaderItem& item, CMMHdr& header);
/// Writes one header of a part: a well-known number or the name, then the value as text, quoted for
/// Content-ID.  Parameters are not written.
void writePartHeader(Writer& out, const CMMHdr& header);

}  // namespace mmsbrix

#endif  // MMSBRIX_MMS_CONTENT_TYPE_H
