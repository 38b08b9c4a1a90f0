#pragma once

#include <cstdint>

#include "hal/jack/jack_library.h"
#include "hal/surface/audio_hardware.h"

namespace tolvane::hal {

/// Makes `frames` the server's cycle length, for all of its clients. Returns within half a second: noErr when
/// it is done; kAudioHardwareNotReadyError when there is no server or it hangs, which is then not asked later
/// what it has not been asked yet; kAudioHardwareUnsupportedOperationError when it refuses. [not-io]
[[nodiscard]] OSStatus setJackBufferFrames(const JackLibrary& library, std::uint32_t frames);

}  // namespace tolvane::hal
