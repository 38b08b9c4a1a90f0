#pragma once

#include <cstdint>
#include <memory>

#include "hal/core_audio.h"

namespace tolvane {

/// Where one channel's samples lie in its buffer.
struct ChannelSlot {
  float* data;          // the first sample; null where the channel has no data
  std::int32_t stride;  // samples from one frame to the next: the channels interleaved in the buffer
  std::int32_t link;    // for the mixer's own use; -1 at first
};

/// The channels of one buffer list, numbered across its buffers in list order. Buffers without data use up
/// their numbers. Channels at or beyond the capacity are counted, not stored. [io-thread]
class ChannelTable {
 public:
  /// Allocates the table: one of the two allocations of an IO cycle.
  explicit ChannelTable(std::int64_t capacity) noexcept;

  /// Numbers every channel of the list. A buffer with more channels than 32 bits hold ends the process.
  void addChannelsOf(const AudioBufferList& list) noexcept;

  /// Channels of the list, those beyond the capacity and those without data included.
  [[nodiscard]] std::int64_t channelCount() const noexcept { return channelCount_; }

  /// Channels that have a slot: the channel count, at most the capacity.
  [[nodiscard]] std::int64_t slotCount() const noexcept {
    return channelCount_ < capacity_ ? channelCount_ : capacity_;
  }

  /// `channel` is below slotCount().
  [[nodiscard]] ChannelSlot& operator[](std::int64_t channel) noexcept {
    return slots_[static_cast<std::size_t>(channel)];
  }
  [[nodiscard]] const ChannelSlot& operator[](std::int64_t channel) const noexcept {
    return slots_[static_cast<std::size_t>(channel)];
  }

 private:
  const AudioBuffer* addPlanarChannels(const AudioBuffer* buffer, const AudioBuffer* end) noexcept;
  void addChannels(const AudioBuffer& buffer) noexcept;

  std::int64_t capacity_;
  std::int64_t channelCount_ = 0;
  // Slots are written as channels are numbered, and none beyond them is read: no need to fill the table
  // first.
  std::unique_ptr<ChannelSlot[]> slots_;
};

}  // namespace tolvane
