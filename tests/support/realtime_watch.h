// Watches what a real-time callback does on the thread that runs it.
//
// Plain builds put their own malloc, free, lock and wait functions in front of the C library's; sanitized
// builds, which have done so themselves, see allocations through the sanitizer's hooks and no blocking calls.
#pragma once

namespace tolvane::test {

struct RealtimeReport {
  int allocations = 0;
  int frees = 0;
  int blockingCalls = 0;                    // calls that may block or enter the system
  const char* firstBlockingCall = nullptr;  // its name, or null
};

/// From its making to `report`, every allocation, release and blocking call of this thread is counted. One at
/// a time on a thread.
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

/// For the parts of the watch that see the calls. Each does nothing on a thread that is not watched.
void noteAllocation() noexcept;
void noteFree() noexcept;
void noteBlockingCall(const char* name) noexcept;

}  // namespace tolvane::test
