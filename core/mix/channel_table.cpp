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
  ChannelSlot* const slots = slots_.get();
  const std::int64_t capacity = capacity_;
  std::int64_t k = channelCount_;
  for (const AudioBuffer* buffer = list.mBuffers; buffer != end; ++buffer) {
    auto* const data = static_cast<float*>(buffer->mData);
    if (buffer->mNumberChannels == 1 && k < capacity) {
      slots[k++] = {data, 1, -1};
    } else {
      k = addChannels(*buffer, k);
    }
  }
  channelCount_ = k;
}

/// Numbers the channels of a buffer from `first` on; the number after them.
std::int64_t ChannelTable::addChannels(const AudioBuffer& buffer, std::int64_t first) noexcept {
  const UInt32 channels = buffer.mNumberChannels;
  if (channels > kMaxChannels) fatal("a buffer of the device has more channels than 32 bits hold");
  auto* const data = static_cast<float*>(buffer.mData);
  const std::int64_t end = std::min<std::int64_t>(first + channels, capacity_);
  const std::int32_t stride = data == nullptr ? 1 : static_cast<std::int32_t>(channels);
  for (std::int64_t c = first; c < end; ++c)
    slots_[static_cast<std::size_t>(c)] = {data == nullptr ? nullptr : data + (c - first), stride, -1};
  return first + channels;
}

}  // namespace tolvane
