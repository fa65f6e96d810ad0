// Memory that runs out on order.  Linking failing_allocator.cpp replaces operator new, and malloc
// and realloc where the library calls them.
#ifndef MMSBRIX_TESTS_RELIABILITY_FAILING_ALLOCATOR_H
#define MMSBRIX_TESTS_RELIABILITY_FAILING_ALLOCATOR_H

#include <cstddef>

namespace mmsbrix::test {

/// While it lives, allocations are counted, and the one numbered `failing` (from 0) fails.
class AllocationScope {
 public:
  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

  explicit AllocationScope(std::size_t failing = kNone) noexcept;
  AllocationScope(const AllocationScope&) = delete;
  AllocationScope& operator=(const AllocationScope&) = delete;
  ~AllocationScope();
  /// Allocations so far, the one that failed included.
  [[nodiscard]] std::size_t count() const noexcept;
  /// The most octets that were allocated at once since the scope began, rounded up as the heap
  /// does; of this thread, in a scope that releases nothing older.
  [[nodiscard]] std::size_t peak() const noexcept;
};

/// Blocks that are allocated and not yet released in this process.
[[nodiscard]] long liveBlocks() noexcept;

}  // namespace mmsbrix::test

#endif  // MMSBRIX_TESTS_RELIABILITY_FAILING_ALLOCATOR_H
