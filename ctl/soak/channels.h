// The channels of buffer lists.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "hal/core_audio.h"

namespace tolvane::ctl {

/// Where one channel's samples lie.
struct ChannelSamples {
  float* first = nullptr;  // null: the channel has no data in this cycle
  std::size_t stride = 1;
  std::size_t frames = 0;

  [[nodiscard]] float operator[](std::size_t frame) const noexcept { return first[frame * stride]; }
};

/// The channels of a list, numbered across its buffers. The memory is made before any cycle.
class ChannelSet {
 public:
  /// Further channels of a list are left out. [not-io]
  explicit ChannelSet(std::size_t most) : channels_(most) {}

  /// [io-thread]
  void read(const AudioBufferList* list) noexcept {
    count_ = 0;
    if (list == nullptr) return;
    for (UInt32 b = 0; b < list->mNumberBuffers; ++b) {
      const AudioBuffer& buffer = list->mBuffers[b];
      auto* const data = static_cast<float*>(buffer.mData);
      const std::size_t stride = buffer.mNumberChannels;
      for (std::size_t c = 0; c < stride && count_ < channels_.size(); ++c) {
        const std::size_t frames = buffer.mDataByteSize / (stride * sizeof(float));
        channels_[count_++] = {data == nullptr ? nullptr : data + c, stride, frames};
      }
    }
  }

  [[nodiscard]] std::span<const ChannelSamples> all() const noexcept {
    return std::span(channels_).first(count_);
  }

 private:
  std::vector<ChannelSamples> channels_;
  std::size_t count_ = 0;
};

}  // namespace tolvane::ctl
