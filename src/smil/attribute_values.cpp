#include "smil/attribute_values.h"

#include <cstdint>
#include <limits>

namespace mmsbrix {

int leadingNumber(const char* text) noexcept {
  if (text == nullptr) return 0;
  while (*text == ' ' || (*text >= '\t' && *text <= '\r')) ++text;
  const bool negative = *text == '-';
  if (*text == '-' || *text == '+') ++text;
  const std::int64_t limit =
      negative ? -std::int64_t{std::numeric_limits<int>::min()} : std::numeric_limits<int>::max();
  std::int64_t number = 0;
  for (; *text >= '0' && *text <= '9'; ++text) {
    number = number * 10 + (*text - '0');
    if (number > limit) number = limit;
  }
  return static_cast<int>(negative ? -number : number);
}

}  // namespace mmsbrix
