#pragma once

#include <optional>

#include <sys/types.h>

namespace tolvane::hal {

/// Asks for SCHED_FIFO for the calling thread, at priority 60 or the highest below it that RLIMIT_RTPRIO
/// allows; and for timers without slack where none is granted. True when it was granted. [not-io]
bool becomeRealtime() noexcept;

/// How the system schedules a thread: a SCHED_ constant, and the priority of a real-time one.
struct ThreadScheduling {
  int policy;
  int priority;
};

/// That of a thread of this process, by its kernel id; none when it has ended. [not-io]
[[nodiscard]] std::optional<ThreadScheduling> schedulingOf(pid_t thread) noexcept;

}  // namespace tolvane::hal
