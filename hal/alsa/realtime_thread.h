#pragma once

namespace tolvane::hal::alsa {

/// Has the calling thread made real-time: at once where the user's limits grant it, else through RealtimeKit,
/// which is asked on another thread, for it may take its time. Where neither grants it the thread goes on
/// without. [not-io]
void requestRealtime();

}  // namespace tolvane::hal::alsa
