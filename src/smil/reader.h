// SMIL text to a presentation: typed nodes by tag, whatever else there is kept as generic ones.
#ifndef MMSBRIX_SMIL_READER_H
#define MMSBRIX_SMIL_READER_H

#include <optional>
#include <string_view>

#include "platform/xml.h"
#include "smil/smil.h"

namespace mmsbrix {

/// Reads a document into `smil`, an empty presentation.  The error of a malformed one; `isSmil`
/// tells whether the outermost element of a well-formed one is "smil".
[[nodiscard]] std::optional<platform::XmlError> readSmil(std::string_view utf8, CSMIL& smil,
                                                         bool& isSmil);

}  // namespace mmsbrix

#endif  // MMSBRIX_SMIL_READER_H
