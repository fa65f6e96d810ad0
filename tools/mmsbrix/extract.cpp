#include "extract.h"

#include <mmsbrix/convert/extraction.h>
#include <mmsbrix/convert/media_types.h>
#include <mmsbrix/convert/mmsconvert.h>
#include <mmsbrix/convert/references.h>
#include <mmsbrix/mms/mmscodec.h>
#include <mmsbrix/smil/smilcodec.h>

#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <filesystem>
#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "host.h"

namespace mmsbrix::tool {
namespace {

std::string smilText(CSMIL& smil) {
  unsigned char* buffer = nullptr;
  unsigned int length = 0;
  const int made = MMS_SaveSmilToMemory(&smil, &buffer, &length, 0);
  const std::unique_ptr<unsigned char, void (*)(void*)> owned(buffer, &MMS_Free);
  return made == 1 ? std::string(reinterpret_cast<char*>(buffer), length) : std::string();
}

// Media elements, whatever stands between them.
template <class Visit>
void eachMedium(CSMILNode& node, const Visit& visit) {
  for (unsigned i = 0; i < node.ElementCount(); ++i) {
    if (auto* media = dynamic_cast<CSMILMedia*>(node.Element(i))) visit(*media);
    eachMedium(*node.Element(i), visit);
  }
}

using MediaList = std::vector<CSMILMedia*>;

MediaList mediaOf(CSMIL& smil) {
  MediaList list;
  eachMedium(smil, [&](CSMILMedia& media) { list.push_back(&media); });
  return list;
}

std::string sourceOf(CSMILMedia& media) {
  return media.GetSrc() == nullptr ? "" : media.GetSrc();
}

// Extraction as it is laid down finds parts by Content-ID only.  What is left over is resolved in
// all the ways of the field and saved here; what stays unresolved is said.
class Leftovers {
 public:
  Leftovers(CMMsg& message, const std::string& folder, const Streams& streams)
      : message_(message), folder_(folder), streams_(streams) {}

  // `smil` is the presentation after extraction.  False when something could not be saved.
  bool save(CSMIL& smil) {
    CMMPart* presentation = findPresentation(message_);
    CSMIL original;
    if (presentation == nullptr ||
        MMS_LoadSmilFromMemory(textContent(*presentation).c_str(), &original, 0) != 1) {
      return true;
    }
    const References references = resolveReferences(original, message_);
    std::map<const CSMILMedia*, CMMPart*> parts;
    for (const MediaReference& reference : references.media) {
      parts.emplace(reference.media, reference.part);
    }
    const MediaList before = mediaOf(original);
    const MediaList after = mediaOf(smil);
    bool good = before.size() == after.size();
    for (std::size_t i = 0; good && i < after.size(); ++i) {
      const auto part = parts.find(before[i]);
      if (part == parts.end() || sourceOf(*before[i]) != sourceOf(*after[i])) continue;
      if (part->second == nullptr) {
        streams_.err << "mmsbrix extract: a slide refers to " << printable(sourceOf(*before[i]))
                     << ", which the message does not have\n";
      } else if (!point(*after[i], *part->second)) {
        good = false;
      }
    }
    if (!references.unmentioned.empty()) {
      streams_.err << "mmsbrix extract: " << references.unmentioned.size()
                   << " part(s) are in no slide; --all saves them\n";
    }
    return good;
  }

 private:
  bool point(CSMILMedia& media, CMMPart& part) {
    std::string& path = saved_[&part];
    if (path.empty()) {
      const CMMHdr* type = part.Headers()->Find("Content-Type");
      const std::string extension = type == nullptr ? "" : extensionOfMediaType(type->GetValue());
      // Only what is encoded needs a copy.
      path = part.Headers()->Find("Content-Transfer-Encoding") == nullptr
                 ? writeNewFile(folder_, "MMSContent", extension, charactersOf(part))
                 : writeNewFile(folder_, "MMSContent", extension, decodedContent(part));
    }
    if (path.empty()) {
      streams_.err << "mmsbrix extract: " << printable(sourceOf(media)) << " cannot be saved\n";
      return false;
    }
    media.PutSrc(path.c_str());
    return true;
  }

