// The driver that docs/add-a-driver.md makes.
#include <atomic>
#include <chrono>
#include <thread>

#include <gtest/gtest.h>

#include "hal/silence/silence_driver.h"
#include "support/eventually.h"

namespace tolvane::test {
namespace {

class CycleCounter final : public hal::SessionClient {
 public:
  void cycle(const hal::IoCycle& cycle) noexcept override {
    inputChannels = cycle.input->mBuffers[0].mNumberChannels;
    outputBytes = cycle.output->mBuffers[0].mDataByteSize;
    ++cycles;
  }
  void overload() noexcept override {}
  void aliveChanged(bool /*alive*/) noexcept override {}
  void formatChanged(double /*sampleRateHz*/, std::uint32_t /*bufferFrames*/) noexcept override {}

  std::atomic<int> cycles{0};
  std::atomic<UInt32> inputChannels{0};
  std::atomic<UInt32> outputBytes{0};
};

TEST(AddADriver, TheDriverOfThePageListsItsDevice) {
  const auto devices = hal::makeSilenceDriver()->devices();
  ASSERT_EQ(devices.size(), 1U);
  EXPECT_EQ(devices.front().uid, "silence:1");
  EXPECT_EQ(devices.front().inputStreams, hal::StreamLayout{2});
}

TEST(AddADriver, TheDriverOfThePageRunsItsClientUntilTheSessionEnds) {
  const auto driver = hal::makeSilenceDriver();
  CycleCounter client;
  auto started = driver->start(driver->devices().front(), client);
  ASSERT_EQ(started.status, noErr);
  EXPECT_TRUE(eventually([&] { return client.cycles.load() > 3; }));
  EXPECT_EQ(client.inputChannels.load(), 2U);
  EXPECT_EQ(client.outputBytes.load(), 512U * 2U * sizeof(Float32));
  started.session.reset();
  const int cycles = client.cycles.load();
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_EQ(client.cycles.load(), cycles);
}

}  // namespace
}  // namespace tolvane::test
