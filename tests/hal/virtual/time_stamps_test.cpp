// The time stamps of a cycle: frames of the run, and the monotonic clock.
#include <gtest/gtest.h>

#include "hal/virtual/virtual_device_run.h"

namespace tolvane::test {

namespace {

struct Times {
  AudioTimeStamp now;
  AudioTimeStamp input;
  AudioTimeStamp output;
};

struct Log {
  std::array<Times, 4> cycles;
  std::atomic<std::size_t> count{0};
};

OSStatus logTimes(AudioObjectID, const AudioTimeStamp* now, const AudioBufferList*,
                  const AudioTimeStamp* input, AudioBufferList*, const AudioTimeStamp* output,
                  void* clientData) {
  auto& log = *static_cast<Log*>(clientData);
  const std::size_t at = log.count.load();
  if (at >= log.cycles.size()) return noErr;
  log.cycles[at] = {*now, *input, *output};
  log.count.store(at + 1);
  return noErr;
}

class VirtualTimeStamps : public VirtualDeviceTest {};

TEST_F(VirtualTimeStamps, countFramesAndNanoseconds) {
  hal::VirtualDeviceConfig config;
  config.sampleRateHz = 32000.0;
  config.bufferFrames = 640;  // 20 ms
  configure(config);
  Log log;
  AudioDeviceIOProcID id = nullptr;
  ASSERT_EQ(AudioDeviceCreateIOProcID(device_, logTimes, &log, &id), noErr);
  ASSERT_EQ(AudioDeviceStart(device_, id), noErr);
  EXPECT_TRUE(eventually([&] { return log.count.load() == log.cycles.size(); }));
  ASSERT_EQ(AudioDeviceDestroyIOProcID(device_, id), noErr);
  for (std::size_t c = 0; c < log.cycles.size(); ++c) {
    const Times& times = log.cycles[c];
    const auto first = static_cast<double>(c * 640);
    EXPECT_EQ(times.input.mSampleTime, first);
    EXPECT_EQ(times.now.mSampleTime, first + 640.0);
    EXPECT_EQ(times.output.mSampleTime, first + 640.0);
    EXPECT_EQ(times.now.mHostTime - times.input.mHostTime, 20'000'000U);
    for (const AudioTimeStamp& stamp : {times.now, times.input, times.output}) {
      EXPECT_EQ(stamp.mFlags, kAudioTimeStampSampleTimeValid | kAudioTimeStampHostTimeValid);
    }
    if (c > 0) {
      const UInt64 step = times.now.mHostTime - log.cycles[c - 1].now.mHostTime;
      EXPECT_TRUE(step == 20'000'000U || step > 40'000'000U) << step;  // later only after a missed deadline
    }
  }
}

}  // namespace

}  // namespace tolvane::test
