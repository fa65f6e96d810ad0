// Seam: reading XML.  Nothing outside the text is ever loaded: no DTD, no external entity, no
// network.
#ifndef MMSBRIX_PLATFORM_XML_H
#define MMSBRIX_PLATFORM_XML_H

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace mmsbrix::platform {

/// Octets of a document, as UTF-8.
inline constexpr std::size_t kMaxXmlOctets = std::size_t{8} << 20;
/// Elements within each other, the outermost included.
inline constexpr unsigned kMaxXmlDepth = 200;
/// Elements, attributes, texts and comments of a document.
inline constexpr unsigned kMaxXmlNodes = 100000;
/// Attributes of one element, and alternatives of one declaration: parsers compare each with all
/// others.  In a document with a document type every "=" and "|" between two "<" counts as one.
inline constexpr unsigned kMaxXmlAttributes = 256;
/// Declarations of a document type.
inline constexpr unsigned kMaxXmlDeclarations = 1000;
/// Octets that references to entities stand for, all together, and that default attributes add.
inline constexpr std::size_t kMaxXmlEntityOctets = std::size_t{1} << 20;

struct XmlAttribute {
  std::string_view
      name;  ///< as it stands, prefix included; namespace declarations are attributes too
  std::string_view value;  ///< with references resolved
};

/// Receives a document in its order.  The end of the outermost element is told last.  Texts last as
/// long as the call.
class XmlEvents {
 public:
  virtual void startElement(std::string_view name, std::span<const XmlAttribute> attributes) = 0;
  virtual void endElement() = 0;
  /// What is neither element nor attribute, by its name in the DOM: "#text" (not for blanks only),
  /// "#cdata-section", "#comment"; a processing instruction is "#processing-instruction".
  virtual void other(const char* name) = 0;
  /// Characters of a text outside CDATA sections, in UTF-8 and in as many pieces as the parser has,
  /// before `other` tells of the text.  Blanks come too.
  virtual void characters(std::string_view /*piece*/) {}

 protected:
  ~XmlEvents() = default;
};

/// Where and why reading stopped; line and position count from 1, both 0 for the document as a
/// whole.
struct XmlError {
  int line = 0;
  int position = 0;
  std::string reason;
  bool isOfDocument = true;  ///< false when the platform has nothing to read XML with
};

/// Reads a document, whose encoding is UTF-8 whatever it declares, without validating it.  Entities
/// declared in it are resolved, those declared elsewhere left out.  Nothing for a well-formed
/// document, else the first error; also for one beyond a limit above.  Events of what stands before
/// an error may have been told.
[[nodiscard]] std::optional<XmlError> readXml(std::string_view utf8, XmlEvents& events);

}  // namespace mmsbrix::platform

#endif  // MMSBRIX_PLATFORM_XML_H
