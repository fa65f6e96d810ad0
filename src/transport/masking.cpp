#include "transport/masking.h"

#include <algorithm>
#include <array>

#include "platform/ascii.h"

namespace mmsbrix {
namespace {

constexpr std::string_view kMask = "***";

bool isSecret(std::string_view name) noexcept {
  constexpr auto kWords =
      std::to_array<std::string_view>({"auth", "cookie", "token", "password", "secret", "key"});
  return std::any_of(kWords.begin(), kWords.end(), [name](std::string_view word) {
    for (std::size_t at = 0; at + word.size() <= name.size(); ++at) {
      if (equalsIgnoringCase(name.substr(at, word.size()), word)) return true;
    }
    return false;
  });
}

}  // namespace

std::string maskedUrl(std::string_view url) {
  constexpr std::string_view kBeforeAuthority = "://";
  const std::size_t scheme = url.find(kBeforeAuthority);
  if (scheme == std::string_view::npos) return std::string(url);
  const std::size_t begin = scheme + kBeforeAuthority.size();
  const std::string_view authority = url.substr(begin, url.find_first_of("/?#", begin) - begin);
  const std::size_t end = authority.rfind('@');
  const std::size_t password = authority.substr(0, end).find(':');
  if (end == std::string_view::npos || password == std::string_view::npos) return std::string(url);
  return std::string(url.substr(0, begin + password + 1))
      .append(kMask)
      .append(url.substr(begin + end));
}

std::string maskedHeaders(std::string_view lines) {
  std::string masked;
  masked.reserve(lines.size());
  while (!lines.empty()) {
    const std::size_t end = std::min(lines.find('\n'), lines.size());
    const std::string_view line = lines.substr(0, end);
    const std::size_t colon = line.find(':');
    if (colon != std::string_view::npos && isSecret(line.substr(0, colon))) {
      masked.append(line.substr(0, colon)).append(": ").append(kMask);
    } else {
      masked.append(line);
    }
    masked.append(lines.substr(end, 1));
    lines.remove_prefix(std::min(end + 1, lines.size()));
  }
  return masked;
}

}  // namespace mmsbrix
