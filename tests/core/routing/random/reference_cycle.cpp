#include "reference_cycle.h"

#include <algorithm>
#include <cstring>

namespace tolvane::test {

ReferenceCycle::ReferenceCycle(const RandomCycle& cycle) : cycle_(cycle) {
  takeBuffers(cycle.inputs);
  takeBuffers(cycle.outputs);
  const std::int64_t maxIn = cycle.context.inputChannelCount;
  const std::int64_t maxOut = cycle.context.outputChannelCount;
  if (maxIn < 1 || maxOut < 1) return;
  clears_ = cycle.hasOutputList;
  std::vector<Slot> in(static_cast<std::size_t>(maxIn + maxOut + 2));
  std::vector<Slot> out(in.size());
  const std::int64_t inCount = cycle.hasInputList ? flatten(cycle.inputs, in) : 0;
  const std::int64_t outCount = cycle.hasOutputList ? flatten(cycle.outputs, out) : 0;
  findFrames();
  if (frames_ != 0) findRoutes(std::min(inCount, maxIn), std::min(outCount, maxOut), in, out);
}

void ReferenceCycle::takeBuffers(const std::vector<RandomBuffer>& list) {
  for (const RandomBuffer& buffer : list) {
    if (buffer.channels != 0 && buffer.place)
      floats_ = std::max(floats_, *buffer.place + (buffer.bytes + 3U) / 4U);
  }
}

std::int64_t ReferenceCycle::flatten(const std::vector<RandomBuffer>& list, std::vector<Slot>& slots) const {
  std::size_t k = 0;
  for (const RandomBuffer& buffer : list) {
    if (buffer.place) {
      for (std::size_t c = 0; c < buffer.channels && k + c < slots.size(); ++c)
        slots[k + c] = {*buffer.place + c, buffer.channels};
    }
    k += buffer.channels;
  }
  return static_cast<std::int64_t>(k);
}

void ReferenceCycle::findFrames() {
  if (!cycle_.hasOutputList || cycle_.outputs.empty()) return;
  const RandomBuffer& first = cycle_.outputs.front();
  if (first.channels != 0) frames_ = first.bytes / (std::size_t{first.channels} * 4);
}

void ReferenceCycle::findRoutes(std::int64_t nIn, std::int64_t nOut, const std::vector<Slot>& in,
                                const std::vector<Slot>& out) {
  const bool isA = cycle_.context.activeBuf == 0;
  const auto& entries = isA ? cycle_.context.patchesA : cycle_.context.patchesB;
  const std::int32_t count = isA ? cycle_.context.countA : cycle_.context.countB;
  for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
    const PatchEntry& entry = entries[i];
    if (entry.src < 0 || entry.src >= nIn || entry.dst < 0 || entry.dst >= nOut) continue;
    const Slot& from = in[static_cast<std::size_t>(entry.src)];
    const Slot& to = out[static_cast<std::size_t>(entry.dst)];
    if (!from.place || !to.place) continue;
    routes_.push_back({from, to, entry.gain});
    for (const Slot& slot : {from, to})
      floats_ = std::max(floats_, *slot.place + (frames_ - 1) * slot.stride + 1);
  }
}

void ReferenceCycle::run(std::vector<float>& memory) const {
  if (!clears_) return;
  for (const RandomBuffer& buffer : cycle_.outputs) {
    if (buffer.channels != 0 && buffer.place) std::memset(memory.data() + *buffer.place, 0, buffer.bytes);
  }
  for (const Route& route : routes_) {
    for (std::size_t f = 0; f < frames_; ++f) {
      float& sum = memory[*route.out.place + f * route.out.stride];
      const float product = memory[*route.in.place + f * route.in.stride] * route.gain;
      sum = sum + product;
    }
  }
}

}  // namespace tolvane::test
