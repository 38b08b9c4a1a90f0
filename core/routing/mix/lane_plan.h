#pragma once

#include <cstdint>

#include "core/routing/mix/channel_table.h"
#include "core/routing/mix/cycle_routes.h"
#include "core/routing/mix/mix_kernels.h"
#include "hal/core_audio.h"

namespace tolvane {

/// Fills interleaved outputs frame by frame, one vector of adjacent channels at a time. This is the fastest
/// way if adjacent outputs read adjacent inputs. Lives on the IO thread's stack. [io-thread]
class LanePlan {
 public:
  /// No input that is read shares memory with an output.
  LanePlan(const CycleRoutes& routes, const ChannelTable& out, std::int64_t frames,
           const MixKernels& kernels) noexcept
      : routes_(routes), out_(out), frames_(frames), kernels_(kernels) {}

  /// Fills every byte of an interleaved buffer. `first` is the number of its first channel. Returns false and
  /// writes nothing if the channels read from too many places.
  bool mix(AudioBuffer& buffer, std::int64_t first) noexcept;

 private:
  /// A lane with routes that are in no layer yet.
  struct LaneRoutes {
    std::int32_t lane;
    std::int32_t next;  // the route to add next
    LaneLayer* layer;   // the first layer that this route may go into
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

  bool everyGroup_ = true;  // every channel of the buffer is in a group
  std::int32_t groupCount_ = 0;
  std::int32_t layerCount_ = 0;
  std::int32_t tileCost_ = 0;  // of all groups so far, if they were mixed in tiles
  LaneGroup groups_[kMaxGroups];
  LaneLayer layers_[kMaxLayers];
};

}  // namespace tolvane
