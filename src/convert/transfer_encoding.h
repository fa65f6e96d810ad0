// Transfer encodings, which some peers apply to parts although the transport is binary.  [RFC 2045
// 6]
#ifndef MMSBRIX_CONVERT_TRANSFER_ENCODING_H
#define MMSBRIX_CONVERT_TRANSFER_ENCODING_H

#include <optional>
#include <string>
#include <string_view>

namespace mmsbrix {

/// Base64 with any line breaks; nothing when other octets than its alphabet's are there.
[[nodiscard]] std::optional<std::string> decodeBase64(std::string_view text);
/// Quoted-printable; what is no escape stays as it is.
[[nodiscard]] std::string decodeQuotedPrintable(std::string_view text);

}  // namespace mmsbrix

#endif  // MMSBRIX_CONVERT_TRANSFER_ENCODING_H
