#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <thread>

namespace tolvane::hal {

/// Admits callers from open() until it is shut, which is final. The gate starts closed.
///
/// The protocol, by role: a caller (any thread) adds itself to the count, enters only if the open bit was set
/// and the shut bit was not, and later removes itself. Adding and removing are one atomic addition each, so
/// passing is wait-free. The thread that shuts sets the shut bit and waits until the count is zero. From then
/// on nobody is inside, and nobody gets in.
class CallGate {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;

  /// One caller's visit; true if it may enter. [any-thread]
  class Pass {
   public:
    explicit Pass(CallGate& gate) noexcept
        : gate_(gate), admitted_((gate.state_.fetch_add(1, std::memory_order_acquire) & kBits) == kOpen) {}
    ~Pass() { gate_.state_.fetch_sub(1, std::memory_order_release); }
    Pass(const Pass&) = delete;
    Pass& operator=(const Pass&) = delete;
    explicit operator bool() const noexcept { return admitted_; }

   private:
    CallGate& gate_;
    bool admitted_;
  };

  /// Admits callers from now on; they see everything written before. Does nothing after shut(). [any-thread]
  void open() noexcept { state_.fetch_or(kOpen, std::memory_order_release); }

  /// Admits nobody from now on. Whoever is inside stays there. [any-thread]
  void beginShut() noexcept { state_.fetch_or(kShut, std::memory_order_acq_rel); }

  /// Waits until no caller is inside; false at the deadline. After beginShut(), none gets in afterwards. Any
  /// number of threads may call it. [not-io]
  bool waitEmpty(TimePoint deadline = TimePoint::max()) noexcept {
    while (!drained_.load(std::memory_order_acquire) && !isEmpty()) {
      if (std::chrono::steady_clock::now() >= deadline) return false;
      // Polled: a caller on a real-time thread must not have to wake anybody.
      std::this_thread::sleep_for(std::chrono::microseconds(100));
    }
    return true;
  }

  /// After the return, no caller is inside and none gets in. Any number of threads may call it. [not-io]
  void shut() noexcept {
    beginShut();
    waitEmpty();
    drained_.store(true, std::memory_order_release);
  }

  /// True if no caller is inside. A caller counts while it is turned away, too. [any-thread]
  [[nodiscard]] bool isEmpty() const noexcept {
    return (state_.load(std::memory_order_acquire) & ~kBits) == 0;
  }

 private:
  static constexpr std::uint32_t kOpen = 1U << 31;
  static constexpr std::uint32_t kShut = 1U << 30;
  static constexpr std::uint32_t kBits = kOpen | kShut;

  std::atomic<std::uint32_t> state_{0};
  std::atomic<bool> drained_{false};  // after shut(): callers that are turned away no longer matter
  static_assert(std::atomic<std::uint32_t>::is_always_lock_free, "an IO thread passes here every cycle");
};

}  // namespace tolvane::hal
