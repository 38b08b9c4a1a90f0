#pragma once

#include <cstdint>

#include "core/mix/channel_table.h"
#include "core/mix/cycle_routes.h"
#include "core/mix/mix_kernels.h"
#include "hal/core_audio.h"

namespace tolvane {

/// Fills interleaved outputs frame by frame, a vector of channels at a time, without turning them into rows:
/// the fastest way where channels that lie together read channels that lie together. It lives on the IO
/// thread's stack. [io-thread]
class LanePlan {
 public:
  /// No input that is read shares memory with an output.
  LanePlan(const CycleRoutes& routes, const ChannelTable& out, std::int64_t frames,
           const MixKernels& kernels) noexcept
      : routes_(routes), out_(out), frames_(frames), kernels_(kernels) {}

  /// Fills every byte of a buffer of several channels, the first of which is number `first`; false, with
  /// nothing written, when its channels read from too many places.
  bool mix(AudioBuffer& buffer, std::int64_t first) noexcept;

 private:
  /// A lane that still has routes.
  struct LaneRoutes {
    std::int32_t lane;
    std::int32_t next;  // the route whose turn it is
    LaneLayer* layer;   // the first layer that it may be in
  };

  [[nodiscard]] bool plan(const AudioBuffer& buffer, std::int64_t first) noexcept;
  [[nodiscard]] bool addGroup(const AudioBuffer& buffer, std::int64_t first, std::int64_t channel) noexcept;
  [[nodiscard]] bool addLayers(LaneGroup& group, LaneRoutes* lanes, std::int32_t count) noexcept;

  static constexpr std::int32_t kMaxLayers = kMaxPatchEntries;
  static constexpr std::int32_t kMaxGroups = kMaxPatchEntries;

  const CycleRoutes& routes_;
  const ChannelTable& out_;
  const std::int64_t frames_;
  const MixKernels& kernels_;

  bool everyGroup_ = true;  // all channels of the buffer are in groups
  std::int32_t groupCount_ = 0;
  std::int32_t layerCount_ = 0;
  std::int32_t layerLimit_ = 0;  // from here on lanes are slower than tiles
  LaneGroup groups_[kMaxGroups];
  LaneLayer layers_[kMaxLayers];
};

}  // namespace tolvane
