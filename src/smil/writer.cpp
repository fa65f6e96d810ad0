#include "smil/writer.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <deque>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/unicode.h"
#include "smil/xml_names.h"

namespace mmsbrix {
namespace {

// Characters that a value holds as they stand; all others take a look at the whole character.
constexpr auto kPlain = [] {
  std::array<bool, 256> plain{};
  for (std::size_t c = ' '; c < 0x7F; ++c) plain[c] = true;
  for (const unsigned char c : {'&', '<', '>', '"'}) plain[c] = false;
  return plain;
}();

std::size_t plainLength(std::string_view text) noexcept {
  std::size_t length = 0;
  while (length < text.size() && kPlain[static_cast<std::uint8_t>(text[length])]) ++length;
  return length;
}

// Writes the value of an attribute.  Control characters go as references where XML has them at all,
// so that they survive the reader's normalisation of blanks.  [W3C XML 1.0, 2.2 and 3.3.3]
void appendEscaped(std::string& out, std::string_view utf8) {
  for (;;) {
    const std::size_t plain = plainLength(utf8);
    out.append(utf8.substr(0, plain));
    utf8.remove_prefix(plain);
    if (utf8.empty()) return;
    const char32_t character = platform::takeUtf8Character(utf8);
    if (character == '&') {
      out += "&amp;";
    } else if (character == '<') {
      out += "&lt;";
    } else if (character == '>') {
      out += "&gt;";
    } else if (character == '"') {
      out += "&quot;";
    } else if (character == '\t' || character == '\n' || character == '\r' ||
               (character >= 0x7F && character < 0xA0)) {
      out += "&#" + std::to_string(static_cast<unsigned>(character)) + ";";
    } else if (character < ' ' || character == 0xFFFE || character == 0xFFFF) {
      platform::appendUtf8(out, platform::kReplacementCharacter);
    } else {
      platform::appendUtf8(out, character);
    }
  }
}

// Literals are views, whose length is known.
using namespace std::string_view_literals;

class Writer {
 public:
  // The child cursors of the nodes say how far each of them is written, so no recursion is needed.
  std::string write(CSMILNode& root) {
    if (!open(root)) return {};
    while (!open_.empty()) {
      Open& current = open_.back();
      CSMILNode* child =
          current.begun ? current.node->NextElement(nullptr) : current.node->FirstElement(nullptr);
      current.begun = true;
      if (child == nullptr) {
        close();
      } else {
        open(*child);
      }
    }
    return std::move(out_);
  }

 private:
  struct Open {
    CSMILNode* node;
    std::string_view tag;
    bool begun = false;  // the child cursor is this writer's
    bool empty = true;   // no child is written yet
  };

  // Begins a start tag, whose end depends on what follows; false when the element is left out.
  bool open(CSMILNode& node) {
    const std::string_view tag = xmlName(node.GetTag());
    if (tag.empty()) return false;
    if (!open_.empty()) {
      if (std::exchange(open_.back().empty, false)) out_ += '>';
      out_ += "\r\n"sv;
      out_.append(std::min<std::size_t>(open_.size(), kMaxIndentation), '\t');
    }
    out_ += '<';
    out_ += tag;
    writeAttributes(node);
    open_.push_back({&node, tag});
    return true;
  }

  void close() {
    const Open& current = open_.back();
    if (current.empty) {
      out_ += "/>"sv;
    } else {
      out_ += "</"sv;
      out_ += current.tag;
      out_ += '>';
    }
    open_.pop_back();
  }

  void writeAttributes(const CSMILNode& node) {
    attributes_.clear();
    for (unsigned i = 0; i < node.AttributeCount(); ++i) {
      const CSMILAttr& attribute = *node.Attribute(i);
      const std::string_view name = xmlName(attribute.Name());
      if (!name.empty()) attributes_.emplace_back(name, attribute.Value());
    }
    mergeNamesakes();
    for (const auto& [name, value] : attributes_) {
      out_ += ' ';
      out_ += name;
      out_ += "=\""sv;
      writeValue(value);
      out_ += '"';
    }
  }

  // An attribute of the same name as an earlier one, which only a renamed attribute can have, takes
  // the earlier one's place: a document holds each name once.  Many attributes are compared each
  // with all others only when there is such a one.
  void mergeNamesakes() {
    constexpr std::size_t kFew = 8;
    if (attributes_.size() > kFew && namesDiffer()) return;
    for (auto one = attributes_.begin(); one != attributes_.end();) {
      const auto same = std::find_if(attributes_.begin(), one, [one](const auto& earlier) {
        return earlier.first == one->first;
      });
      if (same == one) {
        ++one;
      } else {
        same->second = one->second;
        one = attributes_.erase(one);
      }
    }
  }
  bool namesDiffer() {
    names_.clear();
    for (const auto& attribute : attributes_) names_.push_back(attribute.first);
    std::sort(names_.begin(), names_.end());
    return std::adjacent_find(names_.begin(), names_.end()) == names_.end();
  }

  // Most values stand as they are, in every charset.
  void writeValue(std::string_view value) {
    if (plainLength(value) == value.size()) {
      out_ += value;
    } else {
      appendEscaped(out_, xmlText(value));
    }
  }

  // Empty for what XML does not allow as a name.
  std::string_view xmlName(std::string_view text) {
    if (isXmlName(text)) return text;
    const std::string_view name = xmlText(text);
    return isXmlName(name) ? name : std::string_view();
  }

  // A text that is UTF-8, as nearly all are, is not copied; what others become stays until the end.
  std::string_view xmlText(std::string_view text) {
    if (platform::isUtf8(text)) return text;
    return converted_.emplace_back(platform::utf8FromWindows1252(text));
  }

  std::string out_;
  std::vector<Open> open_;
  std::vector<std::pair<std::string_view, std::string_view>> attributes_;  // of one element
  std::vector<std::string_view> names_;                                    // of one element
  std::deque<std::string> converted_;
};

}  // namespace

std::string smilText(CSMIL& smil) {
  return Writer().write(smil);
}

}  // namespace mmsbrix
