// What the C interface's functions share: texts in, texts out, and the wall that exceptions stop
// at.
#ifndef MMSBRIX_CAPI_SUPPORT_H
#define MMSBRIX_CAPI_SUPPORT_H

#include <cstdlib>
#include <cstring>
#include <map>
#include <new>
#include <span>
#include <string>
#include <string_view>

#include "capi.h"
#include "model/mmsg.h"

struct mmsbrix_message {
  CMMsg message;
  /// Texts that are handed out in another form than the message has them, by what they are.
  std::map<int, std::string> texts;
};

namespace mmsbrix::capi {

/// Runs a function's body; what it throws becomes a status.
template <class Body>
mmsbrix_status guarded(const Body& body) noexcept {
  try {
    return body();
  } catch (const std::bad_alloc&) {
    return MMSBRIX_NO_MEMORY;
  } catch (...) {
    return MMSBRIX_INTERNAL;
  }
}

/// A text as given.  Like all texts of the library it ends at its first zero.
[[nodiscard]] inline std::string textOf(const char* text, std::size_t length) {
  if (text == nullptr) return {};
  return length == MMSBRIX_ZERO_TERMINATED ? std::string(text)
                                           : std::string(text, ::strnlen(text, length));
}

/// Hands a text out; either result may be null.
inline mmsbrix_status give(std::string_view given, const char** text, std::size_t* length) {
  if (text != nullptr) *text = given.data();
  if (length != nullptr) *length = given.size();
  return MMSBRIX_OK;
}

/// Hands a copy of octets over to the caller, a zero behind them.
inline mmsbrix_status giveCopy(std::span<const std::uint8_t> octets, void** data,
                               std::size_t* size) {
  auto* copy = static_cast<std::uint8_t*>(std::malloc(octets.size() + 1));
  if (copy == nullptr) return MMSBRIX_NO_MEMORY;
  if (!octets.empty()) std::memcpy(copy, octets.data(), octets.size());
  copy[octets.size()] = 0;
  *data = copy;
  if (size != nullptr) *size = octets.size();
  return MMSBRIX_OK;
}

/// Encodes as mmsbrix_message_encode does; the octets are from malloc.
mmsbrix_status encode(mmsbrix_message& message, void** data, std::size_t* size);

}  // namespace mmsbrix::capi

#endif  // MMSBRIX_CAPI_SUPPORT_H
