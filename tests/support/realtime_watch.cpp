#include "support/realtime_watch.h"

#include <cstring>

#include <sys/resource.h>

namespace tolvane::test {

namespace {

struct Watched {
  RealtimeReport* report = nullptr;
  const AllowedCall* allowed = nullptr;
};
thread_local Watched current;

template <class Matches>
bool isAllowed(const Matches& matches) noexcept {
  for (const AllowedCall* call = current.allowed; call != nullptr && call->name != nullptr; ++call) {
    if (matches(*call)) return true;
  }
  return false;
}

/// The page faults of this thread so far.
long pageFaults() noexcept {
  rusage usage{};
  ::getrusage(RUSAGE_THREAD, &usage);
  return usage.ru_minflt + usage.ru_majflt;
}

}  // namespace

RealtimeWatch::RealtimeWatch(const AllowedCall* allowed) : faultsBefore_(pageFaults()) {
  seesSystemCalls();  // on a new thread this makes calls of its own
  current = {&report_, allowed};
  beginSystemCallReports();
}

RealtimeWatch::~RealtimeWatch() {
  report();
}

bool RealtimeWatch::seesSystemCalls() {
  const bool sees = beginSystemCallReports();
  endSystemCallReports();
  return sees;
}

const RealtimeReport& RealtimeWatch::report() {
  if (current.report != &report_) return report_;
  endSystemCallReports();
  current = {};
  report_.pageFaults = static_cast<int>(pageFaults() - faultsBefore_);
  return report_;
}

void noteAllocation() noexcept {
  if (current.report != nullptr) ++current.report->allocations;
}

void noteFree() noexcept {
  if (current.report != nullptr) ++current.report->frees;
}

void noteBlockingCall(const char* name) noexcept {
  RealtimeReport* const report = current.report;
  if (report == nullptr ||
      isAllowed([name](const AllowedCall& call) { return std::strcmp(call.name, name) == 0; })) {
    return;
  }
  ++report->blockingCalls;
  if (report->firstBlockingCall == nullptr) report->firstBlockingCall = name;
}

void noteSystemCall(long number) noexcept {
  RealtimeReport* const report = current.report;
  if (report == nullptr || isAllowed([number](const AllowedCall& call) { return call.number == number; }))
    return;
  ++report->systemCalls;
  if (report->firstSystemCall < 0) report->firstSystemCall = number;
}

}  // namespace tolvane::test
