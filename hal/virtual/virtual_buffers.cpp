#include "hal/virtual/virtual_buffers.h"

#include <algorithm>

namespace tolvane::hal {

namespace {

std::size_t streamBytes(std::size_t channels, std::size_t frames) noexcept {
  return wholeCacheLines(channels * frames * sizeof(float));
}

}  // namespace

VirtualBuffers::VirtualBuffers(const StreamLayout& streams, const std::vector<std::size_t>& withoutData,
                               std::uint32_t maxFrames)
    : buffers_(streams.size()) {
  std::size_t total = 0;
  for (const std::uint32_t channels : streams) total += streamBytes(channels, maxFrames);
  samples_ = allocateSamples(total);
  for (std::size_t s = 0; s < streams.size(); ++s) {
    const bool off =
        streams[s] == 0 || std::find(withoutData.begin(), withoutData.end(), s) != withoutData.end();
    buffers_.set(s, streams[s], 0, off ? nullptr : samples_.get());
  }
}

AudioBufferList& VirtualBuffers::list(std::uint32_t frames) noexcept {
  const AudioBufferList& list = buffers_.list();
  auto* next = reinterpret_cast<std::byte*>(samples_.get());
  for (UInt32 b = 0; b < list.mNumberBuffers; ++b) {
    const UInt32 channels = list.mBuffers[b].mNumberChannels;
    const bool hasData = list.mBuffers[b].mData != nullptr;
    buffers_.set(b, channels, frames, hasData ? next : nullptr);
    if (hasData) next += streamBytes(channels, frames);
  }
  return buffers_.list();
}

}  // namespace tolvane::hal
