#pragma once

#include <cstdint>
#include <string>

#include "hal/core_audio.h"

namespace tolvane {

/// One audio device in the list that the user chooses from. A plain value.
struct AudioDeviceInfo {
  AudioDeviceID id = kAudioObjectUnknown;
  std::string name;                 // UTF-8, as the HAL reports it
  std::int64_t inputChannels = 0;   // over all input streams
  std::int64_t outputChannels = 0;  // over all output streams

  bool operator==(const AudioDeviceInfo&) const = default;
};

}  // namespace tolvane
