#include "support/realtime_watch.h"

namespace tolvane::test {

namespace {

thread_local RealtimeReport* current = nullptr;

}  // namespace

RealtimeWatch::RealtimeWatch() {
  current = &report_;
}

RealtimeWatch::~RealtimeWatch() {
  current = nullptr;
}

const RealtimeReport& RealtimeWatch::report() {
  current = nullptr;
  return report_;
}

void noteAllocation() noexcept {
  if (current != nullptr) ++current->allocations;
}

void noteFree() noexcept {
  if (current != nullptr) ++current->frees;
}

void noteBlockingCall(const char* name) noexcept {
  if (current == nullptr) return;
  ++current->blockingCalls;
  if (current->firstBlockingCall == nullptr) current->firstBlockingCall = name;
}

}  // namespace tolvane::test
