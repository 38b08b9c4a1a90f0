#include "core/routing/mix/tile_plan.h"

#include <algorithm>
#include <iterator>

#include "core/routing/mix/clear.h"
#include "core/routing/mix/reference_mixer.h"

namespace tolvane {

namespace {

/// Calls `visit(channel, width)` for groups of channels that together are the first `channels` of a buffer:
/// all channels of a buffer of two or three, else four each, of which the last group may overlap the previous
/// one. If fewer than four channels of a wider buffer are visited, each is a group.
template <class Visit>
void forEachGroup(std::int64_t channels, std::int64_t stride, Visit visit) noexcept {
  if (channels < 4 && channels == stride) return visit(0, static_cast<std::int32_t>(channels));
  if (channels < 4) {
    for (std::int64_t c = 0; c < channels; ++c) visit(c, 1);
    return;
  }
  for (std::int64_t c = 0; c < channels; c += 4) visit(std::min(c, channels - 4), 4);
}

}  // namespace

void TilePlan::mix(const AudioBufferList& input, const RoutedBuffer* routed, std::int32_t count) noexcept {
  const RoutedBuffer* const end = routed + count;
  if (kernels_.mixTiles == nullptr || frames_ < kernels_.vectorFloats) {
    for (; routed != end; ++routed) mixBySamples(*routed);
    return;
  }
  std::fill(std::begin(silence_), std::end(silence_), 0.0F);
  planInputs(input);
  for (; routed != end; ++routed) {
    if (routed->buffer->mNumberChannels == 1) {
      planPlanar(*routed);
    } else {
      planInterleaved(*routed);
    }
  }
  kernels_.mixTiles({gathers_, gatherCount_, targets_, targetCount_, scatters_, scatterCount_}, frames_);
}

/// For cycles that are shorter than a vector.
void TilePlan::mixBySamples(const RoutedBuffer& routed) const noexcept {
  clearFrom(*routed.buffer, 0);
  const std::int64_t end =
      std::min<std::int64_t>(routed.first + routed.buffer->mNumberChannels, out_.slotCount());
  for (std::int64_t c = routed.first; c < end; ++c) {
    const ChannelSlot& target = out_[c];
    for (std::int32_t i = target.firstRoute; i != kNoRoute; i = routes_[i].next)
      addRoute(routes_[i], target, frames_);
  }
}

void TilePlan::planInputs(const AudioBufferList& input) noexcept {
  for (std::int32_t i = routes_.count() - 1; i >= 0; --i) {
    if (routes_[i].data != nullptr) in_[routes_[i].src].firstRoute = i;
  }
  const AudioBuffer* const end = input.mBuffers + input.mNumberBuffers;
  std::int64_t first = 0;
  for (const AudioBuffer* buffer = input.mBuffers; buffer != end; first += buffer++->mNumberChannels) {
    if (buffer->mNumberChannels < 2 || buffer->mData == nullptr) continue;
    const std::int64_t channels = std::min<std::int64_t>(buffer->mNumberChannels, in_.slotCount() - first);
    if (channels <= 0) break;
    forEachGroup(channels, buffer->mNumberChannels,
                 [&](std::int64_t c, std::int32_t width) { gather(first + c, width); });
  }
}

/// Plans rows for a group of input channels: for all if routes read at least two of them, else for the one
/// that is read.
void TilePlan::gather(std::int64_t first, std::int32_t width) noexcept {
  std::int32_t read = 0;
  for (std::int64_t c = first; c < first + width; ++c) read += in_[c].firstRoute != kNoRoute ? 1 : 0;
  if (read < 2) return read == 0 ? void() : gatherOnes(first, width);
  gathers_[gatherCount_++] = {in_[first].data, in_[first].stride, width, inputRows_[inputRowCount_]};
  for (std::int64_t c = first; c < first + width; ++c) {
    if (in_[c].firstRoute != kNoRoute) inputRowOf_[in_[c].firstRoute] = inputRows_[inputRowCount_];
    ++inputRowCount_;
  }
}

void TilePlan::gatherOnes(std::int64_t first, std::int32_t width) noexcept {
  for (std::int64_t c = first; c < first + width; ++c) {
    if (in_[c].firstRoute == kNoRoute) continue;
    gathers_[gatherCount_++] = {in_[c].data, in_[c].stride, 1, inputRows_[inputRowCount_]};
    inputRowOf_[in_[c].firstRoute] = inputRows_[inputRowCount_++];
  }
}

void TilePlan::planPlanar(const RoutedBuffer& routed) noexcept {
  const ChannelSlot& target = out_[routed.first];
  addTarget(target.data, kWholeChannel, target.firstRoute);
  clearFrom(*routed.buffer, frames_);
}

void TilePlan::planInterleaved(const RoutedBuffer& routed) noexcept {
  const std::int64_t channels = routed.buffer->mNumberChannels;
  const std::int64_t end = std::min(routed.first + channels, out_.slotCount());
  for (std::int64_t c = routed.first; c < end; ++c) {
    if (out_[c].firstRoute == kNoRoute) continue;
    float* const row = outputRows_[outputRowCount_++];
    addTarget(row, kTileRow, out_[c].firstRoute);
    outputRowOf_[out_[c].firstRoute] = row;
  }
  bool all = true;
  forEachGroup(channels, channels,
               [&](std::int64_t c, std::int32_t width) { all = scatter(routed, c, width) && all; });
  clearFrom(*routed.buffer, all ? frames_ : 0);
}

/// Adds a target that sums the list of routes that starts at `route`.
void TilePlan::addTarget(float* data, std::int64_t frameMask, std::int32_t route) noexcept {
  MixSource* const sources = &sources_[sourceCount_];
  MixSource* source = sources;
  for (; route != kNoRoute; route = routes_[route].next) {
    const CycleRoute& entry = routes_[route];
    const bool isPlanar = entry.stride == 1;
    const float* const from = isPlanar ? entry.data : inputRowOf_[in_[entry.src].firstRoute];
    *source++ = {from, isPlanar ? kWholeChannel : kTileRow, entry.gain};
  }
  const auto count = static_cast<std::int32_t>(source - sources);
  targets_[targetCount_++] = {data, frameMask, sources, count};
  sourceCount_ += count;
}

/// Plans how to write a group of output channels. Returns false and plans nothing if none of them has a
/// route.
bool TilePlan::scatter(const RoutedBuffer& routed, std::int64_t channel, std::int32_t width) noexcept {
  ScatterGroup& group = scatters_[scatterCount_];
  bool any = false;
  for (std::int32_t i = 0; i < width; ++i) {
    const std::int64_t c = routed.first + channel + i;
    const std::int32_t route = c < out_.slotCount() ? out_[c].firstRoute : kNoRoute;
    group.rows[i] = route == kNoRoute ? silence_ : outputRowOf_[route];
    any = any || route != kNoRoute;
  }
  if (!any) return false;
  group.data = static_cast<float*>(routed.buffer->mData) + channel;
  group.stride = routed.buffer->mNumberChannels;
  group.width = width;
  ++scatterCount_;
  return true;
}

}  // namespace tolvane
