#include "model/mmtext.h"

#include <limits>
#include <new>

#include "platform/text.h"

namespace mmsbrix {

static_assert(sizeof(Text) == 16);

void Text::assign(std::string_view text) {
  text = upToZero(text);
  if (text.size() <= kMostInPlace) {
    // By way of a copy: the text may lie within this one.
    char copy[kMostInPlace + 1] = {};
    text.copy(copy, text.size());
    copy[kMostInPlace] = static_cast<char>(kMostInPlace - text.size());
    releaseHeap();
    std::memcpy(storage_, copy, sizeof storage_);
    return;
  }
  if (text.size() >= std::numeric_limits<std::uint32_t>::max()) throw std::bad_alloc();
  char* const heap = static_cast<char*>(::operator new(text.size() + 1));
  text.copy(heap, text.size());
  heap[text.size()] = '\0';
  releaseHeap();
  setOutside({heap, text.size()}, kHeap);
}

void Text::release(const char* heap) noexcept {
  ::operator delete(const_cast<char*>(heap));
}

}  // namespace mmsbrix
