// Addresses as people write them.
#ifndef MMSBRIX_TOOLS_RECIPIENT_H
#define MMSBRIX_TOOLS_RECIPIENT_H

#include <mmsbrix/model/mmaddr.h>

#include <optional>
#include <string>
#include <string_view>

namespace mmsbrix::tool {

/// The kinds by the names that "plmn:...", "ipv4:...", "ipv6:...", "mail:..." and "other:..." use.
[[nodiscard]] std::optional<CMMAddr::TYPE> addressKind(std::string_view name);
[[nodiscard]] std::string_view addressKindName(CMMAddr::TYPE kind);

/// An address whose kind is told by its text: a telephone number (blanks, hyphens, points and
/// brackets in it are dropped), an IPv4 or IPv6 address, or a mail address; or forced by a prefix,
/// the text behind which is then kept as it is.  Nothing, with `error` set, when it is none of
/// these; with `force` such a text is an address of the other kind.
[[nodiscard]] std::optional<CMMAddr> parseRecipient(const std::string& text, bool force,
                                                    std::string& error);

}  // namespace mmsbrix::tool

#endif  // MMSBRIX_TOOLS_RECIPIENT_H
