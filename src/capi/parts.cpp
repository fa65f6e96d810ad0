// The parts of messages: attaching, slides, reading, extracting.
#include <algorithm>
#include <chrono>
#include <limits>
#include <memory>
#include <optional>
#include <vector>

#include "capi/support.h"
#include "convert/extraction.h"
#include "convert/media_types.h"
#include "convert/mmsconvert.h"
#include "convert/slides.h"
#include "mms/charsets.h"

struct mmsbrix_files {
  std::vector<mmsbrix::ExtractedPart> parts;
};

namespace mmsbrix::capi {
namespace {

constexpr const char* kContentType = "Content-Type";
constexpr const char* kMixed = "application/vnd.wap.multipart.mixed";
constexpr const char* kRelated = "application/vnd.wap.multipart.related";
constexpr const char* kSmil = "application/smil";

// The parts that a caller counts: the children, or the body itself when it is no multipart.
const CMMPart* partAt(mmsbrix_message* message, std::size_t index) {
  if (message == nullptr) return nullptr;
  const CMMPart& root = *message->message.Content();
  if (root.ChildCount() == 0 && root.GetContent() != nullptr) return index == 0 ? &root : nullptr;
  return index < root.ChildCount() ? root.Child(static_cast<unsigned>(index)) : nullptr;
}

// Headers of a part without moving its cursors.
const CMMHdr* findHeader(const CMMPart& part, std::string_view name) {
  const CMMHdrList& headers = *part.Headers();
  const auto found = std::find_if(headers.begin(), headers.end(),
                                  [&](const CMMHdr& h) { return h.Name() == name; });
  return found == headers.end() ? nullptr : &*found;
}

const char* parameterOf(const CMMPart& part, std::string_view name) {
  const CMMHdr* type = findHeader(part, kContentType);
  if (type == nullptr) return nullptr;
  for (const CMMParam& parameter : *type->Params()) {
    const std::string_view given = parameter.Name();
    const bool same =
        std::ranges::equal(given, name, [](char a, char b) { return (a | 0x20) == b; });
    if (same) return parameter.GetValue();
  }
  return nullptr;
}

std::optional<std::string_view> partText(const CMMPart& part, mmsbrix_part_text which) {
  const CMMHdr* header = nullptr;
  const char* parameter = nullptr;
  switch (which) {
    case MMSBRIX_PART_TYPE:
      header = findHeader(part, kContentType);
      break;
    case MMSBRIX_PART_NAME:
      header = findHeader(part, "Content-Location");
      if (header == nullptr) parameter = parameterOf(part, "name");
      break;
    case MMSBRIX_PART_ID:
      header = findHeader(part, "Content-ID");
      break;
    default:
      parameter = parameterOf(part, "charset");
  }
  if (header == nullptr && parameter == nullptr) return std::nullopt;
  std::string_view text = header != nullptr ? header->Value() : std::string_view(parameter);
  if (which == MMSBRIX_PART_ID && text.starts_with('<') && text.ends_with('>')) {
    text = text.substr(1, text.size() - 2);
  }
  return text;
}

bool nameIsTaken(const CMMPart& root, const std::string& name) {
  for (unsigned i = 0; i < root.ChildCount(); ++i) {
    if (partText(*root.Child(i), MMSBRIX_PART_NAME) == name) return true;
  }
  return false;
}

// "photo.jpg", "photo-2.jpg" and so on.
std::string uniqueName(const CMMPart& root, const std::string& wanted) {
  const std::size_t dot = std::min(wanted.rfind('.'), wanted.size());
  std::string name = wanted;
  for (unsigned i = 2; nameIsTaken(root, name); ++i) {
    name = wanted.substr(0, dot) + "-" + std::to_string(i) + wanted.substr(dot);
  }
  return name;
}

// A presentation makes a mixed body a related one that starts with it.
void startWith(CMMPart& root, const std::string& id) {
  CMMHdr* type = root.Headers()->Find(kContentType);
  if (type == nullptr || type->Value() != kMixed) return;
  type->SetValue(kRelated);
  type->Params()->AddNew()->Assign("type", kSmil);
  type->Params()->AddNew()->Assign("start", "<" + id + ">");
}

mmsbrix_status attach(CMMsg& message, std::string_view octets, std::string type, std::string name) {
  constexpr unsigned kMostParts = 1000;  // names are held against each other
  CMMPart& root = *message.Content();
  CMMHdr* body = root.Headers()->Find(kContentType);
  // A body that is one part has no place for another.
  if (body != nullptr && !body->Value().starts_with("application/vnd.wap.multipart.")) {
    return MMSBRIX_INVALID_ARGUMENT;
  }
  if (root.ChildCount() >= kMostParts) return MMSBRIX_INVALID_ARGUMENT;
  if (body == nullptr) root.Headers()->AddNew()->Assign(kContentType, kMixed);

  if (type.empty()) type = mediaTypeOfFile(name);
  if (type.empty()) type = "application/octet-stream";
  if (name.empty()) name = "part" + extensionOfMediaType(type);
  name = uniqueName(root, name);
  CMMPart& part = *root.NewChild();
  CMMHdr& header = *part.Headers()->AddNew();
  header.Assign(kContentType, type);
  if (type.starts_with("text/") && isUtf8(octets)) {
    header.Params()->AddNew()->Assign("charset", "utf-8");
  }
  header.Params()->AddNew()->Assign("name", name);
  part.SetContent(octets.data(), static_cast<int>(octets.size()));
  part.Headers()->AddNew()->Assign("Content-ID", "<" + name + ">");
  part.Headers()->AddNew()->Assign("Content-Location", name);
  if (type == kSmil) startWith(root, name);
  return MMSBRIX_OK;
}

std::string orEmptyText(const char* text) {
  return text == nullptr ? std::string() : std::string(text);
}

}  // namespace
}  // namespace mmsbrix::capi

