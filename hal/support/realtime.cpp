#include "hal/support/realtime.h"

#include <pthread.h>
#include <sched.h>
#include <sys/prctl.h>

namespace tolvane::hal {

namespace {

// Above ordinary real-time work, below the kernel's own threads and the sound servers'.
constexpr int kPriority = 60;

}  // namespace

bool becomeRealtime() noexcept {
  const sched_param wanted{kPriority};
  if (pthread_setschedparam(pthread_self(), SCHED_FIFO | SCHED_RESET_ON_FORK, &wanted) == 0) return true;
  prctl(PR_SET_TIMERSLACK, 1UL, 0UL, 0UL, 0UL);
  return false;
}

}  // namespace tolvane::hal
