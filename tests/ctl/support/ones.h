// Signals of the virtual device from which a test can tell what gains were heard.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstdint>

#include "hal/virtual/virtual_device.h"

namespace tolvane::test {

/// Every sample of every input is 1, so an output's sample is the sum of its gains.
struct Ones : hal::VirtualInput {
  void fill(std::uint64_t /*firstFrame*/, std::uint32_t /*frames*/,
            AudioBufferList& input) noexcept override {
    for (UInt32 b = 0; b < input.mNumberBuffers; ++b) {
      auto* samples = static_cast<float*>(input.mBuffers[b].mData);
      std::fill_n(samples, input.mBuffers[b].mDataByteSize / sizeof(float), 1.0F);
    }
  }
};

/// Hears the gains of the first two outputs, whose streams have one channel each, while the inputs are Ones.
struct GainTap : hal::VirtualTap {
  /// Takes the first sample of each output. `isWhole`: all other samples of the cycle are the same.
  /// [io-thread]
  virtual void hear(float first, float second, bool isWhole) = 0;

  void observe(std::uint64_t /*firstFrame*/, std::uint32_t frames,
               const AudioBufferList& output) noexcept override {
    if (isDone) return;  // the end of the run is silence
    const auto* first = static_cast<const float*>(output.mBuffers[0].mData);
    const auto* second = static_cast<const float*>(output.mBuffers[1].mData);
    bool isWhole = true;
    for (std::uint32_t f = 1; f < frames; ++f)
      isWhole = isWhole && first[f] == first[0] && second[f] == second[0];
    hear(first[0], second[0], isWhole);
  }

  std::atomic<bool> isDone = false;
};

}  // namespace tolvane::test
