#pragma once

#include <cstdint>
#include <vector>

#include "hal/virtual/virtual_device.h"

namespace tolvane::hal {

/// Gives each output channel of a cycle back as the input channel of the same number in the next cycle.
/// Further inputs are silent.
class Loopback final : public VirtualInput, public VirtualTap {
 public:
  /// Throws std::bad_alloc. [not-io]
  Loopback(const StreamLayout& outputs, std::uint32_t maxFrames);

  void fill(std::uint64_t firstFrame, std::uint32_t frames, AudioBufferList& input) noexcept override;
  void observe(std::uint64_t firstFrame, std::uint32_t frames,
               const AudioBufferList& output) noexcept override;

 private:
  std::uint32_t maxFrames_;
  std::uint32_t frames_ = 0;     // of the last cycle; further frames of a longer one are silent
  std::vector<float> channels_;  // one after the other, each with room for maxFrames_
};

}  // namespace tolvane::hal
