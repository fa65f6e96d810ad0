#include "failing_allocator.h"

#include <libxml/parser.h>
#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <new>

namespace mmsbrix::test {
namespace {

// Plain numbers: what is tried here runs on one thread, others only pass by.
thread_local bool counting = false;
thread_local std::size_t seen = 0;
thread_local std::size_t toFail = AllocationScope::kNone;
std::atomic<long> live{0};
thread_local std::size_t inUse = 0;  // of a scope; wraps where older blocks are released in it
thread_local std::size_t highest = 0;

bool failsNow() noexcept {
  return counting && seen++ == toFail;
}

void count(void* block) noexcept {
  if (block == nullptr) return;
  ++live;
  if (!counting) return;
  inUse += malloc_usable_size(block);
  highest = std::max(highest, inUse);
}

void uncount(void* block) noexcept {
  if (block == nullptr) return;
  --live;
  if (counting) inUse -= malloc_usable_size(block);
}

}  // namespace

AllocationScope::AllocationScope(std::size_t failing) noexcept {
  seen = 0;
  toFail = failing;
  inUse = highest = 0;
  counting = true;
}

AllocationScope::~AllocationScope() {
  counting = false;
}

std::size_t AllocationScope::count() const noexcept {
  return seen;
}

std::size_t AllocationScope::peak() const noexcept {
  return highest;
}

long liveBlocks() noexcept {
  return live;
}

}  // namespace mmsbrix::test

using namespace mmsbrix::test;

// The linker's --wrap sends the library's calls here.
extern "C" {
void* __real_malloc(std::size_t size);
void* __real_realloc(void* block, std::size_t size);
void __real_free(void* block);

void* __wrap_malloc(std::size_t size) {
  void* block = failsNow() ? nullptr : __real_malloc(size);
  count(block);
  return block;
}

void* __wrap_realloc(void* block, std::size_t size) {
  if (failsNow()) return nullptr;
  const std::size_t before = block == nullptr ? 0 : malloc_usable_size(block);
  void* moved = __real_realloc(block, size);
  if (moved == nullptr) return nullptr;
  if (block != nullptr) --live;
  count(moved);
  if (counting) inUse -= before;
  return moved;
}

void __wrap_free(void* block) {
  uncount(block);
  __real_free(block);
}
}

namespace {

char* copiedText(const char* text) {
  const std::size_t octets = std::strlen(text) + 1;
  void* copy = __wrap_malloc(octets);
  return copy == nullptr ? nullptr : static_cast<char*>(std::memcpy(copy, text, octets));
}

// Before the XML parser is used for the first time.
const int kParserTold = xmlMemSetup(__wrap_free, __wrap_malloc, __wrap_realloc, copiedText);

}  // namespace

void* operator new(std::size_t size) {
  void* block = __wrap_malloc(size == 0 ? 1 : size);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return __wrap_malloc(size == 0 ? 1 : size);
}

void* operator new[](std::size_t size) {
  return ::operator new(size);
}

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return __wrap_malloc(size == 0 ? 1 : size);
}

void operator delete(void* block) noexcept {
  __wrap_free(block);
}
void operator delete(void* block, std::size_t) noexcept {
  __wrap_free(block);
}
void operator delete[](void* block) noexcept {
  __wrap_free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
  __wrap_free(block);
}
void operator delete(void* block, const std::nothrow_t&) noexcept {
  __wrap_free(block);
}
void operator delete[](void* block, const std::nothrow_t&) noexcept {
  __wrap_free(block);
}
