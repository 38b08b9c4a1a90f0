#pragma once

namespace tolvane::bench {

/// Counter of a measurement that has a limit for its ratio.
inline constexpr auto kLimit = "limit";
/// Counter of a point of the cost curve: nanoseconds for one frame of one route.
inline constexpr auto kRouteFrameNs = "route_frame_ns";

/// What the routing is held to: each case beside its rival, labelled "case|rival".
void registerLimitBenchmarks();

/// The cost of a frame of a route: 1 to 64 routes, each channel to its own, 32 to 4096 frames. The rival is
/// the cycle with half as many frames.
void registerCurveBenchmarks();

}  // namespace tolvane::bench
