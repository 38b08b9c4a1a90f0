// Share of one processor that a running route takes: the CPU time of the virtual device's IO thread against
// the length of the cycles, with 18 inputs, 20 outputs and 64 frames a cycle. The reference is a thread that
// only sleeps to the same deadlines.
//
// Prints one line: case|ours|rival|ratio|limit.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <thread>
#include <vector>

#include "engine/core_audio_engine.h"
#include "hal/support/realtime.h"
#include "hal/virtual/deadline_clock.h"
#include "hal/virtual/virtual_device.h"

namespace tolvane::bench {
namespace {

constexpr double kSampleRateHz = 48000.0;
constexpr std::uint32_t kFrames = 64;
constexpr std::uint64_t kCyclesAWindow = 250;
constexpr std::size_t kWindows = 31;

double threadCpuSeconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

/// Seconds per cycle: the median of the differences between neighbours, divided by the cycles of a window.
double secondsACycle(const std::vector<double>& seconds) {
  std::vector<double> windows;
  for (std::size_t w = 1; w < seconds.size(); ++w) windows.push_back(seconds[w] - seconds[w - 1]);
  const auto middle = windows.begin() + static_cast<std::ptrdiff_t>(windows.size() / 2);
  std::nth_element(windows.begin(), middle, windows.end());
  return *middle / static_cast<double>(kCyclesAWindow);
}

/// Records the IO thread's CPU time over windows of many cycles. Reads the clock only once a window, so the
/// reading costs nearly nothing.
class CpuTap final : public hal::VirtualTap {
 public:
  void observe(std::uint64_t /*firstFrame*/, std::uint32_t /*frames*/,
               const AudioBufferList& /*output*/) noexcept override {
    if (cycle_++ % kCyclesAWindow != 0) return;
    const std::size_t count = count_.load(std::memory_order_relaxed);
    if (count == std::size(seconds_)) return;
    seconds_[count] = threadCpuSeconds();
    count_.store(count + 1, std::memory_order_release);
  }

  [[nodiscard]] bool isDone() const { return count_.load(std::memory_order_acquire) == std::size(seconds_); }

  /// CPU seconds at the start of each window, except the first. That one includes the start of the device.
  [[nodiscard]] std::vector<double> seconds() const { return {std::begin(seconds_) + 1, std::end(seconds_)}; }

 private:
  std::uint64_t cycle_ = 0;
  double seconds_[kWindows + 2] = {};
  std::atomic<std::size_t> count_ = 0;
};

bool run(CpuTap& tap) {
  hal::VirtualDeviceConfig config;
  config.sampleRateHz = kSampleRateHz;
  config.bufferFrames = kFrames;
  config.outputTap = &tap;
  if (hal::configureVirtualDevice(config) != noErr) return false;
  const std::vector<PatchConnection> routes = {{0, 0, 0.5F, true}};
  CoreAudioEngine engine;
  const std::vector<AudioDeviceInfo> devices = engine.getAllDevices();
  if (devices.empty() || engine.start(devices.back().id, routes))
    return false;  // the virtual device is the last
  while (!tap.isDone()) std::this_thread::sleep_for(std::chrono::milliseconds(50));
  engine.stop();
  return true;
}

/// CPU seconds per cycle of a thread of the same kind that only sleeps.
double idleSecondsACycle() {
  std::vector<double> seconds;
  std::thread sleeper([&seconds] {
    hal::becomeRealtime();
    const std::atomic<bool> stop = false;
    hal::DeadlineClock clock(kSampleRateHz, kFrames);
    while (seconds.size() <= kWindows) {
      seconds.push_back(threadCpuSeconds());
      for (std::uint64_t cycle = 0; cycle < kCyclesAWindow; ++cycle) {
        clock.sleep(stop);
        clock.begin();
      }
    }
  });
  sleeper.join();
  return secondsACycle(seconds);
}

}  // namespace
}  // namespace tolvane::bench

int main() {
  static tolvane::bench::CpuTap tap;
  if (!tolvane::bench::run(tap)) {
    std::fputs("io_thread_bench: the virtual device does not run\n", stderr);
    return 1;
  }
  const double periodSeconds = tolvane::bench::kFrames / tolvane::bench::kSampleRateHz;
  const double cpuSeconds = tolvane::bench::secondsACycle(tap.seconds());
  std::printf(
      "CPU of a running route, 18 × 20 at 64 frames, virtual device|%.1f µs|the period, %.1f µs, of which a "
      "thread that only sleeps takes %.1f µs|%.4f|0.01\n",
      cpuSeconds * 1e6, periodSeconds * 1e6, tolvane::bench::idleSecondsACycle() * 1e6,
      cpuSeconds / periodSeconds);
  return 0;
}
