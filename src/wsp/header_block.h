/// @file
/// Header blocks of the WAP Session Protocol for everybody: the names and values that HTTP writes,
/// and the octets that travel.  [WAP-230 8.4]
#ifndef MMSBRIX_WSP_HEADER_BLOCK_H
#define MMSBRIX_WSP_HEADER_BLOCK_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "../export.h"

namespace mmsbrix {

/// The encoding versions of WSP.  A code is sent only to peers that have its version.
enum class EncodingVersion : std::uint8_t {
  v1_1,  ///< "1.1"
  v1_2,  ///< "1.2", which the encoder takes when it is not told
  v1_3,  ///< "1.3"
  v1_4,  ///< "1.4"
  v1_5,  ///< "1.5"
};

/// A header as text.  A code without a name is named by its number, "0x4B"; the value of a header
/// whose format is not known is its text, or "0x" and its octets in hex.
struct HeaderField {
  std::string name;       ///< as HTTP writes it, "Content-Type"
  std::string value;      ///< as HTTP writes it, parameters included
  std::uint8_t page = 1;  ///< header code page; all named headers are on page 1

  /// Name, value and page are the same, letter by letter.
  friend bool operator==(const HeaderField&, const HeaderField&) = default;
};

/// A header that was left out, and why.
struct HeaderProblem {
  /// Of the header's first octet in the block; its index in the list when encoding.
  std::size_t position = 0;
  std::string name;    ///< "" where it has none
  std::string reason;  ///< for people
};

/// What decodeHeaderBlock found.
struct DecodedHeaders {
  std::vector<HeaderField> fields;      ///< in their order
  std::vector<HeaderProblem> problems;  ///< in the order of their positions
};

/// What encodeHeaderBlock made.
struct EncodedHeaders {
  std::vector<std::uint8_t> octets;     ///< without those that have a problem
  std::vector<HeaderProblem> problems;  ///< in the order of their indexes
};

/// What becomes of the elements of a comma list, which travel as headers of the same name.
enum class HeaderLists {
  joined,  ///< one header where the first of them stood
  split,   ///< each as it travels
};

/// Decodes a block of headers.  Never fails as a whole: a header that cannot be decoded is left
/// out and named among the problems; nothing beyond `size` octets is read.
[[nodiscard]] MMSBRIX_API DecodedHeaders decodeHeaderBlock(const std::uint8_t* octets,
                                                           std::size_t size,
                                                           HeaderLists lists = HeaderLists::joined);

/// Encodes headers with the codes of `version`, the others and all values that the binary form
/// cannot hold as text.  A header without a form on the wire is left out and named among the
/// problems: a name that is no token, a value with control characters.
[[nodiscard]] MMSBRIX_API EncodedHeaders encodeHeaderBlock(
    const std::vector<HeaderField>& fields, EncodingVersion version = EncodingVersion::v1_2);

/// "Name: value", credentials masked: what may be shown or logged.
[[nodiscard]] MMSBRIX_API std::string printHeader(const HeaderField& field);

}  // namespace mmsbrix

#endif  // MMSBRIX_WSP_HEADER_BLOCK_H
