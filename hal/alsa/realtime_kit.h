// RealtimeKit, the desktop's service that makes threads of ordinary users real-time.
#pragma once

#include <sys/types.h>

namespace tolvane::hal::alsa {

/// Asks RealtimeKit, over the system bus, to make a thread of this process real-time at `priority` or what it
/// allows at most. Its condition is kept first: the CPU time that a real-time thread of the process may take
/// without a pause (RLIMIT_RTTIME) is lowered to what it allows. libdbus is loaded at run time. False without
/// it, without the service, and when it refuses. Waits for answers for up to a second each. [not-io]
bool askRealtimeKit(pid_t thread, unsigned priority);

}  // namespace tolvane::hal::alsa
