// The plainest documents, read without a parser: elements, attributes and blanks in ASCII, as
// phones and this library's writer write presentations.
#ifndef MMSBRIX_PLATFORM_PLAIN_XML_H
#define MMSBRIX_PLATFORM_PLAIN_XML_H

#include <string_view>

#include "platform/xml.h"

namespace mmsbrix::platform {

/// Tells a document of at most the simplest XML declaration, elements, quoted attributes and
/// blanks, within all limits; a parser would tell the same.  False, with nothing told, for every
/// other text, whether it has more (references, comments, a document type, texts, characters beyond
/// ASCII) or is no XML: whoever knows all of XML says what it is.
///
/// It is here for speed only: a parser takes three times the instructions for such a document,
/// because it is ready for everything at every character.
bool readPlainXml(std::string_view text, XmlEvents& events);

}  // namespace mmsbrix::platform

#endif  // MMSBRIX_PLATFORM_PLAIN_XML_H
