#include "hal/jack/jack_setting.h"

#include <memory>

#include "hal/jack/jack_client.h"
#include "hal/jack/late_answer.h"
#include "hal/support/thread.h"

namespace tolvane::hal {

namespace {

OSStatus set(const JackLibrary& library, std::uint32_t frames, LateAnswer<OSStatus>& answer) {
  jack_status_t status;
  const JackClientPtr client = openJackClient(library, "Tolvane-set", status);
  if (!client || !answer.isWanted()) return kAudioHardwareNotReadyError;
  const bool done =
      library.setBufferSize(client.get(), frames) == 0 && library.getBufferSize(client.get()) == frames;
  return done ? OSStatus{noErr} : OSStatus{kAudioHardwareUnsupportedOperationError};
}

}  // namespace

OSStatus setJackBufferFrames(const JackLibrary& library, std::uint32_t frames,
                             std::chrono::milliseconds limit) {
  const auto answer = std::make_shared<LateAnswer<OSStatus>>();
  const bool isAsked = runDetached(
      "tolvane-jack", [&library, frames, answer] { answer->give(set(library, frames, *answer)); });
  if (!isAsked) throw noThreadLeft();
  return answer->take(limit).value_or(OSStatus{kAudioHardwareNotReadyError});
}

}  // namespace tolvane::hal
