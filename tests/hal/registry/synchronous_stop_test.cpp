// After a stop has returned, the callback is not running and does not run again.
#include <atomic>
#include <thread>

#include <gtest/gtest.h>

#include "hal/hal_client.h"
#include "hal/virtual/virtual_device.h"

namespace tolvane::test {

namespace {

class SynchronousStop : public testing::Test {
 protected:
  void SetUp() override {
    hal::VirtualDeviceConfig config;
    config.bufferFrames = 16;  // a third of a millisecond: a callback is nearly always about to run
    ASSERT_EQ(hal::configureVirtualDevice(config), noErr);
  }
  void TearDown() override { EXPECT_EQ(hal::configureVirtualDevice({}), noErr); }

  const AudioObjectID device_ = deviceList().back();
};

TEST_F(SynchronousStop, holdsOverHundredsOfStops) {
  std::atomic<bool> stopped{true};
  std::atomic<int> calls{0};
  std::atomic<int> late{0};
  RegisteredProc proc(device_, [&](auto&, auto&) {
    if (stopped.load()) ++late;
    ++calls;
    if (stopped.load()) ++late;
  });
  for (int round = 0; round < 300; ++round) {
    const int before = calls.load();
    stopped = false;
    ASSERT_EQ(proc.start(), noErr);
    ASSERT_TRUE(eventually([&] { return calls.load() > before; }));
    ASSERT_EQ(proc.stop(), noErr);
    stopped = true;
  }
  EXPECT_EQ(late.load(), 0);
}

TEST_F(SynchronousStop, holdsForDestroying) {
  for (int round = 0; round < 100; ++round) {
    std::atomic<bool> destroyed{false};
    std::atomic<int> late{0};
    std::atomic<int> calls{0};
    {
      RegisteredProc proc(device_, [&](auto&, auto&) {
        ++calls;
        if (destroyed.load()) ++late;
      });
      ASSERT_EQ(proc.start(), noErr);
      ASSERT_TRUE(eventually([&] { return calls.load() > 0; }));
    }
    destroyed = true;
    ASSERT_EQ(late.load(), 0);
  }
}

TEST_F(SynchronousStop, waitsForACallbackThatRuns) {
  std::atomic<bool> inside{false};
  std::atomic<bool> left{false};
  RegisteredProc proc(device_, [&](auto&, auto&) {
    inside = true;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    left = true;
  });
  ASSERT_EQ(proc.start(), noErr);
  ASSERT_TRUE(eventually([&] { return inside.load(); }));
  ASSERT_EQ(proc.stop(), noErr);
  EXPECT_TRUE(left.load());
}

TEST_F(SynchronousStop, ofTwoThreadsBothReturnAfterTheCallback) {
  for (int round = 0; round < 50; ++round) {
    std::atomic<int> stopsReturned{0};
    std::atomic<int> late{0};
    std::atomic<int> calls{0};
    RegisteredProc proc(device_, [&](auto&, auto&) {
      ++calls;
      if (stopsReturned.load() > 0) ++late;
    });
    ASSERT_EQ(proc.start(), noErr);
    ASSERT_TRUE(eventually([&] { return calls.load() > 0; }));
    std::thread other([&] {
      EXPECT_EQ(proc.stop(), noErr);
      ++stopsReturned;
    });
    EXPECT_EQ(proc.stop(), noErr);
    ++stopsReturned;
    other.join();
    EXPECT_EQ(late.load(), 0);
  }
}

TEST_F(SynchronousStop, startsAndStopsRepeatHarmlessly) {
  std::atomic<int> calls{0};
  RegisteredProc proc(device_, [&](auto&, auto&) { ++calls; });
  EXPECT_EQ(proc.stop(), noErr);
  EXPECT_EQ(proc.start(), noErr);
  EXPECT_EQ(proc.start(), noErr);
  EXPECT_TRUE(eventually([&] { return calls.load() > 3; }));
  EXPECT_EQ(proc.stop(), noErr);
  EXPECT_EQ(proc.stop(), noErr);
}

TEST_F(SynchronousStop, isRefusedOnTheIoThread) {
  std::atomic<int> answers{0};
  OSStatus start = noErr;
  OSStatus stop = noErr;
  OSStatus destroy = noErr;
  AudioDeviceIOProcID id = nullptr;
  RegisteredProc proc(device_, [&](auto&, auto&) {
    if (answers.load() != 0) return;
    start = AudioDeviceStart(device_, id);
    stop = AudioDeviceStop(device_, id);
    destroy = AudioDeviceDestroyIOProcID(device_, id);
    ++answers;
  });
  id = proc.id();
  ASSERT_EQ(proc.start(), noErr);
  ASSERT_TRUE(eventually([&] { return answers.load() == 1; }));
  ASSERT_EQ(proc.stop(), noErr);
  EXPECT_EQ(start, kAudioHardwareIllegalOperationError);
  EXPECT_EQ(stop, kAudioHardwareIllegalOperationError);
  EXPECT_EQ(destroy, kAudioHardwareIllegalOperationError);
}

TEST_F(SynchronousStop, leavesTheOthersOfTheDeviceRunning) {
  std::atomic<int> first{0};
  std::atomic<int> second{0};
  RegisteredProc one(device_, [&](auto&, auto&) { ++first; });
  RegisteredProc two(device_, [&](auto&, auto&) { ++second; });
  ASSERT_EQ(one.start(), noErr);
  ASSERT_EQ(two.start(), noErr);
  ASSERT_TRUE(eventually([&] { return first.load() > 2 && second.load() > 2; }));
  ASSERT_EQ(one.stop(), noErr);
  const int firstAtStop = first.load();
  const int secondAtStop = second.load();
  EXPECT_TRUE(eventually([&] { return second.load() > secondAtStop + 10; }));
  EXPECT_EQ(first.load(), firstAtStop);
}

}  // namespace

}  // namespace tolvane::test
