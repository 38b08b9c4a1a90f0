// Two pieces of work timed in turns, so that whatever else the machine does falls on both.
#pragma once

#include <functional>

#include <benchmark/benchmark.h>

namespace tolvane::bench {

/// Turns taken in one measurement; what is reported is the median.
inline constexpr int kTurns = 31;

/// Counters of a measurement, by name.
inline constexpr auto kNanoseconds = "ns";             // the median of the work, one call
inline constexpr auto kRivalNanoseconds = "rival_ns";  // the median of the rival, one call
inline constexpr auto kRatio = "ratio";                // the median of work / rival, turn by turn

/// Medians over all turns, in nanoseconds a call, and of the ratio, turn by turn.
struct Comparison {
  double workNs;
  double rivalNs;
  double ratio;
};

/// Times `work` and `rival` in turns, each turn long enough to be told from the clock.
[[nodiscard]] Comparison compare(const std::function<void()>& work, const std::function<void()>& rival);

/// The body of a benchmark registered with Iterations(1) and UseManualTime: compares, and sets the
/// counters.
void measureSideBySide(benchmark::State& state, const std::function<void()>& work,
                       const std::function<void()>& rival);

}  // namespace tolvane::bench
