#include "platform/win32/path.h"

#include <algorithm>
#include <utility>

#include "platform/files.h"
#include "platform/unicode.h"
#include "platform/win32/text.h"

namespace mmsbrix::platform {
namespace {

bool isAscii(const std::string& text) noexcept {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

std::wstring wideOrEmpty(const std::string& text, const std::wstring& wide) {
  return wide.empty() ? wideFrom(text, CP_ACP).value_or(std::wstring()) : wide;
}

}  // namespace

Path::Path(std::string text) : text_(std::move(text)) {
  if (!isAscii(text_) && isUtf8(text_)) wide_ = wideFromUtf8(text_);
}

HANDLE Path::open(DWORD access, DWORD sharing, DWORD disposition) const noexcept {
  if (wide_.empty()) {
    return ::CreateFileA(text_.c_str(), access, sharing, nullptr, disposition,
                         FILE_ATTRIBUTE_NORMAL, nullptr);
  }
  return ::CreateFileW(wide_.c_str(), access, sharing, nullptr, disposition, FILE_ATTRIBUTE_NORMAL,
                       nullptr);
}

DWORD Path::attributes() const noexcept {
  return wide_.empty() ? ::GetFileAttributesA(text_.c_str()) : ::GetFileAttributesW(wide_.c_str());
}

bool Path::remove() const noexcept {
  return (wide_.empty() ? ::DeleteFileA(text_.c_str()) : ::DeleteFileW(wide_.c_str())) != 0;
}

bool Path::renameTo(const Path& target, bool replacing) const noexcept {
  // The new file takes the place of the old one with its rights, where the file system keeps any.
  if (wide_.empty() && target.wide_.empty()) {
    return (replacing && ::ReplaceFileA(target.text_.c_str(), text_.c_str(), nullptr,
                                        REPLACEFILE_IGNORE_MERGE_ERRORS, nullptr, nullptr) != 0) ||
           ::MoveFileExA(text_.c_str(), target.text_.c_str(),
                         replacing ? MOVEFILE_REPLACE_EXISTING : 0) != 0;
  }
  return (replacing && ::ReplaceFileW(target.wide_.c_str(), wide_.c_str(), nullptr,
                                      REPLACEFILE_IGNORE_MERGE_ERRORS, nullptr, nullptr) != 0) ||
         ::MoveFileExW(wide_.c_str(), target.wide_.c_str(),
                       replacing ? MOVEFILE_REPLACE_EXISTING : 0) != 0;
}

Path Path::sibling(const std::string& name) const {
  const auto separator = std::find_if(text_.rbegin(), text_.rend(), isPathSeparator);
  Path beside(std::string(text_.begin(), separator.base()) + name);
  if (beside.wide_.empty() != wide_.empty()) {  // only one of them has more than ASCII
    beside.wide_ = wideOrEmpty(beside.text_, beside.wide_);
  }
  return beside;
}

}  // namespace mmsbrix::platform
