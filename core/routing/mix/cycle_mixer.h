#pragma once

#include <cstdint>

#include "core/routing/mix/channel_table.h"
#include "core/routing/mix/cycle_routes.h"
#include "core/routing/mix/mix_kernels.h"
#include "core/routing/mix/overlap.h"
#include "core/routing/mix/tile_plan.h"
#include "hal/core_audio.h"

namespace tolvane {

/// Fills every output buffer of one cycle: each routed channel with the sum of its routes, everything else
/// with zeros. Gives the same bits as clearOutputs() and then mixReference(), which it calls if buffers
/// overlap or are shorter than the cycle. Otherwise it mixes output by output, writes each output once and
/// does not read it back. Lives on the IO thread's stack. [io-thread]
class CycleMixer {
 public:
  /// `frames` is at least 1. `in` and `out` are the tables of the two lists. Tiles write the
  /// tables, so one pair of tables serves one mixer.
  CycleMixer(const CycleRoutes& routes, ChannelTable& in, ChannelTable& out, std::int64_t frames,
             const MixKernels& kernels) noexcept
      : routes_(routes), in_(in), out_(out), frames_(frames), kernels_(kernels) {}

  /// Called once, with the two lists of the tables.
  void mix(const AudioBufferList& input, AudioBufferList& output) noexcept;

 private:
  [[nodiscard]] bool isRouted(const AudioBuffer& buffer, std::int64_t first) const noexcept;

  void mixContiguous(AudioBuffer* buffers) noexcept;
  void mixAndClear(AudioBufferList& output) noexcept;

  void clearUnrouted(AudioBufferList& output) noexcept;
  [[nodiscard]] bool canReorder(const AudioBufferList& input) const noexcept;
  [[nodiscard]] bool sharesMemory() const noexcept;
  void mixInReferenceOrder() noexcept;
  void mixRouted() noexcept;

  [[nodiscard]] bool mixBuffer(AudioBuffer& buffer, std::int64_t first) noexcept;
  [[nodiscard]] bool mixPlanar(AudioBuffer& buffer, const ChannelSlot& target) noexcept;
  [[nodiscard]] bool mixSum(AudioBuffer& buffer, const ChannelSlot& target) noexcept;
  [[nodiscard]] bool mixInLanes(AudioBuffer& buffer, std::int64_t first) const noexcept;
  void mixInTiles(const AudioBufferList& input) noexcept;

  const CycleRoutes& routes_;
  ChannelTable& in_;
  ChannelTable& out_;
  const std::int64_t frames_;
  const MixKernels& kernels_;

  std::int32_t routedCount_ = 0;
  RoutedBuffer routed_[kMaxPatchEntries];  // output buffers that are not mixed yet
};

}  // namespace tolvane
