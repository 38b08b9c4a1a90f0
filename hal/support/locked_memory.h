// Memory that the system may not page out, where the user's limit (RLIMIT_MEMLOCK) allows it.
#pragma once

#include <cstddef>

namespace tolvane::hal {

/// Whole pages of silent samples, present from the start, and locked if the limit allows.
class SamplePages {
 public:
  /// Throws std::bad_alloc. [not-io]
  explicit SamplePages(std::size_t bytes);
  SamplePages(const SamplePages&) = delete;
  SamplePages& operator=(const SamplePages&) = delete;
  ~SamplePages();

  [[nodiscard]] float* get() const noexcept { return static_cast<float*>(memory_); }
  [[nodiscard]] bool areLocked() const noexcept { return locked_; }

 private:
  std::size_t bytes_;
  void* memory_;
  bool locked_;
};

/// Locks the part of the calling thread's stack that its cycles will use, for the lifetime of the object. The
/// thread that makes it destroys it.
class LockedStack {
 public:
  LockedStack() noexcept;
  LockedStack(const LockedStack&) = delete;
  LockedStack& operator=(const LockedStack&) = delete;
  ~LockedStack();

  [[nodiscard]] bool isLocked() const noexcept { return locked_; }

 private:
  void* begin_ = nullptr;
  std::size_t bytes_ = 0;
  bool locked_ = false;
};

}  // namespace tolvane::hal
