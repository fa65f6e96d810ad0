#include "convert/mmsconvert.h"

#include <algorithm>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "convert/file_names.h"
#include "convert/media_types.h"
#include "convert/part_lookup.h"
#include "convert/sources.h"
#include "convert/text_parts.h"
#include "platform/ascii.h"
#include "platform/lack_of_memory.h"
#include "smil/writer.h"

namespace mmsbrix {
namespace {

constexpr char kPresentationId[] = "smil";
constexpr char kPresentationLocation[] = "smil.smil";

// Characters that a cid URL needs no escape for, so that it and the Content-ID compare octet by
// octet. [RFC 2392; RFC 3986 2]
bool isPlainInIds(char c) noexcept {
  const char folded = foldAscii(c);
  return (folded >= 'a' && folded <= 'z') || (c >= '0' && c <= '9') ||
         std::string_view("-._~@!$'()*+,;=").find(c) != std::string_view::npos;
}

// Content-IDs that differ also without regard to case.
class Ids {
 public:
  Ids() {
    unique(kPresentationId);
    unique(kPresentationLocation);
  }
  std::string unique(std::string_view name) {
    std::string id(name);
    for (char& c : id) {
      if (!isPlainInIds(c)) c = '_';
    }
    const std::size_t dot = std::min(id.rfind('.'), id.size());
    std::string candidate = id;
    for (unsigned& number = taken_[folded(id)]; !used_.insert(folded(candidate)).second;) {
      number = std::max(number, 1U) + 1;
      candidate = id.substr(0, dot) + "-" + std::to_string(number) + id.substr(dot);
    }
    return candidate;
  }

 private:
  static std::string folded(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), foldAscii);
    return text;
  }

  std::unordered_set<std::string> used_;
  std::unordered_map<std::string, unsigned> taken_;  // the last number given, by name
};

std::string_view trimmed(std::string_view text) noexcept {
  const std::size_t begin = text.find_first_not_of(" \t");
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(" \t") - begin + 1);
}

struct MediaType {
  std::string name;
  std::string charset;
};

