#include "random_cycle.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <limits>

#include "reference_cycle.h"

namespace tolvane::test {

namespace {

constexpr std::size_t kMostWidth = 40;
constexpr std::int64_t kMostSlots = 600;  // limits a context's counts, which set the size of the tables

std::int64_t channelsOf(const std::vector<RandomBuffer>& list) {
  std::int64_t count = 0;
  for (const RandomBuffer& buffer : list) count += buffer.channels;
  return count;
}

std::size_t floatsOf(const RandomBuffer& buffer) {
  return (buffer.bytes + sizeof(float) - 1) / sizeof(float);
}

}  // namespace

RandomCycle RandomCycleMaker::make() {
  // Smaller with every attempt that needs too much.
  for (std::size_t most = mostFloats_;; most /= 2) {
    RandomCycle cycle = tryToMake(most);
    if (ReferenceCycle(cycle).floats() <= mostFloats_) return cycle;
  }
}

RandomCycle RandomCycleMaker::tryToMake(std::size_t mostFloats) {
  frames_ = std::min(someFrames(), std::max<std::size_t>(mostFloats, 1));
  channelsLeft_ = mostFloats / frames_;
  ascending_ = oneIn(2);
  RandomCycle cycle;
  cycle.inputs = list();
  cycle.outputs = list();
  setBytes(cycle);
  place(cycle);
  cycle.hasInputList = !oneIn(100);
  cycle.hasOutputList = !oneIn(100);
  cycle.context = initialContext(contextCount(cycle.inputs), contextCount(cycle.outputs));
  makeRoutes(cycle);
  return cycle;
}

// Mostly counts around the sizes of the vectors, the tiles and the blocks that the loops use.
std::size_t RandomCycleMaker::someFrames() {
  if (oneIn(40)) return 1000 + upTo(100);
  if (oneIn(4)) return 1 + upTo(199);
  return oneOf<std::size_t>({1, 2, 3, 4, 5, 7, 8, 9, 12, 15, 16, 17, 31, 32, 33, 48, 60, 63, 64, 65, 128});
}

UInt32 RandomCycleMaker::width() {
  if (oneIn(300)) return oneOf<UInt32>({300, 5000, 2147483647});
  if (oneIn(3)) return 1;
  return static_cast<UInt32>(1 + upTo(kMostWidth - 1));
}

std::vector<RandomBuffer> RandomCycleMaker::list() {
  std::vector<RandomBuffer> result;
  if (oneIn(60)) return result;
  const std::size_t kind = upTo(3);
  const std::size_t count = kind == 0 ? 1 : 1 + upTo(kind == 1 ? 40 : 6);
  for (std::size_t i = 0; i < count; ++i) {
    // Devices are planar, interleaved or both.
    const UInt32 channels = kind == 1 ? 1 : width();
    // Those with many channels have few bytes.
    if (channels <= kMostWidth && channels > channelsLeft_) break;
    if (channels <= kMostWidth) channelsLeft_ -= channels;
    result.push_back({channels, 0, std::size_t{0}});
  }
  takeAway(result);
  return result;
}

/// Takes data or channels away from some buffers. One without data may have any number of channels.
void RandomCycleMaker::takeAway(std::vector<RandomBuffer>& list) {
  if (oneIn(2)) return;
  const std::size_t rarity = 1 + upTo(9);
  for (RandomBuffer& buffer : list) {
    if (!oneIn(rarity)) continue;
    if (oneIn(4)) buffer.channels = 0;
    if (oneIn(4)) continue;
    buffer.place.reset();
    if (oneIn(8)) buffer.channels = oneOf<UInt32>({100, 1000, 2147483647, 2147483648, 4294967295});
  }
}

void RandomCycleMaker::setBytes(RandomCycle& cycle) {
  for (RandomBuffer& buffer : cycle.inputs) buffer.bytes = bytesOf(buffer);
  for (RandomBuffer& buffer : cycle.outputs) {
    buffer.bytes = &buffer == &cycle.outputs.front() ? firstOutputBytes(buffer) : bytesOf(buffer);
  }
}

/// The first output's bytes decide the frames of the cycle, with or without data.
UInt32 RandomCycleMaker::firstOutputBytes(const RandomBuffer& buffer) {
  if (oneIn(40)) return 0;
  const std::uint64_t frameBytes = std::uint64_t{buffer.channels} * sizeof(float);
  if (frameBytes == 0 || frameBytes > 100'000) return static_cast<UInt32>(upTo(5000));
  if (oneIn(40)) return static_cast<UInt32>(upTo(frameBytes - 1));
  const std::uint64_t whole = frames_ * frameBytes;
  return static_cast<UInt32>(ascending_ || oneIn(2) ? whole : whole + upTo(frameBytes - 1));
}

UInt32 RandomCycleMaker::bytesOf(const RandomBuffer& buffer) {
  if (!buffer.place || buffer.channels == 0) return bytesOfNothing();
  const std::size_t whole = frames_ * buffer.channels * sizeof(float);
  if (buffer.channels > 1000) return static_cast<UInt32>(upTo(5000));
  if (ascending_) return static_cast<UInt32>(whole);
  switch (upTo(5)) {
    case 0:
      return static_cast<UInt32>(whole + upTo(43));
    case 1:
      return static_cast<UInt32>(whole - std::min(whole, upTo(43)));
    case 2:
      return static_cast<UInt32>(upTo(2 * whole));
    case 3:
      return oneIn(3) ? 0 : static_cast<UInt32>(whole);
    default:
      return static_cast<UInt32>(whole);
  }
}

/// The bytes of a buffer without data or channels: any number will do.
UInt32 RandomCycleMaker::bytesOfNothing() {
  if (oneIn(2)) return static_cast<UInt32>(frames_ * sizeof(float));
  return oneIn(4) ? static_cast<UInt32>(choices_.bits()) : static_cast<UInt32>(upTo(600));
}

void RandomCycleMaker::place(RandomCycle& cycle) {
  std::vector<RandomBuffer*> buffers;
  for (RandomBuffer& buffer : cycle.inputs) buffers.push_back(&buffer);
  for (RandomBuffer& buffer : cycle.outputs) buffers.push_back(&buffer);
  if (oneIn(2)) {
    const auto inputs = static_cast<std::ptrdiff_t>(cycle.inputs.size());
    std::rotate(buffers.begin(), buffers.begin() + inputs, buffers.end());
  }
  if (oneIn(4)) {
    for (std::size_t i = 1; i < buffers.size(); ++i) std::swap(buffers[i], buffers[upTo(i)]);
  }
  const std::size_t end = placeInOrder(buffers, oneIn(2) ? 0 : 20);
  if (oneIn(3)) moveSome(buffers);
  if (oneIn(6)) {
    for (RandomBuffer* buffer : buffers) {
      if (buffer->place) buffer->place = upTo(end);
    }
  }
}

/// Places the buffers one after the other, with at most `mostBetween` floats between two. Returns the end of
/// the last one.
std::size_t RandomCycleMaker::placeInOrder(const std::vector<RandomBuffer*>& buffers,
                                           std::size_t mostBetween) {
  std::size_t end = upTo(17);
  for (RandomBuffer* buffer : buffers) {
    if (!buffer->place) continue;
    buffer->place = end;
    if (buffer->channels != 0) end += floatsOf(*buffer) + upTo(mostBetween);
  }
  return end;
}

/// Moves some buffers onto others, or to a place slightly beside them.
void RandomCycleMaker::moveSome(const std::vector<RandomBuffer*>& buffers) {
  if (buffers.empty()) return;
  const std::size_t most = oneIn(4) ? buffers.size() : 3;
  for (std::size_t i = 0; i < most; ++i) {
    RandomBuffer& moved = *buffers[upTo(buffers.size() - 1)];
    const RandomBuffer& other = *buffers[upTo(buffers.size() - 1)];
    if (!moved.place || !other.place) continue;
    const std::size_t at = *other.place + (oneIn(2) ? 0 : floatsOf(other) % 100'000);
    moved.place = oneIn(2) ? at : at + upTo(2) - std::min<std::size_t>(at, 1);
  }
}

/// A count above, at or below the channels of the list; now and then 0 or less.
std::int32_t RandomCycleMaker::contextCount(const std::vector<RandomBuffer>& list) {
  const auto all = static_cast<std::int32_t>(std::clamp<std::int64_t>(channelsOf(list), 1, kMostSlots));
  switch (upTo(8)) {
    case 0:
      return all + 1 + static_cast<std::int32_t>(upTo(20));
    case 1:
      return 1 + static_cast<std::int32_t>(upTo(static_cast<std::size_t>(all - 1)));
    case 2:
      return std::max(1, all - 1);
    case 3:
      return oneIn(10) ? -static_cast<std::int32_t>(upTo(1)) : all;
    default:
      return all;
  }
}

void RandomCycleMaker::makeRoutes(RandomCycle& cycle) {
  IOProcContext& context = cycle.context;
  context.activeBuf = oneIn(20) ? oneOf({-1, 5, 1 << 30}) : static_cast<std::int32_t>(upTo(1));
  for (std::int32_t* count : {&context.countA, &context.countB})
    *count = oneIn(2) ? static_cast<std::int32_t>(upTo(kMaxPatchEntries)) : oneOf({0, 1, 2, 8, 63, 64});
  const std::int64_t ins = channelsOf(cycle.inputs);
  const std::int64_t outs = channelsOf(cycle.outputs);
  // Neighbours to neighbours, one input to all outputs, all inputs to one output, or no order.
  const auto inStep = static_cast<std::int32_t>(upTo(2));
  const auto outStep = static_cast<std::int32_t>(upTo(2));
  const auto shift = static_cast<std::int32_t>(upTo(40));
  for (auto* entries : {&context.patchesA, &context.patchesB}) {
    std::int32_t k = 0;
    for (PatchEntry& entry : *entries) {
      const std::int32_t src = inStep == 2 ? static_cast<std::int32_t>(upTo(10'000)) : inStep * k + shift;
      const std::int32_t dst = outStep == 2 ? static_cast<std::int32_t>(upTo(10'000)) : outStep * k;
      entry = {channel(src, context.inputChannelCount, ins), channel(dst, context.outputChannelCount, outs),
               gain()};
      ++k;
    }
  }
}

/// Mostly a channel that exists; else one around the bounds or far from them.
std::int32_t RandomCycleMaker::channel(std::int32_t preferred, std::int32_t contextCount,
                                       std::int64_t listCount) {
  using Limits = std::numeric_limits<std::int32_t>;
  const auto inList = static_cast<std::int32_t>(std::clamp<std::int64_t>(listCount, 1, kMostSlots));
  if (!oneIn(16)) return preferred % inList;
  return oneOf({-1, Limits::min(), Limits::max(), contextCount - 1, contextCount, contextCount + 1,
                inList - 1, inList, static_cast<std::int32_t>(choices_.bits())});
}

float RandomCycleMaker::gain() {
  if (oneIn(3)) return 1.0F;
  if (oneIn(8)) {
    return oneOf({0.0F, -0.0F, -1.0F, INFINITY, -INFINITY, std::numeric_limits<float>::quiet_NaN(), 1e-42F,
                  1e30F, -1e-30F});
  }
  return static_cast<float>(static_cast<std::int32_t>(choices_.bits())) * 0x1p-30F;
}

void RandomCycleMaker::fill(std::vector<float>& memory) {
  const bool hasSpecials = oneIn(4);
  for (float& value : memory) {
    const auto bits = static_cast<std::uint32_t>(choices_.bits());
    value = hasSpecials && bits % 16 == 0 ? sample(bits >> 4U)
                                          : static_cast<float>(static_cast<std::int32_t>(bits)) * 0x1p-31F;
  }
}

/// Zeros, the smallest and the largest numbers, and random bits, which give every kind of NaN.
float RandomCycleMaker::sample(std::size_t special) {
  constexpr std::array kSpecials = {0.0F, -0.0F, 1e-42F, -1e-45F, 3.4e38F, -3.4e38F, INFINITY, -INFINITY};
  const std::size_t choice = special % (kSpecials.size() + 2);
  return choice < kSpecials.size() ? kSpecials[choice]
                                   : std::bit_cast<float>(static_cast<std::uint32_t>(choices_.bits()));
}

}  // namespace tolvane::test
