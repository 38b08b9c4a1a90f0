#include "bench/huge_memory.h"

#include <cstdlib>
#include <new>

#include <sys/mman.h>

namespace tolvane::bench {

namespace {

constexpr std::size_t kHugePage = std::size_t{2} << 20U;
constexpr std::size_t kPlaces = 16;
constexpr std::size_t kPlaceBytes = std::size_t{17} * 64;  // all at different offsets in a small page

std::size_t nextPlace() {
  static std::size_t count = 0;
  return count++ % kPlaces * kPlaceBytes;
}

}  // namespace

void HugeMemory::Free::operator()(std::byte* memory) const noexcept {
  std::free(memory);
}

HugeMemory::HugeMemory(std::size_t samples) {
  const std::size_t bytes = samples * sizeof(float) + kPlaces * kPlaceBytes;
  const std::size_t wholePages = (bytes + kHugePage - 1) / kHugePage * kHugePage;
  memory_.reset(static_cast<std::byte*>(std::aligned_alloc(kHugePage, wholePages)));
  if (!memory_) throw std::bad_alloc();
#if defined(MADV_HUGEPAGE)
  madvise(memory_.get(), wholePages, MADV_HUGEPAGE);
#endif
  samples_ = reinterpret_cast<float*>(memory_.get() + nextPlace());
}

}  // namespace tolvane::bench
