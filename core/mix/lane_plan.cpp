#include "core/mix/lane_plan.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace tolvane {

namespace {

constexpr auto kSampleBytes = static_cast<std::intptr_t>(sizeof(float));

constexpr std::uint32_t bit(std::int32_t lane) noexcept {
  return std::uint32_t{1} << static_cast<unsigned>(lane);
}

std::int32_t lowest(std::uint32_t lanes) noexcept {
  return std::countr_zero(lanes);
}

/// Bytes from one sample to another, of one buffer or not.
std::intptr_t bytesBetween(const float* from, const float* to) noexcept {
  return static_cast<std::intptr_t>(reinterpret_cast<std::uintptr_t>(to) -
                                    reinterpret_cast<std::uintptr_t>(from));
}

/// Whether the slot's sample lies `offset` samples behind `base`'s in every frame.
bool liesAt(const ChannelSlot& slot, const ChannelSlot& base, std::int32_t offset) noexcept {
  return slot.stride == base.stride && bytesBetween(base.data, slot.data) == offset * kSampleBytes;
}

/// Up to how many layers lanes are faster than tiles, as measured: turning a group of channels into rows and
/// back costs as much as four layers, and a route among rows an eighth of one.
constexpr std::int32_t worthwhileLayers(std::int32_t groups, std::int32_t routes) noexcept {
  return 4 * groups + routes / 8;
}

}  // namespace

bool LanePlan::mix(AudioBuffer& buffer, std::int64_t first) noexcept {
  if (!plan(buffer, first)) return false;
  const std::int64_t frames = std::max<std::int64_t>(0, frames_ - lastFrames_);
  const std::uint64_t filled =
      everyGroup_ ? static_cast<std::uint64_t>(frames) * buffer.mNumberChannels * sizeof(float) : 0;
  std::memset(static_cast<char*>(buffer.mData) + filled, 0, buffer.mDataByteSize - filled);
  kernels_.mixLanes(groups_, groupCount_, frames);
  mixLastFrames(buffer, first);
  return true;
}

bool LanePlan::plan(const AudioBuffer& buffer, std::int64_t first) noexcept {
  const std::int32_t width = kernels_.maxWidth;
  const std::int64_t channels = buffer.mNumberChannels;
  if (channels < width) return false;
  everyGroup_ = true;
  groupCount_ = 0;
  layerCount_ = 0;
  lastFrames_ = 0;
  for (std::int64_t next = 0; next < channels; next += width) {
    const std::int64_t channel = std::min(next, channels - width);
    std::int32_t chains[16];
    bool routed = false;
    for (std::int32_t lane = 0; lane < width; ++lane) {
      const std::int64_t c = first + channel + lane;
      chains[lane] = c < out_.slotCount() ? out_[c].link : -1;
      routed = routed || chains[lane] >= 0;
    }
    everyGroup_ = everyGroup_ && routed;
    if (!routed) continue;
    if (groupCount_ == kMaxGroups) return false;
    LaneGroup& group = groups_[groupCount_++];
    const std::int32_t firstLayer = layerCount_;
    if (!addLayers(chains)) return false;
    group = {static_cast<float*>(buffer.mData) + channel, static_cast<std::ptrdiff_t>(channels),
             &layers_[firstLayer], layerCount_ - firstLayer};
  }
  return layerCount_ <= worthwhileLayers(groupCount_, routes_.count);
}

/// Adds a group's layers: first those of the first route into each channel, then those of the second...
bool LanePlan::addLayers(std::int32_t (&chains)[16]) noexcept {
  for (;;) {
    Round round;
    std::uint32_t lanes = 0;
    for (std::int32_t lane = 0; lane < kernels_.maxWidth; ++lane) {
      if (chains[lane] < 0) continue;
      const PatchEntry& entry = routes_.entries[chains[lane]];
      round.slots[lane] = &in_[entry.src];
      round.gains[lane] = entry.gain;
      lanes |= bit(lane);
      chains[lane] = nextRoute_[chains[lane]];
    }
    if (lanes == 0) return true;
    if (!addLayersOf(round, lanes)) return false;
  }
}

bool LanePlan::addLayersOf(const Round& round, std::uint32_t lanes) noexcept {
  while (lanes != 0) {
    if (layerCount_ == kMaxLayers || round.slots[lowest(lanes)]->stride == 1) return false;
    std::uint32_t added = addInPlace(round, lanes);
    if (added != lanes && kernels_.permutes) {
      if (added != 0) --layerCount_;
      added = addPermuted(round, lanes);
    }
    if (added == 0) return false;
    lanes &= ~added;
  }
  return true;
}

