#include "hal/pipewire/stream_buffers.h"

#include <algorithm>
#include <numeric>

#include "hal/pipewire/interleaving.h"

namespace tolvane::hal::pipewire {

namespace {

// Memory for longer cycles is allocated, but not touched before its first use.
constexpr std::size_t kUsualFrames = 8192;

std::unique_ptr<float[]> samplesFor(std::size_t channels) {
  std::unique_ptr<float[]> samples(new float[channels * kMaxCycleFrames]);
  std::fill_n(samples.get(), channels * kUsualFrames, 0.0F);
  return samples;
}

}  // namespace

StreamBuffers::StreamBuffers(const StreamLayout& streams)
    : streams_(streams),
      channels_(std::accumulate(streams.begin(), streams.end(), std::size_t{0}), nullptr),
      buffers_(streams.size()) {
  std::size_t first = 0;
  for (std::uint32_t s = 0; s < streams.size(); ++s) {
    const std::span<float*> channels(&channels_[first], streams[s]);
    if (streams[s] > 1) interleaved_.push_back({s, channels, samplesFor(streams[s])});
    first += streams[s];
  }
}

bool StreamBuffers::hasData(const Interleaved& stream) noexcept {
  return std::any_of(stream.channels.begin(), stream.channels.end(),
                     [](const float* channel) { return channel != nullptr; });
}

void StreamBuffers::begin(std::uint32_t frames) noexcept {
  frames_ = frames;
  std::size_t first = 0;
  for (std::size_t s = 0; s < streams_.size(); ++s) {
    const std::uint32_t channels = streams_[s];
    buffers_.set(s, channels, frames, channels == 1 ? channels_[first] : nullptr);
    first += channels;
  }
  for (const Interleaved& stream : interleaved_) {
    if (hasData(stream)) list().mBuffers[stream.stream].mData = stream.samples.get();
  }
}

void StreamBuffers::gather() noexcept {
  for (const Interleaved& stream : interleaved_) {
    if (hasData(stream)) interleave(stream.channels, frames_, stream.samples.get());
  }
}

void StreamBuffers::scatter() noexcept {
  for (const Interleaved& stream : interleaved_) {
    if (hasData(stream)) deinterleave(stream.samples.get(), frames_, stream.channels);
  }
}

void StreamBuffers::silence() noexcept {
  for (float* const channel : channels_) {
    if (channel != nullptr) std::fill_n(channel, frames_, 0.0F);
  }
}

}  // namespace tolvane::hal::pipewire
