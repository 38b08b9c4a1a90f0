// The device that is always there: it needs no hardware and no server. Programs get it as it is; tests and
// benchmarks make any device of it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "hal/driver/device_info.h"

namespace tolvane::hal {

/// Fills the input buffers of each cycle.
class VirtualInput {
 public:
  virtual ~VirtualInput() = default;
  /// Writes `frames` frames from `firstFrame` of the run on into every buffer that has data. [io-thread]
  virtual void fill(std::uint64_t firstFrame, std::uint32_t frames, AudioBufferList& input) noexcept = 0;
};

/// Sees the output buffers of each cycle, after the callback has run.
class VirtualTap {
 public:
  virtual ~VirtualTap() = default;
  /// The frames from `firstFrame` of the run on. May take its time: what it delays becomes an overload.
  /// [io-thread]
  virtual void observe(std::uint64_t firstFrame, std::uint32_t frames,
                       const AudioBufferList& output) noexcept = 0;
};

/// What the device is. The defaults are what every user finds in the menu.
struct VirtualDeviceConfig {
  std::string name = "Tolvane Virtual Device";
  StreamLayout inputStreams = {2, 16};
  StreamLayout outputStreams = StreamLayout(20, 1);
  double sampleRateHz = 48000.0;
  std::uint32_t bufferFrames = 512;
  /// Indices of streams whose buffers have no data, as a device gives them for a stream that is off.
  std::vector<std::size_t> inputStreamsWithoutData;
  std::vector<std::size_t> outputStreamsWithoutData;
  /// Both optional and not owned; they must outlive the run. Without an input signal, channel n (one-based)
  /// carries a sine of 110 n Hz whose peak is at -18 dBFS.
  VirtualInput* inputSignal = nullptr;
  VirtualTap* outputTap = nullptr;
};

/// Makes the virtual device this from its next start on. noErr, or kAudioHardwareIllegalOperationError while
/// it runs, or when there are more than 1024 channels in a direction, no frames or no rate. [not-io]
OSStatus configureVirtualDevice(const VirtualDeviceConfig& config);

}  // namespace tolvane::hal
