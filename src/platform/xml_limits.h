// What is looked for in XML text before a parser sees it, the same for every parser.
#ifndef MMSBRIX_PLATFORM_XML_LIMITS_H
#define MMSBRIX_PLATFORM_XML_LIMITS_H

#include <cstddef>
#include <optional>
#include <string_view>

#include "platform/xml.h"

namespace mmsbrix::platform {

/// Why a text is refused before parsing: its size, its zeros, or attributes that make a parser work
/// without end.
[[nodiscard]] std::optional<XmlError> refusedBeforehand(std::string_view utf8);
/// The error that stands at an offset.
[[nodiscard]] XmlError errorAt(std::string_view text, std::size_t offset, const char* reason);
/// False when quoted text, which becomes markup where an entity is used, may have an element with
/// too many attributes or a declaration with too many alternatives.
[[nodiscard]] bool attributesAreBounded(std::string_view text) noexcept;
[[nodiscard]] bool hasDocumentType(std::string_view text) noexcept;
/// What ends a comment, character data or an instruction that a text begins with; "" for a tag.
[[nodiscard]] std::string_view endOfNoTag(std::string_view text) noexcept;
[[nodiscard]] inline bool isBlank(std::string_view text) noexcept {
  return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

}  // namespace mmsbrix::platform

#endif  // MMSBRIX_PLATFORM_XML_LIMITS_H
