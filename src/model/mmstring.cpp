#include "model/mmstring.h"

#include "platform/text.h"

using mmsbrix::orEmpty;
using mmsbrix::upToZero;

CMMString::CMMString(const char* text) : text_(orEmpty(text)) {}

CMMString::CMMString(const char* text, const char* charset)
    : text_(orEmpty(text)), charset_(orEmpty(charset)) {}

void CMMString::Set(const char* text) {
  text_ = orEmpty(text);
}

void CMMString::SetCharset(const char* charset) {
  charset_ = orEmpty(charset);
}

void CMMString::Assign(std::string_view text) {
  text_ = upToZero(text);
}

void CMMString::AssignCharset(std::string_view charset) {
  charset_ = upToZero(charset);
}
