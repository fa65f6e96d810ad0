// What traces show in the place of credentials.
#ifndef MMSBRIX_TRANSPORT_MASKING_H
#define MMSBRIX_TRANSPORT_MASKING_H

#include <string>
#include <string_view>

namespace mmsbrix {

/// A URL whose password, if it has one, is "***".  [RFC 3986 3.2.1]
[[nodiscard]] std::string maskedUrl(std::string_view url);

/// Header lines, one LF between them: the values of cookies and of headers whose names speak of
/// authorization, tokens, passwords, secrets or keys are "***".
[[nodiscard]] std::string maskedHeaders(std::string_view lines);

}  // namespace mmsbrix

#endif  // MMSBRIX_TRANSPORT_MASKING_H
