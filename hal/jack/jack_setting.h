#pragma once

#include <chrono>
#include <cstdint>

#include "hal/jack/jack_library.h"
#include "hal/surface/audio_hardware.h"

namespace tolvane::hal {

/// Makes `frames` the server's cycle length, for all of its clients. Returns within `limit`: noErr when it is
/// done; kAudioHardwareNotReadyError when there is no server or it hangs, and a pending request is cancelled;
/// kAudioHardwareUnsupportedOperationError when it refuses. [not-io]
[[nodiscard]] OSStatus setJackBufferFrames(const JackLibrary& library, std::uint32_t frames,
                                           std::chrono::milliseconds limit);

}  // namespace tolvane::hal
