#pragma once

#include <cstddef>

#include "hal/driver/buffer_list.h"
#include "hal/support/locked_memory.h"

namespace tolvane::hal::alsa {

/// One direction's samples of one cycle, as one single-channel stream per channel. Each channel begins on a
/// cache line. The constructor allocates all memory.
class ChannelBuffers {
 public:
  /// Throws std::bad_alloc. [not-io]
  ChannelBuffers(std::size_t channels, std::size_t frames);

  [[nodiscard]] std::size_t channels() const noexcept { return channels_; }
  /// True if the samples are locked in memory. [any-thread]
  [[nodiscard]] bool areLocked() const noexcept { return samples_.areLocked(); }
  /// The samples of a channel. [io-thread]
  [[nodiscard]] float* channel(std::size_t index) noexcept { return samples_.get() + index * strideFloats_; }
  /// Valid for the lifetime of this object. [io-thread]
  [[nodiscard]] AudioBufferList& list() noexcept { return buffers_.list(); }

 private:
  std::size_t channels_;
  std::size_t strideFloats_;  // from one channel to the next
  SamplePages samples_;
  BufferList buffers_;
};

}  // namespace tolvane::hal::alsa
