#include "platform/win32/xml_entities.h"

#include <algorithm>
#include <string>
#include <unordered_map>

namespace mmsbrix::platform {
namespace {

constexpr std::size_t kTooMuch = kMaxXmlOctets + kMaxXmlEntityOctets;

/// Declared entities, each with the octets that it stands for once they are known.
class Entities {
 public:
  /// Takes the declarations of a text; false when there are too many.
  bool collect(std::string_view text) {
    unsigned declarations = 0;
    for (std::size_t at = 0; (at = text.find("<!", at)) != std::string_view::npos; at += 2) {
      const std::string_view declaration = text.substr(at);
      if (declaration.starts_with("<!--")) continue;
      if (++declarations > kMaxXmlDeclarations) return false;
      if (declaration.starts_with("<!ENTITY")) declare(declaration.substr(8));
    }
    return true;
  }

  /// Octets that the references in a text stand for, or more than any limit.
  std::size_t expandedOctets(std::string_view text) {
    return unmeasurable_ ? kTooMuch : sumOfReferences(text, 0);
  }

 private:
  struct Entity {
    std::string value;
    std::optional<std::size_t> octets;
    bool beingMeasured = false;
  };
  // Chains of references longer than this are nobody's.
  static constexpr unsigned kMaxChain = 100;
  /// Longer names are nobody's either.
  static constexpr std::size_t kMaxName = 1024;

  void declare(std::string_view rest) {
    rest.remove_prefix(std::min(rest.find_first_not_of(" \t\r\n%"), rest.size()));
    const std::string_view name = rest.substr(0, rest.find_first_of(" \t\r\n"));
    rest.remove_prefix(name.size());
    if (name.size() >= kMaxName) unmeasurable_ = true;
    const std::size_t open = std::min(rest.find_first_of("\"'>"), rest.size());
    if (open == rest.size() || rest[open] == '>') return;
    const std::string_view value =
        rest.substr(open + 1, rest.find(rest[open], open + 1) - open - 1);
    // References to the characters & and % make references of what follows them.
    std::string plain;
    for (std::size_t i = 0; i < value.size(); ++i) {
      std::size_t digits = i + 2;
      const bool isHex = value.substr(i).starts_with("&#x");
      if (isHex) ++digits;
      if (value.substr(i).starts_with("&#")) {
        const std::size_t end = std::min(value.find(';', i), value.size());
        std::string_view number = value.substr(digits, end - std::min(digits, end));
        number.remove_prefix(std::min(number.find_first_not_of('0'), number.size()));
        if (number == (isHex ? "26" : "38")) {
          plain += '&';
          i = end;
          continue;
        }
        if (number == (isHex ? "25" : "37")) {
          plain += '%';
          i = end;
          continue;
        }
      }
      plain += value[i];
    }
    // Of several declarations the longest counts: which one the component takes does not matter
    // then.
    Entity& entity = entities_[std::string(name)];
    if (plain.size() >= entity.value.size()) entity.value = std::move(plain);
  }

  std::size_t sumOfReferences(std::string_view text, unsigned chain) {
    std::size_t sum = 0;
    for (std::size_t i = 0; (i = text.find_first_of("&%", i)) != std::string_view::npos; ++i) {
      const std::string_view name = text.substr(i + 1, kMaxName);
      const std::size_t end = name.find(';');
      if (end == std::string_view::npos) continue;
      sum += octetsOf(std::string(name.substr(0, end)), chain);
      if (sum > kMaxXmlEntityOctets) return kTooMuch;
    }
    return sum;
  }

  std::size_t octetsOf(const std::string& name, unsigned chain) {
    const auto found = entities_.find(name);
    if (found == entities_.end()) return 0;
    Entity& entity = found->second;
    if (entity.octets) return *entity.octets;
    if (entity.beingMeasured || chain > kMaxChain) return kTooMuch;  // it stands for itself
    entity.beingMeasured = true;
    entity.octets =
        std::min(kTooMuch, entity.value.size() + sumOfReferences(entity.value, chain + 1));
    entity.beingMeasured = false;
    return *entity.octets;
  }

  std::unordered_map<std::string, Entity> entities_;
  bool unmeasurable_ = false;
};

// Elements can be nested no deeper than there are tags that open one.
bool mayNestTooDeeply(std::string_view text) noexcept {
  std::size_t depth = 0;
  std::size_t deepest = 0;
  for (std::size_t i = 0; (i = text.find('<', i)) != std::string_view::npos; ++i) {
    if (i + 1 == text.size() || text[i + 1] == '!' || text[i + 1] == '?') continue;
    if (text[i + 1] == '/') {
      depth -= depth > 0 ? 1 : 0;
    } else {
      const std::size_t end = text.find('>', i);
      if (end == std::string_view::npos) break;
      if (text[end - 1] != '/') deepest = std::max(deepest, ++depth);
    }
  }
  return deepest > kMaxXmlDepth;
}

}  // namespace

std::optional<XmlError> refusedDeclarations(std::string_view utf8) {
  Entities entities;
  if (!entities.collect(utf8)) {
    return XmlError{0, 0, "The document type has too many declarations"};
  }
  if (entities.expandedOctets(utf8) > kMaxXmlEntityOctets) {
    return XmlError{0, 0, "The entities stand for too much text"};
  }
  if (mayNestTooDeeply(utf8)) return XmlError{0, 0, "The elements are nested too deeply"};
  return std::nullopt;
}

}  // namespace mmsbrix::platform
