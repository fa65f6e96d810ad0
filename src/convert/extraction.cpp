#include "convert/extraction.h"

#include <algorithm>
#include <utility>

#include "convert/file_names.h"
#include "convert/media_types.h"
#include "convert/new_files.h"
#include "convert/part_lookup.h"
#include "convert/text_parts.h"
#include "convert/transfer_encoding.h"
#include "mms/content_type.h"
#include "mms/decoder.h"
#include "platform/ascii.h"
#include "platform/files.h"

namespace mmsbrix {
namespace {

bool isText(std::string_view mediaType) noexcept {
  return startsWithIgnoringCase(mediaType, "text/") ||
         equalsIgnoringCase(mediaType, "application/smil");
}

struct FileName {
  std::string stem;
  std::string extension;
};

FileName split(const std::string& name) {
  const std::size_t dot = name.rfind('.');
  if (dot == std::string::npos || dot == 0) return {name, ""};
  return {name.substr(0, dot), name.substr(dot)};
}

FileName nameOf(const CMMPart& part, std::string_view mediaType) {
  const std::string_view proposals[] = {
      headerValue(part, "Content-Location"),
      parameterValue(part, kContentTypeName, "name"),
      parameterValue(part, "Content-Disposition", "filename"),
      withoutBrackets(headerValue(part, "Content-ID")),
  };
  std::string name;
  for (const std::string_view proposal : proposals) {
    if (name.empty()) name = harmlessFileName(withoutBrackets(proposal));
  }
  if (name.empty()) name = "part";
  // What stands behind the point of an id may be anything.
  if (split(name).extension.empty() || mediaTypeOfFile(name).empty()) {
    const std::string extension = extensionOfMediaType(mediaType);
    if (!extension.empty() && !equalsIgnoringCase(split(name).extension, extension)) {
      return {name, extension};
    }
  }
  return split(name);
}

class Extractor {
 public:
  Extractor(const std::string& folder, const ExtractionOptions& options)
      : folder_(folder), options_(options) {
    if (!folder_.empty() && !platform::isPathSeparator(folder_.back())) folder_ += '/';
  }

  void extract(const CMMPart& part, unsigned nesting) {
    const bool hasChildren = part.ChildCount() > 0;
    if (nesting < kMaxExtractedNesting && hasChildren) {
      for (unsigned i = 0; i < part.ChildCount(); ++i) extract(*part.Child(i), nesting + 1);
    } else if (nesting < kMaxExtractedNesting && part.GetContent() != nullptr &&
               namesMultipart(headerValue(part, kContentTypeName))) {
      CMMPart taken;
      decodeMultipart(octetsOf(part), taken, budget_);
      if (taken.ChildCount() > 0) {
        extract(taken, nesting);
      } else {
        save(part);
      }
    } else if (part.GetContent() != nullptr) {
      save(part);
    }
  }

  std::vector<ExtractedPart> result() { return std::move(parts_); }
  void discard() noexcept { files_.discard(); }

 private:
  void save(const CMMPart& part) {
    if (parts_.size() == kMaxExtractedFiles) return;
    ExtractedPart& row = parts_.emplace_back();
    row.mediaType = headerValue(part, kContentTypeName);
    row.contentId = headerValue(part, "Content-ID");
    const FileName name = nameOf(part, row.mediaType);
    const auto write = [&](std::span<const std::uint8_t> content) {
      row.octets = content.size();
      row.error = files_.write(folder_ + name.stem, name.extension, content, row.path);
    };
    if (options_.textToUtf8 && isText(row.mediaType)) {
      write(octetsOf(textContent(part)));
    } else if (headerOf(part, "Content-Transfer-Encoding") != nullptr) {
      write(octetsOf(decodedContent(part)));
    } else {
      write(octetsOf(part));
    }
  }

  std::string folder_;
  ExtractionOptions options_;
  NewFiles files_;
  ItemBudget budget_;  // of nested multiparts, whose parts are made on the way
  std::vector<ExtractedPart> parts_;
};

}  // namespace

std::string decodedContent(const CMMPart& part) {
  const std::string_view content = charsOf(octetsOf(part));
  const std::string_view encoding = headerValue(part, "Content-Transfer-Encoding");
  if (equalsIgnoringCase(encoding, "base64")) {
    if (auto decoded = decodeBase64(content)) return *std::move(decoded);
  } else if (equalsIgnoringCase(encoding, "quoted-printable")) {
    return decodeQuotedPrintable(content);
  }
  return std::string(content);
}

std::string textContent(const CMMPart& part) {
  return textAsUtf8(decodedContent(part), parameterValue(part, kContentTypeName, "charset"));
}

std::vector<ExtractedPart> extractParts(const CMMsg& message, const std::string& folder,
                                        const ExtractionOptions& options) {
  Extractor extractor(folder, options);
  try {
    extractor.extract(*message.Content(), 0);
  } catch (...) {  // there is not enough memory
    extractor.discard();
    throw;
  }
  return extractor.result();
}

}  // namespace mmsbrix
