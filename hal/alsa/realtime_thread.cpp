#include "hal/alsa/realtime_thread.h"

#include <unistd.h>

#include "hal/alsa/realtime_kit.h"
#include "hal/support/realtime.h"
#include "hal/support/thread.h"

namespace tolvane::hal::alsa {

namespace {

// The highest priority that RealtimeKit grants by default.
constexpr unsigned kPriority = 20;

}  // namespace

void requestRealtime() {
  if (becomeRealtime()) return;
  // If the system has no thread left to ask on, the calling thread keeps its priority, which is reported.
  static_cast<void>(runDetached("tolvane-rtkit", [thread = gettid()] { askRealtimeKit(thread, kPriority); }));
}

}  // namespace tolvane::hal::alsa
