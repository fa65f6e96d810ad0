#include "model/mmstring.h"

#include "platform/text.h"

using mmsbrix::orEmpty;

CMMString::CMMString(const char* text) : text_(orEmpty(text)) {}

CMMString::CMMString(const char* text, const char* charset)
    : text_(orEmpty(text)), charset_(orEmpty(charset)) {}

void CMMString::Set(const char* text) {
  text_.assign(orEmpty(text));
}

void CMMString::SetCharset(const char* charset) {
  charset_.assign(orEmpty(charset));
}

void CMMString::Assign(std::string_view text) {
  text_.assign(text);
}

void CMMString::AssignCharset(std::string_view charset) {
  charset_.assign(charset);
}
