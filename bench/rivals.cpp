#include "bench/rivals.h"

#include <cstring>

#include <cblas.h>

namespace tolvane::bench {

namespace {

/// One channel in a device's buffers.
struct Channel {
  float* samples;
  int stride;
  int frames;
};

Channel channelOf(BenchStreams& streams, std::int64_t channel) {
  const AudioBuffer& first = streams.list()->mBuffers[0];
  const auto stride = static_cast<int>(first.mNumberChannels);
  const int frames = static_cast<int>(first.mDataByteSize / sizeof(float)) / stride;
  const auto number = static_cast<std::size_t>(channel);
  float* const samples = streams.size() == 1 ? streams.samples(0) + number : streams.samples(number);
  return {samples, stride, frames};
}

}  // namespace

void clearAndSaxpy(BenchDevice& device, std::span<const PatchConnection> routes) {
  device.clear();
  for (const PatchConnection& route : routes) {
    const Channel in = channelOf(device.input, route.inputChannel);
    const Channel out = channelOf(device.output, route.outputChannel);
    cblas_saxpy(in.frames, route.gain, in.samples, in.stride, out.samples, out.stride);
  }
}

void clearAndLoop(BenchDevice& device, std::span<const PatchConnection> routes) {
  device.clear();
  for (const PatchConnection& route : routes) {
    const Channel in = channelOf(device.input, route.inputChannel);
    const Channel out = channelOf(device.output, route.outputChannel);
    for (std::ptrdiff_t f = 0; f < in.frames; ++f)
      out.samples[f * out.stride] += in.samples[f * in.stride] * route.gain;
  }
}

CopyOfBoth::CopyOfBoth(BenchDevice& device)
    : device_(device),
      copy_(device.input.size() == 1 ? Arrangement::interleaved : Arrangement::planar, device.inputChannels,
            device.outputChannels, device.frames) {}

void CopyOfBoth::copy() {
  copyAll(device_.input, copy_.input);
  copyAll(device_.output, copy_.output);
}

void CopyOfBoth::copyAll(BenchStreams& from, BenchStreams& to) {
  for (std::size_t s = 0; s < from.size(); ++s) std::memcpy(to.samples(s), from.samples(s), from.bytes(s));
}

}  // namespace tolvane::bench
