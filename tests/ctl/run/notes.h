#pragma once

#include <string>

#include "ctl/support/child_process.h"

namespace tolvane::test {

/// What a successful run prints on standard error: the device, and a note if, by its summary, the IO thread
/// got no real-time priority.
inline std::string runNotes(const Finished& run, const std::string& device) {
  const std::string routing = "tolvanectl: routing on " + device + "\n";
  if (run.out.find("\nscheduling: SCHED_OTHER\n") == std::string::npos) return routing;
  return routing + "tolvanectl: " + device +
         ": its audio thread did not get real-time priority (SCHED_OTHER); sound may break up under load\n";
}

}  // namespace tolvane::test
