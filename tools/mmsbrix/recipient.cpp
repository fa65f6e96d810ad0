#include "recipient.h"

#include <arpa/inet.h>

#include <algorithm>
#include <array>
#include <utility>

namespace mmsbrix::tool {
namespace {

constexpr auto kKinds = std::to_array<std::pair<std::string_view, CMMAddr::TYPE>>({
    {"plmn", CMMAddr::TYPE_PLMN},
    {"ipv4", CMMAddr::TYPE_IPV4},
    {"ipv6", CMMAddr::TYPE_IPV6},
    {"mail", CMMAddr::TYPE_PLAIN},
    {"other", CMMAddr::TYPE_OTHER},
});

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

// The number without what people put in it to read it; empty when it is none.
std::string telephoneNumber(std::string_view text) {
  constexpr std::string_view kFillers = " -.()/";
  std::string number;
  for (const char c : text) {
    if (isDigit(c) || (c == '+' && number.empty()) || c == '*' || c == '#') {
      number += c;
    } else if (kFillers.find(c) == std::string_view::npos) {
      return {};
    }
  }
  return std::ranges::any_of(number, isDigit) ? number : std::string();
}

bool isNetworkAddress(const std::string& text, int family) {
  std::array<unsigned char, sizeof(in6_addr)> octets{};
  return ::inet_pton(family, text.c_str(), octets.data()) == 1;
}

}  // namespace

std::optional<CMMAddr::TYPE> addressKind(std::string_view name) {
  const auto found =
      std::ranges::find(kKinds, name, &std::pair<std::string_view, CMMAddr::TYPE>::first);
  return found == kKinds.end() ? std::nullopt : std::optional(found->second);
}

std::string_view addressKindName(CMMAddr::TYPE kind) {
  const auto found =
      std::ranges::find(kKinds, kind, &std::pair<std::string_view, CMMAddr::TYPE>::second);
  return found == kKinds.end() ? "other" : found->first;
}

std::optional<CMMAddr> parseRecipient(const std::string& text, bool force, std::string& error) {
  if (const std::size_t colon = text.find(':'); colon != std::string::npos) {
    if (const auto kind = addressKind(text.substr(0, colon))) {
      const std::string address = text.substr(colon + 1);
      if (!address.empty() || force) return CMMAddr(address.c_str(), *kind);
      error = "'" + text + "' has no address behind its kind";
      return std::nullopt;
    }
  }
  if (isNetworkAddress(text, AF_INET)) return CMMAddr(text.c_str(), CMMAddr::TYPE_IPV4);
  if (isNetworkAddress(text, AF_INET6)) return CMMAddr(text.c_str(), CMMAddr::TYPE_IPV6);
  if (const std::string number = telephoneNumber(text); !number.empty()) {
    return CMMAddr(number.c_str(), CMMAddr::TYPE_PLMN);
  }
  const std::size_t at = text.find('@');
  const bool mail = at != std::string::npos && at > 0 && at + 1 < text.size();
  const bool plain =
      std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) > 0x20; });
  if (mail && plain) return CMMAddr(text.c_str(), CMMAddr::TYPE_PLAIN);
  if (force) return CMMAddr(text.c_str(), CMMAddr::TYPE_OTHER);
  error =
      "'" + text +
      "' is no telephone number, mail address or IP address (force a kind: plmn:, mail:, ipv4:, "
      "ipv6:, other:)";
  return std::nullopt;
}

}  // namespace mmsbrix::tool
