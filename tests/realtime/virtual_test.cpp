// The virtual device's IO path, with the plain callback and with the one that meters.
#include <sys/syscall.h>

#include "ctl/run/meter_bank.h"
#include "engine/core_audio_engine.h"
#include "hal/virtual/virtual_device_run.h"
#include "realtime/io_path_watch.h"

namespace tolvane::test {
namespace {

/// How its thread waits for the next cycle.
constexpr AllowedCall kWaits[] = {{"clock_nanosleep", SYS_clock_nanosleep}, {nullptr, -1}};

std::vector<PatchConnection> everyRoute() {
  std::vector<PatchConnection> routes;
  for (std::int64_t r = 0; r < 64; ++r) routes.push_back({r % 18, r % 20, r % 3 == 0 ? 1.0F : 0.5F, true});
  return routes;
}

class VirtualIoPath : public VirtualDeviceTest {
 protected:
  /// Short cycles, so that many of them take little time.
  void start() {
    hal::VirtualDeviceConfig config;
    config.sampleRateHz = 1e6;
    config.bufferFrames = 16;
    configure(config);
    ASSERT_FALSE(engine_.start(device_, everyRoute()));
  }
  void TearDown() override {
    engine_.stop();
    VirtualDeviceTest::TearDown();
  }

  CoreAudioEngine engine_{&watchedIoProc};
};

TEST_F(VirtualIoPath, AllocatesTwiceAndNothingElseInEveryCycle) {
  IoPathWatch watch(IoPathWatch::Part::wholeThread, kWaits);
  ASSERT_NO_FATAL_FAILURE(start());
  expectRightCycles(watch, kWatchedCycles);
  engine_.stop();
}

TEST_F(VirtualIoPath, DoesSoWithMetersToo) {
  ctl::MeterBank bank(18, 20);
  bank.meter(everyRoute());
  ctl::setMeterBank(&bank);
  IoPathWatch watch(IoPathWatch::Part::wholeThread, kWaits, &ctl::meteredIoProc);
  ASSERT_NO_FATAL_FAILURE(start());
  expectRightCycles(watch, kWatchedCycles);
  engine_.stop();
  EXPECT_GE(bank.cycles(), kWatchedCycles);
  ctl::setMeterBank(nullptr);
}

TEST_F(VirtualIoPath, EachMisdeedIsSeen) {
  IoPathWatch watch(IoPathWatch::Part::wholeThread, kWaits);
  ASSERT_NO_FATAL_FAILURE(start());
  expectEachMisdeedIsSeen(watch);
  engine_.stop();
}

}  // namespace
}  // namespace tolvane::test
