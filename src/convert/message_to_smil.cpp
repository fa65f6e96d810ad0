#include "convert/mmsconvert.h"

#include <limits>
#include <string>
#include <unordered_set>
#include <utility>

#include "convert/media_types.h"
#include "convert/new_files.h"
#include "convert/part_lookup.h"
#include "convert/sources.h"
#include "platform/ascii.h"
#include "platform/files.h"
#include "platform/lack_of_memory.h"
#include "platform/unicode.h"
#include "smil/smilcodec.h"

namespace mmsbrix {
namespace {

constexpr char kContentType[] = "Content-Type";
/// Files that one presentation may ask for: a slide costs it a few octets, and each file as much as
/// the largest part has.
constexpr unsigned kMaxMediaFiles = 1000;

CMMPart* findById(CMMsg& message, const char* id) {
  const CMMHdr wanted("Content-ID", id);
  return message.Content()->FindChild(&wanted);
}

bool hasParameter(CMMHdr& header, const char* name, std::string_view value) {
  const CMMParam* parameter = header.Params()->Find(name);
  return parameter != nullptr && equalsIgnoringCase(parameter->Value(), value);
}

// The presentation's own part; null for a message without one.
CMMPart* presentationPart(CMMsg& message) {
  CMMHdr* type = message.Content()->Headers()->Find(kContentType);
  if (type == nullptr ||
      !equalsIgnoringCase(type->Value(), "application/vnd.wap.multipart.related") ||
      !hasParameter(*type, "type", "application/smil")) {
    return nullptr;
  }
  const CMMParam* start = type->Params()->Find("start");
  return start == nullptr ? nullptr : findById(message, start->GetValue());
}

class MediaSaver {
 public:
  MediaSaver(CMMsg& message, std::string folder)
      : message_(message), stem_(std::move(folder) + "MMSContent") {}

  void saveAll(CSMILBody& body) {
    try {
      for (CSMILNode* slide = body.FirstElement(nullptr); slide != nullptr;
           slide = body.NextElement(nullptr)) {
        for (CSMILNode* node = slide->FirstElement(nullptr); node != nullptr;
             node = slide->NextElement(nullptr)) {
          if (auto* media = dynamic_cast<CSMILMedia*>(node)) save(*media);
        }
      }
    } catch (...) {  // there is not enough memory
      files_.discard();
      throw;
    }
  }

 private:
  void save(CSMILMedia& media) {
    const char* source = media.GetSrc();
    if (source == nullptr || written_ == kMaxMediaFiles) return;
    const std::string_view id = withoutCid(source);
    CMMPart* part = findById(message_, ("<" + std::string(id) + ">").c_str());
    if (part == nullptr) return;
    std::string extension;
    if (CMMHdr* type = part->Headers()->Find(kContentType)) {
      extension = extensionOfMediaType(type->Value());
      if (type->Value().starts_with("text") && hasParameter(*type, "charset", "utf-8")) {
        toUtf16(*part);
      }
    }
    if (extension.empty()) extension = ".tmp";
    std::string path;
    if (part->GetContent() == nullptr ||
        files_.write(stem_, extension, octetsOf(*part), path) != 0) {
      return;
    }
    ++written_;
    media.PutSrc(path.c_str());
  }

  // In place, once in each extraction: a part that several elements show would double with each.
  void toUtf16(CMMPart& part) {
    constexpr int kMost = std::numeric_limits<int>::max() / 2 - 1;
    if (part.GetContent() == nullptr || part.GetContentLen() > kMost) return;
    if (!converted_.insert(&part).second) return;
    const std::string text = "\xFF\xFE" + platform::utf16leFromUtf8(charsOf(octetsOf(part)));
    part.SetContent(text.data(), static_cast<int>(text.size()));
  }

  CMMsg& message_;
  std::string stem_;
  NewFiles files_;
  unsigned written_ = 0;
  std::unordered_set<const CMMPart*> converted_;
};

}  // namespace
}  // namespace mmsbrix

int MMS_MMSToSmil(CMMsg* msg, CSMIL* smil, const char* dir, unsigned long flags) {
  if (msg == nullptr || smil == nullptr) return 0;
  return mmsbrix::orWithoutMemory(0, [&] {
    const CMMPart* presentation = mmsbrix::presentationPart(*msg);
    if (presentation == nullptr || presentation->GetContent() == nullptr) return 0;
    const auto* text = reinterpret_cast<const char*>(presentation->GetContent());
    mmsbrix::MediaSaver saver(*msg, dir != nullptr ? dir : mmsbrix::platform::temporaryFolder());
    if (MMS_LoadSmilFromMemory(text, smil, flags) == 0) return 0;
    CSMILBody* body = smil->GetBody();
    if (body != nullptr) saver.saveAll(*body);
    return 1;
  });
}
