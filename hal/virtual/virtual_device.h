// The device that is always present: it needs no hardware and no server. Programs use it as it is; tests and
// benchmarks configure it.
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
  /// Writes `frames` frames into every buffer that has data, from frame `firstFrame` of the run on.
  /// [io-thread]
  virtual void fill(std::uint64_t firstFrame, std::uint32_t frames, AudioBufferList& input) noexcept = 0;
};

/// Sees the output buffers of each cycle, after the callback has run.
class VirtualTap {
 public:
  virtual ~VirtualTap() = default;
  /// Sees `frames` frames, from frame `firstFrame` of the run on. It may be slow: a missed deadline becomes
  /// an overload. [io-thread]
  virtual void observe(std::uint64_t firstFrame, std::uint32_t frames,
                       const AudioBufferList& output) noexcept = 0;
};

/// The configuration of the device. The defaults are what every user finds in the menu.
struct VirtualDeviceConfig {
  std::string name = "Tolvane Virtual Device";
  StreamLayout inputStreams = {2, 16};
  StreamLayout outputStreams = StreamLayout(20, 1);
  /// The names of the channels, in order. May end early; an empty one is none.
  std::vector<std::string> inputNames;
  std::vector<std::string> outputNames;
  double sampleRateHz = 48000.0;
  std::uint32_t bufferFrames = 512;
  /// Indices of streams whose buffers have no data, as on a device that has turned a stream off.
  std::vector<std::size_t> inputStreamsWithoutData;
  std::vector<std::size_t> outputStreamsWithoutData;
  /// Both optional and not owned; they must outlive the run. Without an input signal, channel n (one-based)
  /// carries a sine of 110 n Hz whose peak is at -18 dBFS.
  VirtualInput* inputSignal = nullptr;
  VirtualTap* outputTap = nullptr;
};

/// Configures the virtual device from its next start on. Returns noErr, or
/// kAudioHardwareIllegalOperationError while the device runs, and for a bad configuration: more than 1024
/// channels in a direction, an index of no stream, no frames, or a rate that is not positive and finite.
/// [not-io]
OSStatus configureVirtualDevice(const VirtualDeviceConfig& config);

}  // namespace tolvane::hal