using namespace mmsbrix;        // NOLINT(google-build-using-namespace): the file is their C side
using namespace mmsbrix::capi;  // NOLINT(google-build-using-namespace)

mmsbrix_status mmsbrix_message_attach(mmsbrix_message* message, const void* data, size_t size,
                                      const char* type, size_t type_length, const char* name,
                                      size_t name_length) {
  if (message == nullptr || (data == nullptr && size != 0)) return MMSBRIX_INVALID_ARGUMENT;
  if (size >= std::numeric_limits<int>::max()) return MMSBRIX_INVALID_ARGUMENT;
  return guarded([&] {
    const std::string_view octets(size == 0 ? "" : static_cast<const char*>(data), size);
    return attach(message->message, octets, textOf(type, type_length), textOf(name, name_length));
  });
}

mmsbrix_status mmsbrix_message_attach_file(mmsbrix_message* message, const char* path,
                                           size_t path_length, const char* type, size_t type_length,
                                           const char* name, size_t name_length) {
  if (message == nullptr || path == nullptr) return MMSBRIX_INVALID_ARGUMENT;
  return guarded([&]() -> mmsbrix_status {
    const std::string file = textOf(path, path_length);
    CMMPart content;
    if (!content.Load(file.c_str()) || content.GetContent() == nullptr) return MMSBRIX_CANNOT_READ;
    std::string partName = textOf(name, name_length);
    if (partName.empty()) partName = file.substr(file.find_last_of("/\\") + 1);
    const std::string_view octets(reinterpret_cast<const char*>(content.GetContent()),
                                  static_cast<std::size_t>(content.GetContentLen()));
    return attach(message->message, octets, textOf(type, type_length), partName);
  });
}

mmsbrix_status mmsbrix_message_set_slides(mmsbrix_message* message, const mmsbrix_slide* slides,
                                          size_t count) {
  if (message == nullptr || slides == nullptr || count == 0) return MMSBRIX_INVALID_ARGUMENT;
  return guarded([&]() -> mmsbrix_status {
    std::vector<Slide> built;
    for (const mmsbrix_slide& slide : std::span(slides, count)) {
      built.push_back({orEmptyText(slide.text), orEmptyText(slide.image), orEmptyText(slide.audio),
                       std::chrono::milliseconds(slide.duration_milliseconds)});
    }
    CSMIL smil;
    buildSlides(built, smil);
    return MMS_SmilToMMS(&smil, &message->message, 0) == 1 ? MMSBRIX_OK : MMSBRIX_CANNOT_READ;
  });
}

size_t mmsbrix_message_part_count(mmsbrix_message* message) {
  if (message == nullptr) return 0;
  const unsigned children = message->message.Content()->ChildCount();
  return children == 0 && partAt(message, 0) != nullptr ? 1 : children;
}

mmsbrix_status mmsbrix_message_part_text(mmsbrix_message* message, size_t index,
                                         mmsbrix_part_text which, const char** text,
                                         size_t* length) {
  if (message == nullptr || which < MMSBRIX_PART_TYPE || which > MMSBRIX_PART_CHARSET) {
    return MMSBRIX_INVALID_ARGUMENT;
  }
  const CMMPart* part = partAt(message, index);
  if (part == nullptr) return MMSBRIX_NOT_PRESENT;
  const auto found = partText(*part, which);
  if (!found) return MMSBRIX_NOT_PRESENT;
  // Only an id may end before its zero, at the bracket: that one is kept by the handle.
  if (which != MMSBRIX_PART_ID) return give(*found, text, length);
  return guarded([&] {
    constexpr int kPartIds = 0x10000;  // above all fields
    std::string& kept = message->texts[kPartIds + static_cast<int>(index)];
    kept = *found;
    return give(kept, text, length);
  });
}

mmsbrix_status mmsbrix_message_part_data(mmsbrix_message* message, size_t index, const void** data,
                                         size_t* size) {
  if (data == nullptr || size == nullptr) return MMSBRIX_INVALID_ARGUMENT;
  const CMMPart* part = partAt(message, index);
  if (part == nullptr || part->GetContent() == nullptr) return MMSBRIX_NOT_PRESENT;
  *data = part->GetContent();
  *size = static_cast<std::size_t>(part->GetContentLen());
  return MMSBRIX_OK;
}

mmsbrix_status mmsbrix_message_extract(mmsbrix_message* message, const char* folder, size_t length,
                                       mmsbrix_files** files) {
  if (message == nullptr || folder == nullptr || files == nullptr) return MMSBRIX_INVALID_ARGUMENT;
  return guarded([&]() -> mmsbrix_status {
    auto made = std::make_unique<mmsbrix_files>();
    made->parts = extractParts(message->message, textOf(folder, length));
    *files = made.release();
    return MMSBRIX_OK;
  });
}

size_t mmsbrix_files_count(const mmsbrix_files* files) {
  return files == nullptr ? 0 : files->parts.size();
}

mmsbrix_status mmsbrix_files_get(const mmsbrix_files* files, size_t index, const char** path,
                                 size_t* path_length, const char** type, size_t* type_length,
                                 uint64_t* octets, uint32_t* error) {
  if (files == nullptr) return MMSBRIX_INVALID_ARGUMENT;
  if (index >= files->parts.size()) return MMSBRIX_NOT_PRESENT;
  const ExtractedPart& part = files->parts[index];
  if (octets != nullptr) *octets = part.octets;
  if (error != nullptr) *error = part.error;
  give(part.mediaType, type, type_length);
  return give(part.path, path, path_length);
}

void mmsbrix_files_free(mmsbrix_files* files) {
  delete files;
}
