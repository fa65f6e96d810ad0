#include <windows.h>

#include <wininet.h>

#include <algorithm>
#include <string_view>

#include "platform/http.h"

namespace mmsbrix::platform {
namespace {

/// Room for a host and for a path, each with its terminating zero.
constexpr DWORD kComponentSize = 256;

bool isControl(char c) noexcept {
  return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

// What the component lets pass although nothing can be reached by it: no host, brackets that do not
// close, a port that is no number or too large.
bool isReachable(std::string_view url) noexcept {
  const std::size_t colon = url.find(':');
  if (!url.substr(colon).starts_with("://") || std::any_of(url.begin(), url.end(), isControl)) {
    return false;
  }
  std::string_view authority = url.substr(colon + 3);
  authority = authority.substr(0, authority.find_first_of("/?#"));
  if (const std::size_t at = authority.rfind('@'); at != std::string_view::npos) {
    authority.remove_prefix(at + 1);
  }
  std::size_t hostEnd = authority.find(':');
  if (authority.starts_with('[')) {
    hostEnd = authority.find(']');
    if (hostEnd == std::string_view::npos) return false;
    ++hostEnd;
  }
  if (hostEnd == 0 || authority.empty()) return false;
  if (hostEnd >= authority.size()) return true;
  std::string_view port = authority.substr(hostEnd);
  if (!port.starts_with(':')) return false;
  port.remove_prefix(1);
  unsigned number = 0;
  for (const char c : port) {
    if (c < '0' || c > '9') return false;
    number = number * 10 + static_cast<unsigned>(c - '0');
    if (number > 0xFFFF) return false;
  }
  return true;
}

}  // namespace

std::optional<UrlParts> crackUrl(const std::string& url, unsigned& error) {
  char host[kComponentSize] = {};
  char path[kComponentSize] = {};
  URL_COMPONENTSA components{};
  static_assert(sizeof components == 60);
  components.dwStructSize = sizeof components;
  components.lpszHostName = host;
  components.dwHostNameLength = sizeof host;
  components.lpszUrlPath = path;
  components.dwUrlPathLength = sizeof path;
  if (::InternetCrackUrlA(url.c_str(), static_cast<DWORD>(url.size()), 0, &components) == FALSE) {
    error = ::GetLastError();
    // It looks at the scheme last.
    if (error == kInternetInvalidUrl && url.find(':') == std::string::npos) {
      error = kInternetUnrecognizedScheme;
    }
    return std::nullopt;
  }
  error = kInternetUnrecognizedScheme;
  if (components.nScheme != INTERNET_SCHEME_HTTP && components.nScheme != INTERNET_SCHEME_HTTPS) {
    return std::nullopt;
  }
  error = kInternetInvalidUrl;
  if (!isReachable(url)) return std::nullopt;
  error = 0;

  UrlParts parts;
  parts.secure = components.nScheme == INTERNET_SCHEME_HTTPS;
  parts.host = host;
  if (parts.host.starts_with('[') && parts.host.ends_with(']')) {
    parts.host = parts.host.substr(1, parts.host.size() - 2);
  }
  parts.port = components.nPort;
  if (parts.port == 0) {
    parts.port = parts.secure ? INTERNET_DEFAULT_HTTPS_PORT : INTERNET_DEFAULT_HTTP_PORT;
  }
  parts.path = path;
  parts.path.erase(std::min(parts.path.find('#'), parts.path.size()));
  if (!parts.path.starts_with('/')) parts.path.insert(0, "/");
  return parts;
}

}  // namespace mmsbrix::platform
