#include <windows.h>
// Above the rest that needs it.
#include <aclapi.h>
#include <fcntl.h>
#include <io.h>
#include <shellapi.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <cstdio>

#include "host.h"

namespace mmsbrix::tool::host {
namespace {

std::wstring wide(std::string_view text) {
  const int size = static_cast<int>(text.size());
  const int characters = ::MultiByteToWideChar(CP_UTF8, 0, text.data(), size, nullptr, 0);
  std::wstring result(static_cast<std::size_t>(characters), L'\0');
  ::MultiByteToWideChar(CP_UTF8, 0, text.data(), size, result.data(), characters);
  return result;
}

std::string narrow(std::wstring_view text) {
  const int size = static_cast<int>(text.size());
  const int octets =
      ::WideCharToMultiByte(CP_UTF8, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
  std::string result(static_cast<std::size_t>(octets), '\0');
  ::WideCharToMultiByte(CP_UTF8, 0, text.data(), size, result.data(), octets, nullptr, nullptr);
  return result;
}

/// What LocalAlloc allocated.
struct LocalFree {
  void operator()(void* memory) const noexcept { ::LocalFree(memory); }
};
template <class T>
using Local = std::unique_ptr<T, LocalFree>;

/// A SID in memory of its own.
using Sid = std::vector<std::uint8_t>;

Sid wellKnownSid(WELL_KNOWN_SID_TYPE type) {
  Sid sid(SECURITY_MAX_SID_SIZE);
  DWORD size = SECURITY_MAX_SID_SIZE;
  if (::CreateWellKnownSid(type, nullptr, sid.data(), &size) == 0) return {};
  return sid;
}

/// The user of this process, empty on failure.
Sid ownSid() {
  HANDLE token = nullptr;
  if (::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY, &token) == 0) return {};
  alignas(TOKEN_USER) std::array<std::uint8_t, sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE> user;
  DWORD size = user.size();
  const bool found = ::GetTokenInformation(token, TokenUser, user.data(), size, &size) != 0;
  ::CloseHandle(token);
  if (!found) return {};
  const PSID sid = reinterpret_cast<TOKEN_USER*>(user.data())->User.Sid;
  const auto* octets = static_cast<const std::uint8_t*>(sid);
  return {octets, octets + ::GetLengthSid(sid)};
}

/// A description that lets the user of this process do everything and nobody else anything; what
/// stands in the folder above gives nobody more.
class OwnerOnly {
 public:
  explicit OwnerOnly(DWORD inheritance) {
    Sid sid = ownSid();
    if (sid.empty()) return;
    EXPLICIT_ACCESSW access{};
    access.grfAccessPermissions = FILE_ALL_ACCESS;
    access.grfAccessMode = SET_ACCESS;
    access.grfInheritance = inheritance;
    access.Trustee.TrusteeForm = TRUSTEE_IS_SID;
    access.Trustee.TrusteeType = TRUSTEE_IS_USER;
    access.Trustee.ptstrName = reinterpret_cast<LPWSTR>(sid.data());
    PACL list = nullptr;
    if (::SetEntriesInAclW(1, &access, nullptr, &list) != ERROR_SUCCESS) return;
    list_.reset(list);
    made_ = ::InitializeSecurityDescriptor(&descriptor_, SECURITY_DESCRIPTOR_REVISION) != 0 &&
            ::SetSecurityDescriptorDacl(&descriptor_, TRUE, list, FALSE) != 0 &&
            ::SetSecurityDescriptorControl(&descriptor_, SE_DACL_PROTECTED, SE_DACL_PROTECTED) != 0;
  }
  /// Null when it could not be made.
  [[nodiscard]] SECURITY_DESCRIPTOR* get() noexcept { return made_ ? &descriptor_ : nullptr; }

