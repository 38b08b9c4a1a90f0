#include "hal/support/sample_memory.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace tolvane::hal {

SampleMemory allocateSamples(std::size_t bytes) {
  const std::size_t whole = std::max(wholeCacheLines(bytes), kCacheLineBytes);
  SampleMemory samples(static_cast<float*>(std::aligned_alloc(kCacheLineBytes, whole)));
  if (!samples) throw std::bad_alloc();
  std::memset(samples.get(), 0, whole);
  return samples;
}

}  // namespace tolvane::hal
