#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "hal/surface/audio_hardware.h"

namespace tolvane::hal {

/// The streams of one direction in order, each as its number of channels. Each is one buffer of the HAL's
/// lists.
using StreamLayout = std::vector<std::uint32_t>;

/// The names of one channel. Each is empty if there is none; none is ever made up.
struct ChannelInfo {
  std::string name = {};  // as its owner calls it: "capture_AUX2", or "Kick"
  std::string node = {};  // the sound server's names of the node and of its port, as a patch bay shows them
  std::string port = {};

  bool operator==(const ChannelInfo&) const = default;
};

/// A driver's description of one device. A plain value.
struct DeviceInfo {
  std::string uid;   // persistent identity, unique among all drivers: "jack:system"
  std::string name;  // shown to the user
  UInt32 transportType = kAudioDeviceTransportTypeUnknown;
  StreamLayout inputStreams;
  StreamLayout outputStreams;
  double sampleRateHz = 0.0;
  std::uint32_t bufferFrames = 0;
  // Range of buffer sizes in frames; both 0 if the size is fixed.
  std::uint32_t minBufferFrames = 0;
  std::uint32_t maxBufferFrames = 0;
  // The sample rates that the device can be set to, ascending; empty if its rate is fixed.
  std::vector<double> sampleRatesHz = {};
  // How many buffers the hardware holds, and the range that can be set. All 0 if the driver does not know.
  std::uint32_t periods = 0;
  std::uint32_t minPeriods = 0;
  std::uint32_t maxPeriods = 0;
  // ALSA's numbers of the sound cards behind the device, if known. If earlier drivers list devices with all
  // of these cards, this device is another way to the same cards and is left out of the list.
  std::vector<int> alsaCards = {};
  // The channels over all streams, in order. May end early: nothing is known of the rest.
  std::vector<ChannelInfo> inputs = {};
  std::vector<ChannelInfo> outputs = {};

  // The channels of the device's monitor, which can be a member of an aggregate; 0 if it has none.
  std::uint32_t monitorChannels = 0;
  // The command that puts the sound card into the profile with all its channels, in order and untouched;
  // empty if it is in that profile or has none.
  std::string proAudioCommand = {};

  // A sound card that a sound server uses. It is not listed, but Driver::claim() can make it a device that
  // is. Only its uid, name and card number are known.
  bool isHeld = false;

  bool operator==(const DeviceInfo&) const = default;
};

}  // namespace tolvane::hal
