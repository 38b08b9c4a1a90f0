#include "core/routing/mix/cycle_mixer.h"

#include <algorithm>
#include <cstring>

#include "core/routing/mix/clear.h"
#include "core/routing/mix/lane_plan.h"
#include "core/routing/mix/reference_mixer.h"

namespace tolvane {

namespace {

bool isUsable(const AudioBuffer& buffer) noexcept {
  return buffer.mNumberChannels != 0 && buffer.mData != nullptr;
}

bool holds(const AudioBuffer& buffer, std::int64_t frames) noexcept {
  return buffer.mDataByteSize >= static_cast<std::uint64_t>(frames) * buffer.mNumberChannels * sizeof(float);
}

/// The memory that a route reads.
MemoryRange rangeOf(const CycleRoute& route, std::int64_t frames) noexcept {
  return {reinterpret_cast<std::uintptr_t>(route.data),
          reinterpret_cast<std::uintptr_t>(route.data + (frames - 1) * route.stride + 1)};
}

/// Clears contiguous buffers at once: one long stretch is faster than several short ones.
void clearFromTo(const AudioBuffer& first, const AudioBuffer& last) noexcept {
  auto* const begin = static_cast<char*>(first.mData);
  const auto* const end = static_cast<const char*>(last.mData) + last.mDataByteSize;
  std::memset(begin, 0, static_cast<std::size_t>(end - begin));
}

MemoryRange rangeOf(const AudioBuffer& buffer) noexcept {
  const auto begin = reinterpret_cast<std::uintptr_t>(buffer.mData);
  return {begin, begin + buffer.mDataByteSize};
}

}  // namespace

void CycleMixer::mix(const AudioBufferList& input, AudioBufferList& output) noexcept {
  // Most devices have ascending buffers, and outputs apart from inputs. Only other devices pay for the checks
  // below.
  const bool isApart =
      in_.isAscending(frames_) && out_.isAscending(frames_) && !overlap(in_.span(), out_.span());
  if (isApart) {
    if (out_.isContiguous()) {
      mixContiguous(output.mBuffers);
    } else {
      mixAndClear(output);
    }
  } else {
    // Clear before any input is read: an unrouted output may share memory with an input, and then silences
    // it.
    clearUnrouted(output);
    if (routedCount_ == 0) return;
    if (!canReorder(input)) return mixInReferenceOrder();
    mixRouted();
  }
  if (routedCount_ > 0) mixInTiles(input);
}

/// Whether any channel of the buffer has a route. `first` is the number of its first channel.
inline bool CycleMixer::isRouted(const AudioBuffer& buffer, std::int64_t first) const noexcept {
  const std::int64_t end = std::min<std::int64_t>(first + buffer.mNumberChannels, out_.slotCount());
  for (std::int64_t c = first; c < end; ++c) {
    if (out_[c].firstRoute != kNoRoute) return true;
  }
  return false;
}

/// Fills contiguous one-channel buffers. Clears each run of unrouted buffers at once. Buffers that need tiles
/// go into routed_.
void CycleMixer::mixContiguous(AudioBuffer* buffers) noexcept {
  const ChannelSlot* const slots = &out_[0];
  const std::int64_t count = out_.channelCount();
  for (std::int64_t channel = 0;; ++channel) {
    const std::int64_t firstSilent = channel;
    while (channel < count && slots[channel].firstRoute == kNoRoute) ++channel;
    if (channel != firstSilent) clearFromTo(buffers[firstSilent], buffers[channel - 1]);
    if (channel == count) return;
    if (!mixPlanar(buffers[channel], slots[channel])) routed_[routedCount_++] = {&buffers[channel], channel};
  }
}

/// Fills or clears every output buffer. Buffers that need tiles go into routed_.
void CycleMixer::mixAndClear(AudioBufferList& output) noexcept {
  AudioBuffer* const end = output.mBuffers + output.mNumberBuffers;
  std::int64_t first = 0;
  for (AudioBuffer* buffer = output.mBuffers; buffer != end; first += buffer++->mNumberChannels) {
    if (!isUsable(*buffer)) continue;
    if (!isRouted(*buffer, first)) {
      clearFrom(*buffer, 0);
    } else if (!mixBuffer(*buffer, first)) {
      routed_[routedCount_++] = {buffer, first};
    }
  }
}

void CycleMixer::clearUnrouted(AudioBufferList& output) noexcept {
  AudioBuffer* const end = output.mBuffers + output.mNumberBuffers;
  std::int64_t first = 0;
  for (AudioBuffer* buffer = output.mBuffers; buffer != end; first += buffer++->mNumberChannels) {
    if (!isUsable(*buffer)) continue;
    if (isRouted(*buffer, first)) {
      routed_[routedCount_++] = {buffer, first};
    } else {
      clearFrom(*buffer, 0);
    }
  }
}

/// Whether mixing output by output gives the same samples as the reference order, route by route. It does if
/// every routed output holds the whole cycle and shares no memory with another routed output or with an input
/// that is read. Interleaved inputs have to hold the whole cycle too, because a channel's neighbours are read
/// with it.
bool CycleMixer::canReorder(const AudioBufferList& input) const noexcept {
  for (std::int32_t b = 0; b < routedCount_; ++b) {
    if (!holds(*routed_[b].buffer, frames_)) return false;
  }
  const AudioBuffer* const end = input.mBuffers + input.mNumberBuffers;
  for (const AudioBuffer* buffer = input.mBuffers; buffer != end; ++buffer) {
    if (buffer->mNumberChannels > 1 && buffer->mData != nullptr && !holds(*buffer, frames_)) return false;
  }
  return !sharesMemory();
}

bool CycleMixer::sharesMemory() const noexcept {
  MemoryRanges outputs;
  for (std::int32_t b = 0; b < routedCount_; ++b) outputs.add(rangeOf(*routed_[b].buffer));
  if (outputs.overlap()) return true;
  for (std::int32_t i = 0; i < routes_.count(); ++i) {
    if (routes_[i].data != nullptr && outputs.touch(rangeOf(routes_[i], frames_))) return true;
  }
  return false;
}

void CycleMixer::mixInReferenceOrder() noexcept {
  for (std::int32_t b = 0; b < routedCount_; ++b) clearFrom(*routed_[b].buffer, 0);
  mixReference(routes_, out_, frames_);
}

/// Mixes the buffers in routed_ and keeps there those that need tiles.
void CycleMixer::mixRouted() noexcept {
  RoutedBuffer* left = routed_;
  for (std::int32_t b = 0; b < routedCount_; ++b) {
    const RoutedBuffer routed = routed_[b];
    if (!mixBuffer(*routed.buffer, routed.first)) *left++ = routed;
  }
  routedCount_ = static_cast<std::int32_t>(left - routed_);
}

/// Fills a routed buffer. Returns false and writes nothing if the buffer needs tiles.
inline bool CycleMixer::mixBuffer(AudioBuffer& buffer, std::int64_t first) noexcept {
  return buffer.mNumberChannels == 1 ? mixPlanar(buffer, out_[first]) : mixInLanes(buffer, first);
}

/// Fills a routed one-channel buffer. Returns false and writes nothing if one of its sources is interleaved.
inline bool CycleMixer::mixPlanar(AudioBuffer& buffer, const ChannelSlot& target) noexcept {
  const CycleRoute& route = routes_[target.firstRoute];
  if (route.next != kNoRoute) return mixSum(buffer, target);
  if (route.stride != 1) return false;
  kernels_.scalePlanar(target.data, route.data, route.gain, frames_);
  clearFrom(buffer, frames_);
  return true;
}

bool CycleMixer::mixSum(AudioBuffer& buffer, const ChannelSlot& target) noexcept {
  MixSource sources[kMaxPatchEntries];
  std::int32_t count = 0;
  for (std::int32_t i = target.firstRoute; i != kNoRoute; i = routes_[i].next) {
    const CycleRoute& route = routes_[i];
    if (route.stride != 1) return false;
    sources[count++] = {route.data, kWholeChannel, route.gain};
  }
  kernels_.mixPlanar({target.data, kWholeChannel, sources, count}, frames_);
  clearFrom(buffer, frames_);
  return true;
}

// Not inlined: LanePlan and TilePlan are large, and cycles of planar devices should not touch that much
// stack.
[[gnu::noinline]] bool CycleMixer::mixInLanes(AudioBuffer& buffer, std::int64_t first) const noexcept {
  LanePlan lanes(routes_, out_, frames_, kernels_);
  return lanes.mix(buffer, first);
}

[[gnu::noinline]] void CycleMixer::mixInTiles(const AudioBufferList& input) noexcept {
  TilePlan tiles(routes_, in_, out_, frames_, kernels_);
  tiles.mix(input, routed_, routedCount_);
}

}  // namespace tolvane
