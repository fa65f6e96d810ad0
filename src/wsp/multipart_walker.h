// The bounded walk over a WSP multipart body: where each entry, its headers and its data lie.
// [WAP-230 8.5]
#ifndef MMSBRIX_WSP_MULTIPART_WALKER_H
#define MMSBRIX_WSP_MULTIPART_WALKER_H

#include <cstddef>
#include <cstdint>

#include "wsp/octets.h"

namespace mmsbrix {

/// One entry.  Offsets count from the beginning of the multipart body; octets are clamped to what
/// is there.
struct MultipartItem {
  std::size_t offset = 0;         ///< of the headers length
  std::size_t headersOffset = 0;  ///< of the content type
  Octets contentType;             ///< the content-type value
  Octets headers;                 ///< the headers behind it
  std::size_t dataOffset = 0;
  Octets data;
  std::size_t statedHeaders = 0;  ///< octets that content type and headers claim
  std::size_t statedData = 0;     ///< octets that the data claims
};

class MultipartWalker {
 public:
  explicit MultipartWalker(Octets body) noexcept;

  /// The number of entries that the body announces; entries are read to the end whatever it says.
  [[nodiscard]] std::uint32_t announced() const noexcept { return announced_; }
  /// Moves to the next entry; false at the end, or where a length cannot be read, with `item` of no
  /// meaning then.
  bool next(MultipartItem& item) noexcept;
  /// The same without a look at the headers: `dataOctets` are those of the entry's data.
  bool skip(std::size_t& dataOctets) noexcept;
  /// Octets walked over.
  [[nodiscard]] std::size_t position() const noexcept { return in_.position(); }
  /// True when a length could not be read, so that octets are left over.
  [[nodiscard]] bool broken() const noexcept { return broken_; }

 private:
  Reader in_;
  std::uint32_t announced_ = 0;
  bool broken_ = false;
};

}  // namespace mmsbrix

#endif  // MMSBRIX_WSP_MULTIPART_WALKER_H