// "text/plain; charset=utf-8" in its pieces.
MediaType parseMediaType(std::string_view text) {
  MediaType type;
  for (bool first = true; first || !text.empty(); first = false) {
    const std::size_t end = std::min(text.find(';'), text.size());
    const std::string_view piece = trimmed(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
    if (first) {
      type.name = piece;
    } else if (startsWithIgnoringCase(piece, "charset=")) {
      type.charset = piece.substr(piece.find('=') + 1);
      std::erase(type.charset, '"');
    }
  }
  return type;
}

void addHeader(CMMPart& part, const char* name, const std::string& value) {
  part.Headers()->AddNew()->Set(name, value.c_str());
}

CMMParamList& addContentType(CMMPart& part, std::string_view type) {
  CMMHdr* header = part.Headers()->AddNew();
  header->Assign("Content-Type", type);
  return *header->Params();
}

// Collects the parts of a body.  The message is not touched, so a failure costs nothing.
class BodyBuilder {
 public:
  /// Adds the part that `media` needs, unless there is one already, and lets `media` refer to it;
  /// false when its file cannot be read.
  bool add(CSMILMedia& media) {
    const std::string source = media.GetSrc() == nullptr ? "" : media.GetSrc();
    const bool hasContent = media.GetContent() != nullptr;
    if (!hasContent && source.empty()) return true;
    const auto known = bySource_.equal_range(source);
    for (auto entry = known.first; entry != known.second; ++entry) {
      // One without octets of its own means the first of that source.
      if (hasContent && !hasContentOf(entry->second, media)) continue;
      refer(media, entry->second);
      return true;
    }
    Entry entry;
    entry.content = &media;
    if (hasContent) {
      entry.part.SetContent(media.GetContent(), media.GetContentLen());
    } else if (!load(entry.part, source)) {
      // What lies on a server is shown from there.
      // A colon alone makes no URL of a file's name.
      const bool url = hasScheme(source) && (source.find("://") != std::string_view::npos ||
                                             startsWithIgnoringCase(source, "data:"));
      return url && pathOfFileUrl(source).empty();
    }
    describe(entry, media, source);
    bySource_.emplace(source, entries_.size());
    entries_.push_back(std::move(entry));
    refer(media, entries_.size() - 1);
    return true;
  }

  /// The body: the presentation, whose media refer to the parts, and the parts.
  CMMPart finish(CSMIL& smil) {
    CMMPart body;
    const std::string id = std::string("<") + kPresentationId + ">";
    CMMParamList& parameters = addContentType(body, "application/vnd.wap.multipart.related");
    parameters.AddNew()->Assign("type", "application/smil");
    parameters.AddNew()->Assign("start", id);
    CMMPart& presentation = *body.NewChild();
    addContentType(presentation, "application/smil").AddNew()->Assign("charset", "utf-8");
    addHeader(presentation, "Content-ID", id);
    addHeader(presentation, "Content-Location", kPresentationLocation);
    const std::string text = smilText(smil);
    presentation.SetContent(text.data(), static_cast<int>(text.size()));
    for (Entry& entry : entries_) *body.NewChild() = std::move(entry.part);
    return body;
  }

 private:
  struct Entry {
    CMMPart part;
    const CSMILMedia* content = nullptr;  // the element that it was made for
    std::string id;
  };

  static bool load(CMMPart& part, const std::string& source) {
    if (part.Load(source.c_str())) return true;
    const std::string path = pathOfFileUrl(source);
    return !path.empty() && part.Load(path.c_str());
  }

  bool hasContentOf(std::size_t index, const CSMILMedia& media) const {
    const Entry& entry = entries_[index];
    const std::string_view own(reinterpret_cast<const char*>(media.GetContent()),
                               static_cast<std::size_t>(media.GetContentLen()));
    // A text may have been converted on its way into the part.
    const unsigned char* original = entry.content->GetContent();
    if (original == nullptr) return charsOf(octetsOf(entry.part)) == own;
    return std::string_view(reinterpret_cast<const char*>(original),
                            static_cast<std::size_t>(entry.content->GetContentLen())) == own;
  }

  void describe(Entry& entry, CSMILMedia& media, const std::string& source) {
    const char* stated = media.GetType();
    MediaType type = parseMediaType(stated == nullptr ? "" : stated);
    if (type.name.empty()) type.name = mediaTypeOfFile(source);
    if (type.name.empty()) {
      type.name =
          equalsIgnoringCase(media.GetTag(), "text") ? "text/plain" : "application/octet-stream";
    }
    std::string name(isCidUrl(source) ? withoutCid(source) : lastPathPart(source));
    if (name.empty()) name = media.GetTag() + extensionOfMediaType(type.name);
    entry.id = ids_.unique(boundedFileName(name));
    CMMParamList& parameters = addContentType(entry.part, type.name);
    if (startsWithIgnoringCase(type.name, "text/")) {
      if (type.charset.empty()) {
        // Few phones read UTF-16, which is what this library and many editors save texts in.
        if (const auto utf8 = utf8FromMarkedUtf16(charsOf(octetsOf(entry.part)))) {
          entry.part.SetContent(utf8->data(), static_cast<int>(utf8->size()));
        }
        type.charset = charsetOfText(charsOf(octetsOf(entry.part)));
      }
      parameters.AddNew()->Assign("charset", type.charset);
    }
    addHeader(entry.part, "Content-ID", "<" + entry.id + ">");
    addHeader(entry.part, "Content-Location", entry.id);
  }

  void refer(CSMILMedia& media, std::size_t index) {
    media.PutSrc(("cid:" + entries_[index].id).c_str());
  }

  Ids ids_;
  std::vector<Entry> entries_;
  std::unordered_multimap<std::string, std::size_t> bySource_;
};

}  // namespace
}  // namespace mmsbrix

int MMS_SmilToMMS(CSMIL* smil, CMMsg* msg, unsigned long) {
  if (smil == nullptr || msg == nullptr) return 0;
  return mmsbrix::orWithoutMemory(0, [&] {
    CSMIL copy(*smil);
    mmsbrix::BodyBuilder body;
    // In document order, so that the parts stand in the order in which they are shown.
    std::vector<CSMILNode*> open{&copy};
    while (!open.empty()) {
      CSMILNode* node = open.back();
      open.pop_back();
      if (auto* media = dynamic_cast<CSMILMedia*>(node); media != nullptr && !body.add(*media)) {
        return 0;
      }
      for (unsigned i = node->ElementCount(); i > 0; --i) open.push_back(node->Element(i - 1));
    }
    *msg->Content() = body.finish(copy);
    return 1;
  });
}
