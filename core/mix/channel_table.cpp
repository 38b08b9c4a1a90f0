#include "core/mix/channel_table.h"

#include <algorithm>
#include <limits>
#include <new>

#include "core/fatal.h"

namespace tolvane {

namespace {

constexpr auto kMaxChannels = static_cast<UInt32>(std::numeric_limits<std::int32_t>::max());

}  // namespace

ChannelTable::ChannelTable(std::int64_t capacity) noexcept
    : capacity_(capacity), slots_(new (std::nothrow) ChannelSlot[static_cast<std::size_t>(capacity)]) {
  if (!slots_) fatal("no memory for the channel tables of an IO cycle");
}

void ChannelTable::addChannelsOf(const AudioBufferList& list) noexcept {
  const AudioBuffer* const end = list.mBuffers + list.mNumberBuffers;
  for (const AudioBuffer* buffer = list.mBuffers; buffer != end;) {
    buffer = addPlanarChannels(buffer, end);
    if (buffer != end) addChannels(*buffer++);
  }
}

/// Numbers the channels of the one-channel buffers from `buffer` on, as far as they go without another one
/// between them and there are slots; the buffer after them.
const AudioBuffer* ChannelTable::addPlanarChannels(const AudioBuffer* buffer,
                                                   const AudioBuffer* end) noexcept {
  if (channelCount_ >= capacity_) return buffer;
  ChannelSlot* const first = &slots_[static_cast<std::size_t>(channelCount_)];
  const ChannelSlot* const last = &slots_[0] + capacity_;
  ChannelSlot* slot = first;
  // Four at a time while that goes: this is most of what a large device with few routes costs.
  for (; end - buffer >= 4 && last - slot >= 4; buffer += 4, slot += 4) {
    if (((buffer[0].mNumberChannels ^ 1) | (buffer[1].mNumberChannels ^ 1) | (buffer[2].mNumberChannels ^ 1) |
         (buffer[3].mNumberChannels ^ 1)) != 0) {
      break;
    }
    for (int i = 0; i < 4; ++i) slot[i] = {static_cast<float*>(buffer[i].mData), 1, -1};
  }
  for (; buffer != end && slot != last && buffer->mNumberChannels == 1; ++buffer) {
    *slot++ = {static_cast<float*>(buffer->mData), 1, -1};
  }
  channelCount_ += slot - first;
  return buffer;
}

void ChannelTable::addChannels(const AudioBuffer& buffer) noexcept {
  const UInt32 channels = buffer.mNumberChannels;
  if (channels > kMaxChannels) fatal("a buffer of the device has more channels than 32 bits hold");
  auto* const data = static_cast<float*>(buffer.mData);
  const std::int64_t first = channelCount_;
  const std::int64_t end = std::min<std::int64_t>(first + channels, capacity_);
  const std::int32_t stride = data == nullptr ? 1 : static_cast<std::int32_t>(channels);
  for (std::int64_t c = first; c < end; ++c)
    slots_[static_cast<std::size_t>(c)] = {data == nullptr ? nullptr : data + (c - first), stride, -1};
  channelCount_ = first + channels;
}

}  // namespace tolvane
