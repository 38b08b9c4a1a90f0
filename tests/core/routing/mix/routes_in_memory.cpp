#include "routes_in_memory.h"

#include <algorithm>
#include <numeric>

#include "core/routing/mix/channel_table.h"
#include "core/routing/mix/clear.h"
#include "core/routing/mix/cycle_mixer.h"
#include "core/routing/mix/reference_mixer.h"

namespace tolvane::test {

namespace {

std::vector<std::uint32_t> randomStreams(std::mt19937& random) {
  std::vector<std::uint32_t> streams(1 + random() % 6);
  for (auto& channels : streams)
    channels = random() % 2 == 0 ? 1 : 1 + static_cast<std::uint32_t>(random() % 40);
  return streams;
}

std::int32_t total(const std::vector<std::uint32_t>& streams) {
  return static_cast<std::int32_t>(std::accumulate(streams.begin(), streams.end(), 0U));
}

}  // namespace

RoutesInMemory::RoutesInMemory(std::int64_t frames, const std::vector<std::uint32_t>& inputs,
                               const std::vector<std::uint32_t>& outputs, std::size_t room)
    : frames_(frames), room_(room) {
  memory_.resize(kRoom);
  add(inputs_, inputs);
  add(outputs_, outputs);
  std::mt19937 random(static_cast<unsigned>(frames));
  std::uniform_real_distribution<float> noise(-1.0F, 1.0F);
  for (float& sample : memory_) sample = noise(random);
}

RoutesInMemory RoutesInMemory::random(std::mt19937& random) {
  const auto inputs = randomStreams(random);
  const auto outputs = randomStreams(random);
  RoutesInMemory cycle(1 + static_cast<std::int64_t>(random() % 100), inputs, outputs, random() % 2 * kRoom);
  const auto count = static_cast<std::int32_t>(random() % (kMaxPatchEntries + 1));
  for (std::int32_t i = 0; i < count; ++i) {
    cycle.route(static_cast<std::int32_t>(random() % static_cast<unsigned>(total(inputs))),
                static_cast<std::int32_t>(random() % static_cast<unsigned>(total(outputs))),
                random() % 4 == 0 ? 1.0F : static_cast<float>(random() % 1000) / 300.0F - 1.5F);
  }
  return cycle;
}

void RoutesInMemory::add(std::vector<Place>& list, const std::vector<std::uint32_t>& buffers) {
  for (const std::uint32_t channels : buffers) {
    const std::size_t floats = channels * static_cast<std::size_t>(frames_);
    list.push_back({channels, floats, static_cast<std::ptrdiff_t>(memory_.size())});
    memory_.resize(memory_.size() + floats + room_);
  }
}

void RoutesInMemory::leaveGapBefore(std::size_t output, std::size_t floats) {
  memory_.resize(memory_.size() + floats, 7.0F);
  for (; output < outputs_.size(); ++output) outputs_[output].place += static_cast<std::ptrdiff_t>(floats);
}

void RoutesInMemory::route(std::int32_t src, std::int32_t dst, float gain) {
  routes_.push_back({src, dst, gain});
}

std::vector<std::byte> RoutesInMemory::bufferList(const std::vector<Place>& places) {
  std::vector<std::byte> bytes(sizeof(AudioBufferList) + places.size() * sizeof(AudioBuffer));
  auto* const list = reinterpret_cast<AudioBufferList*>(bytes.data());
  list->mNumberBuffers = static_cast<UInt32>(places.size());
  AudioBuffer* buffer = list->mBuffers;
  for (const Place& place : places) {
    *buffer++ = {place.channels, static_cast<UInt32>(place.floats * sizeof(float)),
                 memory_.data() + place.place};
  }
  return bytes;
}

CycleRoutes RoutesInMemory::cycleRoutes(const ChannelTable& in, ChannelTable& out) const {
  CycleRoutes routes(static_cast<std::int32_t>(routes_.size()));
  for (std::int32_t i = routes.count() - 1; i >= 0; --i) {
    const PatchEntry& entry = routes_[static_cast<std::size_t>(i)];
    routes.put(i, entry, in[entry.src], out[entry.dst]);
  }
  return routes;
}

void RoutesInMemory::mix(const MixKernels& kernels) {
  auto input = bufferList(inputs_);
  auto output = bufferList(outputs_);
  auto& inputList = *reinterpret_cast<AudioBufferList*>(input.data());
  auto& outputList = *reinterpret_cast<AudioBufferList*>(output.data());
  ChannelTable in(4096);
  ChannelTable out(4096);
  in.addChannelsOf(inputList);
  out.addChannelsOf(outputList);
  const CycleRoutes routes = cycleRoutes(in, out);
  CycleMixer(routes, in, out, frames_, kernels).mix(inputList, outputList);
}

void RoutesInMemory::mixInReferenceOrder() {
  auto input = bufferList(inputs_);
  auto output = bufferList(outputs_);
  auto& outputList = *reinterpret_cast<AudioBufferList*>(output.data());
  ChannelTable in(4096);
  ChannelTable out(4096);
  in.addChannelsOf(*reinterpret_cast<AudioBufferList*>(input.data()));
  out.addChannelsOf(outputList);
  clearOutputs(outputList);
  mixReference(cycleRoutes(in, out), out, frames_);
}

}  // namespace tolvane::test
