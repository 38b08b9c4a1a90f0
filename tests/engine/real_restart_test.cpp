// The callback's trace over real starts and stops, on the virtual device. Runs in a child process, because
// the trace appears once per process.
#include <atomic>
#include <cstdio>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "engine/core_audio_engine.h"
#include "hal/hal_client.h"
#include "hal/virtual/virtual_device.h"
#include "support/captured_output.h"
#include "support/child_process.h"
#include "support/eventually.h"

namespace tolvane::test {
namespace {

using testing::ElementsAre;
using testing::StartsWith;

/// Counts the cycles of all runs.
class CycleCount : public hal::VirtualTap {
 public:
  void observe(std::uint64_t /*firstFrame*/, std::uint32_t /*frames*/,
               const AudioBufferList& /*output*/) noexcept override {
    ++cycles_;
  }
  /// True if `more` further cycles run.
  bool runs(int more) {
    const int until = cycles_ + more;
    return eventually([this, until] { return cycles_ >= until; });
  }

 private:
  std::atomic<int> cycles_ = 0;
};

bool runFor(CoreAudioEngine& engine, CycleCount& tap, int cycles) {
  const std::vector<PatchConnection> routes = {{0, 0, 1.0F, true}};
  if (engine.start(deviceList().back(), routes)) return false;
  const bool ran = tap.runs(cycles);
  engine.stop();
  return ran;
}

std::vector<std::string> startingWith(const std::string& start, const std::vector<std::string>& lines) {
  std::vector<std::string> result;
  for (const std::string& line : lines) {
    if (line.rfind(start, 0) == 0) result.push_back(line);
  }
  return result;
}

TEST(RealRestartTest, CyclesAfterAStopAndAStartPrintNoTrace) {
  const ChildResult child = runInChild([] {
    CycleCount tap;
    hal::VirtualDeviceConfig config;
    config.bufferFrames = 64;
    config.outputTap = &tap;
    CoreAudioEngine engine;
    if (hal::configureVirtualDevice(config) != noErr || !runFor(engine, tap, 20)) std::exit(1);
    std::puts("stopped");
    if (!runFor(engine, tap, 20) || !runFor(engine, tap, 20)) std::exit(2);
  });
  ASSERT_EQ(child.exitStatus, 0);
  const std::size_t stop = child.standardOutput.find("stopped\n");
  ASSERT_NE(stop, std::string::npos);
  const std::vector<std::string> before = linesOf(child.standardOutput.substr(0, stop));
  const std::vector<std::string> after = linesOf(child.standardOutput.substr(stop));
  EXPECT_THAT(startingWith("[IOProc]", before),
              ElementsAre(StartsWith("[IOProc] first call clientData=0x"), "[IOProc] maxIn=18 maxOut=20",
                          "[IOProc] flattening input ABL...", "[IOProc] inCh=18 — flattening output ABL...",
                          "[IOProc] outCh=20", "[IOProc] frameCount=64", "[IOProc] patchCount=1 routing...",
                          "[IOProc] first call completed OK ✓"));
  EXPECT_THAT(startingWith("[IOProc]", after), testing::IsEmpty());
  EXPECT_EQ(startingWith("[Engine]", before).size(), 6U);
  EXPECT_EQ(startingWith("[Engine]", after).size(), 12U);
}

}  // namespace
}  // namespace tolvane::test
