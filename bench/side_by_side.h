// Two pieces of work timed in turns, so that whatever else the machine does falls on both; and as far as
// possible only in turns in which nothing else ran on the core.
#pragma once

#include <cstddef>
#include <functional>

#include <benchmark/benchmark.h>

namespace tolvane::bench {

/// Turns that count in one measurement; what is reported is the median.
inline constexpr std::size_t kTurns = 31;

/// How many turns are tried for kTurns of them to be undisturbed; where they are not, all of them count.
enum class Patience : std::size_t { little = 300, much = 10'000 };

/// Counters of a measurement, by name.
inline constexpr auto kNanoseconds = "ns";             // the median of the work, one call
inline constexpr auto kRivalNanoseconds = "rival_ns";  // the median of the rival, one call
inline constexpr auto kRatio = "ratio";                // the median of work / rival, turn by turn
inline constexpr auto kUndisturbed = "undisturbed";    // 1 when only undisturbed turns counted, or 0

/// Medians over the turns that count, in nanoseconds a call, and of the ratio, turn by turn.
struct Comparison {
  double workNs;
  double rivalNs;
  double ratio;
  bool undisturbed;
};

/// Times `work` and `rival` in turns, each turn long enough to be told from the clock.
[[nodiscard]] Comparison compare(const std::function<void()>& work, const std::function<void()>& rival,
                                 Patience patience);

/// The body of a benchmark registered with Iterations(1) and UseManualTime: compares, and sets the
/// counters.
void measureSideBySide(benchmark::State& state, const std::function<void()>& work,
                       const std::function<void()>& rival, Patience patience);

}  // namespace tolvane::bench
