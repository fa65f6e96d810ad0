#include "platform/plain_xml.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace mmsbrix::platform {
namespace {

enum Class : std::uint8_t { kNameStart = 1, kNamePart = 2, kBlank = 4, kInValue = 8 };

// What each character may be; those beyond ASCII may be nothing here.
constexpr auto kClasses = [] {
  std::array<std::uint8_t, 256> classes{};
  const auto add = [&](unsigned char first, unsigned char last, unsigned what) {
    for (unsigned c = first; c <= last; ++c) classes[c] |= static_cast<std::uint8_t>(what);
  };
  add('a', 'z', kNameStart | kNamePart);
  add('A', 'Z', kNameStart | kNamePart);
  add('_', '_', kNameStart | kNamePart);
  add('0', '9', kNamePart);
  add('-', '.', kNamePart);
  add(':', ':', kNamePart);
  for (const unsigned char blank : {' ', '\t', '\r', '\n'}) add(blank, blank, kBlank);
  // Tabs and ends of lines would become spaces; references stand for something else.
  add(' ', '~', kInValue);
  for (const unsigned char markup : {'<', '&', '"', '\''}) {
    classes[markup] &= static_cast<std::uint8_t>(~kInValue);
  }
  return classes;
}();

// A parser compares each attribute with all others, and so does this; few elements have ten.
constexpr std::size_t kMostAttributes = 32;

// Parsers refuse names that are very long; the longest that are known have thirty characters.
constexpr std::size_t kLongestName = 1000;

// A cursor that cannot leave its text.
class Cursor {
 public:
  explicit Cursor(std::string_view text) noexcept : text_(text) {}

  [[nodiscard]] bool atEnd() const noexcept { return at_ == text_.size(); }
  [[nodiscard]] bool sees(char c) const noexcept { return at_ < text_.size() && text_[at_] == c; }
  [[nodiscard]] bool sees(Class what) const noexcept {
    return at_ < text_.size() && is(text_[at_], what);
  }
  bool take(char c) noexcept {
    const bool there = sees(c);
    if (there) ++at_;
    return there;
  }
  bool take(std::string_view words) noexcept {
    const bool there = text_.substr(at_).starts_with(words);
    if (there) at_ += words.size();
    return there;
  }
  std::string_view takeAll(Class what) noexcept {
    const std::string_view ahead = text_.substr(at_);
    std::size_t length = 0;
    while (length < ahead.size() && is(ahead[length], what)) ++length;
    at_ += length;
    return ahead.substr(0, length);
  }
  bool skipBlanks() noexcept {
    const std::size_t begin = at_;
    while (sees(kBlank)) ++at_;
    return at_ != begin;
  }
  // Empty where none begins, or a very long one.
  std::string_view takeName() noexcept {
    if (!sees(kNameStart)) return {};
    const std::string_view name = takeAll(kNamePart);
    return name.size() <= kLongestName ? name : std::string_view();
  }

 private:
  static bool is(char c, Class what) noexcept {
    return (kClasses[static_cast<std::uint8_t>(c)] & what) != 0;
  }

  std::string_view text_;
  std::size_t at_ = 0;
};

// Reads a document and keeps what there is to tell until the end has been seen.
class PlainDocument {
 public:
  explicit PlainDocument(std::string_view text) : in_(text) {}

  // False as soon as something else is met.
  bool read() {
    if (in_.take("<?xml ") && !declaration()) return false;
    in_.skipBlanks();
    do {
      if (!in_.take('<') || !(in_.take('/') ? endTag() : startTag()) || !blanks()) return false;
    } while (!open_.empty());
    return in_.atEnd();
  }

  void tell(XmlEvents& events) const {
    std::span<const XmlAttribute> attributes = attributes_;
    for (const Step& step : steps_) {
      if (step.what == Step::What::startTag) {
        events.startElement(step.text, attributes.first(step.attributes));
        attributes = attributes.subspan(step.attributes);
      } else if (step.what == Step::What::endTag) {
        events.endElement();
      } else {
        tellBlanks(step.text, events);
      }
    }
  }