 private:
  SECURITY_DESCRIPTOR descriptor_{};
  Local<ACL> list_;
  bool made_ = false;
};

}  // namespace

const char kPathSeparators[] = "/\\:";

Process::Process() {
  ::_setmode(::_fileno(stdin), _O_BINARY);
  ::_setmode(::_fileno(stdout), _O_BINARY);
  consoleCharset_ = ::GetConsoleOutputCP();
  if (consoleCharset_ != 0) ::SetConsoleOutputCP(CP_UTF8);
}

Process::~Process() {
  if (consoleCharset_ != 0) ::SetConsoleOutputCP(consoleCharset_);
}

// Those of `main` are in the system's charset, which lacks most characters.
std::vector<std::string> arguments(int argc, char** argv) {
  int count = 0;
  const Local<LPWSTR> texts(::CommandLineToArgvW(::GetCommandLineW(), &count));
  if (texts == nullptr) return {argv, argv + argc};
  std::vector<std::string> result;
  for (int i = 0; i < count; ++i) result.push_back(narrow(texts.get()[i]));
  return result;
}

std::optional<std::string> environment(const char* name) {
  const std::wstring wideName = wide(name);
  ::SetLastError(ERROR_SUCCESS);
  const DWORD size = ::GetEnvironmentVariableW(wideName.c_str(), nullptr, 0);
  if (size == 0) {
    if (::GetLastError() == ERROR_ENVVAR_NOT_FOUND) return std::nullopt;
    return std::string();
  }
  std::wstring value(size, L'\0');
  value.resize(::GetEnvironmentVariableW(wideName.c_str(), value.data(), size));
  return narrow(value);
}

std::string settingsFolder() {
  const std::string folder = environment("XDG_CONFIG_HOME").value_or("");
  return folder.empty() ? environment("APPDATA").value_or("") : folder;
}

bool standardErrorIsTerminal() {
  const HANDLE error = ::GetStdHandle(STD_ERROR_HANDLE);
  DWORD mode = 0;
  return ::GetConsoleMode(error, &mode) != 0 &&
         ::SetConsoleMode(error, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

void keepOutOfCores() noexcept {}  // none is written unless its administrator asks for it

unsigned processId() noexcept {
  return ::GetCurrentProcessId();
}

void forgetFileError() noexcept {
  ::SetLastError(ERROR_SUCCESS);
}

std::string fileError() {
  const DWORD error = ::GetLastError();
  if (error == ERROR_SUCCESS) return "";
  std::array<wchar_t, 512> text{};
  const DWORD size = ::FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                                      nullptr, error, 0, text.data(), text.size(), nullptr);
  std::string result = narrow({text.data(), size});
  while (!result.empty() && std::string_view("\r\n. ").find(result.back()) != std::string::npos) {
    result.pop_back();
  }
  return result.empty() ? "error " + std::to_string(error) : result;
}

NewFile writeNewFile(const std::string& path, std::string_view content, Readers readers) {
  OwnerOnly owner(NO_INHERITANCE);
  SECURITY_ATTRIBUTES security{sizeof security, owner.get(), FALSE};
  const bool closed = readers == Readers::ownerOnly;
  if (closed && security.lpSecurityDescriptor == nullptr) return NewFile::failed;
  const std::wstring name = wide(path);
  const HANDLE file = ::CreateFileW(name.c_str(), GENERIC_WRITE, 0, closed ? &security : nullptr,
                                    CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) {
    const DWORD error = ::GetLastError();
    return error == ERROR_FILE_EXISTS || error == ERROR_ALREADY_EXISTS ? NewFile::exists
                                                                       : NewFile::failed;
  }
  bool written = true;
  while (written && !content.empty()) {
    constexpr std::size_t kMostAtOnce = std::size_t{1} << 20;
    DWORD put = 0;
    written =
        ::WriteFile(file, content.data(), static_cast<DWORD>(std::min(content.size(), kMostAtOnce)),
                    &put, nullptr) != 0;
    content.remove_prefix(put);
  }
  if (::CloseHandle(file) != 0 && written) return NewFile::written;
  const DWORD reason = ::GetLastError();
  ::DeleteFileW(name.c_str());
  ::SetLastError(reason);
  return NewFile::failed;
}

bool closeToOthers(const std::string& path) {
  const std::wstring name = wide(path);
  const DWORD attributes = ::GetFileAttributesW(name.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) return false;
  const bool folder = (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  OwnerOnly owner(folder ? SUB_CONTAINERS_AND_OBJECTS_INHERIT : NO_INHERITANCE);
  return owner.get() != nullptr &&
         ::SetFileSecurityW(name.c_str(),
                            DACL_SECURITY_INFORMATION | PROTECTED_DACL_SECURITY_INFORMATION,
                            owner.get()) != 0;
}

// The groups that a machine's other users are in: an entry for one of them lets others read.
bool othersCanRead(const std::string& path) {
  std::wstring name = wide(path);
  PACL list = nullptr;
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  if (::GetNamedSecurityInfoW(name.data(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr,
                              nullptr, &list, nullptr, &descriptor) != ERROR_SUCCESS) {
    return false;
  }
  const Local<void> owned(descriptor);
  if (list == nullptr) return true;  // no list lets everybody do everything
  for (const WELL_KNOWN_SID_TYPE group :
       {WinWorldSid, WinAuthenticatedUserSid, WinBuiltinUsersSid}) {
    Sid sid = wellKnownSid(group);
    if (sid.empty()) continue;
    for (DWORD i = 0; i < list->AceCount; ++i) {
      void* entry = nullptr;
      if (::GetAce(list, i, &entry) == 0) continue;
      const auto* allowed = static_cast<const ACCESS_ALLOWED_ACE*>(entry);
      if (allowed->Header.AceType != ACCESS_ALLOWED_ACE_TYPE ||
          (allowed->Header.AceFlags & INHERIT_ONLY_ACE) != 0) {
        continue;
      }
      constexpr DWORD kRead = FILE_READ_DATA | GENERIC_READ | GENERIC_ALL;
      if ((allowed->Mask & kRead) != 0 &&
          ::EqualSid(const_cast<DWORD*>(&allowed->SidStart), sid.data()) != 0) {
        return true;
      }
    }
  }
  return false;
}

namespace {
// The system calls the handler on a thread of its own, without an argument.
std::atomic<HANDLE> interrupted{nullptr};

BOOL WINAPI onConsoleEvent(DWORD) {
  const HANDLE event = interrupted;
  return event != nullptr && ::SetEvent(event) != 0 ? TRUE : FALSE;
}
}  // namespace

struct Interruption::State {
  HANDLE event = nullptr;
};

Interruption::Interruption() : state_(std::make_unique<State>()) {
  state_->event = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
  interrupted = state_->event;
  ::SetConsoleCtrlHandler(&onConsoleEvent, TRUE);
}

Interruption::~Interruption() {
  ::SetConsoleCtrlHandler(&onConsoleEvent, FALSE);
  interrupted = nullptr;
  ::CloseHandle(state_->event);
}

void Interruption::wait() noexcept {
  ::WaitForSingleObject(state_->event, INFINITE);
}

void Interruption::wake() noexcept {
  ::SetEvent(state_->event);
}

}  // namespace mmsbrix::tool::host
