// Names that XML allows for elements and attributes.  [W3C XML 1.0, 2.3]
#ifndef MMSBRIX_SMIL_XML_NAMES_H
#define MMSBRIX_SMIL_XML_NAMES_H

#include <string_view>

namespace mmsbrix {

/// True for a Name; false for octets that are not UTF-8.
[[nodiscard]] bool isXmlName(std::string_view utf8) noexcept;

}  // namespace mmsbrix

#endif  // MMSBRIX_SMIL_XML_NAMES_H
