// The cost of a cycle by routes, channels, frames and buffer arrangement, against copying the device's bytes.
#include "bench/cycle_bench.h"

#include <cstddef>
#include <string>

#include "bench/bench_device.h"
#include "bench/side_by_side.h"

namespace tolvane::bench {

namespace {

void measureCycle(benchmark::State& state, Arrangement arrangement) {
  const auto channels = static_cast<std::size_t>(state.range(0));
  const auto frames = static_cast<std::size_t>(state.range(1));
  const auto routes = static_cast<std::size_t>(state.range(2));
  BenchDevice device(arrangement, channels, channels, frames);
  device.publish(routes, channels, 0.5F);
  measureSideBySide(
      state, [&] { device.cycle(); }, [&] { device.copy(); }, Patience::little);
  state.counters[kChannels] = static_cast<double>(channels);
  state.counters[kFrames] = static_cast<double>(frames);
  state.counters[kRoutes] = static_cast<double>(routes);
  state.counters[kInterleaved] = arrangement == Arrangement::interleaved ? 1.0 : 0.0;
}

}  // namespace

void registerCycleBenchmarks() {
  for (const Arrangement arrangement : {Arrangement::planar, Arrangement::interleaved}) {
    const std::string name = arrangement == Arrangement::planar ? "cycle/planar" : "cycle/interleaved";
    benchmark::RegisterBenchmark(name.c_str(),
                                 [arrangement](benchmark::State& state) { measureCycle(state, arrangement); })
        ->ArgsProduct({{2, 18, 64, 256}, {32, 64, 128, 256, 512, 1024, 2048, 4096}, {1, 8, 64}})
        ->ArgNames({"channels", "frames", "routes"})
        ->Iterations(1)
        ->UseManualTime();
  }
}

}  // namespace tolvane::bench
