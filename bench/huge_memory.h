// Memory whose place in the caches is no matter of luck. The second cache is told apart by physical
// addresses: buffers of many small pages, put wherever pages are free, may push one another out of it in one
// run and not in the next.
#pragma once

#include <cstddef>
#include <memory>

namespace tolvane::bench {

/// Samples in huge pages, where the system has them; each block begins at another place of its page, as
/// blocks of a heap do.
class HugeMemory {
 public:
  /// Throws std::bad_alloc.
  explicit HugeMemory(std::size_t samples);

  /// The first sample, on a cache line.
  [[nodiscard]] float* samples() noexcept { return samples_; }

 private:
  struct Free {
    void operator()(std::byte* memory) const noexcept;
  };

  std::unique_ptr<std::byte, Free> memory_;
  float* samples_;
};

}  // namespace tolvane::bench
