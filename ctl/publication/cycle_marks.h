#pragma once

#include <atomic>
#include <cstdint>

namespace tolvane::ctl {

/// The begins and ends of a run's IO cycles, so that a writer can tell which cycles may have seen what it
/// wrote. Cycles come one at a time.
///
/// The protocol, by role:
///   The IO thread adds one to the count when a cycle begins, before it reads anything, and one when it ends.
///   So the count is odd during a cycle.
///   The writer publishes, then takes a mark. The mark is an addition of zero, which sees the newest count. A
///   cycle that begins later reads a count that follows the mark's, so it sees what was published before it.
/// Both sides are wait-free.
class CycleMarks {
 public:
  /// A moment between two changes of the count.
  enum class Mark : std::uint64_t {};

  /// Called at the beginning of a cycle. [io-thread]
  void begin() noexcept { count_.fetch_add(1, std::memory_order_acq_rel); }
  /// Called at the end of a cycle. [io-thread]
  void end() noexcept { count_.fetch_add(1, std::memory_order_acq_rel); }

  /// This moment. [main-thread]
  [[nodiscard]] Mark mark() noexcept { return Mark{count_.fetch_add(0, std::memory_order_acq_rel)}; }

  /// True once a cycle has begun after the mark. That cycle, and each one after it, sees everything written
  /// before the mark. [main-thread]
  [[nodiscard]] bool hasBegunSince(Mark mark) const noexcept { return count() >= nextBegin(mark); }

  /// True once a cycle that began after the mark has ended. [main-thread]
  [[nodiscard]] bool hasEndedSince(Mark mark) const noexcept { return count() > nextBegin(mark); }

  /// True once no cycle is running that ran at the mark already. What only such a cycle could read may be
  /// overwritten then. [main-thread]
  [[nodiscard]] bool isQuietSince(Mark mark) const noexcept { return count() + 1 >= nextBegin(mark); }

 private:
  [[nodiscard]] std::uint64_t count() const noexcept { return count_.load(std::memory_order_acquire); }

  /// The count when the first cycle after the mark begins. One less: the last one before it has ended.
  static constexpr std::uint64_t nextBegin(Mark mark) noexcept {
    const auto count = static_cast<std::uint64_t>(mark);
    return count + 1 + count % 2;
  }

  std::atomic<std::uint64_t> count_{0};
  static_assert(std::atomic<std::uint64_t>::is_always_lock_free, "the IO thread must never meet a lock");
};

/// Marks a cycle for the lifetime of the scope. [io-thread]
class CycleScope {
 public:
  explicit CycleScope(CycleMarks& marks) noexcept : marks_(marks) { marks_.begin(); }
  CycleScope(const CycleScope&) = delete;
  CycleScope& operator=(const CycleScope&) = delete;
  ~CycleScope() { marks_.end(); }

 private:
  CycleMarks& marks_;
};

}  // namespace tolvane::ctl
