#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "hal/surface/audio_hardware.h"

namespace tolvane::hal {

/// One direction's streams in order, each by its number of channels: the buffers of the HAL's buffer lists.
using StreamLayout = std::vector<std::uint32_t>;

/// What a driver says of one device. A plain value.
struct DeviceInfo {
  std::string uid;   // the lasting identity, unique among all drivers: "jack:system"
  std::string name;  // for people
  UInt32 transportType = kAudioDeviceTransportTypeUnknown;
  StreamLayout inputStreams;
  StreamLayout outputStreams;
  double sampleRateHz = 0.0;
  std::uint32_t bufferFrames = 0;
  // What the frames a cycle may be set to; both 0 when they are as they are.
  std::uint32_t minBufferFrames = 0;
  std::uint32_t maxBufferFrames = 0;
  // The sound cards behind it, by ALSA's numbers, where they are known. When earlier drivers list devices
  // that have all of these, this is another way to the same cards, and left out of the list.
  std::vector<int> alsaCards = {};

  bool operator==(const DeviceInfo&) const = default;
};

}  // namespace tolvane::hal
