// The loops that move samples, in one form for each instruction set; the form is chosen once, by what the
// processor has. Every form gives the same bits: each product is rounded, then each sum, in source order,
// from positive zero; there is no fused multiply-add.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tolvane {

/// Frames that are mixed at a time where channels are interleaved: one row of a tile, one cache line.
inline constexpr std::int64_t kBlockFrames = 16;

/// One routed input, as a target reads it: `data` is its next sample, the next block is `blockStep` floats
/// on.
struct MixSource {
  const float* data;
  std::ptrdiff_t blockStep;
  float gain;
};

/// One routed output: the sum of its sources (at least one), written once; planar where `data` is used.
struct MixTarget {
  float* data;
  const MixSource* sources;
  std::int32_t sourceCount;
};

/// `width` adjacent channels of an interleaved input, turned into `width` rows of kBlockFrames floats.
struct GatherGroup {
  const float* data;  // the first channel's sample in frame 0
  std::ptrdiff_t stride;
  std::int32_t width;  // 1, 4, 8 or 16, at most the form's maxWidth
  float* rows;
};

/// `width` adjacent channels of an interleaved output, each the sum of a target's sources; null is silence.
/// The targets' `data` is not used.
struct ScatterGroup {
  float* data;  // the first channel's sample in frame 0
  std::ptrdiff_t stride;
  std::int32_t width;  // as in GatherGroup
  const MixTarget* targets[16];
};

/// One route, at most, into each lane of a group of interleaved outputs; all of them from one vector of
/// adjacent samples of an interleaved input. Lanes without one have gain 0 and mask 0.
struct LaneLayer {
  enum class Order {
    whole,     // every lane's sample lies at the lane's own place, and every lane has one
    masked,    // every sample lies at its lane's own place
    permuted,  // sample lanes[i] goes to lane i
  };

  const float* data;  // the vector in frame 0
  std::ptrdiff_t stride;
  Order order;
  alignas(64) float gains[16];
  std::int32_t lanes[16];
  std::int32_t mask[16];  // all bits or none
};

/// maxWidth adjacent channels of an interleaved output, each the sum of its lane of the layers, in their
/// order.
struct LaneGroup {
  float* data;  // the first channel's sample in frame 0
  std::ptrdiff_t stride;
  const LaneLayer* layers;
  std::int32_t layerCount;
};

/// One form of the loops. All [io-thread].
struct MixKernels {
  const char* name;
  std::int32_t maxWidth;
  bool permutes;  // whether the form has layers of every order

  /// One planar source, scaled, into `frames` frames at `target`.
  void (*scalePlanar)(float* target, const float* source, float gain, std::int64_t frames) noexcept;

  /// Sums `sourceCount` planar sources into `frames` frames at `target`. Steps of the sources are not used.
  void (*mixPlanar)(float* target, const MixSource* sources, std::int32_t sourceCount,
                    std::int64_t frames) noexcept;

  /// Fills the rows of each group with block number `block` of its channels.
  void (*gatherBlock)(const GatherGroup* groups, std::int32_t count, std::int64_t block) noexcept;

  /// Sums the sources of each target for one block.
  void (*mixBlock)(const MixTarget* targets, std::int32_t count, std::int64_t block) noexcept;

  /// Sums the sources of each group's targets and writes them to one block of its channels.
  void (*scatterBlock)(const ScatterGroup* groups, std::int32_t count, std::int64_t block) noexcept;

  /// Sums the layers of each group into its channels, frames 0 to `frames`. The groups have one stride.
  void (*mixLanes)(const LaneGroup* groups, std::int32_t count, std::int64_t frames) noexcept;
};

/// The fastest form that this processor runs. [any-thread]
[[nodiscard]] const MixKernels& mixKernels() noexcept;

/// Every form that this processor runs, the fastest first, ended by null: for tests and benchmarks.
/// [any-thread]
[[nodiscard]] const MixKernels* const* allMixKernels() noexcept;

}  // namespace tolvane
