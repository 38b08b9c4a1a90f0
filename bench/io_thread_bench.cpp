// What a running route adds to a thread that only sleeps from one cycle to the next: the time from the moment
// at which the virtual device's IO thread has woken until it has done all of the cycle's work, with 18
// inputs, 20 outputs and 64 frames a cycle.
//
// The sleep and the wake-up are not in the figure. They cost several times as much as the rest, and the
// machine decides how much: the figure with them differs more from run to run than all that we add.
//
// Prints one line: case|ours|rival|ratio|limit.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <thread>
#include <vector>

#include "engine/core_audio_engine.h"
#include "hal/virtual/sine_bank.h"
#include "hal/virtual/virtual_device.h"

namespace tolvane::bench {
namespace {

constexpr double kSampleRateHz = 48000.0;
constexpr std::uint32_t kFrames = 64;
constexpr double kPeriodNs = kFrames / kSampleRateHz * 1e9;
// The first cycles touch their memory for the first time.
constexpr std::size_t kFirstCycles = 100;
constexpr std::size_t kCycles = 4000;

std::int64_t monotonicNs() noexcept {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return std::int64_t{now.tv_sec} * 1'000'000'000 + now.tv_nsec;
}

/// The times at which the work of each cycle begins and ends. The device fills its input first, and shows its
/// output last.
class WorkTimes final : public hal::VirtualInput, public hal::VirtualTap {
 public:
  void fill(std::uint64_t firstFrame, std::uint32_t frames, AudioBufferList& input) noexcept override {
    beginNs_ = monotonicNs();
    sines_.fill(firstFrame, frames, input);
  }

  void observe(std::uint64_t /*firstFrame*/, std::uint32_t /*frames*/,
               const AudioBufferList& /*output*/) noexcept override {
    const std::size_t cycle = cycles_.load(std::memory_order_relaxed);
    if (cycle == kCycles) return;
    durationsNs_[cycle] = monotonicNs() - beginNs_;
    cycles_.store(cycle + 1, std::memory_order_release);
  }

  [[nodiscard]] bool isDone() const { return cycles_.load(std::memory_order_acquire) == kCycles; }

  /// The median: the thread loses the processor in few of the cycles.
  [[nodiscard]] double medianNs() const {
    std::vector<std::int64_t> sorted(durationsNs_ + kFirstCycles, durationsNs_ + kCycles);
    const auto middle = sorted.begin() + static_cast<std::ptrdiff_t>(sorted.size() / 2);
    std::nth_element(sorted.begin(), middle, sorted.end());
    return static_cast<double>(*middle);
  }

 private:
  hal::SineBank sines_{kSampleRateHz};
  std::int64_t beginNs_ = 0;
  std::int64_t durationsNs_[kCycles] = {};
  std::atomic<std::size_t> cycles_ = 0;
};

bool run(WorkTimes& times) {
  hal::VirtualDeviceConfig config;
  config.sampleRateHz = kSampleRateHz;
  config.bufferFrames = kFrames;
  config.inputSignal = &times;
  config.outputTap = &times;
  if (hal::configureVirtualDevice(config) != noErr) return false;
  const std::vector<PatchConnection> routes = {{0, 0, 0.5F, true}};
  CoreAudioEngine engine;
  const std::vector<AudioDeviceInfo> devices = engine.getAllDevices();
  if (devices.empty() || engine.start(devices.back().id, routes))
    return false;  // the virtual device is the last
  while (!times.isDone()) std::this_thread::sleep_for(std::chrono::milliseconds(50));
  engine.stop();
  return true;
}

}  // namespace
}  // namespace tolvane::bench

int main() {
  using namespace tolvane::bench;
  static WorkTimes times;
  if (!run(times)) {
    std::fputs("io_thread_bench: the virtual device does not run\n", stderr);
    return 1;
  }
  const double workNs = times.medianNs();
  std::printf(
      "what a running route adds to a thread that only sleeps, 18 × 20 at 64 frames, virtual device|%.2f µs|"
      "the period, %.1f µs|%.4f|0.002\n",
      workNs / 1e3, kPeriodNs / 1e3, workNs / kPeriodNs);
  return 0;
}
