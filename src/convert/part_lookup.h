// Looking into parts without moving their cursors.
#ifndef MMSBRIX_CONVERT_PART_LOOKUP_H
#define MMSBRIX_CONVERT_PART_LOOKUP_H

#include <cstdint>
#include <span>
#include <string_view>

#include "model/mmpart.h"

namespace mmsbrix {

/// The first header of that name, letters in any case; null without one.
[[nodiscard]] const CMMHdr* headerOf(const CMMPart& part, std::string_view name) noexcept;
/// Its value, "" without one.
[[nodiscard]] std::string_view headerValue(const CMMPart& part, std::string_view name) noexcept;
/// The value of a header's parameter, "" without one.
[[nodiscard]] std::string_view parameterValue(const CMMPart& part, std::string_view header,
                                              std::string_view parameter) noexcept;
/// The content's octets as they stand.
[[nodiscard]] std::span<const std::uint8_t> octetsOf(const CMMPart& part) noexcept;
[[nodiscard]] inline std::string_view charsOf(std::span<const std::uint8_t> octets) noexcept {
  return {reinterpret_cast<const char*>(octets.data()), octets.size()};
}
[[nodiscard]] inline std::span<const std::uint8_t> octetsOf(std::string_view chars) noexcept {
  return {reinterpret_cast<const std::uint8_t*>(chars.data()), chars.size()};
}
/// A Content-ID without its angle brackets.
[[nodiscard]] std::string_view withoutBrackets(std::string_view id) noexcept;
/// What follows the last "/" or "\".
[[nodiscard]] inline std::string_view lastPathPart(std::string_view path) noexcept {
  return path.substr(path.find_last_of("/\\") + 1);
}

}  // namespace mmsbrix

#endif  // MMSBRIX_CONVERT_PART_LOOKUP_H
