#include "hal/support/locked_memory.h"

#include <algorithm>
#include <cstdint>
#include <new>

#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>

namespace tolvane::hal {

namespace {

// A cycle needs a few kilobytes. A whole stack of 8 MB would be the whole of the usual limit.
constexpr std::uintptr_t kCycleStackBytes = 64U << 10U;

std::size_t pageBytes() noexcept {
  static const auto kBytes = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  return kBytes;
}

std::size_t wholePages(std::size_t bytes) noexcept {
  return (std::max<std::size_t>(bytes, 1) + pageBytes() - 1) / pageBytes() * pageBytes();
}

/// The lowest address of the calling thread's stack; 0 if it is unknown.
std::uintptr_t stackBegin() noexcept {
  pthread_attr_t attributes;
  if (pthread_getattr_np(pthread_self(), &attributes) != 0) return 0;
  void* begin = nullptr;
  std::size_t bytes = 0;
  const int error = pthread_attr_getstack(&attributes, &begin, &bytes);
  pthread_attr_destroy(&attributes);
  return error == 0 ? reinterpret_cast<std::uintptr_t>(begin) : 0;
}

}  // namespace

SamplePages::SamplePages(std::size_t bytes)
    : bytes_(wholePages(bytes)),
      memory_(
          mmap(nullptr, bytes_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_POPULATE, -1, 0)),
      locked_(memory_ != MAP_FAILED && mlock(memory_, bytes_) == 0) {
  if (memory_ == MAP_FAILED) throw std::bad_alloc();
}

SamplePages::~SamplePages() {
  munmap(memory_, bytes_);  // unlocks, too
}

LockedStack::LockedStack() noexcept {
  const std::uintptr_t begin = stackBegin();
  if (begin == 0) return;
  const std::uintptr_t page = pageBytes();
  const auto here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
  const std::uintptr_t end = (here / page + 1) * page;
  // NOLINTNEXTLINE(performance-no-int-to-ptr): pages have numbers
  begin_ = reinterpret_cast<void*>(std::max(begin, end - std::min(end, kCycleStackBytes)) / page * page);
  bytes_ = end - reinterpret_cast<std::uintptr_t>(begin_);
  locked_ = mlock(begin_, bytes_) == 0;
}

LockedStack::~LockedStack() {
  if (locked_) munlock(begin_, bytes_);
}

}  // namespace tolvane::hal
