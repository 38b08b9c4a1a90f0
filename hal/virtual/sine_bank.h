#pragma once

#include <cstdint>
#include <vector>

#include "hal/virtual/virtual_device.h"

namespace tolvane::hal {

/// Gives channel n (one-based) a sine of 110 n Hz that peaks at -18 dBFS. A sample depends only on its frame
/// number.
///
/// At whole rates up to 1 MHz all channels share one table. The table holds one turn of a sine whose
/// frequency divides both 110 Hz and the rate. Channel n steps through it n times as fast as channel 1, and
/// every channel repeats exactly. At any other rate each sample's phase is computed.
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
  std::uint64_t stepOfFirst_ = 0;  // table entries per frame on channel 1
  std::vector<float> table_;       // empty if phases are computed
};

}  // namespace tolvane::hal
