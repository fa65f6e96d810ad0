#include "convert/part_lookup.h"

#include "platform/ascii.h"

namespace mmsbrix {
namespace {

template <class List>
auto firstNamed(const List& list, std::string_view name) noexcept -> decltype(&*list.begin()) {
  for (const auto& element : list) {
    if (equalsIgnoringCase(element.Name(), name)) return &element;
  }
  return nullptr;
}

}  // namespace

const CMMHdr* headerOf(const CMMPart& part, std::string_view name) noexcept {
  return firstNamed(*part.Headers(), name);
}

std::string_view headerValue(const CMMPart& part, std::string_view name) noexcept {
  const CMMHdr* header = headerOf(part, name);
  return header == nullptr ? std::string_view() : header->Value();
}

std::string_view parameterValue(const CMMPart& part, std::string_view header,
                                std::string_view parameter) noexcept {
  const CMMHdr* found = headerOf(part, header);
  const CMMParam* value = found == nullptr ? nullptr : firstNamed(*found->Params(), parameter);
  return value == nullptr ? std::string_view() : value->Value();
}

std::span<const std::uint8_t> octetsOf(const CMMPart& part) noexcept {
  return {part.GetContent(), static_cast<std::size_t>(part.GetContentLen())};
}

std::string_view withoutBrackets(std::string_view id) noexcept {
  if (id.size() >= 2 && id.front() == '<' && id.back() == '>') return id.substr(1, id.size() - 2);
  return id;
}

}  // namespace mmsbrix
