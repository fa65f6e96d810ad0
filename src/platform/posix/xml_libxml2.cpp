// Over libxml2's event interface, so that no document tree of its own is built.
#include "platform/xml.h"

#include <libxml/SAX2.h>
#include <libxml/parser.h>
#include <libxml/parserInternals.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <exception>
#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/plain_xml.h"
#include "platform/xml_limits.h"

namespace mmsbrix::platform {
namespace {

const char* chars(const xmlChar* text) noexcept {
  return reinterpret_cast<const char*>(text);
}

// What the callbacks of one run share.  The content of an entity is read by a nested parser with
// the same callbacks, which cannot be stopped from here: after a stop every event is dropped
// instead, and no entity is found.
struct Run {
  Run(xmlParserCtxtPtr theParser, XmlEvents& theEvents) : parser(theParser), events(theEvents) {}

  xmlParserCtxtPtr parser;
  XmlEvents& events;
  std::optional<XmlError> error;
  std::exception_ptr exception;
  bool stopped = false;
  unsigned depth = 0;
  unsigned nodes = 0;
  unsigned declarations = 0;
  std::size_t entityOctets = 0;
  bool textPending = false;  // text that is not only blanks, and not told yet
  std::unordered_map<std::string, std::vector<std::pair<std::string, std::string>>> defaults;
  std::size_t defaultOctets = 0;         // that defaults, kept by element, have put into elements
  std::vector<XmlAttribute> attributes;  // of the element being told

