// Peak of the heap that decoding takes, beyond the PDU itself, for inputs made of the smallest
// things that a PDU can name.  Prints one JSON object: octets of input and of heap, by pattern.
#include <malloc.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "mms/mmscodec.h"

namespace {

std::size_t inUse = 0;
std::size_t peak = 0;

void* counted(void* block) {
  if (block == nullptr) throw std::bad_alloc();
  inUse += malloc_usable_size(block);
  peak = std::max(peak, inUse);
  return block;
}

void uncounted(void* block) noexcept {
  if (block != nullptr) inUse -= malloc_usable_size(block);
  std::free(block);
}

}  // namespace

void* operator new(std::size_t octets) {
  return counted(std::malloc(octets));
}
void* operator new[](std::size_t octets) {
  return counted(std::malloc(octets));
}
void operator delete(void* block) noexcept {
  uncounted(block);
}
void operator delete[](void* block) noexcept {
  uncounted(block);
}
void operator delete(void* block, std::size_t) noexcept {
  uncounted(block);
}
void operator delete[](void* block, std::size_t) noexcept {
  uncounted(block);
}

int main() {
  using namespace std::string_view_literals;
  struct Pattern {
    const char* name;
    std::string_view start;
    std::string_view repeated;
  };
  const Pattern patterns[] = {
      {"recipients of no octet", "\x8C\x84"sv, "\x97\0"sv},
      {"recipients of a number", "\x8C\x84"sv, "\x97+358401234567/TYPE=PLMN\0"sv},
      {"recipients of an address", "\x8C\x84"sv, "\x97somebody.else@mail.example\0"sv},
      {"application headers", "\x8C\x84"sv, "a\0\0"sv},
      {"empty parts", "\x8C\x84\x84\xA3\x01"sv, "\0\0"sv},
      {"parts with a type", "\x8C\x84\x84\xA3\x01"sv, "\x01\x00\x83"sv},
      {"parts with a header and an octet", "\x8C\x84\x84\xA3\x01"sv,
       "\x04\x01\x83\x8E"
       "a\0x"sv},
      {"headers of a part", "\x8C\x84\x84\xA3\x01\x8F\xFF\x7F\x00\x83"sv, "\x8E\0"sv},
      {"parameters", "\x8C\x84\x84\x1F\x8F\xFF\x7F\x83"sv, "a\0\0"sv},
  };
  const char* separator = "{\n";
  for (const Pattern& pattern : patterns) {
    for (const std::size_t octets : {1000, 10'000, 40'000, 262'144, 2'000'000}) {
      std::string pdu(pattern.start);
      while (pdu.size() < octets) pdu += pattern.repeated;
      CMMsg message;
      peak = inUse;
      const std::size_t before = inUse;
      MMS_LoadFromMemory(pdu.data(), static_cast<unsigned>(pdu.size()), &message, 0);
      std::printf("%s  \"%s/%zu\": {\"octets\": %zu, \"heap\": %zu}", separator, pattern.name,
                  octets, pdu.size(), peak - before);
      separator = ",\n";
    }
  }
  std::puts("\n}");
  return 0;
}
