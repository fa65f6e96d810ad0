#include "model/mmhdr.h"

#include <cstdint>

#include "platform/ascii.h"
#include "platform/text.h"

namespace mmsbrix {

template <class T>
T* CMMNamedList<T>::Find(const char* name) noexcept {
  const std::string_view wanted = orEmpty(name);
  std::uint32_t position = 0;
  for (const T& element : *this) {
    if (equalsIgnoringCase(element.Name(), wanted)) break;
    ++position;
  }
  return this->moveTo(position);
}

template <class T>
bool CMMNamedList<T>::Remove(const char* name) {
  if (Find(name) == nullptr) return false;
  this->removeCurrent();
  return true;
}

template class CMMList<CMMParam>;
template class CMMNamedList<CMMParam>;
template class CMMList<CMMHdr>;
template class CMMNamedList<CMMHdr>;

}  // namespace mmsbrix

using mmsbrix::orEmpty;

CMMParam::CMMParam(const char* name, const char* value)
    : name_(orEmpty(name)), value_(orEmpty(value)) {}

void CMMParam::Set(const char* name) {
  name_.assign(orEmpty(name));
}

void CMMParam::SetValue(const char* value) {
  value_.assign(orEmpty(value));
}

void CMMParam::Assign(std::string_view name, std::string_view value) {
  name_.assign(name);
  value_.assign(value);
}

CMMHdr::CMMHdr(const char* name, const char* value)
    : name_(orEmpty(name)), value_(orEmpty(value)) {}

void CMMHdr::Set(const char* name) {
  name_.assign(orEmpty(name));
}

void CMMHdr::Set(const char* name, const char* value) {
  Set(name);
  SetValue(value);
}

void CMMHdr::SetValue(const char* value) {
  value_.assign(orEmpty(value));
}

void CMMHdr::Assign(std::string_view name, std::string_view value) {
  name_.assign(name);
  value_.assign(value);
}
