#include "platform/resource_text.h"

#include <windows.h>

namespace mmsbrix::platform {

std::string_view resourceText(unsigned number, std::span<char> room,
                              std::string_view otherwise) noexcept {
  // The module that this code is in, which is not the program's.
  HMODULE module = nullptr;
  constexpr DWORD kFlags =
      GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
  if (::GetModuleHandleExA(kFlags, reinterpret_cast<const char*>(&resourceText), &module) ==
      FALSE) {
    return otherwise;
  }
  const int length = ::LoadStringA(module, number, room.data(), static_cast<int>(room.size()));
  return length > 0 ? std::string_view(room.data(), static_cast<std::size_t>(length)) : otherwise;
}

}  // namespace mmsbrix::platform
