#include "bench/side_by_side.h"

#include <algorithm>
#include <chrono>
#include <vector>

namespace tolvane::bench {

namespace {

using Clock = std::chrono::steady_clock;

/// A turn lasts about this long, or one call where that takes longer.
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

double median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

}  // namespace

Comparison compare(const std::function<void()>& work, const std::function<void()>& rival) {
  const int workCalls = callsPerTurn(work);
  const int rivalCalls = callsPerTurn(rival);
  std::vector<double> workTimes;
  std::vector<double> rivalTimes;
  std::vector<double> ratios;
  for (int turn = 0; turn < kTurns; ++turn) {
    workTimes.push_back(nanosecondsOf(work, workCalls) / workCalls);
    rivalTimes.push_back(nanosecondsOf(rival, rivalCalls) / rivalCalls);
    ratios.push_back(workTimes.back() / rivalTimes.back());
  }
  return {median(workTimes), median(rivalTimes), median(ratios)};
}

void measureSideBySide(benchmark::State& state, const std::function<void()>& work,
                       const std::function<void()>& rival) {
  const Comparison result = compare(work, rival);
  for ([[maybe_unused]] const auto iteration : state) state.SetIterationTime(result.workNs * 1e-9);
  state.counters[kNanoseconds] = result.workNs;
  state.counters[kRivalNanoseconds] = result.rivalNs;
  state.counters[kRatio] = result.ratio;
}

}  // namespace tolvane::bench
