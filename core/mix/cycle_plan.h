#pragma once

#include <cstdint>

#include "core/mix/channel_table.h"
#include "core/mix/lane_plan.h"
#include "core/mix/mix_kernels.h"
#include "core/mix/overlap.h"
#include "core/mix/plain_mixer.h"
#include "hal/core_audio.h"

namespace tolvane {

/// One cycle's mixing, sorted by output: what to read where, and where each output's sum goes. It lives on
/// the IO thread's stack (about 80 KiB at the most, of which a cycle touches what its routes need).
/// [io-thread]
class CyclePlan {
 public:
  /// The tables' links are used up: the plan is the only one that may be made of them.
  CyclePlan(const CycleRoutes& routes, ChannelTable& in, ChannelTable& out, std::int64_t frames,
            const MixKernels& kernels) noexcept;

  /// Mixes the cycle into `output`.
  void run(const AudioBufferList& input, AudioBufferList& output) noexcept;

 private:
  /// An output buffer that a route writes, and the number of its first channel.
  struct RoutedBuffer {
    AudioBuffer* buffer;
    std::int64_t first;
  };

  void clearUnrouted(AudioBufferList& output) noexcept;
  [[nodiscard]] bool canReorder() const noexcept;
  [[nodiscard]] bool sharesMemory() const noexcept;
  void mixInPlainOrder() noexcept;

  void mixOnes() noexcept;
  [[nodiscard]] bool mixPlanar(AudioBuffer& buffer, const ChannelSlot& slot) noexcept;
  void mixInTiles(const AudioBufferList& input) noexcept;
  void wantInputs() noexcept;
  void planInputs(const AudioBufferList& input) noexcept;
  [[nodiscard]] std::int32_t wantedIn(std::int64_t first, std::int32_t width) const noexcept;
  void gatherGroup(std::int64_t first, std::int32_t width) noexcept;

  void planPlanar(AudioBuffer& buffer, ChannelSlot& slot) noexcept;
  void planInterleaved(AudioBuffer& buffer, std::int64_t first) noexcept;
  void addSources(std::int32_t route) noexcept;
  bool scatterGroup(const AudioBuffer& buffer, std::int64_t first, std::int64_t channel,
                    std::int32_t width) noexcept;

  void mixBlocks() noexcept;
  void mixTail() noexcept;
  void mixTailOf(const MixTarget& target, const ChannelSlot& output) noexcept;

  // Rows that groups of input channels can take: a group is transposed when three of its channels are read.
  static constexpr std::int32_t kMaxInputRows = kMaxPatchEntries / 3 * 16 + 16;

  const CycleRoutes& routes_;
  ChannelTable& in_;
  ChannelTable& out_;
  const std::int64_t frames_;
  const MixKernels& kernels_;

  std::int32_t nextRoute_[kMaxPatchEntries];  // the next route into the same output, in route order
  MemoryRange inputSpan_ = kNoMemory;         // all inputs that are read
  MemoryRange outputSpan_ = kNoMemory;        // all outputs in routed_
  bool inOrder_ = true;                       // each of those lies behind the one before it
  bool longEnough_ = true;                    // each of those holds the whole cycle
  bool readsInterleaved_ = false;
  std::int32_t routedCount_ = 0;
  std::int32_t sourceCount_ = 0;
  std::int32_t tiledCount_ = 0;
  std::int32_t spreadCount_ = 0;
  std::int32_t gatherCount_ = 0;
  std::int32_t scatterCount_ = 0;
  std::int32_t inputRowCount_ = 0;
  RoutedBuffer routed_[kMaxPatchEntries];
  LanePlan lanes_;
  MixSource sources_[kMaxPatchEntries];
  ChannelSlot
      origins_[kMaxPatchEntries];       // each source's channel itself, for the frames after the last block
  MixTarget tiled_[kMaxPatchEntries];   // one-channel outputs with an interleaved source: block by block
  MixTarget spread_[kMaxPatchEntries];  // channels of interleaved outputs, written by groups
  ChannelSlot spreadOutputs_[kMaxPatchEntries];
  GatherGroup gathers_[kMaxPatchEntries];
  ScatterGroup scatters_[2 * kMaxPatchEntries];
  alignas(64) float inputRows_[kMaxInputRows][kBlockFrames];
};

}  // namespace tolvane
