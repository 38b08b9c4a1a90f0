#include "bench/side_by_side.h"

#include <algorithm>
#include <chrono>
#include <vector>

#include "bench/core_watch.h"
#include "bench/median.h"

namespace tolvane::bench {

namespace {

using Clock = std::chrono::steady_clock;

/// Approximate length of a turn. A single longer call is a turn by itself.
constexpr double kTurnNanoseconds = 150'000.0;

double nanosecondsOf(const std::function<void()>& work, int calls) {
  const auto begin = Clock::now();
  for (int i = 0; i < calls; ++i) work();
  benchmark::ClobberMemory();
  return std::chrono::duration<double, std::nano>(Clock::now() - begin).count();
}

int callsPerTurn(const std::function<void()>& work) {
  nanosecondsOf(work, 3);  // warms the caches
  const double once = nanosecondsOf(work, 10) / 10;
  return std::max(1, static_cast<int>(kTurnNanoseconds / std::max(once, 1.0)));
}

/// The times of some turns.
struct Turns {
  std::vector<double> work;
  std::vector<double> rival;
  std::vector<double> ratios;

  void add(double workNs, double rivalNs) {
    work.push_back(workNs);
    rival.push_back(rivalNs);
    ratios.push_back(workNs / rivalNs);
  }
};

}  // namespace

Comparison compare(const std::function<void()>& work, const std::function<void()>& rival, Patience patience) {
  static CoreWatch core;
  const int workCalls = callsPerTurn(work);
  const int rivalCalls = callsPerTurn(rival);
  Turns all;
  Turns alone;
  bool isAlone = core.isAlone();
  while (alone.ratios.size() < kTurns && all.ratios.size() < static_cast<std::size_t>(patience)) {
    const bool wasAlone = isAlone;
    const double workNs = nanosecondsOf(work, workCalls) / workCalls;
    const bool stillAlone = core.isAlone();
    const double rivalNs = nanosecondsOf(rival, rivalCalls) / rivalCalls;
    isAlone = core.isAlone();
    all.add(workNs, rivalNs);
    if (wasAlone && stillAlone && isAlone) alone.add(workNs, rivalNs);
  }
  const bool undisturbed = alone.ratios.size() == kTurns;
  const Turns& turns = undisturbed ? alone : all;
  return {median(turns.work), median(turns.rival), median(turns.ratios), undisturbed};
}

void measureSideBySide(benchmark::State& state, const std::function<void()>& work,
                       const std::function<void()>& rival, Patience patience) {
  const Comparison result = compare(work, rival, patience);
  for ([[maybe_unused]] const auto iteration : state) state.SetIterationTime(result.workNs * 1e-9);
  state.counters[kNanoseconds] = result.workNs;
  state.counters[kRivalNanoseconds] = result.rivalNs;
  state.counters[kRatio] = result.ratio;
  state.counters[kUndisturbed] = result.undisturbed ? 1.0 : 0.0;
}

}  // namespace tolvane::bench
