#include "platform/user_folders.h"

#include <windows.h>

#include <shlobj.h>

#include "platform/win32/text.h"

namespace mmsbrix::platform {

std::string stateFolder() {
  wchar_t folder[MAX_PATH] = {};
  if (::SHGetFolderPathW(nullptr, CSIDL_LOCAL_APPDATA, nullptr, SHGFP_TYPE_CURRENT, folder) !=
      S_OK) {
    return {};
  }
  return utf8FromWide(folder) + "\\mmsbrix";
}

}  // namespace mmsbrix::platform
