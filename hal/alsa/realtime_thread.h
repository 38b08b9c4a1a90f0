#pragma once

namespace tolvane::hal::alsa {

/// Makes the calling thread real-time: at once if the user's limits allow it, else through RealtimeKit.
/// Another thread asks RealtimeKit, because the answer may take long. If neither grants it, the calling
/// thread continues without real-time priority. [not-io]
void requestRealtime();

}  // namespace tolvane::hal::alsa
