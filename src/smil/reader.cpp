#include "smil/reader.h"

#include <algorithm>
#include <array>
#include <memory>
#include <string>
#include <vector>

#include "platform/ascii.h"

namespace mmsbrix {
namespace {

using Created = std::unique_ptr<CSMILNode>;

template <class T>
Created create() {
  return std::make_unique<T>();
}

struct NodeRow {
  std::string_view tag;
  Created (*create)();
};
constexpr auto kNodes = std::to_array<NodeRow>({
    {"head", create<CSMILHead>},
    {"layout", create<CSMILLayout>},
    {"root-layout", create<CSMILRootLayout>},
    {"region", create<CSMILRegion>},
    {"body", create<CSMILBody>},
    {"par", create<CSMILPar>},
});
constexpr auto kMediaTags = std::to_array<std::string_view>(
    {"ref", "animation", "audio", "img", "video", "text", "textstream"});

// Typed nodes have the tag of their class; media and generic nodes keep the document's spelling.
Created createNode(std::string_view tag) {
  for (const NodeRow& row : kNodes) {
    if (equalsIgnoringCase(row.tag, tag)) return row.create();
  }
  const std::string spelling(tag);
  for (const std::string_view media : kMediaTags) {
    if (equalsIgnoringCase(media, tag)) return std::make_unique<CSMILMedia>(spelling.c_str());
  }
  return std::make_unique<CSMILNode>(spelling.c_str());
}

// True when no two names are the same but for their case.  Documents may have hundreds of them in
// an element, which are not compared each with all others.
bool differInAnyCase(std::span<const platform::XmlAttribute> attributes) {
  constexpr std::size_t kFew = 8;
  if (attributes.size() <= kFew) {
    for (auto one = attributes.begin(); one != attributes.end(); ++one) {
      const bool isNew = std::none_of(attributes.begin(), one, [one](const auto& earlier) {
        return equalsIgnoringCase(earlier.name, one->name);
      });
      if (!isNew) return false;
    }
    return true;
  }
  std::vector<std::string> names;
  names.reserve(attributes.size());
  for (const platform::XmlAttribute& attribute : attributes) {
    std::string& name = names.emplace_back(attribute.name);
    std::transform(name.begin(), name.end(), name.begin(), foldAscii);
  }
  std::sort(names.begin(), names.end());
  return std::adjacent_find(names.begin(), names.end()) == names.end();
}

class Builder final : public platform::XmlEvents {
 public:
  explicit Builder(CSMIL& smil) noexcept : smil_(smil) {}

  [[nodiscard]] bool isSmil() const noexcept { return isSmil_; }

  void startElement(std::string_view name,
                    std::span<const platform::XmlAttribute> attributes) override {
    if (open_.empty()) {
      isSmil_ = equalsIgnoringCase(name, "smil");
      open_.push_back(&smil_);
    } else {
      open_.push_back(append(name));
    }
    CSMILNode& node = *open_.back();
    node.ReserveAttributes(static_cast<unsigned>(attributes.size()));
    const bool differ = differInAnyCase(attributes);
    for (const auto& [attribute, value] : attributes) {
      if (differ) {
        node.AppendAttribute(attribute, value);
      } else {
        node.PutAttribute(attribute, value);
      }
    }
  }
  void endElement() override { open_.pop_back(); }
  void other(const char* name) override { append(name); }

 private:
  CSMILNode* append(std::string_view tag) {
    Created node = createNode(tag);
    open_.back()->AddElement(node.get());
    return node.release();
  }

  CSMIL& smil_;
  bool isSmil_ = false;
  std::vector<CSMILNode*> open_;
};

}  // namespace

std::optional<platform::XmlError> readSmil(std::string_view utf8, CSMIL& smil, bool& isSmil) {
  Builder builder(smil);
  auto error = platform::readXml(utf8, builder);
  isSmil = builder.isSmil();
  return error;
}

}  // namespace mmsbrix
