// Over the system's XML DOM component, whose tree is walked once and thrown away.
#include "platform/xml.h"

#include <windows.h>

#include <msxml.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "platform/unicode.h"
#include "platform/win32/com.h"
#include "platform/win32/xml_entities.h"
#include "platform/xml_limits.h"

namespace mmsbrix::platform {
namespace {

constexpr GUID kDocumentClass = {
    0xF6D90F11, 0x9C73, 0x11D3, {0xB3, 0x2E, 0x00, 0xC0, 0x4F, 0x99, 0x0B, 0xB4}};
constexpr GUID kOldDocumentClass = {
    0x2933BF90, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};
constexpr GUID kDocumentInterface = {
    0x2933BF81, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};

using Document = ComPointer<IXMLDOMDocument>;
using Node = ComPointer<IXMLDOMNode>;

// The text that stands for a result of the component that nobody expects.
XmlError componentError() {
  return {0, 0, "The XML component does not answer", false};
}

Document createDocument() {
  Document document;
  for (const GUID& documentClass : {kDocumentClass, kOldDocumentClass}) {
    if (SUCCEEDED(::CoCreateInstance(documentClass, nullptr, CLSCTX_INPROC_SERVER,
                                     kDocumentInterface,
                                     reinterpret_cast<void**>(document.out())))) {
      break;
    }
  }
  return document;
}

// A text handed over as UTF-16 has no other encoding, whatever it declares.  Blanks take the place
// of the declaration, so that every character stays where it is.
std::wstring withoutEncoding(std::string_view utf8) {
  std::wstring text = wideFromUtf8(utf8);
  if (!text.starts_with(L"<?xml")) return text;
  const std::size_t end = text.find(L"?>");
  const std::size_t name = text.find(L"encoding");
  if (end == std::wstring::npos || name > end) return text;
  const std::size_t open = text.find_first_of(L"\"'", name);
  if (open > end) return text;
  const std::size_t close = text.find(text[open], open + 1);
  if (close > end) return text;
  std::fill(text.begin() + static_cast<std::ptrdiff_t>(name),
            text.begin() + static_cast<std::ptrdiff_t>(close) + 1, L' ');
  return text;
}

// Where the elements are nested too deeply, told before a parser builds them; npos when they are
// not.
std::size_t tooDeep(std::string_view text) noexcept {
  unsigned depth = 0;
  for (std::size_t i = 0; (i = text.find('<', i)) != std::string_view::npos; ++i) {
    const std::string_view end = endOfNoTag(text.substr(i));
    if (!end.empty()) {
      i = std::min(text.find(end, i + 2), text.size());
      continue;
    }
    const bool closes = text.substr(i).starts_with("</");
    const std::size_t begin = i;
    for (++i; i < text.size() && text[i] != '>'; ++i) {
      if (text[i] == '"' || text[i] == '\'') i = std::min(text.find(text[i], i + 1), text.size());
    }
    if (i >= text.size()) break;
    if (closes) {
      depth -= depth > 0 ? 1 : 0;
    } else if (text[i - 1] != '/' && ++depth > kMaxXmlDepth) {
      return begin;
    }
  }
  return std::string_view::npos;
}

std::optional<XmlError> refused(std::string_view utf8) {
  if (auto common = refusedBeforehand(utf8)) return common;
  for (std::string_view rest = utf8; !rest.empty();) {
    const std::size_t length = utf8SequenceLength(rest);
    if (length == 0) return errorAt(utf8, utf8.size() - rest.size(), "The octets are no UTF-8");
    rest.remove_prefix(length);
  }
  if (hasDocumentType(utf8)) {
    if (auto unbounded = refusedDeclarations(utf8)) return unbounded;
  } else if (const std::size_t place = tooDeep(utf8); place != std::string_view::npos) {
    return errorAt(utf8, place, "The elements are nested too deeply");
  }
  return std::nullopt;
}

bool load(const Document& document, const ComText& text) {
  VARIANT_BOOL loaded = VARIANT_FALSE;
  return document->loadXML(text.get(), &loaded) == S_OK && loaded != VARIANT_FALSE;
}

XmlError parseError(const Document& document) {
  ComPointer<IXMLDOMParseError> error;
  if (document->get_parseError(error.out()) != S_OK) return {0, 0, "The document is broken"};
  LONG line = 0;
  LONG position = 0;
  LONG code = 0;
  ComText reason;
  error->get_line(&line);
  error->get_linepos(&position);
  error->get_errorCode(&code);
  error->get_reason(reason.out());
  std::string text = reason.utf8();
  while (!text.empty() && isBlank(text.substr(text.size() - 1))) text.pop_back();
  if (text.empty()) text = "Error " + std::to_string(static_cast<unsigned long>(code));
  return {static_cast<int>(line), static_cast<int>(position), std::move(text)};
}

/// Tells of the nodes of one document, without recursion.
class Walk {
 public:
  explicit Walk(XmlEvents& events) noexcept : events_(events) {}

