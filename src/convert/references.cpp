#include "convert/references.h"

#include <algorithm>
#include <array>
#include <string>
#include <unordered_map>
#include <unordered_set>

#include "convert/part_lookup.h"
#include "convert/sources.h"
#include "mms/content_type.h"
#include "platform/ascii.h"

namespace mmsbrix {
namespace {

// Parts without children, in the message's order.
std::vector<CMMPart*> leavesOf(CMMPart& root) {
  std::vector<CMMPart*> leaves;
  std::vector<CMMPart*> open{&root};
  while (!open.empty()) {
    CMMPart* part = open.back();
    open.pop_back();
    const std::size_t firstChild = open.size();
    for (CMMPart* child = part->FirstChild(); child != nullptr; child = part->NextChild()) {
      open.push_back(child);
    }
    if (open.size() == firstChild && part != &root) leaves.push_back(part);
    std::reverse(open.begin() + static_cast<std::ptrdiff_t>(firstChild), open.end());
  }
  return leaves;
}

class PartIndex {
 public:
  explicit PartIndex(const std::vector<CMMPart*>& parts) {
    for (CMMPart* part : parts) {
      const std::string_view location = headerValue(*part, "Content-Location");
      add(byId_, withoutBrackets(headerValue(*part, "Content-ID")), part);
      add(byLocation_, withoutBrackets(location), part);
      for (const std::string_view name :
           {parameterValue(*part, kContentTypeName, "name"),
            parameterValue(*part, "Content-Disposition", "filename")}) {
        add(byName_, name, part);
        add(byFile_, lastPathPart(name), part);
      }
      add(byFile_, lastPathPart(withoutBrackets(location)), part);
    }
  }

  [[nodiscard]] CMMPart* find(std::string_view source) const {
    const std::string_view stated = withoutBrackets(withoutCid(source));
    for (const std::string& text : {std::string(stated), percentDecoded(stated)}) {
      CMMPart* const byId = find(byId_, text);
      CMMPart* const byLocation = find(byLocation_, text);
      for (CMMPart* part :
           {isCidUrl(source) ? byId : byLocation, isCidUrl(source) ? byLocation : byId,
            find(byName_, text), find(byFile_, lastPathPart(text))}) {
        if (part != nullptr) return part;
      }
    }
    return nullptr;
  }

 private:
  using Map = std::unordered_map<std::string, CMMPart*>;

  static std::string folded(std::string_view text) {
    std::string copy(text);
    std::transform(copy.begin(), copy.end(), copy.begin(), foldAscii);
    return copy;
  }
  // The first of several namesakes counts.
  static void add(Map& map, std::string_view name, CMMPart* part) {
    if (!name.empty()) map.emplace(folded(name), part);
  }
  static CMMPart* find(const Map& map, std::string_view name) {
    const auto found = map.find(folded(name));
    return found == map.end() ? nullptr : found->second;
  }

  Map byId_;
  Map byLocation_;
  Map byName_;
  Map byFile_;
};

}  // namespace

CMMPart* findPresentation(CMMsg& message) {
  const std::string_view start =
      withoutBrackets(parameterValue(*message.Content(), kContentTypeName, "start"));
  CMMPart* firstOfType = nullptr;
  for (CMMPart* part : leavesOf(*message.Content())) {
    if (!equalsIgnoringCase(headerValue(*part, kContentTypeName), "application/smil")) continue;
    if (!start.empty() &&
        equalsIgnoringCase(withoutBrackets(headerValue(*part, "Content-ID")), start)) {
      return part;
    }
    if (firstOfType == nullptr) firstOfType = part;
  }
  return firstOfType;
}

References resolveReferences(CSMIL& smil, CMMsg& message) {
  const CMMPart* presentation = findPresentation(message);
  std::vector<CMMPart*> parts = leavesOf(*message.Content());
  std::erase(parts, presentation);
  const PartIndex index(parts);
  References references;
  std::unordered_set<const CMMPart*> shown;
  std::vector<CSMILNode*> open{&smil};
  while (!open.empty()) {
    CSMILNode* node = open.back();
    open.pop_back();
    auto* media = dynamic_cast<CSMILMedia*>(node);
    const char* source = media == nullptr ? nullptr : media->GetSrc();
    if (source != nullptr && *source != 0) {
      references.media.push_back({media, index.find(source)});
      shown.insert(references.media.back().part);
    }
    for (unsigned i = node->ElementCount(); i > 0; --i) open.push_back(node->Element(i - 1));
  }
  for (CMMPart* part : parts) {
    if (!shown.contains(part)) references.unmentioned.push_back(part);
  }
  return references;
}

}  // namespace mmsbrix
