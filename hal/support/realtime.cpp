#include "hal/support/realtime.h"

#include <algorithm>

#include <pthread.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/resource.h>

namespace tolvane::hal {

namespace {

// Above ordinary real-time work, and below the threads of PipeWire (88 by default), which begin the cycles.
constexpr int kPriority = 60;

bool takePriority(int priority) noexcept {
  const sched_param wanted{priority};
  return pthread_setschedparam(pthread_self(), SCHED_FIFO | SCHED_RESET_ON_FORK, &wanted) == 0;
}

/// The priority that the user's limit allows, at most kPriority; 0 for none.
int allowedPriority() noexcept {
  rlimit limit{};
  if (getrlimit(RLIMIT_RTPRIO, &limit) != 0) return 0;
  return static_cast<int>(std::min<rlim_t>(kPriority, limit.rlim_cur));
}

}  // namespace

bool becomeRealtime() noexcept {
  if (takePriority(kPriority)) return true;  // a privilege may allow more than the limit
  const int allowed = allowedPriority();
  if (allowed > 0 && takePriority(allowed)) return true;
  prctl(PR_SET_TIMERSLACK, 1UL, 0UL, 0UL, 0UL);
  return false;
}

std::optional<ThreadScheduling> schedulingOf(pid_t thread) noexcept {
  const int policy = sched_getscheduler(thread);
  sched_param param{};
  if (policy < 0 || sched_getparam(thread, &param) != 0) return std::nullopt;
  return ThreadScheduling{policy & ~SCHED_RESET_ON_FORK, param.sched_priority};
}

}  // namespace tolvane::hal
