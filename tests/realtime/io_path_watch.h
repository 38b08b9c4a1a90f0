// Watches the program's whole path through a driver's IO cycles: the driver, the HAL's run, the callback.
//
// The line between our code and a sound server's library is the library's call of our process callback. All
// that happens from that call to its return counts, also inside library functions that we call meanwhile. How
// the library waits for its server before the call, and what it writes to it afterwards, is not ours.
//
// A driver with an IO thread of its own has no such line: everything on that thread counts, except the calls
// with which the driver waits for its hardware or its clock. The test names these.
#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>

#include "core/routing/io_proc.h"
#include "support/realtime_watch.h"

namespace tolvane::test {

/// One at a time; watches from construction to finish(). Use watchedIoProc as the engine's callback.
///
/// A cycle is right if it allocates and frees exactly twice, and makes no other blocking or system call. The
/// first cycle of a session may write the process's trace and ask for its thread's identifier. The first ten
/// may cause page faults.
class IoPathWatch {
 public:
  enum class Part {
    libraryCallback,  // from enter() to leave()
    wholeThread,      // from the begin of one callback to the begin of the next
  };

  /// `routing` is the callback that routes. `allowed` is as for RealtimeWatch.
  explicit IoPathWatch(Part part, const AllowedCall* allowed = nullptr,
                       AudioDeviceIOProc routing = &halIOProc);
  IoPathWatch(const IoPathWatch&) = delete;
  IoPathWatch& operator=(const IoPathWatch&) = delete;
  /// Call finish() first.
  ~IoPathWatch();

  /// The watch that exists; null if there is none. [any-thread]
  static IoPathWatch* current() noexcept;

  /// Has the callback do something that it must not do, once, in its next cycle. [any-thread]
  void plant(void (*misdeed)()) noexcept { planted_ = misdeed; }

  /// Cycles watched so far, and how many of them were wrong. [any-thread]
  [[nodiscard]] std::uint64_t cycles() const noexcept { return cycles_; }
  [[nodiscard]] std::uint64_t wrong() const noexcept { return wrong_; }
  /// What was wrong in the last of them. Read it while no other can come.
  [[nodiscard]] std::string lastWrong() const { return lastWrong_; }

  /// Ends the watch while cycles are running. False if they have stopped. [not-io]
  [[nodiscard]] bool finish();

  // [io-thread]
  void enter() noexcept;
  void leave() noexcept;
  OSStatus callback(AudioObjectID device, const AudioTimeStamp* now, const AudioBufferList* input,
                    const AudioTimeStamp* inputTime, AudioBufferList* output,
                    const AudioTimeStamp* outputTime, void* clientData) noexcept;

 private:
  void begin() noexcept;
  void end() noexcept;
  void judge(const RealtimeReport& report) noexcept;

  const Part part_;
  const AllowedCall* const allowed_;
  const AudioDeviceIOProc routing_;
  std::atomic<void (*)()> planted_{nullptr};
  std::atomic<std::uint64_t> cycles_{0};
  std::atomic<std::uint64_t> wrong_{0};
  std::atomic<bool> isEnding_{false};
  std::atomic<bool> isOver_{false};
  // Of the IO thread.
  std::optional<RealtimeWatch> watch_;
  bool calledBack_ = false;
  char lastWrong_[256] = "";
};

/// Calls the watch's routing.
OSStatus watchedIoProc(AudioObjectID device, const AudioTimeStamp* now, const AudioBufferList* input,
                       const AudioTimeStamp* inputTime, AudioBufferList* output,
                       const AudioTimeStamp* outputTime, void* clientData) noexcept;

/// Expects that the running session's watch sees an allocation, a lock, a blocking call, a system call and a
/// page fault, each planted once.
void expectEachMisdeedIsSeen(IoPathWatch& watch);

/// Waits until the watch has seen this many cycles and expects that all were right.
void expectRightCycles(IoPathWatch& watch, std::uint64_t cycles);

/// So many cycles must be right for each driver.
inline constexpr std::uint64_t kWatchedCycles = 100'000;

}  // namespace tolvane::test
