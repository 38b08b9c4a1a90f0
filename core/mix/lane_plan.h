#pragma once

#include <cstdint>

#include "core/mix/channel_table.h"
#include "core/mix/mix_kernels.h"
#include "core/mix/plain_mixer.h"
#include "hal/core_audio.h"

namespace tolvane {

/// Fills interleaved outputs frame by frame, a vector of channels at a time, without turning them into rows:
/// the fastest way where channels that lie together read channels that lie together. It lives on the IO
/// thread's stack. [io-thread]
class LanePlan {
 public:
  /// The links of `out` lead to the first route of each output, `nextRoute` from there to the next, in route
  /// order; -1 ends. No input that is read shares memory with an output.
  LanePlan(const CycleRoutes& routes, const std::int32_t* nextRoute, const ChannelTable& in,
           const ChannelTable& out, std::int64_t frames, const MixKernels& kernels) noexcept
      : routes_(routes), nextRoute_(nextRoute), in_(in), out_(out), frames_(frames), kernels_(kernels) {}

  /// Fills every byte of a buffer of several channels, the first of which is number `first`; false, with
  /// nothing written, when its channels read from too many places.
  bool mix(AudioBuffer& buffer, std::int64_t first) noexcept;

 private:
  /// The input slot and gain of the route whose turn it is, for each lane.
  struct Round {
    const ChannelSlot* slots[16];
    float gains[16];
  };

  [[nodiscard]] bool plan(const AudioBuffer& buffer, std::int64_t first) noexcept;
  [[nodiscard]] bool addLayers(std::int32_t (&chains)[16]) noexcept;
  [[nodiscard]] bool addLayersOf(const Round& round, std::uint32_t lanes) noexcept;
  [[nodiscard]] std::uint32_t addInPlace(const Round& round, std::uint32_t lanes) noexcept;
  [[nodiscard]] std::uint32_t addPermuted(const Round& round, std::uint32_t lanes) noexcept;
  LaneLayer& addLayer(const float* data, std::int32_t stride) noexcept;
  void keepInside(std::int32_t lastLane, std::int32_t stride) noexcept;
  void mixLastFrames(AudioBuffer& buffer, std::int64_t first) const noexcept;

  static constexpr std::int32_t kMaxLayers = kMaxPatchEntries;
  static constexpr std::int32_t kMaxGroups = kMaxPatchEntries;

  const CycleRoutes& routes_;
  const std::int32_t* const nextRoute_;
  const ChannelTable& in_;
  const ChannelTable& out_;
  const std::int64_t frames_;
  const MixKernels& kernels_;

  bool everyGroup_ = true;  // all channels of the buffer are in groups
  std::int32_t groupCount_ = 0;
  std::int32_t layerCount_ = 0;
  std::int64_t lastFrames_ = 0;  // frames at the end, where a vector could reach beyond its buffer
  LaneGroup groups_[kMaxGroups];
  LaneLayer layers_[kMaxLayers];
};

}  // namespace tolvane
