// The text of XML documents, whatever they are encoded in, as UTF-8.
#ifndef MMSBRIX_SMIL_DOCUMENT_TEXT_H
#define MMSBRIX_SMIL_DOCUMENT_TEXT_H

#include <optional>
#include <string>
#include <string_view>

namespace mmsbrix {

/// The text of a file: a mark or the form of its first octets tells UTF-16, the XML declaration
/// other encodings, and UTF-8 is what is left.  Nothing, with `reason` set, when the declared
/// encoding is unknown or the octets are not valid in it; octets that claim to be UTF-8 are not
/// checked.  [W3C XML 1.0, appendix F]
[[nodiscard]] std::optional<std::string> textOfFile(std::string_view octets, std::string& reason);

/// A text in memory: UTF-8 when it is that, Windows-1252 otherwise, whatever it declares.
[[nodiscard]] std::string textOfMemory(std::string_view octets);

}  // namespace mmsbrix

#endif  // MMSBRIX_SMIL_DOCUMENT_TEXT_H
