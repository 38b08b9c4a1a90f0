// Stopping in every state that a driver can hang in.
#include "hal/registry/scripted_hal_test.h"

namespace tolvane::test {

namespace {

using namespace std::chrono_literals;

class HungDriver : public ScriptedHal {};

TEST_F(HungDriver, inItsEndDoesNotHoldTheStop) {
  const AudioObjectID device = listOne();
  std::atomic<int> cycles{0};
  RegisteredProc proc(device, [&](auto&, auto&) { ++cycles; });
  ASSERT_EQ(proc.start(), noErr);
  first_.ending.close();
  EXPECT_EQ(proc.stop(), noErr);
  EXPECT_EQ(first_.ending.held(), 1);
  EXPECT_EQ(first_.liveSessions(), 1);
  first_.cycleOf(0, 256);
  EXPECT_EQ(cycles.load(), 0);
  EXPECT_EQ(proc.stop(), noErr);
  EXPECT_EQ(proc.start(), noErr);  // a new session beside the hung one
  first_.cycleOf(0, 256);
  EXPECT_EQ(cycles.load(), 0);
  first_.cycleOf(1, 256);
  EXPECT_EQ(cycles.load(), 1);
  first_.ending.open();
  EXPECT_TRUE(eventually([&] { return first_.liveSessions() == 1; }));
}

TEST_F(HungDriver, afterAStopGivesSilence) {
  const AudioObjectID device = listOne(1, 1);
  RegisteredProc proc(device, [](auto&, auto&) {});
  ASSERT_EQ(proc.start(), noErr);
  first_.ending.close();
  EXPECT_EQ(proc.stop(), noErr);
  EXPECT_EQ(first_.firstOutputAfterCycleOf(0, 4), 0.0F);
}

TEST_F(HungDriver, inItsStartDoesNotHoldTheStop) {
  const AudioObjectID device = listOne();
  std::atomic<int> cycles{0};
  RegisteredProc proc(device, [&](auto&, auto&) { ++cycles; });
  first_.starting.close();
  std::atomic<OSStatus> started{-1};
  std::thread starter([&] { started = proc.start(); });
  ASSERT_TRUE(eventually([&] { return first_.starting.held() == 1; }));
  EXPECT_EQ(proc.stop(), noErr);
  starter.join();
  EXPECT_EQ(started.load(), kAudioHardwareNotRunningError);
  first_.starting.open();
  // The hung start still makes a session, which is ended at once.
  EXPECT_TRUE(eventually([&] { return first_.starts() == 1 && first_.liveSessions() == 0; }));
  EXPECT_EQ(cycles.load(), 0);
}

TEST_F(HungDriver, inARestartDoesNotHoldTheStop) {
  const AudioObjectID device = listOne();
  RegisteredProc proc(device, [](auto&, auto&) {});
  ASSERT_EQ(proc.start(), noErr);
  first_.starting.close();
  ASSERT_TRUE(first_.setAlive(false));
  ASSERT_TRUE(eventually([&] { return first_.starting.held() == 1; }));
  EXPECT_FALSE(alive(device));
  EXPECT_EQ(proc.stop(), noErr);
  first_.starting.open();
  EXPECT_TRUE(eventually([&] { return first_.starts() == 2 && first_.liveSessions() == 0; }));
}

TEST_F(HungDriver, everywhereDoesNotHoldTheDestroying) {
  const AudioObjectID device = listOne();
  {
    RegisteredProc proc(device, [](auto&, auto&) {});
    ASSERT_EQ(proc.start(), noErr);
    first_.listing.close();
    first_.starting.close();
    first_.ending.close();
    first_.setting.close();
    ASSERT_TRUE(first_.setAlive(false));
    ASSERT_TRUE(eventually([&] { return !alive(device); }));
  }
  EXPECT_TRUE(deviceList().empty());
}

}  // namespace

}  // namespace tolvane::test
