// Watches what real-time code does on the thread that runs it.
//
// Plain builds interpose malloc, free, lock and wait functions before the C library's. On x86-64 they also
// have the kernel report every system call of the watched thread, wherever it is made. A sanitizer interposes
// its own functions, so sanitized builds see allocations through the sanitizer's hooks, and no blocking or
// system calls.
#pragma once

namespace tolvane::test {

/// A call that is meant to be made: the C library's name of it, and the number of its system call.
struct AllowedCall {
  const char* name;
  long number;
};

struct RealtimeReport {
  int allocations = 0;
  int frees = 0;
  int blockingCalls = 0;                    // calls of functions that lock, may block or enter the system
  const char* firstBlockingCall = nullptr;  // its name, or null
  int systemCalls = 0;                      // 0 if they cannot be seen
  long firstSystemCall = -1;                // its number, or -1
  int pageFaults = 0;                       // with and without input from a disk
};

/// Counts what this thread does from construction to report(). At most one per thread at a time.
class RealtimeWatch {
 public:
  /// `allowed` are calls that do not count. The list ends with a null name; it must outlive the watch.
  explicit RealtimeWatch(const AllowedCall* allowed = nullptr);
  ~RealtimeWatch();
  RealtimeWatch(const RealtimeWatch&) = delete;
  RealtimeWatch& operator=(const RealtimeWatch&) = delete;

  /// True if this build and this machine show system calls.
  static bool seesSystemCalls();

  /// Ends the watch.
  const RealtimeReport& report();

 private:
  RealtimeReport report_;
  long faultsBefore_;
};

/// Called by the interposed functions and the hooks. They do nothing on a thread that is not watched.
void noteAllocation() noexcept;
void noteFree() noexcept;
void noteBlockingCall(const char* name) noexcept;
void noteSystemCall(long number) noexcept;

/// Of one build each: has the kernel report the thread's system calls, or stops that. The first returns false
/// if they cannot be seen.
bool beginSystemCallReports() noexcept;
void endSystemCallReports() noexcept;

}  // namespace tolvane::test
