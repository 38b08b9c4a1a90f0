// The loops that move samples, in one form for each instruction set; the form is chosen once, by what the
// processor has. Every form gives the same bits: each product is rounded, then each sum, in source order,
// from positive zero; there is no fused multiply-add.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tolvane {

/// The widest vector that any form has, in floats.
inline constexpr std::int32_t kMaxVectorFloats = 16;

/// Floats in one row of a tile: the most frames that are mixed at a time where channels are interleaved.
inline constexpr std::int64_t kTileFrames = 32;

/// The two frame masks: of data that begins with the channel's first sample, and of the channel's row of a
/// tile, which is the same for every tile.
inline constexpr std::int64_t kWholeChannel = -1;
inline constexpr std::int64_t kTileRow = 0;

/// One routed input, as a target reads it.
struct MixSource {
  const float* data;
  std::int64_t frameMask;
  float gain;
};

/// One routed output: the sum of its sources (at least one).
struct MixTarget {
  float* data;
  std::int64_t frameMask;
  const MixSource* sources;
  std::int32_t sourceCount;
};

/// `width` adjacent channels of an interleaved input, turned into `width` rows that lie one behind the other.
struct GatherGroup {
  const float* data;  // the first channel's sample in frame 0
  std::ptrdiff_t stride;
  std::int32_t width;  // 1 or 4
  float* rows;
};

/// `width` adjacent channels of an interleaved output, filled from a row each.
struct ScatterGroup {
  float* data;  // the first channel's sample in frame 0
  std::ptrdiff_t stride;
  std::int32_t width;  // 1 or 4
  const float* rows[4];
};

/// What is done for every tile, in this order.
struct TileWork {
  const GatherGroup* gathers;
  std::int32_t gatherCount;
  const MixTarget* targets;
  std::int32_t targetCount;
  const ScatterGroup* scatters;
  std::int32_t scatterCount;
};

/// One route, at most, into each lane of a group of adjacent outputs, all from inputs that lie as far from
/// their lanes. Lanes without one have gain 0.
struct LaneLayer {
  std::uintptr_t base;  // where lane 0 would read in frame 0; outside the buffer where no route reads it
  std::uint32_t lanes;  // bit i: lane i has a route
  alignas(64) float gains[kMaxVectorFloats];
};

/// vectorFloats adjacent channels of an interleaved output, each the sum of its lane of the layers, in their
/// order.
struct LaneGroup {
  float* data;  // the first channel's sample in frame 0
  std::ptrdiff_t stride;
  std::ptrdiff_t sourceStride;  // of all layers
  const LaneLayer* layers;
  std::int32_t layerCount;
};

/// One form of the loops. All [io-thread].
struct MixKernels {
  const char* name;
  std::int32_t vectorFloats;
  bool loadsMasked;  // whether layers may have lanes without a route

  /// Sets `bytes` bytes at `data` to zero, faster than memset does where they lie in the caches.
  void (*clear)(void* data, std::size_t bytes) noexcept;

  /// One planar source, scaled, into `frames` frames at `target`.
  void (*scalePlanar)(float* target, const float* source, float gain, std::int64_t frames) noexcept;

  /// Sums `sourceCount` whole channels into `frames` frames at `target`.
  void (*mixPlanar)(float* target, const MixSource* sources, std::int32_t sourceCount,
                    std::int64_t frames) noexcept;

  /// Does the work for frames 0 to `frames`, at least vectorFloats of them; some maybe twice.
  void (*mixTiles)(const TileWork& work, std::int64_t frames) noexcept;

  /// Sums the layers of each group into its channels, frames 0 to `frames`. The groups have one stride.
  void (*mixLanes)(const LaneGroup* groups, std::int32_t count, std::int64_t frames) noexcept;
};

/// The form that cycles run in: the fastest that this processor has. It is chosen before main, so that the IO
/// thread finds it done; whoever asks earlier still gets it. [any-thread]
[[nodiscard]] const MixKernels& mixKernels() noexcept;

/// Cycles run in this form from now on: for tests and benchmarks. [any-thread]
void useMixKernels(const MixKernels& form) noexcept;

/// Forms, the fastest first; null behind the last.
struct MixKernelList {
  const MixKernels* forms[3];
};

/// Every form that this processor runs: for tests and benchmarks. [any-thread]
[[nodiscard]] MixKernelList allMixKernels() noexcept;

}  // namespace tolvane
