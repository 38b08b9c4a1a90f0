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

/// How the buffers of a list follow one another in memory.
class BufferOrder {
 public:
  /// Of no buffers.
  BufferOrder() noexcept = default;
  /// Of buffers the first of which begins there.
  explicit BufferOrder(const void* data) noexcept
      : begin_(reinterpret_cast<std::uintptr_t>(data)), end_(begin_) {}

  void add(const void* data, UInt32 bytes) noexcept {
    const std::uintptr_t step = reinterpret_cast<std::uintptr_t>(data) - end_;
    steps_ |= step;
    end_ += step + bytes;
  }

  /// Whether each buffer begins behind the one before it.
  [[nodiscard]] bool ascends() const noexcept { return (steps_ >> kSignBit) == 0; }
  /// Whether each buffer begins where the one before it ends.
  [[nodiscard]] bool isGapless() const noexcept { return steps_ == 0; }
  /// From the first byte to the last, where they ascend.
  [[nodiscard]] MemoryRange span() const noexcept { return {begin_, end_}; }

 private:
  static constexpr int kSignBit = std::numeric_limits<std::uintptr_t>::digits - 1;

  std::uintptr_t begin_ = kNoMemory.begin;
  std::uintptr_t end_ = kNoMemory.end;
  std::uintptr_t steps_ = 0;  // all bits of all ways from one buffer's end to the next one's begin
};

/// The channels of one buffer list, numbered across its buffers in list order. Buffers without data use up
/// their numbers. Channels at or beyond the capacity are counted, not stored. [io-thread]
class ChannelTable {
 public:
  /// Allocates the table: one of the two allocations of an IO cycle.
  explicit ChannelTable(std::int64_t capacity) noexcept;

  /// Numbers every channel of the list. A buffer with data and more channels than 32 bits hold ends the
  /// process.
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
  [[nodiscard]] MemoryRange span() const noexcept { return order_.span(); }

  /// Whether every buffer has one channel, and a slot, and data, and begins where the one before it ends.
  [[nodiscard]] bool isSolid() const noexcept {
    // A buffer without data is one at address 0: no other can end there, so only the first one can be it.
    return onlyPlanar_ && order_.isGapless() && order_.span().begin != 0;
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
  std::int64_t shortestFrames_ = std::numeric_limits<std::int64_t>::max();
  BufferOrder order_;
  bool onlyPlanar_ = true;
  // Slots are written as channels are numbered, and none beyond them is read: no need to fill the table
  // first.
  std::unique_ptr<ChannelSlot[]> slots_;
};

}  // namespace tolvane
