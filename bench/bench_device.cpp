#include "bench/bench_device.h"

#include <algorithm>
#include <cstring>

#include "core/routing/io_proc.h"

namespace tolvane::bench {

namespace {

constexpr std::size_t kSamplesPerLine = 16;

std::size_t wholeLines(std::size_t samples) {
  return (samples + kSamplesPerLine - 1) / kSamplesPerLine * kSamplesPerLine;
}

}  // namespace

BenchStreams::BenchStreams(Arrangement arrangement, std::size_t channels, std::size_t frames)
    : streams_(arrangement == Arrangement::planar ? channels : 1),
      samplesPerStream_(wholeLines(channels / streams_ * frames)),
      samples_(streams_ * samplesPerStream_),
      records_(new std::byte[offsetof(AudioBufferList, mBuffers) + streams_ * sizeof(AudioBuffer)]) {
  for (std::size_t s = 0; s < streams_ * samplesPerStream_; ++s)
    samples_.samples()[s] = static_cast<float>(s % 97) / 97.0F - 0.5F;
  list()->mNumberBuffers = static_cast<UInt32>(streams_);
  const std::size_t width = channels / streams_;
  for (std::size_t s = 0; s < streams_; ++s) {
    list()->mBuffers[s] = {static_cast<UInt32>(width), static_cast<UInt32>(width * frames * sizeof(float)),
                           samples(s)};
  }
}

BenchDevice::BenchDevice(Arrangement arrangement, std::size_t inputs, std::size_t outputs,
                         std::size_t cycleFrames)
    : inputChannels(inputs),
      outputChannels(outputs),
      frames(cycleFrames),
      input(arrangement, inputs, cycleFrames),
      output(arrangement, outputs, cycleFrames),
      context(initialContext(static_cast<std::int64_t>(inputs), static_cast<std::int64_t>(outputs))) {}

const std::vector<PatchConnection>& BenchDevice::publish(std::size_t count, std::size_t into, float gain) {
  routes.resize(count);
  for (std::size_t k = 0; k < count; ++k) {
    routes[k] = {static_cast<std::int64_t>(k % inputChannels),
                 static_cast<std::int64_t>(k % into % outputChannels), gain, true};
  }
  writeConnections(&context, routes);
  return routes;
}

void BenchDevice::cycle() {
  routeCycle(input.list(), output.list(), &context);
}

void BenchDevice::copy() {
  for (std::size_t s = 0; s < std::min(input.size(), output.size()); ++s)
    std::memcpy(output.samples(s), input.samples(s), std::min(input.bytes(s), output.bytes(s)));
}

void BenchDevice::clear() {
  for (std::size_t s = 0; s < output.size(); ++s) std::memset(output.samples(s), 0, output.bytes(s));
}

}  // namespace tolvane::bench
