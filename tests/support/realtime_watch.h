// Watches what a real-time callback does on the thread that runs it.
//
// Plain builds interpose malloc, free, lock and wait functions before the C library's. A sanitizer interposes
// its own, so sanitized builds see allocations through the sanitizer's hooks, and no blocking calls.
#pragma once

namespace tolvane::test {

struct RealtimeReport {
  int allocations = 0;
  int frees = 0;
  int blockingCalls = 0;                    // calls that may block or enter the system
  const char* firstBlockingCall = nullptr;  // its name, or null
};

/// Counts every allocation, deallocation and blocking call of this thread, from construction to report(). At
/// most one per thread at a time.
class RealtimeWatch {
 public:
  RealtimeWatch();
  ~RealtimeWatch();
  RealtimeWatch(const RealtimeWatch&) = delete;
  RealtimeWatch& operator=(const RealtimeWatch&) = delete;

  /// Ends the watch.
  const RealtimeReport& report();

 private:
  RealtimeReport report_;
};

/// Called by the interposed functions and the hooks. They do nothing on a thread that is not watched.
void noteAllocation() noexcept;
void noteFree() noexcept;
void noteBlockingCall(const char* name) noexcept;

}  // namespace tolvane::test
