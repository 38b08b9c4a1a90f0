// Memory with the same place in the caches in every run. Physical addresses decide the place in the second
// cache. Buffers of many small pages lie wherever pages are free, so they may evict each other in one run and
// not in the next.
#pragma once

#include <cstddef>
#include <memory>

namespace tolvane::bench {

/// Samples in huge pages, if the system has them. Each block starts at another offset in its page, as heap
/// blocks do.
class HugeMemory {
 public:
  /// Throws std::bad_alloc.
  explicit HugeMemory(std::size_t samples);

  /// The first sample, at the start of a cache line.
  [[nodiscard]] float* samples() noexcept { return samples_; }

 private:
  struct Free {
    void operator()(std::byte* memory) const noexcept;
  };

  std::unique_ptr<std::byte, Free> memory_;
  float* samples_;
};

}  // namespace tolvane::bench
