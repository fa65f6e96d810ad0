// What the things that a PDU names take in memory once they are objects: in octets, and not less
// than they do take.
#ifndef MMSBRIX_MMS_ITEM_COST_H
#define MMSBRIX_MMS_ITEM_COST_H

#include <cstddef>

#include "wsp/content_type_reader.h"
#include "wsp/header_walker.h"
#include "wsp/multipart_walker.h"

namespace mmsbrix {

/// Recipients and parts beyond which the number of those to come is found out, so that they get
/// their room at once and not, for a while, two rooms.  It is paid for there.
inline constexpr std::size_t kLongList = 16;

/// A field of a message, behind `headersBefore` application headers; of a recipient, its text.
[[nodiscard]] std::size_t fieldCost(const HeaderItem& item, std::size_t headersBefore) noexcept;
/// What an entry of a multipart gets besides its place among the parts: room for headers.
[[nodiscard]] std::size_t partCost(const MultipartItem& item) noexcept;
/// Headers that a part is given room for beforehand, the content type among them.
[[nodiscard]] std::size_t headersForeseen(const MultipartItem& item) noexcept;
/// A header of a part behind `before` others, where room for `foreseen` was made.
[[nodiscard]] std::size_t partHeaderCost(const HeaderItem& header, std::size_t before,
                                         std::size_t foreseen) noexcept;
/// A parameter behind `before` others of its header.
[[nodiscard]] std::size_t parameterCost(const Parameter& parameter, std::size_t before) noexcept;

}  // namespace mmsbrix

#endif  // MMSBRIX_MMS_ITEM_COST_H