  void stop() {
    stopped = true;
    xmlStopParser(parser);
  }
  void fail(const char* reason) {
    if (!stopped) {
      error = XmlError{xmlSAX2GetLineNumber(parser), xmlSAX2GetColumnNumber(parser), reason};
    }
    stop();
  }
  void count(std::size_t more) {
    nodes += static_cast<unsigned>(more);
    if (nodes > kMaxXmlNodes) fail("The document has too many elements");
  }
  void flushText() {
    if (!std::exchange(textPending, false)) return;
    count(1);
    if (!stopped) events.other("#text");
  }
  void other(const char* name) {
    flushText();
    count(1);
    if (!stopped) events.other(name);
  }
  void declared() {
    if (++declarations > kMaxXmlDeclarations) fail("The document type has too many declarations");
  }
  // Defaults that a document type declares are text that the document does not have, like entities.
  void addDefaults(const char* tag) {
    const auto ofElement = defaults.find(tag);
    if (ofElement == defaults.end()) return;
    for (const std::pair<std::string, std::string>& declared : ofElement->second) {
      const XmlAttribute attribute{declared.first, declared.second};
      const auto isNamesake = [&](const XmlAttribute& own) { return own.name == attribute.name; };
      if (std::any_of(attributes.begin(), attributes.end(), isNamesake)) continue;
      defaultOctets += attribute.name.size() + attribute.value.size();
      if (defaultOctets > kMaxXmlEntityOctets)
        return fail("The default attributes are too much text");
      attributes.push_back(attribute);
    }
  }
  xmlEntityPtr resolved(xmlEntityPtr entity) {
    if (entity != nullptr && entity->length > 0) {
      entityOctets += static_cast<std::size_t>(entity->length);
      if (entityOctets > kMaxXmlEntityOctets) {
        fail("The entities stand for too much text");
        return nullptr;
      }
    }
    return entity;
  }
};

// Runs one callback; exceptions do not pass through the parser, which is C.
template <class Step>
void inRun(void* user, Step&& step) noexcept {
  Run& run = *static_cast<Run*>(user);
  if (run.stopped) return;
  try {
    step(run);
  } catch (...) {
    run.exception = std::current_exception();
    run.stop();
  }
}

void startElement(void* user, const xmlChar* name, const xmlChar** attributes) {
  inRun(user, [&](Run& run) {
    run.flushText();
    if (++run.depth > kMaxXmlDepth) return run.fail("The elements are nested too deeply");
    run.attributes.clear();
    for (; attributes != nullptr && attributes[0] != nullptr; attributes += 2) {
      run.attributes.push_back(
          {chars(attributes[0]), attributes[1] == nullptr ? "" : chars(attributes[1])});
    }
    if (!run.defaults.empty()) run.addDefaults(chars(name));
    run.count(1 + run.attributes.size());
    if (!run.stopped) run.events.startElement(chars(name), run.attributes);
  });
}

void endElement(void* user, const xmlChar*) {
  inRun(user, [](Run& run) {
    run.flushText();
    --run.depth;
    if (!run.stopped) run.events.endElement();
  });
}

void characters(void* user, const xmlChar* text, int length) {
  inRun(user, [&](Run& run) {
    const std::string_view piece(chars(text), static_cast<std::size_t>(length));
    if (!isBlank(piece)) run.textPending = true;
    if (!run.stopped) run.events.characters(piece);
  });
}

void cdataBlock(void* user, const xmlChar*, int) {
  inRun(user, [](Run& run) { run.other("#cdata-section"); });
}

void comment(void* user, const xmlChar*) {
  inRun(user, [](Run& run) {
    if (run.depth > 0) run.other("#comment");
  });
}

void processingInstruction(void* user, const xmlChar*, const xmlChar*) {
  inRun(user, [](Run& run) {
    if (run.depth > 0) run.other("#processing-instruction");
  });
}

void startDocument(void* user) {
  inRun(user, [](Run& run) { xmlSAX2StartDocument(run.parser); });
}

void internalSubset(void* user, const xmlChar* name, const xmlChar* publicId,
                    const xmlChar* systemId) {
  inRun(user, [&](Run& run) { xmlSAX2InternalSubset(run.parser, name, publicId, systemId); });
}

void entityDecl(void* user, const xmlChar* name, int type, const xmlChar* publicId,
                const xmlChar* systemId, xmlChar* content) {
  inRun(user, [&](Run& run) {
    run.declared();
    if (content != nullptr && !attributesAreBounded(chars(content))) {
      run.fail("An element has too many attributes");
    }
    if (run.stopped) return;
    if (type == XML_EXTERNAL_PARAMETER_ENTITY) {
      // It would be loaded where it is used, so it is declared as one that stands for nothing.
      xmlChar nothing[] = "";
      xmlSAX2EntityDecl(run.parser, name, XML_INTERNAL_PARAMETER_ENTITY, nullptr, nullptr, nothing);
    } else {
      xmlSAX2EntityDecl(run.parser, name, type, publicId, systemId, content);
    }
  });
}

void attributeDecl(void* user, const xmlChar* element, const xmlChar* name, int, int,
                   const xmlChar* value, xmlEnumerationPtr values) {
  xmlFreeEnumeration(values);
  inRun(user, [&](Run& run) {
    run.declared();
    if (value != nullptr) run.defaults[chars(element)].emplace_back(chars(name), chars(value));
  });
}

void elementDecl(void* user, const xmlChar*, int, xmlElementContentPtr) {
  inRun(user, [](Run& run) { run.declared(); });
}

void notationDecl(void* user, const xmlChar*, const xmlChar*, const xmlChar*) {
  inRun(user, [](Run& run) { run.declared(); });
}

void unparsedEntityDecl(void* user, const xmlChar* name, const xmlChar* publicId,
                        const xmlChar* systemId, const xmlChar* notation) {
  inRun(user, [&](Run& run) {
    run.declared();
    if (!run.stopped) {
      xmlSAX2UnparsedEntityDecl(run.parser, name, publicId, systemId, notation);
    }
  });
}

xmlEntityPtr getEntity(void* user, const xmlChar* name) {
  xmlEntityPtr entity = nullptr;
  inRun(user, [&](Run& run) { entity = run.resolved(xmlSAX2GetEntity(run.parser, name)); });
  return entity;
}

xmlEntityPtr getParameterEntity(void* user, const xmlChar* name) {
  xmlEntityPtr entity = nullptr;
  inRun(user,
        [&](Run& run) { entity = run.resolved(xmlSAX2GetParameterEntity(run.parser, name)); });
  return entity;
}

// Errors are remembered in several places, and a later one may have replaced this.
bool lacksMemory(const xmlParserCtxt& parser) noexcept {
  const xmlError* last = xmlGetLastError();
  return parser.errNo == XML_ERR_NO_MEMORY || parser.lastError.code == XML_ERR_NO_MEMORY ||
         (last != nullptr && last->code == XML_ERR_NO_MEMORY);
}

// The first error is the one to tell; that a document is broken, the parser itself knows.
// NOLINTNEXTLINE(cert-dcl50-cpp): the parser's interface
void onError(void* user, const char* format, ...) {
  char text[512];
  std::va_list arguments;
  va_start(arguments, format);
  // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): va_start is the line above
  const int length = std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  inRun(user, [&](Run& run) {
    if (lacksMemory(*run.parser)) {  // the document is not to blame
      run.exception = std::make_exception_ptr(std::bad_alloc());
      return run.stop();
    }
    if (run.error) return;
    std::string reason = length < 0 ? "" : text;
    while (reason.ends_with('\n')) reason.pop_back();
    run.error = XmlError{xmlSAX2GetLineNumber(run.parser), xmlSAX2GetColumnNumber(run.parser),
                         std::move(reason)};
  });
}

xmlSAXHandler handlers() noexcept {
  xmlSAXHandler handler{};
  // The older interface: names keep their prefixes, and namespace declarations stay among the
  // attributes in their place.
  handler.initialized = 1;
  handler.startElement = startElement;
  handler.endElement = endElement;
  handler.characters = characters;
  handler.ignorableWhitespace = characters;
  handler.cdataBlock = cdataBlock;
  handler.comment = comment;
  handler.processingInstruction = processingInstruction;
  handler.startDocument = startDocument;
  handler.internalSubset = internalSubset;
  handler.entityDecl = entityDecl;
  handler.attributeDecl = attributeDecl;
  handler.elementDecl = elementDecl;
  handler.notationDecl = notationDecl;
  handler.unparsedEntityDecl = unparsedEntityDecl;
  handler.getEntity = getEntity;
  handler.getParameterEntity = getParameterEntity;
  handler.error = onError;
  return handler;
}

struct ParserDeleter {
  void operator()(xmlParserCtxtPtr parser) const noexcept {
    xmlFreeDoc(parser->myDoc);
    xmlFreeParserCtxt(parser);
  }
};

// NOLINTNEXTLINE(cert-dcl50-cpp): the parser's interface
void saysNothing(void*, const char*, ...) {}

/// Keeps the parser from printing what does not go through its handlers, such as a lack of memory.
/// What the host has set for this thread comes back afterwards.
class SilenceScope {
 public:
  SilenceScope() noexcept : handler_(xmlGenericError), context_(xmlGenericErrorContext) {
    xmlSetGenericErrorFunc(nullptr, saysNothing);
  }
  SilenceScope(const SilenceScope&) = delete;
  SilenceScope& operator=(const SilenceScope&) = delete;
  ~SilenceScope() { xmlSetGenericErrorFunc(context_, handler_); }