  CMMsg& message_;
  std::string folder_;
  const Streams& streams_;
  std::map<const CMMPart*, std::string> saved_;
};

// Extraction turns texts into UTF-16 where they are; this puts them back.
class KeptTexts {
 public:
  explicit KeptTexts(CMMsg& message) {
    for (CMMPart* part = message.Content()->FirstChild(); part != nullptr;
         part = message.Content()->NextChild()) {
      const CMMHdr* type = part->Headers()->Find("Content-Type");
      if (type == nullptr || !type->Value().starts_with("text")) continue;
      CMMPart& kept = texts_.emplace_back(part, CMMPart()).second;
      kept.SetContent(part->GetContent(), part->GetContentLen());
    }
  }
  KeptTexts(const KeptTexts&) = delete;
  KeptTexts& operator=(const KeptTexts&) = delete;
  ~KeptTexts() {
    for (const auto& [part, kept] : texts_) {
      part->SetContent(kept.GetContent(), kept.GetContentLen());
    }
  }

 private:
  std::vector<std::pair<CMMPart*, CMMPart>> texts_;
};

// False when there is no presentation that can be extracted.
bool extractPresentation(CMMsg& message, const std::string& folder, const Streams& streams,
                         int& result) {
  CSMIL smil;
  {
    const KeptTexts texts(message);
    if (MMS_MMSToSmil(&message, &smil, (folder + "/").c_str(), 0) != 1) return false;
  }
  const bool complete = Leftovers(message, folder, streams).save(smil);
  // The presentation lies beside its media, so it names them by their names.
  const std::string prefix = folder + "/";
  const MediaList media = mediaOf(smil);
  for (CSMILMedia* medium : media) {
    const std::string source = sourceOf(*medium);
    if (source.starts_with(prefix)) medium->PutSrc(source.substr(prefix.size()).c_str());
  }
  const std::string path = writeNewFile(folder, "presentation", ".smil", smilText(smil));
  result = path.empty() || !complete ? kFailed : kDone;
  if (path.empty()) {
    streams.err << "mmsbrix extract: " << printable(folder)
                << ": the presentation cannot be written\n";
    return true;
  }
  streams.out << printable(path) << "  application/smil\n";
  for (CSMILMedia* medium : media) {
    if (medium->GetSrc() != nullptr) {
      streams.out << printable(prefix + sourceOf(*medium)) << "  " << printable(medium->GetTag())
                  << '\n';
    }
  }
  return true;
}

int extractEveryPart(const CMMsg& message, const ExtractCommand& command, const Streams& streams) {
  const auto parts = extractParts(message, command.folder, {command.utf8});
  int result = parts.empty() ? kFailed : kDone;
  if (parts.empty()) streams.err << "mmsbrix extract: the message has no part to save\n";
  for (const ExtractedPart& part : parts) {
    if (part.error == 0) {
      streams.out << printable(part.path) << "  " << printable(part.mediaType) << "  "
                  << octetCount(part.octets) << '\n';
    } else {
      streams.err << "mmsbrix extract: a part of type " << printable(part.mediaType)
                  << " cannot be saved: error " << part.error << '\n';
      result = kFailed;
    }
  }
  return result;
}

}  // namespace

CLI::App* addExtract(CLI::App& app, ExtractCommand& command) {
  CLI::App* extract = app.add_subcommand(
      "extract", "Save a message's presentation and media, or every part, as new files");
  extract->footer("Example:\n  mmsbrix extract received.mms pictures");
  extract->add_option("FILE", command.file, "Message, - for standard input")->required();
  extract->add_option("DIR", command.folder, "Folder, made when it is missing")
      ->capture_default_str();
  extract->add_flag("--all", command.all, "Save every part, also when there is a presentation");
  extract->add_flag("--utf8", command.utf8, "With every part: save texts as UTF-8");
  return extract;
}

int runExtract(const ExtractCommand& command, const Streams& streams) {
  CMMsg message;
  if (!loadMessage(command.file, "extract", streams, message)) return kFailed;
  std::error_code error;
  const std::filesystem::path folder = host::pathOf(command.folder);
  std::filesystem::create_directories(folder, error);
  if (!std::filesystem::is_directory(folder, error)) {
    streams.err << "mmsbrix extract: " << printable(command.folder) << ": is no folder\n";
    return kFailed;
  }
  int result = kFailed;
  if (!command.all && extractPresentation(message, command.folder, streams, result)) return result;
  return extractEveryPart(message, command, streams);
}

}  // namespace mmsbrix::tool
