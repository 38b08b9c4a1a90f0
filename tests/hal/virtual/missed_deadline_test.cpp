// A deadline missed by a period or more is one overload, and no burst of cycles makes up for it.
#include <gtest/gtest.h>

#include "hal/virtual/virtual_device_run.h"

namespace tolvane::test {

namespace {

using namespace std::chrono_literals;

/// Notes when each cycle ended, and delays one of them.
class SlowTap final : public hal::VirtualTap {
 public:
  SlowTap(std::size_t slowCycle, std::chrono::milliseconds delay) : slowCycle_(slowCycle), delay_(delay) {}
  void observe(std::uint64_t /*firstFrame*/, std::uint32_t /*frames*/,
               const AudioBufferList& /*output*/) noexcept override {
    const std::size_t cycle = cycles.load();
    if (cycle == slowCycle_) std::this_thread::sleep_for(delay_);
    if (cycle < ends.size()) ends[cycle] = std::chrono::steady_clock::now();
    cycles.store(cycle + 1);
  }
  std::array<std::chrono::steady_clock::time_point, 64> ends{};
  std::atomic<std::size_t> cycles{0};

 private:
  std::size_t slowCycle_;
  std::chrono::milliseconds delay_;
};

class MissedDeadline : public VirtualDeviceTest {
 protected:
  /// Runs with a period of a tenth of a second, so that nothing but the tap makes a cycle late.
  UInt32 overloadsWith(SlowTap& tap, std::size_t cycles) {
    hal::VirtualDeviceConfig config;
    config.sampleRateHz = 10000.0;
    config.bufferFrames = 1000;
    config.outputTap = &tap;
    configure(config);
    const auto before = valueOf<UInt32>(device_, kAudioDeviceProcessorOverload);
    run([](auto&, auto&) {}, [&] { return tap.cycles.load() >= cycles; });
    return valueOf<UInt32>(device_, kAudioDeviceProcessorOverload) - before;
  }
};

TEST_F(MissedDeadline, isOneOverloadHoweverLateItIs) {
  SlowTap tap(2, 450ms);
  EXPECT_EQ(overloadsWith(tap, 6), 1U);
}

TEST_F(MissedDeadline, isNoneWhenTheCyclesAreInTime) {
  SlowTap tap(1000, 0ms);
  EXPECT_EQ(overloadsWith(tap, 6), 0U);
}

TEST_F(MissedDeadline, isFollowedByEvenCyclesWithoutABurst) {
  SlowTap tap(2, 450ms);
  overloadsWith(tap, 7);
  // The cycle after the miss comes at once, the next ones a period apart. The missed ones are not made up
  // for.
  for (std::size_t cycle = 4; cycle < 7; ++cycle) {
    EXPECT_GE(tap.ends[cycle] - tap.ends[cycle - 1], 50ms) << cycle;
  }
}

TEST_F(MissedDeadline, losesNoFrame) {
  struct FrameTap final : hal::VirtualTap {
    void observe(std::uint64_t firstFrame, std::uint32_t frames, const AudioBufferList&) noexcept override {
      if (firstFrame != next) contiguous = false;
      next = firstFrame + frames;
      if (++cycles == 3) std::this_thread::sleep_for(100ms);
    }
    std::uint64_t next = 0;
    std::atomic<bool> contiguous{true};
    std::atomic<int> cycles{0};
  } tap;
  hal::VirtualDeviceConfig config;
  config.outputTap = &tap;
  configure(config);
  run([](auto&, auto&) {}, [&] { return tap.cycles.load() > 8; });
  EXPECT_TRUE(tap.contiguous.load());
}

}  // namespace

}  // namespace tolvane::test
