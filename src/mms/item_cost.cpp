#include "mms/item_cost.h"

#include <algorithm>

#include "model/mmhdr.h"

namespace mmsbrix {
namespace {

// What the heap hands out when so many octets are asked for.
constexpr std::size_t allocated(std::size_t octets) noexcept {
  return (octets + 7) / 16 * 16 + 8 + (octets <= 8 ? 16 : 0);
}

constexpr std::size_t kBeforeAList = 16;

template <class T>
constexpr std::size_t listCost(std::size_t elements) noexcept {
  return allocated(kBeforeAList + elements * sizeof(T));
}

// An element in a list that grows by a quarter: its old place, its new one and the room behind.
template <class T>
constexpr std::size_t kGrowing = sizeof(T) * 9 / 4 + 1;

// A text: 15 octets stay in place.
constexpr std::size_t textCost(std::size_t octets) noexcept {
  return octets <= 15 ? 0 : allocated(octets + 1);
}

constexpr std::size_t headerCost(std::size_t before, std::size_t foreseen) noexcept {
  if (before < foreseen) return 0;
  return kGrowing<CMMHdr> + (before == 0 ? listCost<CMMHdr>(0) : 0);
}

}  // namespace

std::size_t fieldCost(const HeaderItem& item, std::size_t headersBefore) noexcept {
  if (item.kind == HeaderItem::Kind::text) {
    return headerCost(headersBefore, 0) + textCost(item.name.size()) + textCost(item.value.size());
  }
  return textCost(item.value.size());
}

std::size_t headersForeseen(const MultipartItem& item) noexcept {
  // A header takes ten octets or more as phones write them.
  constexpr std::size_t kOctetsOfAHeader = 10;
  constexpr std::size_t kMost = 4;
  if (item.contentType.empty()) return 0;
  return std::min(1 + item.headers.size() / kOctetsOfAHeader, kMost);
}

std::size_t partCost(const MultipartItem& item) noexcept {
  const std::size_t headers = headersForeseen(item);
  return headers == 0 ? 0 : listCost<CMMHdr>(headers);
}

std::size_t partHeaderCost(const HeaderItem& header, std::size_t before,
                           std::size_t foreseen) noexcept {
  return headerCost(before, foreseen) + textCost(header.name.size()) +
         textCost(header.value.size());
}

std::size_t parameterCost(const Parameter& parameter, std::size_t before) noexcept {
  const std::size_t texts = textCost(parameter.name.size()) + textCost(parameter.value.size());
  // The first parameter makes room for two.
  if (before == 0) return texts + listCost<CMMParam>(2);
  return texts + (before == 1 ? 0 : kGrowing<CMMParam>);
}

}  // namespace mmsbrix
