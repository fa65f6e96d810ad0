// URLs in the form that libcurl takes.
#ifndef MMSBRIX_PLATFORM_POSIX_CURL_URL_H
#define MMSBRIX_PLATFORM_POSIX_CURL_URL_H

#include <string>
#include <string_view>

#include "platform/http.h"

namespace mmsbrix::platform {

/// The whole URL of `parts`; blanks in the path, which no request line may have, are escaped.
[[nodiscard]] std::string urlOf(const UrlParts& parts);

/// The URL of an HTTP proxy given as "host:port", empty for an empty text.  A host that cannot be
/// one gives a URL whose use fails like a name that cannot be resolved.
[[nodiscard]] std::string proxyUrlOf(std::string_view proxy);

}  // namespace mmsbrix::platform

#endif  // MMSBRIX_PLATFORM_POSIX_CURL_URL_H
