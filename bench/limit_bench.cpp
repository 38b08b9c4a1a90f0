#include "bench/limit_bench.h"

#include <memory>
#include <string>

#include "bench/bare_arithmetic.h"
#include "bench/bench_device.h"
#include "bench/cycle_bench.h"
#include "bench/rivals.h"
#include "bench/side_by_side.h"
#include "core/routing/io_proc.h"
#include "ctl/run/meter_bank.h"

namespace tolvane::bench {

namespace {

constexpr float kGain = 0.5F;

struct Layout {
  Arrangement arrangement;
  std::size_t inputs;
  std::size_t outputs;
  std::size_t frames;
  std::size_t routes;
  std::size_t into;  // outputs that the routes go to
};

constexpr Layout kPlanar = {Arrangement::planar, 64, 64, 512, 64, 64};
constexpr Layout kSummed = {Arrangement::planar, 64, 64, 512, 64, 8};
constexpr Layout kInterleaved64 = {Arrangement::interleaved, 64, 64, 512, 64, 64};
constexpr Layout kInterface = {Arrangement::interleaved, 18, 20, 128, 64, 20};
constexpr Layout kOneOfMany = {Arrangement::planar, 256, 256, 64, 1, 1};

using Work = std::function<void(BenchDevice&)>;

/// Registers one row: `work` against `rival`. Each has a device of its own, so neither finds the other's
/// lines in the cache.
void limit(const char* name, const char* label, double atMost, const Layout& layout, const Work& work,
           const Work& rival) {
  benchmark::RegisterBenchmark(
      (std::string("limit/") + name).c_str(),
      [=](benchmark::State& state) {
        BenchDevice ours(layout.arrangement, layout.inputs, layout.outputs, layout.frames);
        BenchDevice theirs(layout.arrangement, layout.inputs, layout.outputs, layout.frames);
        ours.publish(layout.routes, layout.into, kGain);
        theirs.publish(layout.routes, layout.into, kGain);
        measureSideBySide(
            state, [&] { work(ours); }, [&] { rival(theirs); }, Patience::much);
        state.counters[kLimit] = atMost;
        state.SetLabel(label);
      })
      ->Iterations(1)
      ->UseManualTime();
}

void cycle(BenchDevice& device) {
  device.cycle();
}
void copy(BenchDevice& device) {
  device.copy();
}
void clear(BenchDevice& device) {
  device.clear();
}
void saxpy(BenchDevice& device) {
  clearAndSaxpy(device, device.routes);
}
void loop(BenchDevice& device) {
  clearAndLoop(device, device.routes);
}
/// A cycle through the callback, as a device calls it.
void call(AudioDeviceIOProc callback, BenchDevice& device) {
  callback(1, nullptr, device.input.list(), nullptr, device.output.list(), nullptr, &device.context);
}
void callRun(BenchDevice& device) {
  call(&ctl::meteredIoProc, device);
}
void callWindow(BenchDevice& device) {
  call(&halIOProc, device);
}
void publish(BenchDevice& device) {
  writeConnections(&device.context, device.routes);
}

void registerInterfaceAgainstCopy() {
  benchmark::RegisterBenchmark(
      "limit/interface",
      [](benchmark::State& state) {
        BenchDevice ours(kInterface.arrangement, kInterface.inputs, kInterface.outputs, kInterface.frames);
        BenchDevice theirs(kInterface.arrangement, kInterface.inputs, kInterface.outputs, kInterface.frames);
        ours.publish(kInterface.routes, kInterface.into, kGain);
        CopyOfBoth both(theirs);
        measureSideBySide(
            state, [&] { ours.cycle(); }, [&] { both.copy(); }, Patience::much);
        state.counters[kLimit] = 2.5;
        state.SetLabel("64 routes, 18 in × 20 out interleaved, 128 frames|`memcpy` of both buffers");
      })
      ->Iterations(1)
      ->UseManualTime();
}

void registerInterfaceAgainstArithmetic() {
  static_assert(kInterface.frames == BareArithmetic::kFrames);
  benchmark::RegisterBenchmark(
      "limit/arithmetic",
      [](benchmark::State& state) {
        BenchDevice ours(kInterface.arrangement, kInterface.inputs, kInterface.outputs, kInterface.frames);
        ours.publish(kInterface.routes, kInterface.into, kGain);
        BareArithmetic bare(kInterface.inputs, kInterface.outputs, kInterface.routes);
        measureSideBySide(
            state, [&] { ours.cycle(); }, [&] { bare.run(); }, Patience::much);
        state.counters[kLimit] = 1.7;
        state.SetLabel(
            "the same|the bare arithmetic: 64 × 128 multiplications and additions in full vectors");
      })
      ->Iterations(1)
      ->UseManualTime();
}

void measureCurve(benchmark::State& state, Arrangement arrangement) {
  const auto routes = static_cast<std::size_t>(state.range(0));
  const auto frames = static_cast<std::size_t>(state.range(1));
  BenchDevice device(arrangement, routes, routes, frames);
  BenchDevice half(arrangement, routes, routes, frames / 2);
  device.publish(routes, routes, kGain);
  half.publish(routes, routes, kGain);
  measureSideBySide(
      state, [&] { device.cycle(); }, [&] { half.cycle(); }, Patience::much);
  state.counters[kRoutes] = static_cast<double>(routes);
  state.counters[kFrames] = static_cast<double>(frames);
  state.counters[kRouteFrameNs] = state.counters[kNanoseconds].value / static_cast<double>(routes * frames);
}

}  // namespace

void registerLimitBenchmarks() {
  limit("planar",
        "64 routes, 64 × 64 channels, one per output, planar, 512 frames|`memcpy` of the same bytes", 1.1,
        kPlanar, cycle, copy);
  limit("saxpy", "the same|clearing, and one `cblas_saxpy` per route", 0.7, kPlanar, cycle, saxpy);
  limit("summed", "the same, 8 routes into each of 8 outputs|`memcpy` of 64 channels", 1.3, kSummed, cycle,
        copy);
  limit("interleaved", "64 routes over 64-channel interleaved buffers, 512 frames|`memcpy` of the same bytes",
        1.5, kInterleaved64, cycle, copy);
  limit("strided", "the same|clearing, and a plain strided loop per route", 1.0, kInterleaved64, cycle, loop);
  registerInterfaceAgainstCopy();
  registerInterfaceAgainstArithmetic();
  limit("sparse",
        "1 route on a 256 × 256 device, planar, 64 frames|clearing the 256 output buffers one by one", 2.0,
        kOneOfMany, cycle, clear);
  limit(
      "doors",
      "a cycle of `tolvanectl run` with both doors closed, 64 routes, 18 in × 20 out interleaved, 128 frames|"
      "the same in the window",
      1.05, kInterface, callRun, callWindow);
  limit("publication", "64 routes published|a cycle of the first row", 0.05, kPlanar, publish, cycle);
}

void registerCurveBenchmarks() {
  benchmark::RegisterBenchmark("curve/planar",
                               [](benchmark::State& state) { measureCurve(state, Arrangement::planar); })
      ->ArgsProduct({{1, 2, 4, 8, 16, 32, 64}, {32, 64, 128, 256, 512, 1024, 2048, 4096}})
      ->ArgNames({"routes", "frames"})
      ->Iterations(1)
      ->UseManualTime();
}

}  // namespace tolvane::bench
