#include "hal/alsa/realtime_thread.h"

#include <unistd.h>

#include "hal/alsa/realtime_kit.h"
#include "hal/support/realtime.h"
#include "hal/support/thread.h"

namespace tolvane::hal::alsa {

namespace {

// What RealtimeKit grants at most, as it comes.
constexpr unsigned kPriority = 20;

}  // namespace

void requestRealtime() {
  if (becomeRealtime()) return;
  // Where no thread is left to ask on, the thread keeps the priority that it has, which is reported.
  static_cast<void>(runDetached("tolvane-rtkit", [thread = gettid()] { askRealtimeKit(thread, kPriority); }));
}

}  // namespace tolvane::hal::alsa
