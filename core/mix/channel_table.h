#pragma once

#include <cstdint>
#include <limits>
#include <memory>

#include "core/mix/overlap.h"
#include "hal/core_audio.h"

namespace tolvane {

/// Where one channel's samples lie in its buffer.
struct ChannelSlot {
  float* data;          // the first sample; null where the channel has no data
  std::int32_t stride;  // samples from one frame to the next: the channels interleaved in the buffer
  std::int32_t link;    // for the mixer's own use; -1 at first
};

/// Whether buffers lie one behind the other, and where the last one ends if they do.
class BufferOrder {
 public:
  void add(const void* data, UInt32 bytes) noexcept {
    const auto begin = reinterpret_cast<std::uintptr_t>(data);
    backwards_ |= begin - end_;
    end_ = begin + bytes;
  }

  [[nodiscard]] bool ascends() const noexcept { return (backwards_ >> kSignBit) == 0; }
  [[nodiscard]] std::uintptr_t end() const noexcept { return end_; }

 private:
  static constexpr int kSignBit = std::numeric_limits<std::uintptr_t>::digits - 1;

  std::uintptr_t end_ = 0;
  std::uintptr_t backwards_ = 0;  // its highest bit: some buffer began before the end of the one before it
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

  /// Whether each buffer lies behind the one before it and holds at least `frames` frames.
  [[nodiscard]] bool isOrderly(std::int64_t frames) const noexcept {
    return order_.ascends() && shortestFrames_ >= frames;
  }

  /// From the first buffer's first byte to the last one's end, where the buffers lie in order.
  [[nodiscard]] MemoryRange span() const noexcept { return {begin_, order_.end()}; }

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
  std::int64_t shortestFrames_ = std::numeric_limits<std::int64_t>::max();
  std::uintptr_t begin_ = kNoMemory.begin;  // of the first buffer
  BufferOrder order_;
  // Slots are written as channels are numbered, and none beyond them is read: no need to fill the table
  // first.
  std::unique_ptr<ChannelSlot[]> slots_;
};

}  // namespace tolvane
