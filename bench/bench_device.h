// A device's buffers for one cycle, in a driver's layout: each stream on a cache line of its own.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "bench/huge_memory.h"
#include "core/routing/routing_context.h"
#include "hal/core_audio.h"

namespace tolvane::bench {

enum class Arrangement {
  planar,       // one stream per channel
  interleaved,  // one stream of all channels
};

/// One direction of a device.
class BenchStreams {
 public:
  BenchStreams(Arrangement arrangement, std::size_t channels, std::size_t frames);

  [[nodiscard]] AudioBufferList* list() { return reinterpret_cast<AudioBufferList*>(records_.get()); }
  [[nodiscard]] std::size_t size() const { return streams_; }
  [[nodiscard]] float* samples(std::size_t stream) { return samples_.samples() + stream * samplesPerStream_; }
  [[nodiscard]] std::size_t bytes(std::size_t stream) { return list()->mBuffers[stream].mDataByteSize; }

 private:
  std::size_t streams_;
  std::size_t samplesPerStream_;  // a multiple of a cache line
  HugeMemory samples_;
  std::unique_ptr<std::byte[]> records_;
};

/// A device with its buffers, its routing context and its published routes.
struct BenchDevice {
  BenchDevice(Arrangement arrangement, std::size_t inputs, std::size_t outputs, std::size_t cycleFrames);

  /// Publishes `count` routes. Route k goes from input k to output k % `into`; both wrap around at the
  /// channel counts. The device owns the returned list.
  const std::vector<PatchConnection>& publish(std::size_t count, std::size_t into, float gain);

  /// Calls the routing once.
  void cycle();
  /// The rival: copies each input buffer to the output buffer of the same number, up to the smaller count and
  /// size.
  void copy();
  /// Sets every output buffer to zero, one by one.
  void clear();

  std::size_t inputChannels;
  std::size_t outputChannels;
  std::size_t frames;
  BenchStreams input;
  BenchStreams output;
  IOProcContext context;
  std::vector<PatchConnection> routes;  // the published ones
};

}  // namespace tolvane::bench
