// WSP multipart bodies as lists of entries: content type, headers and data.  [WAP-230 8.5]
#ifndef MMSBRIX_WSP_MULTIPART_ENTRIES_H
#define MMSBRIX_WSP_MULTIPART_ENTRIES_H

#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "wsp/multipart_walker.h"
#include "wsp/octets.h"
#include "wsp/wsp_header_list.h"

namespace QuorvexMms {

class MultipartEntryList;

/// One entry.  It owns its data.
class MultipartEntry {
 public:
  MultipartEntry() = default;
  MultipartEntry(std::string_view contentType, mmsbrix::Octets data);

  [[nodiscard]] const WapStack::Content_type_value& contentType() const noexcept {
    return contentType_;
  }
  [[nodiscard]] WapStack::Message_header& headers() noexcept { return headers_; }
  [[nodiscard]] const WapStack::Message_header& headers() const noexcept { return headers_; }
  [[nodiscard]] const std::vector<std::uint8_t>& data() const noexcept { return data_; }

  /// The entries inside, when the content type says that the data is a multipart body; nothing also
  /// for a body that cannot be read to its end.  The sender's version is that of the list.
  [[nodiscard]] std::optional<MultipartEntryList> open(
      WapAssignments::Version sender = WapAssignments::kVersion12) const;

  /// Appends lengths, content type, headers and data.
  bool encodeToFrame(mmsbrix::Writer& out, const WapStack::HeaderEncodingFilter& filter) const;
  /// Reads an entry where a walk over a body has found it; false, with a report, when it is cut
  /// short: the entry has what is there.  A content type that cannot be decoded is empty; headers
  /// that cannot be are left out.
  bool decode(const mmsbrix::MultipartItem& item);

 private:
  WapStack::Content_type_value contentType_;
  WapStack::Message_header headers_;
  std::vector<std::uint8_t> data_;
};

/// A multipart body.
class MultipartEntryList {
 public:
  [[nodiscard]] const std::vector<MultipartEntry>& entries() const noexcept { return entries_; }
  void add(MultipartEntry entry) { entries_.push_back(std::move(entry)); }

  /// Appends the number of entries, which peers of every version may rely on, and the entries.
  bool encodeToFrame(mmsbrix::Writer& out, const WapStack::HeaderEncodingFilter& filter =
                                               WapStack::HeaderEncodingFilter()) const;
  /// Adds the entries of a body.  The number ahead of them ends the list for a sender up to
  /// encoding version 1.3, save 0, which is no number but "up to the end"; newer senders do not
  /// count.  False when an entry is cut short or cannot be read; all up to it are there.
  bool decodeFromFrame(mmsbrix::Reader& in,
                       WapAssignments::Version sender = WapAssignments::kVersion12);

 private:
  std::vector<MultipartEntry> entries_;
};

}  // namespace QuorvexMms

#endif  // MMSBRIX_WSP_MULTIPART_ENTRIES_H
