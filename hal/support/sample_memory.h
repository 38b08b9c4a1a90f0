#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>

namespace tolvane::hal {

inline constexpr std::size_t kCacheLineBytes = 64;

/// Rounded up to whole cache lines.
[[nodiscard]] constexpr std::size_t wholeCacheLines(std::size_t bytes) noexcept {
  return (bytes + kCacheLineBytes - 1) / kCacheLineBytes * kCacheLineBytes;
}

struct FreeMemory {
  void operator()(void* memory) const noexcept { std::free(memory); }
};

/// Samples from the beginning of a cache line on.
using SampleMemory = std::unique_ptr<float[], FreeMemory>;

/// Allocates `bytes` of silence, and touches its pages, so that no cycle has to. Throws std::bad_alloc.
/// [not-io]
[[nodiscard]] SampleMemory allocateSamples(std::size_t bytes);

}  // namespace tolvane::hal
