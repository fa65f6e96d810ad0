// Above all that needs it.
#include <windows.h>

#include <aclapi.h>
#include <sddl.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <utility>

#include "support/host.h"

namespace mmsbrix::test {
namespace {

struct LocalFree {
  void operator()(void* memory) const noexcept { ::LocalFree(memory); }
};

std::filesystem::path pathOf(const std::string& text) {
  return std::u8string(text.begin(), text.end());
}

void set(const std::string& name, const std::optional<std::string>& value) {
  ::_putenv_s(name.c_str(), value.value_or("").c_str());
}

// Gives a file the access list of a text; "OW" is its owner, "WD" everybody.
void secure(const std::string& path, const wchar_t* text) {
  PSECURITY_DESCRIPTOR made = nullptr;
  if (::ConvertStringSecurityDescriptorToSecurityDescriptorW(text, SDDL_REVISION_1, &made,
                                                             nullptr) == 0) {
    return;
  }
  const std::unique_ptr<void, LocalFree> owned(made);
  ::SetFileSecurityW(pathOf(path).c_str(),
                     DACL_SECURITY_INFORMATION | PROTECTED_DACL_SECURITY_INFORMATION, made);
}

}  // namespace

EnvironmentVariable::EnvironmentVariable(std::string name, const std::optional<std::string>& value)
    : name_(std::move(name)) {
  if (const char* before = std::getenv(name_.c_str())) before_ = before;
  set(name_, value);
}

EnvironmentVariable::~EnvironmentVariable() {
  set(name_, before_);
}

const char* const kTemporaryFolderVariable = "TMP";

void makeLink(const std::string& target, const std::string& path) {
  const std::filesystem::path link = pathOf(path);
  if (::CreateSymbolicLinkW(link.c_str(), pathOf(target).c_str(), 0) == 0) {
    std::ofstream{link};
  }
}

void closeToOthers(const std::string& path) {
  PSID owner = nullptr;
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  std::wstring name = pathOf(path).wstring();
  ::GetNamedSecurityInfoW(name.data(), SE_FILE_OBJECT, OWNER_SECURITY_INFORMATION, &owner, nullptr,
                          nullptr, nullptr, &descriptor);
  const std::unique_ptr<void, LocalFree> owned(descriptor);
  wchar_t* text = nullptr;
  if (::ConvertSidToStringSidW(owner, &text) == 0) return;
  const std::unique_ptr<wchar_t, LocalFree> ownedText(text);
  secure(path, (L"D:P(A;;FA;;;" + std::wstring(text) + L")").c_str());
}

void openToOthers(const std::string& path) {
  secure(path, L"D:P(A;;FA;;;WD)");
}

bool isClosedToOthers(const std::string& path) {
  PSID owner = nullptr;
  PACL list = nullptr;
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  std::wstring name = pathOf(path).wstring();
  if (::GetNamedSecurityInfoW(name.data(), SE_FILE_OBJECT,
                              OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION, &owner,
                              nullptr, &list, nullptr, &descriptor) != ERROR_SUCCESS) {
    return false;
  }
  const std::unique_ptr<void, LocalFree> owned(descriptor);
  if (list == nullptr || list->AceCount == 0) return false;
  for (DWORD i = 0; i < list->AceCount; ++i) {
    void* entry = nullptr;
    ::GetAce(list, i, &entry);
    auto* allowed = static_cast<ACCESS_ALLOWED_ACE*>(entry);
    PSID whose = &allowed->SidStart;
    // The system itself may do everything anyway.
    if (allowed->Header.AceType == ACCESS_ALLOWED_ACE_TYPE && ::EqualSid(whose, owner) == 0 &&
        ::IsWellKnownSid(whose, WinLocalSystemSid) == 0) {
      return false;
    }
  }
  return true;
}

}  // namespace mmsbrix::test
