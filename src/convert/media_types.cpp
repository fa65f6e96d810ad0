#include "convert/media_types.h"

#include <array>

#include "platform/ascii.h"
#include "platform/media_types.h"

namespace mmsbrix {
namespace {

struct MediaTypeRow {
  std::string_view extension;
  std::string_view mediaType;
};

// What messages are made of.  These rows go before the platform's database, whose spellings and
// orders differ between systems.  The first row of an extension and the first of a media type
// count.
constexpr auto kMediaTypes = std::to_array<MediaTypeRow>({
    {".txt", "text/plain"},
    {".jpg", "image/jpeg"},
    {".jpeg", "image/jpeg"},
    {".jpe", "image/jpeg"},
    {".gif", "image/gif"},
    {".png", "image/png"},
    {".wbmp", "image/vnd.wap.wbmp"},
    {".bmp", "image/bmp"},
    {".tif", "image/tiff"},
    {".tiff", "image/tiff"},
    {".amr", "audio/amr"},
    {".mp3", "audio/mpeg"},
    {".mid", "audio/midi"},
    {".midi", "audio/midi"},
    {".wav", "audio/x-wav"},
    {".aac", "audio/aac"},
    {".3gp", "video/3gpp"},
    {".mp4", "video/mp4"},
    {".smil", "application/smil"},
    {".smi", "application/smil"},
    {".vcf", "text/x-vCard"},
    {".vcs", "text/x-vCalendar"},
    {".htm", "text/html"},
    {".html", "text/html"},
    {".m4a", "audio/mp4"},
    // Other names of types above.
    {".jpg", "image/jpg"},
    {".amr", "audio/x-amr"},
    {".mp3", "audio/mp3"},
    {".mid", "audio/mid"},
    {".wav", "audio/wav"},
    {".3gp", "audio/3gpp"},
    {".vcf", "text/vcard"},
    {".dat", "application/octet-stream"},
    {".tmp", "application/octet-stream"},  // kept, though the row above always comes first
});

}  // namespace

std::string mediaTypeOfFile(std::string_view path) {
  const std::string_view name = path.substr(path.find_last_of("/\\") + 1);
  const std::size_t dot = name.rfind('.');
  if (dot == std::string_view::npos) return {};
  for (const MediaTypeRow& row : kMediaTypes) {
    if (equalsIgnoringCase(row.extension, name.substr(dot))) return std::string(row.mediaType);
  }
  return platform::mediaTypeOfExtension(name.substr(dot));
}

std::string extensionOfMediaType(std::string_view mediaType) {
  for (const MediaTypeRow& row : kMediaTypes) {
    if (equalsIgnoringCase(row.mediaType, mediaType)) return std::string(row.extension);
  }
  return platform::extensionOfMediaType(mediaType);
}

}  // namespace mmsbrix
