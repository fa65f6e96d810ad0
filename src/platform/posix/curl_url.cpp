#include "platform/posix/curl_url.h"

#include <curl/curl.h>

#include <algorithm>
#include <array>
#include <charconv>

#include "platform/ascii.h"
#include "platform/proxy_address.h"

namespace mmsbrix::platform {
namespace {

constexpr std::uint16_t kHttpPort = 80;
constexpr std::uint16_t kHttpsPort = 443;
/// No proxy at all to libcurl, which then reports a name that cannot be resolved.
constexpr char kUnusableProxy[] = "http:// ";
/// Room for a host and for a path, each with its terminating zero.
constexpr std::size_t kComponentSize = 256;

struct UrlCleanup {
  void operator()(CURLU* url) const noexcept { curl_url_cleanup(url); }
};

constexpr bool isControl(char c) noexcept {
  return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

// A component of a parsed URL; empty when it has none.
std::string component(CURLU* url, CURLUPart part) {
  char* text = nullptr;
  if (curl_url_get(url, part, &text, 0) != CURLUE_OK) return {};
  std::string copy(text);
  curl_free(text);
  return copy;
}

// A host as it stands in a URL: an IPv6 address in brackets, with its zone escaped. [RFC 6874 2]
std::string hostInUrl(std::string_view host) {
  if (host.find(':') == std::string_view::npos) return std::string(host);
  std::string bracketed = "[";
  for (const char c : host) {
    if (c == '%') {
      bracketed += "%25";
    } else {
      bracketed += c;
    }
  }
  return bracketed + "]";
}

}  // namespace

std::optional<UrlParts> crackUrl(const std::string& url, unsigned& error) {
  error = kErrorInvalidParameter;
  if (url.empty()) return std::nullopt;

  const std::string_view text(url);
  const std::size_t colon = text.find(':');
  const std::string_view scheme = text.substr(0, colon);
  UrlParts parts;
  parts.secure = equalsIgnoringCase(scheme, "https");
  error = kInternetUnrecognizedScheme;
  if (colon == std::string_view::npos || !(parts.secure || equalsIgnoringCase(scheme, "http"))) {
    return std::nullopt;
  }
  error = kInternetInvalidUrl;
  if (!text.substr(colon).starts_with("://") || text.substr(colon).starts_with(":///") ||
      std::any_of(text.begin(), text.end(), isControl)) {
    return std::nullopt;
  }

  const std::unique_ptr<CURLU, UrlCleanup> parsed(curl_url());
  if (parsed == nullptr || curl_url_set(parsed.get(), CURLUPART_URL, url.c_str(),
                                        CURLU_PATH_AS_IS | CURLU_ALLOW_SPACE) != CURLUE_OK) {
    return std::nullopt;
  }
  parts.host = component(parsed.get(), CURLUPART_HOST);
  if (parts.host.starts_with('[') && parts.host.ends_with(']')) {
    parts.host = parts.host.substr(1, parts.host.size() - 2);
    const std::string zone = component(parsed.get(), CURLUPART_ZONEID);
    if (!zone.empty()) parts.host += "%" + zone;
  }
  const std::string port = component(parsed.get(), CURLUPART_PORT);
  std::from_chars(port.data(), port.data() + port.size(), parts.port);
  if (parts.port == 0) parts.port = parts.secure ? kHttpsPort : kHttpPort;

  // The path is taken from the text, so that it stays as it was given.
  const std::size_t authority = colon + std::string_view("://").size();
  const std::size_t pathAt = std::min(text.find_first_of("/?#", authority), text.size());
  parts.path = text.substr(pathAt, text.find('#', pathAt) - pathAt);
  if (!parts.path.starts_with('/')) parts.path.insert(0, "/");

  error = kErrorInsufficientBuffer;
  if (parts.host.size() >= kComponentSize || parts.path.size() >= kComponentSize) {
    return std::nullopt;
  }
  error = 0;
  return parts;
}

std::string urlOf(const UrlParts& parts) {
  std::string url = parts.secure ? "https://" : "http://";
  url += hostInUrl(parts.host);
  if (parts.port != (parts.secure ? kHttpsPort : kHttpPort))
    url += ":" + std::to_string(parts.port);
  for (const char c : parts.path) {
    if (c == ' ') {
      url += "%20";
    } else {
      url += c;
    }
  }
  return url;
}

std::string proxyUrlOf(std::string_view proxy) {
  if (proxy.empty()) return {};
  const std::optional<ProxyAddress> address = parseProxy(proxy);
  if (!address) return kUnusableProxy;
  return "http://" + hostInUrl(address->host) + ":" + std::to_string(address->port);
}

}  // namespace mmsbrix::platform
