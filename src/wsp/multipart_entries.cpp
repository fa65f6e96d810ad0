#include "wsp/multipart_entries.h"

#include <limits>

#include "wsp/report.h"
#include "wsp/wap_mms_shared.h"

namespace QuorvexMms {
namespace {

using mmsbrix::Octets;
using mmsbrix::Reader;
using mmsbrix::Writer;

constexpr std::string_view kSource = "multipart_entries";
constexpr WapAssignments::Version kLastCounting = WapAssignments::kVersion13;

}  // namespace

MultipartEntry::MultipartEntry(std::string_view contentType, Octets data)
    : contentType_(contentType), data_(data.begin(), data.end()) {}

std::optional<MultipartEntryList> MultipartEntry::open() const {
  if (!contentType_.isMultipart()) return std::nullopt;
  MultipartEntryList inside;
  Reader in{Octets(data_)};
  inside.decodeFromFrame(in);
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
  Reader contentType(item.contentType);
  contentType_.setText({});
  if (!contentType.atEnd()) contentType_.decodeFromFrame(contentType);
  headers_.clear();
  Reader headers(item.headers);
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
