#pragma once

#include <cstdint>
#include <vector>

#include "hal/virtual/virtual_device.h"

namespace tolvane::hal {

/// A sine of 110 n Hz with its peak at -18 dBFS on channel n (one-based), each a function of the frame alone.
///
/// At a whole rate all of them lie in one table that holds one turn of what divides them all: channel n steps
/// through it n times as fast as channel 1, and every channel repeats exactly. At any other rate the phase is
/// computed for each sample.
class SineBank final : public VirtualInput {
 public:
  explicit SineBank(double sampleRateHz);

  void fill(std::uint64_t firstFrame, std::uint32_t frames, AudioBufferList& input) noexcept override;

 private:
  /// Samples of one channel, `stride` apart.
  struct Target {
    float* samples;
    std::uint32_t stride;
  };

  void fillFromTable(std::uint64_t channel, std::uint64_t firstFrame, std::uint32_t frames,
                     const Target& to) const noexcept;
  void compute(std::uint64_t channel, std::uint64_t firstFrame, std::uint32_t frames,
               const Target& to) const noexcept;

  double sampleRateHz_;
  std::uint64_t stepOfFirst_ = 0;  // entries from one frame to the next on channel 1
  std::vector<float> table_;       // empty where the rate is not whole
};

}  // namespace tolvane::hal
