#include "base/thread_check.h"

#if defined(TOLVANE_DEBUG_CHECKS)

#include <atomic>
#include <cstdio>

#include "base/fatal.h"

namespace tolvane {

namespace {

// The number of scopes this thread is in. The address of the variable identifies the thread.
thread_local int callbacksHere = 0;

constinit std::atomic<const void*> mainThread = nullptr;

[[noreturn]] void endBecause(const char* function, const char* reason) noexcept {
  char line[200];
  std::snprintf(line, sizeof line, "%s was called %s", function, reason);
  fatal(line);
}

}  // namespace

IoCallbackScope::IoCallbackScope() noexcept {
  ++callbacksHere;
}

IoCallbackScope::~IoCallbackScope() {
  --callbacksHere;
}

void checkNotIo(const char* function) noexcept {
  if (callbacksHere > 0) endBecause(function, "inside an IO callback");
}

void checkMainThread(const char* function) noexcept {
  checkNotIo(function);
  const void* known = nullptr;
  const void* const here = &callbacksHere;
  if (mainThread.compare_exchange_strong(known, here, std::memory_order_relaxed) || known == here) return;
  endBecause(function, "on a thread that is not the main thread");
}

void becomeMainThread() noexcept {
  checkNotIo();
  mainThread.store(&callbacksHere, std::memory_order_relaxed);
}

}  // namespace tolvane

#endif
