/// @file
/// Addresses as people write them: what kind an address is, and whether two are the same.
#ifndef MMSBRIX_MODEL_ADDRESS_TEXT_H
#define MMSBRIX_MODEL_ADDRESS_TEXT_H

#include <optional>
#include <string_view>

#include "../export.h"
#include "mmaddr.h"

namespace mmsbrix {

/// An address whose kind is told by its text: a telephone number (blanks, hyphens, points and
/// brackets in it are dropped), an IPv4 or IPv6 address, or a mail address.  Nothing when it is
/// none of these.
MMSBRIX_API std::optional<CMMAddr> addressFromText(std::string_view text);

/// True when two addresses mean the same subscriber: mail addresses in any case of letters,
/// telephone numbers also when one is in national form ("040 123 4567" and "+358401234567"), other
/// kinds when their texts are equal.
MMSBRIX_API bool sameSubscriber(const CMMAddr& one, const CMMAddr& other);

}  // namespace mmsbrix

#endif  // MMSBRIX_MODEL_ADDRESS_TEXT_H
