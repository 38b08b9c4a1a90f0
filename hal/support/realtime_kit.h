// RealtimeKit, the desktop's service that makes threads of ordinary users real-time.
#pragma once

#include <sys/types.h>

namespace tolvane::hal {

/// Asks RealtimeKit, over the system bus, to make a thread of this process real-time, at `priority` or the
/// highest that it allows. First lowers the CPU time that a real-time thread of the process may take without
/// a pause (RLIMIT_RTTIME) to RealtimeKit's limit, because RealtimeKit demands that. Loads libdbus at run
/// time. Returns false without libdbus or the service, and if the service refuses. Waits up to one second for
/// each answer. [not-io]
bool askRealtimeKit(pid_t thread, unsigned priority);

/// Makes the calling thread real-time: at once if the user's limits allow it, else through RealtimeKit.
/// Another thread asks RealtimeKit, because the answer may take long. If neither grants it, the calling
/// thread continues without real-time priority. [not-io]
void requestRealtime();

}  // namespace tolvane::hal
