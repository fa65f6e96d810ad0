#include "transport/mmscomm.h"

#include <algorithm>
#include <cstring>

#include "transport/trace.h"

namespace {

// Copies a text into a buffer of `size` characters, cut so that the terminating zero fits.
void copyCut(char* to, std::size_t size, const char* from) {
  const std::size_t length = std::min(std::strlen(from), size - 1);
  std::memmove(to, from, length);
  to[length] = '\0';
}

template <std::size_t Size>
void keep(std::array<char, Size>& buffer, const char* text) {
  if (text == nullptr) {
    buffer.fill('\0');
  } else {
    copyCut(buffer.data(), buffer.size(), text);
  }
}

}  // namespace

CMMSComm::CMMSComm() {
  mmsbrix::findTraceMonitor();
}
CMMSComm::CMMSComm(const CMMSComm& other) = default;
CMMSComm& CMMSComm::operator=(const CMMSComm& other) = default;
CMMSComm::~CMMSComm() = default;

bool CMMSComm::ConnectGtw(const char*, unsigned int, unsigned long) {
  return false;
}

void CMMSComm::DisconnectGtw() {}

bool CMMSComm::SendMMS(const char*, const char*, unsigned long) {
  return false;
}

unsigned long CMMSComm::GetResult(char*) {
  return 0;
}

void CMMSComm::SetCredentials(const char* user, const char* password) {
  keep(user_, user);
  keep(password_, password);
}

void CMMSComm::GetCredentials(char* user, int userSize, char* password, int passwordSize) {
  if (user != nullptr && userSize > 0) {
    copyCut(user, static_cast<std::size_t>(userSize), user_.data());
  }
  if (password != nullptr && passwordSize > 0) {
    copyCut(password, static_cast<std::size_t>(passwordSize), password_.data());
  }
}

bool CMMSComm::Abort() {
  return true;
}
