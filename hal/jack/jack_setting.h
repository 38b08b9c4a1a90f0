#pragma once

#include <chrono>
#include <cstdint>

#include "hal/jack/jack_library.h"
#include "hal/surface/audio_hardware.h"

namespace tolvane::hal {

/// Sets the server's cycle length to `frames`, for all of its clients. Returns within `limit`: noErr if it is
/// set; kAudioHardwareNotReadyError if there is no server or it hangs, and then a request not yet sent is
/// cancelled; kAudioHardwareUnsupportedOperationError if the server refuses. [not-io]
[[nodiscard]] OSStatus setJackBufferFrames(const JackLibrary& library, std::uint32_t frames,
                                           std::chrono::milliseconds limit);

}  // namespace tolvane::hal
