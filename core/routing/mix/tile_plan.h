#pragma once

#include <cstdint>

#include "core/routing/mix/channel_table.h"
#include "core/routing/mix/cycle_routes.h"
#include "core/routing/mix/mix_kernels.h"
#include "hal/core_audio.h"

namespace tolvane {

/// An output buffer with at least one route, and the number of its first channel.
struct RoutedBuffer {
  AudioBuffer* buffer;
  std::int64_t first;
};

/// Fills planar and interleaved outputs from planar and interleaved inputs, one tile of frames after the
/// other. In each tile it transposes interleaved inputs into rows, sums the rows, and transposes the sums
/// into interleaved outputs. Lives on the IO thread's stack (about 30 KiB). [io-thread]
class TilePlan {
 public:
  /// Writes the first routes of the inputs. No input that is read shares memory with an output.
  TilePlan(const CycleRoutes& routes, ChannelTable& in, ChannelTable& out, std::int64_t frames,
           const MixKernels& kernels) noexcept
      : routes_(routes), in_(in), out_(out), frames_(frames), kernels_(kernels) {}

  /// Fills every byte of `count` output buffers. Each holds the whole cycle.
  void mix(const AudioBufferList& input, const RoutedBuffer* routed, std::int32_t count) noexcept;

 private:
  void mixBySamples(const RoutedBuffer& routed) const noexcept;

  void planInputs(const AudioBufferList& input) noexcept;
  void gather(std::int64_t first, std::int32_t width) noexcept;
  void gatherOnes(std::int64_t first, std::int32_t width) noexcept;

  void planPlanar(const RoutedBuffer& routed) noexcept;
  void planInterleaved(const RoutedBuffer& routed) noexcept;
  void addTarget(float* data, std::int64_t frameMask, std::int32_t route) noexcept;
  bool scatter(const RoutedBuffer& routed, std::int64_t channel, std::int32_t width) noexcept;

  // A group of four rows serves at least two routes.
  static constexpr std::int32_t kMaxInputRows = 2 * kMaxPatchEntries;

  const CycleRoutes& routes_;
  ChannelTable& in_;
  ChannelTable& out_;
  const std::int64_t frames_;
  const MixKernels& kernels_;

  std::int32_t inputRowCount_ = 0;
  std::int32_t outputRowCount_ = 0;
  std::int32_t sourceCount_ = 0;
  std::int32_t targetCount_ = 0;
  std::int32_t gatherCount_ = 0;
  std::int32_t scatterCount_ = 0;
  MixSource sources_[kMaxPatchEntries];
  MixTarget targets_[kMaxPatchEntries];
  GatherGroup gathers_[kMaxPatchEntries];
  ScatterGroup scatters_[2 * kMaxPatchEntries];
  // The rows of a channel, by the first of its routes.
  const float* inputRowOf_[kMaxPatchEntries];
  const float* outputRowOf_[kMaxPatchEntries];
  alignas(64) float silence_[kTileFrames];  // the row of all channels without a route
  alignas(64) float inputRows_[kMaxInputRows][kTileFrames];
  alignas(64) float outputRows_[kMaxPatchEntries][kTileFrames];
};

}  // namespace tolvane
