#pragma once

namespace tolvane::bench {

/// Counter with the limit for a measurement's ratio.
inline constexpr auto kLimit = "limit";
/// Counter of a point of the cost curve: nanoseconds for one frame of one route.
inline constexpr auto kRouteFrameNs = "route_frame_ns";

/// Registers the cases that have a limit, each against its rival, labelled "case|rival".
void registerLimitBenchmarks();

/// Registers the cost curve, the cost of a frame of a route: 1 to 64 routes, each on channels of its own, 32
/// to 4096 frames. The rival is the cycle with half as many frames.
void registerCurveBenchmarks();

}  // namespace tolvane::bench
