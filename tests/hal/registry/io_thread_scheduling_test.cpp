// The scheduling of the callback's thread, as the device reports it.
#include <thread>

#include <pthread.h>
#include <sched.h>

#include "hal/registry/scripted_hal_test.h"

namespace tolvane::test {

namespace {

class IoThreadScheduling : public ScriptedHal {
 protected:
  static OSStatus status(AudioObjectID device) {
    const auto where = address(kTolvaneDevicePropertyIOThreadScheduling);
    TolvaneThreadScheduling value{};
    UInt32 size = sizeof value;
    return AudioObjectGetPropertyData(device, &where, 0, nullptr, &size, &value);
  }

  static TolvaneThreadScheduling value(AudioObjectID device) {
    return valueOf<TolvaneThreadScheduling>(device, kTolvaneDevicePropertyIOThreadScheduling);
  }
};

TEST_F(IoThreadScheduling, IsNotThereUnlessACallbackRuns) {
  const AudioObjectID device = listOne();
  RegisteredProc proc(device, [](auto&, auto&) {});
  EXPECT_EQ(status(device), OSStatus{kAudioHardwareNotRunningError});
  ASSERT_EQ(proc.start(), noErr);
  EXPECT_EQ(status(device), OSStatus{kAudioHardwareNotRunningError});  // no cycle yet
  EXPECT_TRUE(first_.cycle(256));
  EXPECT_EQ(status(device), noErr);
  ASSERT_EQ(proc.stop(), noErr);
  EXPECT_EQ(status(device), OSStatus{kAudioHardwareNotRunningError});
}

TEST_F(IoThreadScheduling, IsThatOfTheThreadNow) {
  const AudioObjectID device = listOne();
  RegisteredProc proc(device, [](auto&, auto&) {});
  ASSERT_EQ(proc.start(), noErr);
  std::atomic<bool> hasRun{false};
  std::atomic<bool> isOver{false};
  std::thread io([&] {
    EXPECT_TRUE(first_.cycle(256));
    hasRun = true;
    while (!isOver) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  });
  EXPECT_TRUE(eventually([&] { return hasRun.load(); }));
  EXPECT_EQ(value(device).mPolicy, SCHED_OTHER);
  EXPECT_EQ(value(device).mPriority, 0);
  // Any user may choose this policy. A service grants real-time priority in the same way, after the first
  // cycles.
  const sched_param none{};
  EXPECT_EQ(pthread_setschedparam(io.native_handle(), SCHED_BATCH, &none), 0);
  EXPECT_EQ(value(device).mPolicy, SCHED_BATCH);
  isOver = true;
  io.join();
  ASSERT_EQ(proc.stop(), noErr);
}

}  // namespace

}  // namespace tolvane::test