/// Adds a layer of samples that lie as far from the first as their lanes do; the lanes, none when there is no
/// such layer.
std::uint32_t LanePlan::addInPlace(const Round& round, std::uint32_t lanes) noexcept {
  const std::int32_t lead = lowest(lanes);
  const ChannelSlot& slot = *round.slots[lead];
  // Where lane 0 reads has to be a channel of the same buffer.
  if (&slot - &in_[0] < lead) return 0;
  const ChannelSlot& base = *(&slot - lead);
  if (!liesAt(slot, base, lead)) return 0;
  LaneLayer& layer = addLayer(base.data, base.stride);
  std::uint32_t added = 0;
  for (std::uint32_t left = lanes; left != 0; left &= left - 1) {
    const std::int32_t lane = lowest(left);
    if (!liesAt(*round.slots[lane], base, lane)) continue;
    layer.gains[lane] = round.gains[lane];
    layer.mask[lane] = -1;
    added |= bit(lane);
  }
  const bool all = added == bit(kernels_.maxWidth) - 1;
  layer.order = all ? LaneLayer::Order::whole : LaneLayer::Order::masked;
  keepInside(31 - std::countl_zero(added), base.stride);
  return added;
}

/// Adds a layer of as many samples as lie within one vector of the first lane's.
std::uint32_t LanePlan::addPermuted(const Round& round, std::uint32_t lanes) noexcept {
  const ChannelSlot& lead = *round.slots[lowest(lanes)];
  const std::intptr_t width = kernels_.maxWidth * kSampleBytes;
  const float* base = lead.data;
  for (std::uint32_t left = lanes; left != 0; left &= left - 1) {
    const ChannelSlot& slot = *round.slots[lowest(left)];
    const bool isNear = slot.stride == lead.stride && bytesBetween(slot.data, lead.data) < width;
    if (isNear && bytesBetween(base, slot.data) < 0) base = slot.data;
  }
  LaneLayer& layer = addLayer(base, lead.stride);
  layer.order = LaneLayer::Order::permuted;
  std::int32_t last = 0;
  std::uint32_t added = 0;
  for (std::uint32_t left = lanes; left != 0; left &= left - 1) {
    const std::int32_t lane = lowest(left);
    const ChannelSlot& slot = *round.slots[lane];
    const std::intptr_t bytes = bytesBetween(base, slot.data);
    if (slot.stride != lead.stride || bytes < 0 || bytes >= width || bytes % kSampleBytes != 0) continue;
    layer.gains[lane] = round.gains[lane];
    layer.lanes[lane] = static_cast<std::int32_t>(bytes / kSampleBytes);
    layer.mask[lane] = -1;
    last = std::max(last, layer.lanes[lane]);
    added |= bit(lane);
  }
  keepInside(last, lead.stride);
  return added;
}

LaneLayer& LanePlan::addLayer(const float* data, std::int32_t stride) noexcept {
  LaneLayer& layer = layers_[layerCount_++];
  layer.data = data;
  layer.stride = stride;
  std::fill(std::begin(layer.gains), std::end(layer.gains), 0.0F);
  std::fill(std::begin(layer.lanes), std::end(layer.lanes), 0);
  std::fill(std::begin(layer.mask), std::end(layer.mask), 0);
  return layer;
}

/// A layer's vectors are read whole: beyond its last lane in use may lie the end of the buffer.
void LanePlan::keepInside(std::int32_t lastLane, std::int32_t stride) noexcept {
  const std::int32_t beyond = kernels_.maxWidth - 1 - lastLane;
  if (beyond > lastFrames_ * stride) lastFrames_ = (beyond + stride - 1) / stride;
}

void LanePlan::mixLastFrames(AudioBuffer& buffer, std::int64_t first) const noexcept {
  if (lastFrames_ == 0) return;
  const std::int64_t end = std::min<std::int64_t>(first + buffer.mNumberChannels, out_.slotCount());
  for (std::int64_t c = first; c < end; ++c) {
    if (out_[c].link < 0) continue;
    for (std::int64_t f = std::max<std::int64_t>(0, frames_ - lastFrames_); f < frames_; ++f) {
      float sum = 0.0F;
      for (std::int32_t route = out_[c].link; route >= 0; route = nextRoute_[route]) {
        const ChannelSlot& slot = in_[routes_.entries[route].src];
        sum += slot.data[f * slot.stride] * routes_.entries[route].gain;
      }
      out_[c].data[f * out_[c].stride] = sum;
    }
  }
}

}  // namespace tolvane
