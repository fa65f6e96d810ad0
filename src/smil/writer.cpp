#include "smil/writer.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "platform/unicode.h"
#include "smil/xml_names.h"

namespace mmsbrix {
namespace {

std::string toXmlText(std::string_view text) {
  return platform::isUtf8(text) ? std::string(text) : platform::utf8FromWindows1252(text);
}

// Writes the value of an attribute.  Control characters go as references where XML has them at all,
// so that they survive the reader's normalisation of blanks.  [W3C XML 1.0, 2.2 and 3.3.3]
void appendEscaped(std::string& out, std::string_view utf8) {
  while (!utf8.empty()) {
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
    std::string tag;
    bool begun = false;  // the child cursor is this writer's
    bool empty = true;   // no child is written yet
  };

  // Begins a start tag, whose end depends on what follows; false when the element is left out.
  bool open(CSMILNode& node) {
    std::string tag = toXmlText(node.GetTag());
    if (!isXmlName(tag)) return false;
    if (!open_.empty()) {
      if (std::exchange(open_.back().empty, false)) out_ += '>';
      out_ += "\r\n";
      out_.append(std::min<std::size_t>(open_.size(), kMaxIndentation), '\t');
    }
    out_ += '<';
    out_ += tag;
    writeAttributes(node);
    open_.push_back({&node, std::move(tag)});
    return true;
  }

  void close() {
    const Open& current = open_.back();
    if (current.empty) {
      out_ += "/>";
    } else {
      out_.append("</").append(current.tag).append(">");
    }
    open_.pop_back();
  }

  // An attribute of the same name as an earlier one, which only a renamed attribute can have, takes
  // the earlier one's place: a document holds each name once.
  void writeAttributes(const CSMILNode& node) {
    std::vector<std::pair<std::string, const char*>> attributes;
    attributes.reserve(node.AttributeCount());
    for (unsigned i = 0; i < node.AttributeCount(); ++i) {
      const CSMILAttr& attribute = *node.Attribute(i);
      std::string name = toXmlText(attribute.GetName());
      if (!isXmlName(name)) continue;
      const auto same = std::find_if(attributes.begin(), attributes.end(),
                                     [&](const auto& earlier) { return earlier.first == name; });
      if (same != attributes.end()) {
        same->second = attribute.GetValue();
      } else {
        attributes.emplace_back(std::move(name), attribute.GetValue());
      }
    }
    for (const auto& [name, value] : attributes) {
      out_.append(" ").append(name).append("=\"");
      appendEscaped(out_, toXmlText(value));
      out_ += '"';
    }
  }

  std::string out_;
  std::vector<Open> open_;
};

}  // namespace

std::string smilText(CSMIL& smil) {
  return Writer().write(smil);
}

}  // namespace mmsbrix
