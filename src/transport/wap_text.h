// WSP requests and answers in the words of HTTP: statuses, methods, headers.  [WAP-230 8.4.3, A]
#ifndef MMSBRIX_TRANSPORT_WAP_TEXT_H
#define MMSBRIX_TRANSPORT_WAP_TEXT_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "wsp/header_block.h"
#include "wsp/octets.h"

namespace mmsbrix {

/// The WSP code of an HTTP status; nothing for a status that has none.
[[nodiscard]] std::optional<std::uint8_t> wspStatus(unsigned httpStatus) noexcept;

/// "POST" for 0x60; "0x51" for a method without a name.
[[nodiscard]] std::string methodName(std::uint8_t code);

/// A content type and the headers behind it.
struct TypedHeaders {
  std::string contentType;  ///< "" when there is none or it cannot be read
  std::vector<HeaderField> fields;
};
[[nodiscard]] TypedHeaders readTypedHeaders(Octets headers);
[[nodiscard]] std::vector<std::uint8_t> writeTypedHeaders(const std::string& contentType,
                                                          const std::vector<HeaderField>& fields);

/// Appends those of `further` whose names `fields` does not have.
void addMissing(const std::vector<HeaderField>& further, std::vector<HeaderField>& fields);

}  // namespace mmsbrix

#endif  // MMSBRIX_TRANSPORT_WAP_TEXT_H
