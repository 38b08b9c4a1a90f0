#include "core/routing/mix/channel_table.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>
#include <new>

#include "base/fatal.h"

namespace tolvane {

namespace {

constexpr auto kMaxChannels = static_cast<UInt32>(std::numeric_limits<std::int32_t>::max());

/// The buffer's channel count and byte size as one value, to compare both at once.
std::uint64_t headOf(const AudioBuffer& buffer) noexcept {
  std::uint64_t head = 0;
  static_assert(offsetof(AudioBuffer, mData) == sizeof head);
  std::memcpy(&head, &buffer, sizeof head);
  return head;
}

}  // namespace

ChannelTable::ChannelTable(std::int64_t capacity) noexcept
    : capacity_(capacity), slots_(new (std::nothrow) ChannelSlot[static_cast<std::size_t>(capacity)]) {}

void ChannelTable::addChannelsOf(const AudioBufferList& list) noexcept {
  const AudioBuffer* const end = list.mBuffers + list.mNumberBuffers;
  if (list.mBuffers != end) order_ = BufferOrder(list.mBuffers[0].mData);
  for (const AudioBuffer* buffer = list.mBuffers; buffer != end;) {
    buffer = addPlanarChannels(buffer, end);
    if (buffer != end) addChannels(*buffer++);
  }
}

/// Numbers a run of one-channel buffers that begins at `buffer`. Stops at the first other buffer and when the
/// slots are used up. Returns the buffer after the run.
const AudioBuffer* ChannelTable::addPlanarChannels(const AudioBuffer* buffer,
                                                   const AudioBuffer* end) noexcept {
  if (channelCount_ >= capacity_ || buffer == end || buffer->mNumberChannels != 1) return buffer;
  ChannelSlot* const first = &slots_[static_cast<std::size_t>(channelCount_)];
  const ChannelSlot* const last = &slots_[0] + capacity_;
  ChannelSlot* slot = first;
  BufferOrder order = order_;
  UInt32 fewestBytes = buffer->mDataByteSize;
  // Four at once: this dominates large devices with few routes.
  const std::uint64_t head = headOf(*buffer);
  for (; end - buffer >= 4 && last - slot >= 4; buffer += 4, slot += 4) {
    const std::uint64_t other = (headOf(buffer[0]) ^ head) | (headOf(buffer[1]) ^ head) |
                                (headOf(buffer[2]) ^ head) | (headOf(buffer[3]) ^ head);
    if (other != 0) break;
    for (int i = 0; i < 4; ++i) {
      slot[i] = {static_cast<float*>(buffer[i].mData), 1, kNoRoute};
      order.add(buffer[i].mData, fewestBytes);
    }
  }
  for (; buffer != end && slot != last && buffer->mNumberChannels == 1; ++buffer) {
    *slot++ = {static_cast<float*>(buffer->mData), 1, kNoRoute};
    order.add(buffer->mData, buffer->mDataByteSize);
    fewestBytes = std::min(fewestBytes, buffer->mDataByteSize);
  }
  order_ = order;
  shortestFrames_ = std::min(shortestFrames_, static_cast<std::int64_t>(fewestBytes / sizeof(float)));
  channelCount_ += slot - first;
  return buffer;
}

void ChannelTable::addChannels(const AudioBuffer& buffer) noexcept {
  const UInt32 channels = buffer.mNumberChannels;
  auto* const data = static_cast<float*>(buffer.mData);
  // Channels without data are only counted: any number of them is valid.
  if (data != nullptr && channels > kMaxChannels)
    fatal("a buffer of the device has more channels than 32 bits hold");
  const std::int64_t first = channelCount_;
  const std::int64_t end = std::min<std::int64_t>(first + channels, capacity_);
  const std::int32_t stride = data == nullptr ? 1 : static_cast<std::int32_t>(channels);
  for (std::int64_t c = first; c < end; ++c)
    slots_[static_cast<std::size_t>(c)] = {data == nullptr ? nullptr : data + (c - first), stride, kNoRoute};
  if (channels != 0) {
    shortestFrames_ = std::min(shortestFrames_,
                               static_cast<std::int64_t>(buffer.mDataByteSize / (channels * sizeof(float))));
  }
  order_.add(buffer.mData, buffer.mDataByteSize);
  onlyPlanar_ = false;
  channelCount_ = first + channels;
}

}  // namespace tolvane
