#pragma once

#include <optional>

#include <sys/types.h>

namespace tolvane::hal {

/// Asks for SCHED_FIFO for the calling thread, at priority 60 or the highest below it that RLIMIT_RTPRIO
/// allows. True if granted. Otherwise sets the smallest timer slack and returns false. [not-io]
bool becomeRealtime() noexcept;

/// The scheduling of a thread: a SCHED_ constant, and the priority of a real-time thread.
struct ThreadScheduling {
  int policy;
  int priority;
};

/// The scheduling of a thread of this process, by its kernel id; none if the thread has ended. [not-io]
[[nodiscard]] std::optional<ThreadScheduling> schedulingOf(pid_t thread) noexcept;

}  // namespace tolvane::hal
