#pragma once

namespace tolvane::bench {

/// Counters that identify a measurement's cell of the table.
inline constexpr auto kChannels = "channels";
inline constexpr auto kFrames = "frames";
inline constexpr auto kRoutes = "routes";
inline constexpr auto kInterleaved = "interleaved";

/// Registers every cell of the table: 1, 8, 64 routes; 2, 18, 64, 256 channels each way; 32 to 4096 frames;
/// planar and interleaved. The rival copies each input buffer over its output buffer.
void registerCycleBenchmarks();

}  // namespace tolvane::bench
