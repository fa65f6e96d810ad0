#include "platform/xml_limits.h"

#include <algorithm>
#include <string>

namespace mmsbrix::platform {
namespace {

// Where the attributes of an element become too many in a document without a document type; npos
// when they never do.  Comments, character data, instructions and quoted values do not count.
//
// What lies between tags, and in quotes, is skipped by searches, which look at many octets at once.
std::size_t tooManyAttributes(std::string_view text) noexcept {
  unsigned count = 0;
  bool inTag = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (!inTag) i = std::min(text.find('<', i), text.size());
    if (i == text.size()) break;
    const char c = text[i];
    if (c == '<') {
      const std::string_view end = endOfNoTag(text.substr(i));
      inTag = end.empty();
      count = 0;
      if (!inTag) i = std::min(text.find(end, i + 2), text.size());
    } else if (c == '"' || c == '\'') {
      i = std::min(text.find(c, i + 1), text.size());
    } else if (c == '>') {
      inTag = false;
    } else if (c == '=' && ++count > kMaxXmlAttributes) {
      return i;
    }
  }
  return std::string_view::npos;
}

}  // namespace

// A parser compares each attribute of an element, and each alternative of a declaration, with all
// others.  In entities and document types quoted text may become markup, so that all of it counts.
bool attributesAreBounded(std::string_view text) noexcept {
  unsigned count = 0;
  for (const char c : text) {
    if (c == '<') {
      count = 0;
    } else if ((c == '=' || c == '|') && ++count > kMaxXmlAttributes) {
      return false;
    }
  }
  return true;
}

std::string_view endOfNoTag(std::string_view text) noexcept {
  if (text.size() < 2) return "";
  if (text[1] == '?') return "?>";
  if (text[1] != '!') return "";
  if (text.starts_with("<!--")) return "-->";
  return text.starts_with("<![CDATA[") ? "]]>" : "";
}

// Looked for by its second character, which is rare where the first is in every element.
bool hasDocumentType(std::string_view text) noexcept {
  constexpr std::string_view kBehindBracket = "!DOCTYPE";
  std::size_t at = 0;
  while ((at = text.find(kBehindBracket, at)) != std::string_view::npos) {
    if (at > 0 && text[at - 1] == '<') return true;
    ++at;
  }
  return false;
}

XmlError errorAt(std::string_view text, std::size_t offset, const char* reason) {
  const std::string_view before = text.substr(0, offset);
  const auto lines = std::count(before.begin(), before.end(), '\n');
  const std::size_t lineStart = before.rfind('\n') + 1;  // 0 without one
  return {static_cast<int>(lines) + 1, static_cast<int>(offset - lineStart) + 1, reason};
}

std::optional<XmlError> refusedBeforehand(std::string_view utf8) {
  if (utf8.size() > kMaxXmlOctets) return XmlError{0, 0, "The document is too large"};
  // A parser guesses at encodings from zeros at the beginning, and ends at one elsewhere.
  if (const std::size_t zero = utf8.find('\0'); zero != std::string_view::npos) {
    return errorAt(utf8, zero, "A zero octet is no character");
  }
  constexpr const char* kTooMany = "An element has too many attributes";
  if (hasDocumentType(utf8)) {
    if (!attributesAreBounded(utf8)) return XmlError{0, 0, kTooMany};
  } else if (const std::size_t place = tooManyAttributes(utf8); place != std::string_view::npos) {
    return errorAt(utf8, place, kTooMany);
  }
  if (utf8.empty()) return XmlError{0, 0, "The document is empty"};
  return std::nullopt;
}

}  // namespace mmsbrix::platform
