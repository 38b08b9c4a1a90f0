#include "hal/virtual/virtual_buffers.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace tolvane::hal {

namespace {

std::size_t aligned(std::size_t bytes) noexcept {
  return (bytes + VirtualBuffers::kAlignment - 1) / VirtualBuffers::kAlignment * VirtualBuffers::kAlignment;
}

}  // namespace

VirtualBuffers::VirtualBuffers(const StreamLayout& streams, const std::vector<std::size_t>& withoutData,
                               std::uint32_t maxFrames)
    : listBytes_(std::make_unique<std::byte[]>(
          std::max(sizeof(AudioBufferList),
                   offsetof(AudioBufferList, mBuffers) + streams.size() * sizeof(AudioBuffer)))) {
  std::vector<std::size_t> bytes;
  std::size_t total = 0;
  for (std::size_t s = 0; s < streams.size(); ++s) {
    const bool off = std::find(withoutData.begin(), withoutData.end(), s) != withoutData.end();
    bytes.push_back(off ? 0 : aligned(std::size_t{streams[s]} * maxFrames * sizeof(float)));
    total += bytes.back();
  }
  samples_.reset(static_cast<float*>(std::aligned_alloc(kAlignment, std::max(total, kAlignment))));
  if (!samples_) throw std::bad_alloc();
  std::memset(samples_.get(), 0, total);  // touched now, not in the first cycle
  auto& list = *reinterpret_cast<AudioBufferList*>(listBytes_.get());
  list.mNumberBuffers = static_cast<UInt32>(streams.size());
  float* next = samples_.get();
  for (std::size_t s = 0; s < streams.size(); ++s) {
    list.mBuffers[s] = {streams[s], 0, bytes[s] == 0 ? nullptr : next};
    next += bytes[s] / sizeof(float);
  }
}

AudioBufferList& VirtualBuffers::list(std::uint32_t frames) noexcept {
  auto& list = *reinterpret_cast<AudioBufferList*>(listBytes_.get());
  for (UInt32 b = 0; b < list.mNumberBuffers; ++b) {
    AudioBuffer& buffer = list.mBuffers[b];
    buffer.mDataByteSize = static_cast<UInt32>(std::size_t{buffer.mNumberChannels} * frames * sizeof(float));
  }
  return list;
}

}  // namespace tolvane::hal
