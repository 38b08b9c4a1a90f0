#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

#include "core/routing/mix/cycle_routes.h"
#include "core/routing/mix/mix_kernels.h"
#include "hal/core_audio.h"

namespace tolvane::test {

/// The routes of one cycle, and its buffers inside one block of memory, where they may overlap. A copy has
/// its own block with the same content. The memory starts as noise.
class RoutesInMemory {
 public:
  static constexpr std::size_t kRoom = 256;

  /// Buffers with these numbers of channels, each followed by `room` spare floats.
  RoutesInMemory(std::int64_t frames, const std::vector<std::uint32_t>& inputs,
                 const std::vector<std::uint32_t>& outputs, std::size_t room = kRoom);

  /// Random streams, frames and routes, without overlaps, with spare room or without.
  static RoutesInMemory random(std::mt19937& random);

  void route(std::int32_t src, std::int32_t dst, float gain);

  /// Where a buffer begins, in floats from the start of the memory.
  [[nodiscard]] std::ptrdiff_t inputPlace(std::size_t buffer) const { return inputs_[buffer].place; }
  [[nodiscard]] std::ptrdiff_t outputPlace(std::size_t buffer) const { return outputs_[buffer].place; }
  void placeInput(std::size_t buffer, std::ptrdiff_t place) { inputs_[buffer].place = place; }
  void placeOutput(std::size_t buffer, std::ptrdiff_t place) { outputs_[buffer].place = place; }
  /// Leaves a gap of so many floats before an output.
  void leaveGapBefore(std::size_t output, std::size_t floats);
  void shortenInput(std::size_t buffer, std::size_t floats) { inputs_[buffer].floats -= floats; }
  void shortenOutput(std::size_t buffer, std::size_t floats) { outputs_[buffer].floats -= floats; }
  void lengthenOutput(std::size_t buffer, std::size_t floats) { outputs_[buffer].floats += floats; }

  std::vector<float>& memory() { return memory_; }

  void mix(const MixKernels& kernels);
  void mixInReferenceOrder();

 private:
  struct Place {
    std::uint32_t channels;
    std::size_t floats;
    std::ptrdiff_t place;
  };
  void add(std::vector<Place>& list, const std::vector<std::uint32_t>& buffers);
  [[nodiscard]] std::vector<std::byte> bufferList(const std::vector<Place>& places);

  std::int64_t frames_;
  std::size_t room_;
  std::vector<float> memory_;
  std::vector<Place> inputs_;
  std::vector<Place> outputs_;
  [[nodiscard]] CycleRoutes cycleRoutes(const ChannelTable& in, ChannelTable& out) const;

  std::vector<PatchEntry> routes_;
};

}  // namespace tolvane::test
