#include "core/routing/mix/tile_plan.h"

#include <algorithm>
#include <iterator>

#include "core/routing/mix/clear.h"
#include "core/routing/mix/reference_mixer.h"

namespace tolvane {

namespace {

// The link of an input that a route reads, until it has a row.
constexpr std::int32_t kRead = -2;

/// Calls `visit(channel, width)` for groups of four channels that cover the buffer; the last group may
/// overlap the previous one. If the buffer has fewer than four channels, each channel is a group.
template <class Visit>
void forEachGroup(std::int64_t channels, Visit visit) noexcept {
  if (channels < 4) {
    for (std::int64_t c = 0; c < channels; ++c) visit(c, 1);
    return;
  }
  for (std::int64_t c = 0; c < channels; c += 4) visit(std::min(c, channels - 4), 4);
}

}  // namespace

void TilePlan::mix(const AudioBufferList& input, const RoutedBuffer* routed, std::int32_t count) noexcept {
  const RoutedBuffer* const end = routed + count;
  if (frames_ < kernels_.vectorFloats) {
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
    for (std::int32_t i = target.link; i != kNoRoute; i = routes_[i].next)
      addRoute(routes_[i], target, frames_);
  }
}

void TilePlan::planInputs(const AudioBufferList& input) noexcept {
  for (std::int32_t i = 0; i < routes_.count(); ++i) {
    if (routes_[i].data != nullptr) in_[routes_[i].src].link = kRead;
  }
  const AudioBuffer* const end = input.mBuffers + input.mNumberBuffers;
  std::int64_t first = 0;
  for (const AudioBuffer* buffer = input.mBuffers; buffer != end; first += buffer++->mNumberChannels) {
    if (buffer->mNumberChannels < 2 || buffer->mData == nullptr) continue;
    const std::int64_t channels = std::min<std::int64_t>(buffer->mNumberChannels, in_.slotCount() - first);
    if (channels <= 0) break;
    forEachGroup(channels, [&](std::int64_t c, std::int32_t width) { gather(first + c, width); });
  }
}

/// Plans rows for a group of input channels: for all if routes read at least two of them, else for the one
/// that is read.
void TilePlan::gather(std::int64_t first, std::int32_t width) noexcept {
  std::int32_t read = 0;
  for (std::int64_t c = first; c < first + width; ++c) read += in_[c].link == kRead ? 1 : 0;
  if (read < 2) return read == 0 ? void() : gatherOnes(first, width);
  gathers_[gatherCount_++] = {in_[first].data, in_[first].stride, width, inputRows_[inputRowCount_]};
  for (std::int64_t c = first; c < first + width; ++c) in_[c].link = inputRowCount_++;
}

void TilePlan::gatherOnes(std::int64_t first, std::int32_t width) noexcept {
  for (std::int64_t c = first; c < first + width; ++c) {
    if (in_[c].link != kRead) continue;
    gathers_[gatherCount_++] = {in_[c].data, in_[c].stride, 1, inputRows_[inputRowCount_]};
    in_[c].link = inputRowCount_++;
  }
}

void TilePlan::planPlanar(const RoutedBuffer& routed) noexcept {
  const ChannelSlot& target = out_[routed.first];
  addTarget(target.data, kWholeChannel, target.link);
  clearFrom(*routed.buffer, frames_);
}

void TilePlan::planInterleaved(const RoutedBuffer& routed) noexcept {
  const std::int64_t channels = routed.buffer->mNumberChannels;
  const std::int64_t end = std::min(routed.first + channels, out_.slotCount());
  for (std::int64_t c = routed.first; c < end; ++c) {
    if (out_[c].link == kNoRoute) continue;
    addTarget(outputRows_[outputRowCount_], kTileRow, out_[c].link);
    out_[c].link = outputRowCount_++;
  }
  bool all = true;
  forEachGroup(channels, [&](std::int64_t c, std::int32_t width) { all = scatter(routed, c, width) && all; });
  clearFrom(*routed.buffer, all ? frames_ : 0);
}

/// Adds a target that sums the list of routes that starts at `route`.
void TilePlan::addTarget(float* data, std::int64_t frameMask, std::int32_t route) noexcept {
  MixSource* const sources = &sources_[sourceCount_];
  MixSource* source = sources;
  for (; route != kNoRoute; route = routes_[route].next) {
    const CycleRoute& entry = routes_[route];
    const bool isPlanar = entry.stride == 1;
    const float* const from = isPlanar ? entry.data : inputRows_[in_[entry.src].link];
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
    const std::int32_t row = c < out_.slotCount() ? out_[c].link : kNoRoute;
    group.rows[i] = row == kNoRoute ? silence_ : outputRows_[row];
    any = any || row != kNoRoute;
  }
  if (!any) return false;
  group.data = static_cast<float*>(routed.buffer->mData) + channel;
  group.stride = routed.buffer->mNumberChannels;
  group.width = width;
  ++scatterCount_;
  return true;
}

}  // namespace tolvane
