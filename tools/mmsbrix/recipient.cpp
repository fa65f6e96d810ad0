#include "recipient.h"

#include <mmsbrix/model/address_text.h>

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
  if (auto address = addressFromText(text)) return address;
  if (force) return CMMAddr(text.c_str(), CMMAddr::TYPE_OTHER);
  error =
      "'" + text +
      "' is no telephone number, mail address or IP address (force a kind: plmn:, mail:, ipv4:, "
      "ipv6:, other:)";
  return std::nullopt;
}

}  // namespace mmsbrix::tool