  std::optional<XmlError> run(Node root) {
    // The nodes entered so far; references to entities are entered, but are no level of their own.
    std::vector<Node> open;
    Node node = std::move(root);
    for (std::size_t visited = 0; node && reason_ == nullptr; ++visited) {
      // What stands for references may hang together in circles in a component's tree.
      if (visited > 2 * kMaxXmlNodes) reason_ = "The document has too many elements";
      DOMNodeType type = NODE_INVALID;
      node->get_nodeType(&type);
      const bool enters = type == NODE_ELEMENT || type == NODE_ENTITY_REFERENCE;
      if (!enters) tell(node, type);
      if (type == NODE_ELEMENT) startElement(node);
      Node next;
      if (enters) node->get_firstChild(next.out());
      if (enters) open.push_back(std::move(node));
      if (!enters) node->get_nextSibling(next.out());
      while (!next && !open.empty()) {
        open.back()->get_nodeType(&type);
        if (type == NODE_ELEMENT) endElement();
        if (open.size() > 1) open.back()->get_nextSibling(next.out());
        open.pop_back();
      }
      node = std::move(next);
    }
    if (reason_ != nullptr) return XmlError{0, 0, reason_};
    return std::nullopt;
  }

 private:
  void count(std::size_t more) {
    nodes_ += more;
    if (nodes_ > kMaxXmlNodes) reason_ = "The document has too many elements";
  }
  void flushText() {
    if (!std::exchange(textPending_, false)) return;
    count(1);
    if (reason_ == nullptr) events_.other("#text");
  }
  void other(const char* name) {
    flushText();
    count(1);
    if (reason_ == nullptr) events_.other(name);
  }

  void startElement(const Node& node) {
    flushText();
    if (++depth_ > kMaxXmlDepth) {
      reason_ = "The elements are nested too deeply";
      return;
    }
    ComText name;
    node->get_nodeName(name.out());
    std::vector<std::pair<std::string, std::string>> texts;
    ComPointer<IXMLDOMNamedNodeMap> map;
    if (node->get_attributes(map.out()) == S_OK && map) {
      map->reset();
      Node attribute;
      while (map->nextNode(attribute.out()) == S_OK && attribute) {
        ComText attributeName;
        ComValue value;
        attribute->get_nodeName(attributeName.out());
        attribute->get_nodeValue(value.out());
        texts.emplace_back(attributeName.utf8(), value.utf8());
        attributeOctets_ += texts.back().first.size() + texts.back().second.size();
      }
    }
    std::vector<XmlAttribute> attributes;
    for (const auto& [attributeName, value] : texts) attributes.push_back({attributeName, value});
    count(1 + attributes.size());
    if (attributeOctets_ > kMaxXmlOctets + kMaxXmlEntityOctets) {
      reason_ = "The default attributes are too much text";
    }
    if (reason_ == nullptr) events_.startElement(name.utf8(), attributes);
  }
  void endElement() {
    flushText();
    --depth_;
    if (reason_ == nullptr) events_.endElement();
  }

  void tell(const Node& node, DOMNodeType type) {
    switch (type) {
      case NODE_TEXT: {
        ComValue value;
        node->get_nodeValue(value.out());
        const std::string text = value.utf8();
        if (!isBlank(text)) textPending_ = true;
        events_.characters(text);
        return;
      }
      case NODE_CDATA_SECTION:
        return other("#cdata-section");
      case NODE_COMMENT:
        return other("#comment");
      case NODE_PROCESSING_INSTRUCTION:
        return other("#processing-instruction");
      default:
        return;
    }
  }

  XmlEvents& events_;
  const char* reason_ = nullptr;  // why it stopped
  unsigned depth_ = 0;
  std::size_t nodes_ = 0;
  std::size_t attributeOctets_ = 0;
  bool textPending_ = false;  // text that is not only blanks, and not told yet
};

}  // namespace

std::optional<XmlError> readXml(std::string_view utf8, XmlEvents& events) {
  if (auto error = refused(utf8)) return error;
  const ComScope com;
  const Document document = createDocument();
  if (!document || FAILED(document->put_async(VARIANT_FALSE))) return componentError();
  // Blanks are text like any other to the receiver of events, which is told of them.
  document->put_preserveWhiteSpace(VARIANT_TRUE);
  // Nothing outside the text is loaded, not even on the first attempt.
  document->put_resolveExternals(VARIANT_FALSE);
  const ComText text(withoutEncoding(utf8));
  if (!load(document, text)) {
    // A document type that the text does not keep to, or that cannot be reached, is no failure.
    document->put_resolveExternals(VARIANT_FALSE);
    document->put_validateOnParse(VARIANT_FALSE);
    if (!load(document, text)) return parseError(document);
  }
  ComPointer<IXMLDOMElement> element;
  if (document->get_documentElement(element.out()) != S_OK || !element) return componentError();
  Node root;
  *root.out() = element.release();
  return Walk(events).run(std::move(root));
}

}  // namespace mmsbrix::platform
