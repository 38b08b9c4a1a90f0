#include "core/mix/cycle_plan.h"

#include <algorithm>
#include <cstring>

#include "core/mix/overlap.h"

namespace tolvane {

namespace {

// Values of a slot's link besides the index of a route or a row.
constexpr std::int32_t kUnused = -1;
constexpr std::int32_t kWanted = -2;  // an interleaved input that a route reads and that has no row yet

/// Routed channels from which a group is transposed as a whole; fewer are picked one by one.
constexpr std::int32_t worthwhile(std::int32_t width) noexcept {
  return width == 4 ? 2 : 3;
}

bool isUsable(const AudioBuffer& buffer) noexcept {
  return buffer.mNumberChannels != 0 && buffer.mData != nullptr;
}

std::uint64_t bytesOf(const AudioBuffer& buffer, std::int64_t frames) noexcept {
  return static_cast<std::uint64_t>(frames) * buffer.mNumberChannels * sizeof(float);
}

/// Clears what lies behind the first `bytes` bytes.
void clearFrom(AudioBuffer& buffer, std::uint64_t bytes) noexcept {
  if (bytes < buffer.mDataByteSize) {
    std::memset(static_cast<char*>(buffer.mData) + bytes, 0, buffer.mDataByteSize - bytes);
  }
}

/// Calls `visit(channel, width)` for groups that cover a buffer's channels, the widest first. The last group
/// may overlap the one before it; buffers of two or three channels come channel by channel.
template <class Visit>
void forEachGroup(std::int64_t channels, std::int32_t maxWidth, Visit visit) noexcept {
  for (std::int64_t c = 0; c < channels;) {
    std::int32_t width = maxWidth;
    while (width > 4 && channels - c < width) width /= 2;
    if (channels < 4) width = 1;
    c = std::min(c, channels - width);
    visit(c, width);
    c += width;
  }
}

MemoryRange rangeOf(const ChannelSlot& slot, std::int64_t frames) noexcept {
  return {reinterpret_cast<std::uintptr_t>(slot.data),
          reinterpret_cast<std::uintptr_t>(slot.data + (frames - 1) * slot.stride + 1)};
}

}  // namespace

CyclePlan::CyclePlan(const CycleRoutes& routes, ChannelTable& in, ChannelTable& out, std::int64_t frames,
                     const MixKernels& kernels) noexcept
    : routes_(routes), in_(in), out_(out), frames_(frames), kernels_(kernels) {
  // From the last route to the first, so that each output's chain comes out in route order.
  for (std::int32_t i = routes.count - 1; i >= 0; --i) {
    ChannelSlot& target = out[routes.entries[i].dst];
    nextRoute_[i] = target.link;
    target.link = i;
    ChannelSlot& source = in[routes.entries[i].src];
    if (source.stride > 1) {
      source.link = kWanted;
      readsInterleaved_ = true;
    }
  }
}

bool CyclePlan::isRouted(std::int64_t first, const AudioBuffer& buffer) const noexcept {
  const std::int64_t end = std::min<std::int64_t>(first + buffer.mNumberChannels, out_.slotCount());
  for (std::int64_t c = first; c < end; ++c) {
    if (out_[c].link != kUnused) return true;
  }
  return false;
}

void CyclePlan::run(const AudioBufferList& input, AudioBufferList& output) noexcept {
  // Before any input is read: an unrouted output may share its memory with one, and silences it.
  clearUnrouted(output);
  if (routedCount_ == 0) return;
  if (!canReorder()) return mixInPlainOrder();
  if (readsInterleaved_) planInputs(input);
  for (std::int32_t b = 0; b < routedCount_; ++b) {
    if (routed_[b].buffer->mNumberChannels == 1) {
      planPlanar(*routed_[b].buffer, out_[routed_[b].first]);
    } else {
      planInterleaved(*routed_[b].buffer, routed_[b].first);
    }
  }
  for (std::int32_t t = 0; t < planarCount_; ++t) {
    kernels_.mixPlanar(planar_[t].data, planar_[t].sources, planar_[t].sourceCount, frames_);
  }
  if (tiledCount_ + spreadCount_ > 0) {
    mixBlocks();
    mixTail();
  }
}

void CyclePlan::clearUnrouted(AudioBufferList& output) noexcept {
  AudioBuffer* const buffers = output.mBuffers;
  std::int64_t first = 0;
  for (UInt32 b = 0; b < output.mNumberBuffers; ++b) {
    AudioBuffer& buffer = buffers[b];
    if (isUsable(buffer)) {
      if (isRouted(first, buffer)) {
        routed_[routedCount_++] = {&buffer, first};
      } else {
        std::memset(buffer.mData, 0, buffer.mDataByteSize);
      }
    }
    first += buffer.mNumberChannels;
  }
}

/// Whether filling output by output gives what the plain order gives: every routed output holds the whole
/// cycle and shares no memory with an input that is read or with another one.
bool CyclePlan::canReorder() const noexcept {
  MemoryRanges outputs;
  for (std::int32_t b = 0; b < routedCount_; ++b) {
    const AudioBuffer& buffer = *routed_[b].buffer;
    if (buffer.mDataByteSize < bytesOf(buffer, frames_)) return false;
    const auto begin = reinterpret_cast<std::uintptr_t>(buffer.mData);
    outputs.add({begin, begin + buffer.mDataByteSize});
  }
  if (outputs.overlap()) return false;
  MemoryRange inputs = {UINTPTR_MAX, 0};
  for (std::int32_t i = 0; i < routes_.count; ++i) {
    const MemoryRange input = rangeOf(in_[routes_.entries[i].src], frames_);
    inputs = {std::min(inputs.begin, input.begin), std::max(inputs.end, input.end)};
  }
  if (inputs.end <= outputs.span().begin || outputs.span().end <= inputs.begin) return true;
  for (std::int32_t i = 0; i < routes_.count; ++i) {
    if (outputs.touch(rangeOf(in_[routes_.entries[i].src], frames_))) return false;
  }
  return true;
}

void CyclePlan::mixInPlainOrder() noexcept {
  for (std::int32_t b = 0; b < routedCount_; ++b) clearFrom(*routed_[b].buffer, 0);
  mixPlainly(routes_, in_, out_, frames_);
}

void CyclePlan::planInputs(const AudioBufferList& input) noexcept {
  const AudioBuffer* const buffers = input.mBuffers;
  std::int64_t first = 0;
  for (UInt32 b = 0; b < input.mNumberBuffers; first += buffers[b++].mNumberChannels) {
    const AudioBuffer& buffer = buffers[b];
    if (buffer.mNumberChannels < 2 || buffer.mData == nullptr) continue;
    const std::int64_t channels = std::min<std::int64_t>(buffer.mNumberChannels, in_.slotCount() - first);
    if (channels <= 0) break;
    forEachGroup(channels, kernels_.maxWidth,
                 [&](std::int64_t c, std::int32_t width) { gatherGroup(first + c, width); });
  }
}

std::int32_t CyclePlan::wantedIn(std::int64_t first, std::int32_t width) const noexcept {
  std::int32_t wanted = 0;
  for (std::int64_t c = first; c < first + width; ++c) wanted += in_[c].link == kWanted ? 1 : 0;
  return wanted;
}

void CyclePlan::gatherGroup(std::int64_t first, std::int32_t width) noexcept {
  const std::int32_t wanted = wantedIn(first, width);
  if (wanted == 0) return;
  const bool together = width > 1 && wanted >= worthwhile(width);
  if (together) {
    gathers_[gatherCount_++] = {in_[first].data, in_[first].stride, width, inputRows_[inputRowCount_]};
  }
  for (std::int64_t c = first; c < first + width; ++c) {
    ChannelSlot& slot = in_[c];
    if (slot.link == kWanted) {
      slot.link = inputRowCount_;
      if (!together) gathers_[gatherCount_++] = {slot.data, slot.stride, 1, inputRows_[inputRowCount_++]};
    }
    if (together) ++inputRowCount_;
  }
}

/// Appends the sources of the chain that starts at a route; whether all of them are planar.
bool CyclePlan::addSources(std::int32_t route) noexcept {
  bool planar = true;
  for (; route != kUnused; route = nextRoute_[route]) {
    const PatchEntry& entry = routes_.entries[route];
    const ChannelSlot& slot = in_[entry.src];
    const bool inRow = slot.stride > 1;
    planar = planar && !inRow;
    sources_[sourceCount_] = {inRow ? inputRows_[slot.link] : slot.data, inRow ? 0 : kBlockFrames,
                              entry.gain};
    origins_[sourceCount_++] = slot;
  }
  return planar;
}

void CyclePlan::planPlanar(AudioBuffer& buffer, ChannelSlot& slot) noexcept {
  const std::int32_t firstSource = sourceCount_;
  const bool planar = addSources(slot.link);
  MixTarget& target = planar ? planar_[planarCount_++] : tiled_[tiledCount_++];
  target = {slot.data, &sources_[firstSource], sourceCount_ - firstSource};
  clearFrom(buffer, bytesOf(buffer, frames_));
}

void CyclePlan::planInterleaved(AudioBuffer& buffer, std::int64_t first) noexcept {
  const std::int64_t end = std::min<std::int64_t>(first + buffer.mNumberChannels, out_.slotCount());
  for (std::int64_t c = first; c < end; ++c) {
    if (out_[c].link == kUnused) continue;
    const std::int32_t firstSource = sourceCount_;
    addSources(out_[c].link);
    out_[c].link = spreadCount_;
    spreadOutputs_[spreadCount_] = out_[c];
    spread_[spreadCount_++] = {nullptr, &sources_[firstSource], sourceCount_ - firstSource};
  }
  bool all = true;
  forEachGroup(buffer.mNumberChannels, kernels_.maxWidth, [&](std::int64_t c, std::int32_t width) {
    all = scatterGroup(buffer, first, c, width) && all;
  });
  clearFrom(buffer, all ? bytesOf(buffer, frames_ / kBlockFrames * kBlockFrames) : 0);
}

/// Plans the writing of a group of output channels; false, and nothing planned, when none of them is routed.
bool CyclePlan::scatterGroup(const AudioBuffer& buffer, std::int64_t first, std::int64_t channel,
                             std::int32_t width) noexcept {
  ScatterGroup& group = scatters_[scatterCount_];
  group.data = static_cast<float*>(buffer.mData) + channel;
  group.stride = buffer.mNumberChannels;
  group.width = width;
  bool routed = false;
  for (std::int32_t i = 0; i < width; ++i) {
    const std::int64_t c = first + channel + i;
    const std::int32_t target = c < out_.slotCount() ? out_[c].link : kUnused;
    group.targets[i] = target == kUnused ? nullptr : &spread_[target];
    routed = routed || target != kUnused;
  }
  scatterCount_ += routed ? 1 : 0;
  return routed;
}

void CyclePlan::mixBlocks() noexcept {
  for (std::int64_t block = 0; block < frames_ / kBlockFrames; ++block) {
    kernels_.gatherBlock(gathers_, gatherCount_, block);
    kernels_.mixBlock(tiled_, tiledCount_, block);
    kernels_.scatterBlock(scatters_, scatterCount_, block);
  }
}

/// The frames after the last whole block, sample by sample.
void CyclePlan::mixTail() noexcept {
  for (std::int32_t t = 0; t < tiledCount_; ++t) mixTailOf(tiled_[t], {tiled_[t].data, 1, kUnused});
  for (std::int32_t t = 0; t < spreadCount_; ++t) mixTailOf(spread_[t], spreadOutputs_[t]);
}

void CyclePlan::mixTailOf(const MixTarget& target, const ChannelSlot& output) noexcept {
  const std::ptrdiff_t first = target.sources - sources_;
  for (std::int64_t f = frames_ / kBlockFrames * kBlockFrames; f < frames_; ++f) {
    float sum = 0.0F;
    for (std::ptrdiff_t s = first; s < first + target.sourceCount; ++s) {
      sum += origins_[s].data[f * origins_[s].stride] * sources_[s].gain;
    }
    output.data[f * output.stride] = sum;
  }
}

}  // namespace tolvane
