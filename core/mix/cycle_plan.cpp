#include "core/mix/cycle_plan.h"

#include <algorithm>
#include <cstring>

namespace tolvane {

namespace {

// Values of a slot's link besides the index of a route or a row.
constexpr std::int32_t kUnused = -1;
constexpr std::int32_t kWanted = -2;  // an interleaved input that a route reads and that has no row yet

/// Has the first lines of a channel fetched.
void prefetchLines(const float* data) noexcept {
  for (int line = 0; line < 4; ++line) __builtin_prefetch(data + std::ptrdiff_t{16} * line);
}

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

/// Whether a route goes into one of the buffer's channels, of which the first is number `first`.
bool isRouted(const AudioBuffer& buffer, std::int64_t first, const ChannelSlot* slots,
              std::int64_t slotCount) noexcept {
  if (buffer.mNumberChannels == 1) return first < slotCount && slots[first].link != kUnused;
  const std::int64_t end = std::min<std::int64_t>(first + buffer.mNumberChannels, slotCount);
  for (std::int64_t c = first; c < end; ++c) {
    if (slots[c].link != kUnused) return true;
  }
  return false;
}

MemoryRange rangeOf(const AudioBuffer& buffer) noexcept {
  const auto begin = reinterpret_cast<std::uintptr_t>(buffer.mData);
  return {begin, begin + buffer.mDataByteSize};
}

}  // namespace

CyclePlan::CyclePlan(const CycleRoutes& routes, ChannelTable& in, ChannelTable& out, std::int64_t frames,
                     const MixKernels& kernels) noexcept
    : routes_(routes),
      in_(in),
      out_(out),
      frames_(frames),
      kernels_(kernels),
      lanes_(routes, nextRoute_, in, out, frames, kernels) {
  // From the last route to the first, so that each output's chain comes out in route order.
  for (std::int32_t i = routes.count - 1; i >= 0; --i) {
    ChannelSlot& target = out[routes.entries[i].dst];
    nextRoute_[i] = target.link;
    target.link = i;
    inputSpan_ = spanOf(inputSpan_, rangeOf(in[routes.entries[i].src], frames));
  }
}

void CyclePlan::run(const AudioBufferList& input, AudioBufferList& output) noexcept {
  // Before any input is read: an unrouted output may share its memory with one, and silences it.
  clearUnrouted(output);
  if (routedCount_ == 0) return;
  if (!canReorder()) return mixInPlainOrder();
  mixOnes();
  std::int32_t left = 0;
  for (std::int32_t b = 0; b < routedCount_; ++b) {
    const RoutedBuffer routed = routed_[b];
    const bool isPlanar = routed.buffer->mNumberChannels == 1;
    const bool mixed =
        isPlanar ? mixPlanar(*routed.buffer, out_[routed.first]) : lanes_.mix(*routed.buffer, routed.first);
    if (!mixed) routed_[left++] = routed;
  }
  routedCount_ = left;
  if (routedCount_ > 0) mixInTiles(input);
}

/// Mixes the one-channel buffers that have one route, from a one-channel buffer, and leaves the others in
/// routed_: a loop of its own, as on many devices these are all.
void CyclePlan::mixOnes() noexcept {
  const ChannelSlot* const in = &in_[0];
  const ChannelSlot* const out = &out_[0];
  const PatchEntry* const entries = routes_.entries;
  const std::int64_t frames = frames_;
  const auto scale = kernels_.scalePlanar;
  RoutedBuffer* left = routed_;
  const RoutedBuffer* const end = routed_ + routedCount_;
  for (const RoutedBuffer* routed = routed_; routed != end; ++routed) {
    const ChannelSlot& target = out[routed->first];
    // A buffer of one channel is here because that channel has a route.
    const bool isOne = routed->buffer->mNumberChannels == 1 && nextRoute_[target.link] == kUnused;
    if (!isOne || in[entries[target.link].src].stride != 1) {
      *left++ = *routed;
      continue;
    }
    const PatchEntry& entry = entries[target.link];
    if (routed + 1 != end) {
      // The first lines of what comes next: the processor sees no pattern from one channel to another.
      const ChannelSlot& next = out[routed[1].first];
      prefetchLines(in[entries[std::max(next.link, 0)].src].data);
      prefetchLines(next.data);
    }
    scale(target.data, in[entry.src].data, entry.gain, frames);
    clearFrom(*routed->buffer, static_cast<std::uint64_t>(frames) * sizeof(float));
  }
  routedCount_ = static_cast<std::int32_t>(left - routed_);
}

/// Mixes a one-channel buffer; false, and nothing done, when it has an interleaved source.
bool CyclePlan::mixPlanar(AudioBuffer& buffer, const ChannelSlot& slot) noexcept {
  std::int32_t count = 0;
  for (std::int32_t route = slot.link; route != kUnused; route = nextRoute_[route]) {
    const PatchEntry& entry = routes_.entries[route];
    const ChannelSlot& source = in_[entry.src];
    if (source.stride != 1) return false;
    sources_[count++] = {source.data, kBlockFrames, entry.gain};
  }
  kernels_.mixPlanar(slot.data, sources_, count, frames_);
  clearFrom(buffer, bytesOf(buffer, frames_));
  return true;
}

void CyclePlan::mixInTiles(const AudioBufferList& input) noexcept {
  wantInputs();
  if (readsInterleaved_) planInputs(input);
  for (std::int32_t b = 0; b < routedCount_; ++b) {
    if (routed_[b].buffer->mNumberChannels == 1) {
      planPlanar(*routed_[b].buffer, out_[routed_[b].first]);
    } else {
      planInterleaved(*routed_[b].buffer, routed_[b].first);
    }
  }
  mixBlocks();
  mixTail();
}

/// Marks the interleaved inputs that the routes into the buffers in routed_ read.
void CyclePlan::wantInputs() noexcept {
  for (std::int32_t b = 0; b < routedCount_; ++b) {
    const std::int64_t first = routed_[b].first;
    const std::int64_t end =
        std::min<std::int64_t>(first + routed_[b].buffer->mNumberChannels, out_.slotCount());
    for (std::int64_t c = first; c < end; ++c) {
      for (std::int32_t route = out_[c].link; route != kUnused; route = nextRoute_[route]) {
        ChannelSlot& source = in_[routes_.entries[route].src];
        if (source.stride == 1) continue;
        source.link = kWanted;
        readsInterleaved_ = true;
      }
    }
  }
}

void CyclePlan::clearUnrouted(AudioBufferList& output) noexcept {
  // What the loop keeps is in locals, as every cycle passes here for every buffer of the device.
  const AudioBuffer* const end = output.mBuffers + output.mNumberBuffers;
  const std::int64_t frames = frames_;
  const ChannelSlot* const slots = &out_[0];
  const std::int64_t slotCount = out_.slotCount();
  RoutedBuffer* routed = routed_;
  MemoryRange span = kNoMemory;
  bool inOrder = true;
  bool longEnough = true;
  // Buffers mostly lie one behind the other, and long stretches are cleared faster than short ones.
  char* toClear = nullptr;
  std::size_t bytesToClear = 0;
  std::int64_t first = 0;
  for (AudioBuffer* buffer = output.mBuffers; buffer != end; first += buffer++->mNumberChannels) {
    if (!isUsable(*buffer)) continue;
    if (!isRouted(*buffer, first, slots, slotCount)) {
      auto* const data = static_cast<char*>(buffer->mData);
      if (data != toClear + bytesToClear) {
        if (bytesToClear != 0) std::memset(toClear, 0, bytesToClear);
        toClear = data;
        bytesToClear = 0;
      }
      bytesToClear += buffer->mDataByteSize;
      continue;
    }
    const MemoryRange range = rangeOf(*buffer);
    inOrder &= span.end <= range.begin;
    longEnough &= buffer->mDataByteSize >= bytesOf(*buffer, frames);
    span = spanOf(span, range);
    *routed++ = {buffer, first};
  }
  if (bytesToClear != 0) std::memset(toClear, 0, bytesToClear);
  routedCount_ = static_cast<std::int32_t>(routed - routed_);
  outputSpan_ = span;
  inOrder_ = inOrder;
  longEnough_ = longEnough;
}

/// Whether filling output by output gives what the plain order gives: every routed output holds the whole
/// cycle and shares no memory with an input that is read or with another one.
bool CyclePlan::canReorder() const noexcept {
  // Most devices lay their buffers out in order, outputs apart from inputs; only others pay for the pairs.
  if (!longEnough_) return false;
  return (inOrder_ && !overlap(inputSpan_, outputSpan_)) || !sharesMemory();
}

bool CyclePlan::sharesMemory() const noexcept {
  MemoryRanges outputs;
  for (std::int32_t b = 0; b < routedCount_; ++b) outputs.add(rangeOf(*routed_[b].buffer));
  if (!inOrder_ && outputs.overlap()) return true;
  for (std::int32_t i = 0; i < routes_.count; ++i) {
    if (outputs.touch(rangeOf(in_[routes_.entries[i].src], frames_))) return true;
  }
  return false;
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

/// Appends the sources of the chain that starts at a route.
void CyclePlan::addSources(std::int32_t route) noexcept {
  for (; route != kUnused; route = nextRoute_[route]) {
    const PatchEntry& entry = routes_.entries[route];
    const ChannelSlot& slot = in_[entry.src];
    const bool inRow = slot.stride > 1;
    sources_[sourceCount_] = {inRow ? inputRows_[slot.link] : slot.data, inRow ? 0 : kBlockFrames,
                              entry.gain};
    origins_[sourceCount_++] = slot;
  }
}

void CyclePlan::planPlanar(AudioBuffer& buffer, ChannelSlot& slot) noexcept {
  const std::int32_t firstSource = sourceCount_;
  addSources(slot.link);
  tiled_[tiledCount_++] = {slot.data, &sources_[firstSource], sourceCount_ - firstSource};
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
