// ContentBlock: octets that the contents of several parts lie in.
#ifndef MMSBRIX_MODEL_CONTENT_BLOCK_H
#define MMSBRIX_MODEL_CONTENT_BLOCK_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>

namespace mmsbrix {

/// A received body, copied in one piece: the parts that are read from it point into it and each
/// holds it, so that a message costs one allocation and one copy however many parts it has, and a
/// file is not copied at all. The count of holders is atomic, since parts may move to other
/// messages and threads.  Aligned as every heap aligns: not all do more for the widest type.
class alignas(std::uint64_t) ContentBlock {
 public:
  struct Release {
    void operator()(ContentBlock* block) const noexcept { block->release(); }
  };
  using Holder = std::unique_ptr<ContentBlock, Release>;

  /// A block of `octets` octets, not yet written, with room for a zero behind them.  Null without
  /// memory.
  static Holder create(std::size_t octets) noexcept {
    if (octets > static_cast<std::size_t>(-1) - sizeof(ContentBlock) - 1) return nullptr;
    void* memory = ::operator new(sizeof(ContentBlock) + octets + 1, std::nothrow);
    return Holder(memory == nullptr ? nullptr : ::new (memory) ContentBlock);
  }
  [[nodiscard]] std::uint8_t* octets() noexcept {
    return reinterpret_cast<std::uint8_t*>(this) + sizeof(ContentBlock);
  }
  void hold() noexcept { holders_.fetch_add(1, std::memory_order_relaxed); }
  void release() noexcept {
    if (holders_.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
    this->~ContentBlock();
    ::operator delete(this);
  }

 private:
  ContentBlock() = default;
  ~ContentBlock() = default;

  std::atomic<std::uint32_t> holders_{1};
};

}  // namespace mmsbrix

#endif  // MMSBRIX_MODEL_CONTENT_BLOCK_H
