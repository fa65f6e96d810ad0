#include "platform/resource_text.h"

namespace mmsbrix::platform {

// No resources here.
std::string_view resourceText(unsigned, std::span<char>, std::string_view otherwise) noexcept {
  return otherwise;
}

}  // namespace mmsbrix::platform
