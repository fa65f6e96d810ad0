#include "wsp/multipart_entries.h"

#include <algorithm>
#include <limits>

#include "wsp/content_type_reader.h"
#include "wsp/report.h"
#include "wsp/wap_mms_shared.h"

namespace QuorvexMms {
namespace {

using mmsbrix::Octets;
using mmsbrix::Reader;
using mmsbrix::Writer;

constexpr std::string_view kSource = "multipart_entries";
constexpr WapAssignments::Version kLastCounting = WapAssignments::kVersion13;

// Octets of the content type that an entry begins with.  A text that goes on to its zero is one
// whole name, also where it begins like the one that may come without its zero.
std::size_t entryTypeSize(const Reader& in) noexcept {
  const std::size_t size = mmsbrix::fieldSize(in);
  const std::size_t tolerated = mmsbrix::contentTypeSize(in);
  if (size == tolerated || size > in.left()) return tolerated;
  const std::string_view text = mmsbrix::asText(in.rest().first(size - 1));
  const bool isName = std::ranges::all_of(
      text, [](char character) { return character >= ' ' && character < 0x7F; });
  return isName ? size : tolerated;
}

}  // namespace

MultipartEntry::MultipartEntry(std::string_view contentType, Octets data)
    : contentType_(contentType), data_(data.begin(), data.end()) {}

std::optional<MultipartEntryList> MultipartEntry::open(WapAssignments::Version sender) const {
  if (!contentType_.isMultipart()) return std::nullopt;
  MultipartEntryList inside;
  Reader in{Octets(data_)};
  if (!inside.decodeFromFrame(in, sender)) return std::nullopt;
  return inside;
}

bool MultipartEntry::encodeToFrame(Writer& out,
                                   const WapStack::HeaderEncodingFilter& filter) const {
  if (data_.size() > std::numeric_limits<std::uint32_t>::max()) return false;
  Writer headers;
  WapStack::Content_type_value contentType(contentType_.getText());
  contentType.setVersion(filter.version());
  if (!contentType.encodeToFrame(headers)) return false;
  headers_.encodeToFrame(headers, filter);
  mmsbrix::writeUintvar(out, static_cast<std::uint32_t>(headers.size()));
  mmsbrix::writeUintvar(out, static_cast<std::uint32_t>(data_.size()));
  out.append(headers.written());
  out.append(Octets(data_));
  return !headers.failed() && !out.failed();
}

bool MultipartEntry::decode(const mmsbrix::MultipartItem& item) {
  // Both are one stretch of octets; where the type ends is for this layer to say.
  Reader headers(Octets(item.contentType.data(), item.contentType.size() + item.headers.size()));
  const Octets type = headers.take(std::min(entryTypeSize(headers), headers.left()));
  contentType_.setText({});
  Reader contentType(type);
  const bool endless = mmsbrix::asText(type) == mmsbrix::kOctetStream;
  if (endless) {
    contentType_.setText(mmsbrix::asText(type));
  } else if (!type.empty()) {
    contentType_.decodeFromFrame(contentType);
  }
  headers_.clear();
  headers_.decodeFromFrame(headers);
  data_.assign(item.data.begin(), item.data.end());
  const bool cut = item.contentType.size() + item.headers.size() < item.statedHeaders ||
                   item.data.size() < item.statedData;
  if (cut) MMSBRIX_REPORT_ERROR(kSource, "a multipart entry is cut short");
  return !cut;
}

bool MultipartEntryList::encodeToFrame(Writer& out,
                                       const WapStack::HeaderEncodingFilter& filter) const {
  mmsbrix::writeUintvar(out, static_cast<std::uint32_t>(entries_.size()));
  for (const MultipartEntry& entry : entries_) {
    if (!entry.encodeToFrame(out, filter)) return false;
  }
  return !out.failed();
}

bool MultipartEntryList::decodeFromFrame(Reader& in, WapAssignments::Version sender) {
  mmsbrix::MultipartWalker walker(in.take(in.left()));
  const bool counted = sender <= kLastCounting && walker.announced() > 0;
  mmsbrix::MultipartItem item;
  for (std::uint32_t count = 0; !counted || count < walker.announced(); ++count) {
    if (!walker.next(item)) break;
    entries_.emplace_back();
    if (!entries_.back().decode(item)) return false;
  }
  if (walker.broken()) MMSBRIX_REPORT_ERROR(kSource, "a length in a multipart cannot be read");
  return !walker.broken();
}

}  // namespace QuorvexMms
