// The buffer size, set through the property.
#include <gtest/gtest.h>

#include "hal/virtual/virtual_device_run.h"

namespace tolvane::test {

namespace {

class BufferFrames : public VirtualDeviceTest {
 protected:
  OSStatus set(UInt32 frames) {
    const auto where = address(kAudioDevicePropertyBufferFrameSize);
    return AudioObjectSetPropertyData(device_, &where, 0, nullptr, sizeof frames, &frames);
  }
  UInt32 get() { return valueOf<UInt32>(device_, kAudioDevicePropertyBufferFrameSize); }
};

TEST_F(BufferFrames, areReadBackAsSet) {
  for (const UInt32 frames : {16U, 64U, 8192U, 1U << 8U}) {
    EXPECT_EQ(set(frames), noErr);
    EXPECT_EQ(get(), frames);
  }
}

TEST_F(BufferFrames, outOfRangeChangeNothing) {
  EXPECT_EQ(set(15), kAudioHardwareIllegalOperationError);
  EXPECT_EQ(set(8193), kAudioHardwareIllegalOperationError);
  EXPECT_EQ(set(0), kAudioHardwareIllegalOperationError);
  EXPECT_EQ(get(), 512U);
}

TEST_F(BufferFrames, ofTheWrongSizeChangeNothing) {
  const auto where = address(kAudioDevicePropertyBufferFrameSize);
  const UInt64 wide = 256;
  EXPECT_EQ(AudioObjectSetPropertyData(device_, &where, 0, nullptr, 8, &wide),
            kAudioHardwareBadPropertySizeError);
  EXPECT_EQ(AudioObjectSetPropertyData(device_, &where, 0, nullptr, 3, &wide),
            kAudioHardwareBadPropertySizeError);
  EXPECT_EQ(get(), 512U);
}

TEST_F(BufferFrames, changeUnderARunningCallback) {
  std::atomic<UInt32> seen{0};
  RegisteredProc proc(device_, [&](const AudioBufferList& input, AudioBufferList& output) {
    if (input.mBuffers[1].mDataByteSize != output.mBuffers[0].mDataByteSize * 16) return;
    seen = output.mBuffers[0].mDataByteSize / 4;
  });
  ASSERT_EQ(proc.start(), noErr);
  for (const UInt32 frames : {512U, 64U, 1024U, 8192U, 256U}) {
    EXPECT_EQ(set(frames), noErr);
    EXPECT_TRUE(eventually([&] { return seen.load() == frames; })) << frames;
    EXPECT_TRUE(eventually([&] { return get() == frames; })) << frames;
  }
  ASSERT_EQ(proc.stop(), noErr);
}

}  // namespace

}  // namespace tolvane::test
