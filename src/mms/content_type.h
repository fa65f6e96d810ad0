// Content-type values and the headers of body parts, read and written.  Reading never leaves the
// octets given; views handed out point into them or into static tables. [WAP-230 8.4.2.24
// Content-type, 8.4.2.4 parameters, 8.5 multipart]
#ifndef MMSBRIX_MMS_CONTENT_TYPE_H
#define MMSBRIX_MMS_CONTENT_TYPE_H

#include <string_view>

#include "mms/item_budget.h"
#include "model/mmhdr.h"
#include "wsp/content_type_reader.h"
#include "wsp/header_walker.h"
#include "wsp/octets.h"

namespace mmsbrix {

inline constexpr const char kContentTypeName[] = "Content-Type";

/// A reader of one content-type value, with the media types that the codec numbers.
[[nodiscard]] ContentTypeReader contentTypeReader(Octets value) noexcept;
/// Reads a content-type value into a header named "Content-Type", as many parameters as there is
/// room for.
void readContentType(Octets value, CMMHdr& header, ItemBudget& budget);
/// Writes a header's value and parameters as a content-type value.
void writeContentType(Writer& out, const CMMHdr& header);
/// True for a media type whose body is a WSP multipart; upper and lower case differ.
[[nodiscard]] bool isMultipart(std::string_view mediaType) noexcept;
/// The same in any case: what a media type means to peers, whatever is done with it here.
[[nodiscard]] bool namesMultipart(std::string_view mediaType) noexcept;

/// Name of a part header, "" for a number that is not assigned (or stands on another code page).
[[nodiscard]] std::string_view partHeaderName(const HeaderItem& item) noexcept;
/// The value of a part header that stands as text, without the mark that opens a quoted-string; ""
/// for another.
[[nodiscard]] std::string_view partHeaderText(const HeaderItem& item) noexcept;
/// Reads a part header of that name, `partHeaderName`, parameters included; false, with `header`
/// untouched, for a value that is not understood.
bool readPartHeaderValue(const HeaderItem& item, std::string_view name, CMMHdr& header,
                         ItemBudget& budget);
/// Writes one header of a part: a well-known number or the name, then the value as text, quoted for
/// Content-ID.  Parameters are not written.
void writePartHeader(Writer& out, const CMMHdr& header);

}  // namespace mmsbrix

#endif  // MMSBRIX_MMS_CONTENT_TYPE_H
