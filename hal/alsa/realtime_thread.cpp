#include "hal/alsa/realtime_thread.h"

#include <atomic>
#include <cstdio>

#include <unistd.h>

#include "hal/alsa/realtime_kit.h"
#include "hal/support/realtime.h"
#include "hal/support/thread.h"

namespace tolvane::hal::alsa {

namespace {

// What RealtimeKit grants at most, as it comes.
constexpr unsigned kPriority = 20;

void sayOnce() {
  static std::atomic_flag said;
  if (said.test_and_set()) return;
  std::fputs(
      "tolvane: the sound card's thread runs without real-time priority: neither the limits of this user nor "
      "RealtimeKit grant it. Sound may break up under load.\n",
      stderr);
}

}  // namespace

void requestRealtime() {
  if (becomeRealtime()) return;
  runDetached("tolvane-rtkit", [thread = gettid()] {
    if (!askRealtimeKit(thread, kPriority)) sayOnce();
  });
}

}  // namespace tolvane::hal::alsa
