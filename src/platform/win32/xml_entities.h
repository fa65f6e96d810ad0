// What a document type declares, bounded before the XML component sees it.
#ifndef MMSBRIX_PLATFORM_WIN32_XML_ENTITIES_H
#define MMSBRIX_PLATFORM_WIN32_XML_ENTITIES_H

#include <optional>
#include <string_view>

#include "platform/xml.h"

namespace mmsbrix::platform {

/// Why a document with a document type is refused: too many declarations, entities that stand for
/// too much text, or elements that may be nested too deeply.  Whatever reads like a declaration or
/// a reference counts as one, wherever it stands.
[[nodiscard]] std::optional<XmlError> refusedDeclarations(std::string_view utf8);

}  // namespace mmsbrix::platform

#endif  // MMSBRIX_PLATFORM_WIN32_XML_ENTITIES_H