 private:
  const xmlGenericErrorFunc handler_;
  void* const context_;
};

}  // namespace

std::optional<XmlError> readXml(std::string_view utf8, XmlEvents& events) {
  if (readPlainXml(utf8, events)) return std::nullopt;
  if (auto refused = refusedBeforehand(utf8)) return refused;

  xmlInitParser();
  const SilenceScope silence;
  xmlResetLastError();
  const std::unique_ptr<xmlParserCtxt, ParserDeleter> parser(
      xmlCreateMemoryParserCtxt(utf8.data(), static_cast<int>(utf8.size())));
  if (parser == nullptr) throw std::bad_alloc();
  Run run(parser.get(), events);
  *parser->sax = handlers();
  parser->userData = &run;
  xmlCtxtUseOptions(parser.get(), XML_PARSE_NONET | XML_PARSE_IGNORE_ENC);
  // Not by the option of that purpose, which loads external entities too.
  parser->replaceEntities = 1;
  xmlParseDocument(parser.get());
  if (run.exception) std::rethrow_exception(run.exception);
  if (lacksMemory(*parser)) throw std::bad_alloc();
  if (parser->wellFormed != 0 && !run.stopped) return std::nullopt;
  return run.error.value_or(XmlError{0, 0, "The document is broken"});
}

}  // namespace mmsbrix::platform
