#include "extract.h"

#include <mmsbrix/convert/extraction.h>
#include <mmsbrix/convert/mmsconvert.h>
#include <mmsbrix/convert/references.h>
#include <mmsbrix/mms/mmscodec.h>
#include <mmsbrix/smil/smilcodec.h>

#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <filesystem>
#include <memory>
#include <ostream>

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

// What the presentation leaves aside: parts that no slide shows, references to nothing.
void remarkOnReferences(CMMsg& message, const Streams& streams) {
  CMMPart* part = findPresentation(message);
  CSMIL smil;
  if (part == nullptr || MMS_LoadSmilFromMemory(textContent(*part).c_str(), &smil, 0) != 1) return;
  const References references = resolveReferences(smil, message);
  for (const MediaReference& reference : references.media) {
    if (reference.part != nullptr) continue;
    streams.err << "mmsbrix extract: a slide refers to " << printable(reference.media->GetSrc())
                << ", which the message does not have\n";
  }
  if (!references.unmentioned.empty()) {
    streams.err << "mmsbrix extract: " << references.unmentioned.size()
                << " part(s) are in no slide; --all saves them\n";
  }
}

// False when there is no presentation that can be extracted.
bool extractPresentation(CMMsg& message, const std::string& folder, const Streams& streams,
                         int& result) {
  CSMIL smil;
  CMMsg copy(message);  // extraction may change the copy's text parts
  if (MMS_MMSToSmil(&copy, &smil, (folder + "/").c_str(), 0) != 1) return false;
  const std::string path = writeNewFile(folder, "presentation", ".smil", smilText(smil));
  result = path.empty() ? kFailed : kDone;
  if (path.empty()) {
    streams.err << "mmsbrix extract: " << printable(folder)
                << ": the presentation cannot be written\n";
    return true;
  }
  streams.out << printable(path) << "  application/smil\n";
  eachMedium(smil, [&](CSMILMedia& media) {
    if (media.GetSrc() != nullptr) {
      streams.out << printable(media.GetSrc()) << "  " << printable(media.GetTag()) << '\n';
    }
  });
  remarkOnReferences(message, streams);
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
  std::filesystem::create_directories(command.folder, error);
  if (!std::filesystem::is_directory(command.folder)) {
    streams.err << "mmsbrix extract: " << printable(command.folder) << ": is no folder\n";
    return kFailed;
  }
  int result = kFailed;
  if (!command.all && extractPresentation(message, command.folder, streams, result)) return result;
  return extractEveryPart(message, command, streams);
}

}  // namespace mmsbrix::tool
