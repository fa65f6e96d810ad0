#include "smil/xml_names.h"

#include <algorithm>
#include <array>
#include <span>

#include "platform/unicode.h"

namespace mmsbrix {
namespace {

struct Range {
  char32_t first;
  char32_t last;
};

constexpr auto kNameStart = std::to_array<Range>({
    {':', ':'},
    {'A', 'Z'},
    {'_', '_'},
    {'a', 'z'},
    {0xC0, 0xD6},
    {0xD8, 0xF6},
    {0xF8, 0x2FF},
    {0x370, 0x37D},
    {0x37F, 0x1FFF},
    {0x200C, 0x200D},
    {0x2070, 0x218F},
    {0x2C00, 0x2FEF},
    {0x3001, 0xD7FF},
    {0xF900, 0xFDCF},
    {0xFDF0, 0xFFFC},
    {0x10000, 0xEFFFF},
});
// What may follow besides.
constexpr auto kNameRest = std::to_array<Range>({
    {'-', '.'},
    {'0', '9'},
    {0xB7, 0xB7},
    {0x300, 0x36F},
    {0x203F, 0x2040},
});

bool isAsciiLetter(char c) noexcept {
  const auto fromA = static_cast<unsigned char>((c | 0x20) - 'a');
  return fromA <= 'z' - 'a';
}

bool isIn(std::span<const Range> ranges, char32_t character) noexcept {
  return std::any_of(ranges.begin(), ranges.end(), [character](const Range& range) {
    return character >= range.first && character <= range.last;
  });
}

}  // namespace

bool isXmlName(std::string_view utf8) noexcept {
  // Letters, of which names are made.
  const auto* const other = std::find_if_not(utf8.begin(), utf8.end(), isAsciiLetter);
  bool first = other == utf8.begin();
  utf8.remove_prefix(static_cast<std::size_t>(other - utf8.begin()));
  while (!utf8.empty()) {
    // The replacement character, which stands for a bad octet, is in no range.
    const char32_t character = platform::takeUtf8Character(utf8);
    if (!isIn(kNameStart, character) && (first || !isIn(kNameRest, character))) return false;
    first = false;
  }
  return !first;
}

}  // namespace mmsbrix
