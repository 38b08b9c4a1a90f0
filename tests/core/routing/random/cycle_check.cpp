#include "cycle_check.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstring>

#include <unistd.h>

#include "core/routing/io_proc.h"
#include "reference_cycle.h"

namespace tolvane::test {

namespace {

char runningCycle[64] = "";
struct sigaction segvBefore;
struct sigaction abrtBefore;

/// Restores the previous handler. The signal is raised again after the return and then takes its usual
/// effect.
void sayWhichCycle(int signalNumber) {
  [[maybe_unused]] const auto written = ::write(STDERR_FILENO, runningCycle, std::strlen(runningCycle));
  sigaction(signalNumber, signalNumber == SIGSEGV ? &segvBefore : &abrtBefore, nullptr);
}

// Compares bits, not by memcmp(): a fuzzer's build makes a slow call of each.
bool isSame(float a, float b) {
  return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b) ||
         (std::isnan(a) && std::isnan(b));
}

AudioBufferList* listIn(std::vector<std::uint64_t>& bytes) {
  return reinterpret_cast<AudioBufferList*>(bytes.data());
}

}  // namespace

CycleCheck::CycleCheck() : guarded_(kMostFloats) {
  struct sigaction action = {};
  action.sa_handler = sayWhichCycle;
  sigaction(SIGSEGV, &action, &segvBefore);
  sigaction(SIGABRT, &action, &abrtBefore);
}

CycleCheck::~CycleCheck() {
  sigaction(SIGSEGV, &segvBefore, nullptr);
  sigaction(SIGABRT, &abrtBefore, nullptr);
}

std::string CycleCheck::differenceOf(std::uint64_t seed) {
  std::snprintf(runningCycle, sizeof runningCycle, "crashed in the random cycle of seed %llu\n",
                static_cast<unsigned long long>(seed));
  RandomCycleMaker maker{Choices(seed)};
  const MixKernels* const inUse = &mixKernels();
  return differenceOf(maker, {&inUse, 1});
}

std::string CycleCheck::differenceOf(RandomCycleMaker& maker, std::span<const MixKernels* const> variants) {
  RandomCycle cycle = maker.make();
  const ReferenceCycle plain(cycle);
  plain_.resize(plain.floats());
  maker.fill(plain_);
  const std::vector<float> before = plain_;
  plain.run(plain_);
  for (const MixKernels* const variant : variants) {
    useMixKernels(*variant);
    if (std::string difference = differenceAfter(cycle, before); !difference.empty()) {
      return variant->name + (": " + difference);
    }
  }
  return {};
}

/// Routes the cycle from the memory `before`. Compares the result with plain_.
std::string CycleCheck::differenceAfter(RandomCycle& cycle, const std::vector<float>& before) {
  float* const memory = guarded_.last(before.size());
  std::copy(before.begin(), before.end(), memory);
  if (std::string changed = routed(cycle, memory); !changed.empty()) return changed;
  for (std::size_t i = 0; i < plain_.size(); ++i) {
    if (isSame(memory[i], plain_[i])) continue;
    char text[128];
    std::snprintf(text, sizeof text, "float %zu of %zu is %a, must be %a", i, plain_.size(),
                  static_cast<double>(memory[i]), static_cast<double>(plain_[i]));
    return text;
  }
  return {};
}

/// Runs the routing routine. Returns what it changed besides samples; empty if nothing.
std::string CycleCheck::routed(RandomCycle& cycle, float* memory) const {
  std::vector<std::uint64_t> input = bufferList(cycle.inputs, memory);
  std::vector<std::uint64_t> output = bufferList(cycle.outputs, memory);
  const std::vector<std::uint64_t> inputBefore = input;
  const std::vector<std::uint64_t> outputBefore = output;
  const IOProcContext before = cycle.context;
  routeCycle(cycle.hasInputList ? listIn(input) : nullptr, cycle.hasOutputList ? listIn(output) : nullptr,
             &cycle.context);
  if (input != inputBefore || output != outputBefore) return "a buffer list was changed";
  const bool same = std::memcmp(&before, &cycle.context, sizeof before) == 0;
  return same ? "" : "the context was changed";
}

std::vector<std::uint64_t> CycleCheck::bufferList(const std::vector<RandomBuffer>& buffers,
                                                  float* memory) const {
  static_assert(alignof(AudioBufferList) <= alignof(std::uint64_t));
  std::vector<std::uint64_t> bytes(1 + (sizeof(AudioBufferList) + buffers.size() * sizeof(AudioBuffer)) / 8);
  AudioBufferList* const list = listIn(bytes);
  list->mNumberBuffers = static_cast<UInt32>(buffers.size());
  AudioBuffer* to = list->mBuffers;
  for (const RandomBuffer& buffer : buffers)
    *to++ = {buffer.channels, buffer.bytes, buffer.place ? memory + *buffer.place : nullptr};
  return bytes;
}

}  // namespace tolvane::test
