#pragma once

#include <cstdint>
#include <limits>
#include <memory>

#include "core/routing/mix/overlap.h"
#include "hal/core_audio.h"

namespace tolvane {

inline constexpr std::int32_t kNoRoute = -1;

/// Where one channel's samples lie in its buffer.
struct ChannelSlot {
  float* data;              // the first sample; null where the channel has no data
  std::int32_t stride;      // samples from one frame to the next: the channels interleaved in the buffer
  std::int32_t firstRoute;  // of the routes with this channel; kNoRoute at first
};

/// The order of a list's buffers in memory.
class BufferOrder {
 public:
  /// No buffers.
  BufferOrder() noexcept = default;
  /// The first buffer begins at `data`.
  explicit BufferOrder(const void* data) noexcept
      : begin_(reinterpret_cast<std::uintptr_t>(data)), end_(begin_) {}

  void add(const void* data, UInt32 bytes) noexcept {
    const std::uintptr_t step = reinterpret_cast<std::uintptr_t>(data) - end_;
    steps_ |= step;
    end_ += step + bytes;
  }

  /// Whether each buffer begins at or after the end of the previous one.
  [[nodiscard]] bool ascends() const noexcept { return (steps_ >> kSignBit) == 0; }
  /// Whether each buffer begins at the end of the previous one.
  [[nodiscard]] bool isGapless() const noexcept { return steps_ == 0; }
  /// From the first byte to the last. Valid only if the buffers ascend.
  [[nodiscard]] MemoryRange span() const noexcept { return {begin_, end_}; }

 private:
  static constexpr int kSignBit = std::numeric_limits<std::uintptr_t>::digits - 1;

  std::uintptr_t begin_ = kNoMemory.begin;
  std::uintptr_t end_ = kNoMemory.end;
  // The gaps between buffers, combined by OR: the sign bit is set if any gap is negative.
  std::uintptr_t steps_ = 0;
};

/// The channels of one buffer list, numbered across its buffers in list order. The channels of a buffer
/// without data have numbers too. Channels at or beyond the capacity are counted, not stored. [io-thread]
class ChannelTable {
 public:
  /// Allocates the table: one of the two allocations of an IO cycle.
  explicit ChannelTable(std::int64_t capacity) noexcept;

  /// False if there was no memory for the table. Nothing else may be called then.
  [[nodiscard]] bool isAllocated() const noexcept { return slots_ != nullptr; }

  /// Numbers every channel of the list. Ends the process if a buffer with data has more than 2^31-1 channels.
  void addChannelsOf(const AudioBufferList& list) noexcept;

  /// All channels of the list, including those beyond the capacity and those without data.
  [[nodiscard]] std::int64_t channelCount() const noexcept { return channelCount_; }

  /// Channels with a slot: the channel count, limited by the capacity.
  [[nodiscard]] std::int64_t slotCount() const noexcept {
    return channelCount_ < capacity_ ? channelCount_ : capacity_;
  }

  /// Whether the buffers ascend in memory and each holds at least `frames` frames.
  [[nodiscard]] bool isAscending(std::int64_t frames) const noexcept {
    return order_.ascends() && shortestFrames_ >= frames;
  }

  /// The memory from the first buffer to the last. Valid only if isAscending().
  [[nodiscard]] MemoryRange span() const noexcept { return order_.span(); }

  /// Whether every buffer has one channel, a slot and data, and begins at the end of the previous one.
  [[nodiscard]] bool isContiguous() const noexcept {
    // A buffer without data lies at address 0. No buffer ends there, so in a list without gaps only the first
    // buffer can be without data.
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
  // Not initialised: only slots that addChannelsOf() has written are read.
  std::unique_ptr<ChannelSlot[]> slots_;
};

}  // namespace tolvane