 private:
  struct Step {
    enum class What : std::uint8_t { startTag, endTag, blanks };
    What what;
    std::uint32_t attributes;  // of a start tag
    std::string_view text;
  };

  bool declaration() noexcept {
    if (!in_.take("version=\"1.0\"")) return false;
    // UTF-8 is what the text is, whatever it says.
    if (!in_.take(" encoding=\"UTF-8\"")) in_.take(" encoding=\"utf-8\"");
    return in_.take("?>");
  }

  bool startTag() {
    const std::string_view tag = in_.takeName();
    if (tag.empty() || open_.size() == kMaxXmlDepth) return false;
    const std::size_t before = attributes_.size();
    bool apart = in_.skipBlanks();
    while (in_.sees(kNameStart)) {
      if (!apart || !attribute(before)) return false;
      apart = in_.skipBlanks();
    }
    const bool isEmpty = in_.take('/');
    if (!in_.take('>') || ++elements_ + attributes_.size() > kMaxXmlNodes) return false;
    const auto count = static_cast<std::uint32_t>(attributes_.size() - before);
    steps_.push_back({Step::What::startTag, count, tag});
    if (isEmpty) {
      steps_.push_back({Step::What::endTag, 0, {}});
    } else {
      open_.push_back(tag);
    }
    return true;
  }

  // One more of an element whose attributes begin at `first`.
  bool attribute(std::size_t first) {
    const std::string_view name = in_.takeName();
    in_.skipBlanks();
    if (name.empty() || !in_.take('=')) return false;
    in_.skipBlanks();
    const char quote = in_.sees('"') ? '"' : '\'';
    if (!in_.take(quote)) return false;
    const std::string_view value = in_.takeAll(kInValue);
    if (!in_.take(quote) || attributes_.size() - first == kMostAttributes) return false;
    for (const XmlAttribute& other : std::span(attributes_).subspan(first)) {
      if (other.name == name) return false;
    }
    attributes_.push_back({name, value});
    return true;
  }

  bool endTag() {
    if (open_.empty() || in_.takeName() != open_.back()) return false;
    in_.skipBlanks();
    if (!in_.take('>')) return false;
    open_.pop_back();
    steps_.push_back({Step::What::endTag, 0, {}});
    return true;
  }

  // What stands between tags.
  bool blanks() {
    const std::string_view blanks = in_.takeAll(kBlank);
    for (std::size_t at = 0; (at = blanks.find('\r', at)) != std::string_view::npos; ++at) {
      if (!blanks.substr(at).starts_with("\r\n")) return false;
    }
    if (!blanks.empty() && !open_.empty()) steps_.push_back({Step::What::blanks, 0, blanks});
    return true;
  }

  // With one character for each end of a line.  [W3C XML 1.0, 2.11]
  static void tellBlanks(std::string_view blanks, XmlEvents& events) {
    while (!blanks.empty()) {
      const std::size_t end = std::min(blanks.find('\r'), blanks.size());
      if (end > 0) events.characters(blanks.substr(0, end));
      blanks.remove_prefix(std::min(end + 1, blanks.size()));
    }
  }

  Cursor in_;
  std::vector<std::string_view> open_;
  std::vector<Step> steps_;
  std::vector<XmlAttribute> attributes_;  // of all elements
  std::size_t elements_ = 0;
};

}  // namespace

bool readPlainXml(std::string_view text, XmlEvents& events) {
  if (text.size() > kMaxXmlOctets) return false;
  // Most others have one of these, which a search finds at next to no cost before the reading.
  if (text.find('!') != std::string_view::npos || text.find('&') != std::string_view::npos) {
    return false;
  }
  PlainDocument document(text);
  if (!document.read()) return false;
  document.tell(events);
  return true;
}

}  // namespace mmsbrix::platform
