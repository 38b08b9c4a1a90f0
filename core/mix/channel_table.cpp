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
  const AudioBuffer* const buffers = list.mBuffers;
  ChannelSlot* const slots = slots_.get();
  std::int64_t k = channelCount_;
  for (UInt32 b = 0; b < list.mNumberBuffers; ++b) {
    const UInt32 channels = buffers[b].mNumberChannels;
    auto* const data = static_cast<float*>(buffers[b].mData);
    if (channels == 1 && k < capacity_) {
      slots[k++] = {data, 1, -1};
      continue;
    }
    if (channels > kMaxChannels) fatal("a buffer of the device has more channels than 32 bits hold");
    const std::int64_t end = std::min<std::int64_t>(k + channels, capacity_);
    const std::int32_t stride = data == nullptr ? 1 : static_cast<std::int32_t>(channels);
    for (std::int64_t c = k; c < end; ++c)
      slots[c] = {data == nullptr ? nullptr : data + (c - k), stride, -1};
    k += channels;
  }
  channelCount_ = k;
}

}  // namespace tolvane
