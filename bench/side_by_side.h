// Times two pieces of work in turns, so other load on the machine affects both. If possible, counts only
// turns in which nothing else ran on the core.
#pragma once

#include <cstddef>
#include <functional>

#include <benchmark/benchmark.h>

namespace tolvane::bench {

/// Turns that count in one measurement. The result is their median.
inline constexpr std::size_t kTurns = 31;

/// Most turns to try for kTurns undisturbed ones. If there are fewer undisturbed ones, all turns count.
enum class Patience : std::size_t { little = 300, much = 10'000 };

/// Counters of a measurement, by name.
inline constexpr auto kNanoseconds = "ns";             // the median of the work, one call
inline constexpr auto kRivalNanoseconds = "rival_ns";  // the median of the rival, one call
inline constexpr auto kRatio = "ratio";                // the median of work / rival, turn by turn
inline constexpr auto kUndisturbed = "undisturbed";    // 1 when only undisturbed turns counted, or 0

/// Medians over the turns that count. Times are in nanoseconds per call. The ratio is formed turn by turn.
struct Comparison {
  double workNs;
  double rivalNs;
  double ratio;
  bool undisturbed;
};

/// Times `work` and `rival` in turns. Each turn is long compared with the clock's resolution.
[[nodiscard]] Comparison compare(const std::function<void()>& work, const std::function<void()>& rival,
                                 Patience patience);

/// Body of a benchmark registered with Iterations(1) and UseManualTime. Compares and sets the counters.
void measureSideBySide(benchmark::State& state, const std::function<void()>& work,
                       const std::function<void()>& rival, Patience patience);

}  // namespace tolvane::bench
