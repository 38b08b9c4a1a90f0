// RealtimeKit, the desktop's service that makes threads of ordinary users real-time.
#pragma once

#include <sys/types.h>

namespace tolvane::hal::alsa {

/// Asks RealtimeKit, over the system bus, to make a thread of this process real-time, at `priority` or the
/// highest that it allows. First lowers the CPU time that a real-time thread of the process may take without
/// a pause (RLIMIT_RTTIME) to RealtimeKit's limit, because RealtimeKit demands that. Loads libdbus at run
/// time. Returns false without libdbus or the service, and if the service refuses. Waits up to one second for
/// each answer. [not-io]
bool askRealtimeKit(pid_t thread, unsigned priority);

}  // namespace tolvane::hal::alsa
