// The virtual device as fast as it can, and with its outputs returned to its inputs.
#include <gtest/gtest.h>

#include "hal/virtual/virtual_device_run.h"

namespace tolvane::test {

namespace {

class Rehearsal : public VirtualDeviceTest {
 protected:
  OSStatus set(const TolvaneRehearsal& rehearsal, UInt32 size = sizeof(TolvaneRehearsal)) const {
    const auto where = address(kTolvaneDevicePropertyRehearsal);
    return AudioObjectSetPropertyData(device_, &where, 0, nullptr, size, &rehearsal);
  }
  static hal::VirtualDeviceConfig streams(const hal::StreamLayout& inputs, const hal::StreamLayout& outputs,
                                          std::uint32_t frames) {
    hal::VirtualDeviceConfig config;
    config.inputStreams = inputs;
    config.outputStreams = outputs;
    config.bufferFrames = frames;
    return config;
  }
  void TearDown() override {
    EXPECT_EQ(set({0, 0}), noErr);
    VirtualDeviceTest::TearDown();
  }
};

TEST_F(Rehearsal, canBeSetButNotRead) {
  EXPECT_EQ(set({1, 1}), noErr);
  EXPECT_EQ(set({1, 1}, 4), kAudioHardwareBadPropertySizeError);
  const auto where = address(kTolvaneDevicePropertyRehearsal);
  TolvaneRehearsal value{};
  UInt32 size = sizeof value;
  EXPECT_EQ(AudioObjectGetPropertyData(device_, &where, 0, nullptr, &size, &value),
            kAudioHardwareUnsupportedOperationError);
}

TEST_F(Rehearsal, freewheelingRunsAnHourOfCyclesInAMoment) {
  configure(streams({1}, {1}, 8192));
  ASSERT_EQ(set({1, 0}), noErr);
  std::atomic<std::uint64_t> frames = 0;
  const auto begin = std::chrono::steady_clock::now();
  const auto overloads = valueOf<UInt32>(device_, kAudioDeviceProcessorOverload);
  run([&](auto& /*input*/, auto& output) { frames += output.mBuffers[0].mDataByteSize / sizeof(float); },
      [&] { return frames >= 3600U * 48000U; });
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(30));
  EXPECT_EQ(valueOf<UInt32>(device_, kAudioDeviceProcessorOverload), overloads);
}

TEST_F(Rehearsal, loopbackReturnsEachOutputInTheNextCycle) {
  configure(streams({2, 1}, {1, 1}, 64));
  ASSERT_EQ(set({1, 1}), noErr);
  std::atomic<int> cycles = 0;
  std::atomic<int> wrong = 0;
  run(
      [&](auto& input, auto& output) {
        const int cycle = cycles;
        const auto value = [](int inCycle, int channel, int frame) {
          return inCycle < 0 ? 0.0F : static_cast<float>(inCycle * 1000 + channel * 100 + frame);
        };
        for (int f = 0; f < 64; ++f) {
          const float* const pair = static_cast<const float*>(input.mBuffers[0].mData) + 2 * f;
          for (int c = 0; c < 2; ++c) wrong += pair[c] != value(cycle - 1, c, f) ? 1 : 0;
          wrong += static_cast<const float*>(input.mBuffers[1].mData)[f] != 0.0F ? 1 : 0;
          for (int c = 0; c < 2; ++c) static_cast<float*>(output.mBuffers[c].mData)[f] = value(cycle, c, f);
        }
        ++cycles;
      },
      [&] { return cycles >= 1000; });
  EXPECT_EQ(wrong, 0);
}

}  // namespace

}  // namespace tolvane::test
