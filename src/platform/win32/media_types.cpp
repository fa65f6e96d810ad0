// The registry's media-type database, under the classes root.
#include "platform/media_types.h"

#include <windows.h>

namespace mmsbrix::platform {
namespace {

// A text value of a key under the classes root; "" without one, and for one that is longer than any
// that makes sense.
std::string classesValue(const std::string& path, const char* name) {
  HKEY key = nullptr;
  if (::RegOpenKeyExA(HKEY_CLASSES_ROOT, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) {
    return {};
  }
  char value[256] = {};
  DWORD octets = sizeof value - 1;
  DWORD type = 0;
  const LSTATUS result =
      ::RegQueryValueExA(key, name, nullptr, &type, reinterpret_cast<BYTE*>(value), &octets);
  ::RegCloseKey(key);
  return result == ERROR_SUCCESS && type == REG_SZ ? std::string(value) : std::string();
}

}  // namespace

std::string mediaTypeOfExtension(std::string_view extension) {
  if (!extension.starts_with('.')) return {};
  return classesValue(std::string(extension), "Content Type");
}

std::string extensionOfMediaType(std::string_view mediaType) {
  if (mediaType.empty()) return {};
  const std::string extension =
      classesValue("MIME\\Database\\Content Type\\" + std::string(mediaType), "Extension");
  return extension.starts_with('.') ? extension : std::string();
}

}  // namespace mmsbrix::platform
