// If the device of a started callback is lost, the callback runs again once the same device is back.
#include "hal/registry/scripted_hal_test.h"

namespace tolvane::test {

namespace {

using namespace std::chrono_literals;

class ComingAndGoing : public ScriptedHal {
 protected:
  void lose() {
    ASSERT_TRUE(first_.setAlive(false));
    first_.setDevices({});
    first_.notify();
  }
  void bringBack(std::size_t inputs = 2, std::size_t outputs = 2) {
    first_.setDevices({scriptedDevice("one", inputs, outputs)});
    first_.notify();
  }
  bool startedAgain(int starts) {
    return eventually([&] { return first_.starts() == starts && first_.liveSessions() == 1; });
  }
};

TEST_F(ComingAndGoing, theSameCallbackRunsAgain) {
  const AudioObjectID device = listOne();
  std::atomic<int> cycles{0};
  RegisteredProc proc(device, [&](auto&, auto&) { ++cycles; });
  ASSERT_EQ(proc.start(), noErr);
  Listening life(device, kAudioDevicePropertyDeviceIsAlive);
  for (int round = 1; round <= 20; ++round) {
    lose();
    ASSERT_TRUE(life.hears(2 * round - 1));
    EXPECT_FALSE(alive(device));
    EXPECT_EQ(proc.start(), noErr);  // it is still started
    bringBack();
    ASSERT_TRUE(startedAgain(round + 1));
    ASSERT_TRUE(life.hears(2 * round));
    EXPECT_TRUE(alive(device));
    ASSERT_TRUE(first_.cycle(256));
    EXPECT_EQ(cycles.load(), round);
  }
  EXPECT_EQ(life.count(), 40);
  ASSERT_EQ(proc.stop(), noErr);
  EXPECT_EQ(first_.liveSessions(), 0);
}

TEST_F(ComingAndGoing, withoutNotificationsTheDriverIsAsked) {
  useScripts(false);
  const AudioObjectID device = listOne();
  RegisteredProc proc(device, [](auto&, auto&) {});
  ASSERT_EQ(proc.start(), noErr);
  const int quiet = first_.listings();
  std::this_thread::sleep_for(700ms);
  EXPECT_EQ(first_.listings(), quiet);  // no device is lost, so no driver is asked
  lose();
  ASSERT_TRUE(eventually([&] { return first_.listings() > quiet + 1; }));
  EXPECT_FALSE(alive(device));
  bringBack();
  ASSERT_TRUE(startedAgain(2));
  EXPECT_TRUE(eventually([&] { return alive(device); }));
}

class ComingAndGoingOfASlowDriver : public ComingAndGoing,
                                    public testing::WithParamInterface<std::chrono::milliseconds> {};

TEST_P(ComingAndGoingOfASlowDriver, theCallbackRunsAgain) {
  const AudioObjectID device = listOne();
  RegisteredProc proc(device, [](auto&, auto&) {});
  ASSERT_EQ(proc.start(), noErr);
  lose();
  ASSERT_TRUE(eventually([&] { return !alive(device); }));
  first_.setListingTime(GetParam());
  bringBack();
  EXPECT_TRUE(startedAgain(2));
  EXPECT_TRUE(eventually([&] { return alive(device); }));
}

// A list waits for 150 ms, and a lost device is asked for every 500 ms. So the list has the second device for
// less time than a session may take to resume.
INSTANTIATE_TEST_SUITE_P(WhoseAnswersAreAllLate, ComingAndGoingOfASlowDriver, testing::Values(250ms, 480ms));

TEST_F(ComingAndGoing, anotherDeviceNeverTakesItsPlace) {
  const AudioObjectID device = listOne();
  RegisteredProc proc(device, [](auto&, auto&) {});
  ASSERT_EQ(proc.start(), noErr);
  ASSERT_TRUE(first_.setAlive(false));
  auto twin = scriptedDevice("another", 2, 2);
  twin.name = "Device one";
  first_.setDevices({twin});
  first_.notify();
  const int asked = first_.listings();
  ASSERT_TRUE(eventually([&] { return first_.listings() > asked + 3; }));
  EXPECT_EQ(first_.starts(), 1);
  EXPECT_FALSE(alive(device));
}

TEST_F(ComingAndGoing, aSessionThatResumesByItselfGoesOn) {
  const AudioObjectID device = listOne();
  RegisteredProc proc(device, [](auto&, auto&) {});
  ASSERT_EQ(proc.start(), noErr);
  Listening life(device, kAudioDevicePropertyDeviceIsAlive);
  lose();
  ASSERT_TRUE(life.hears(1));
  ASSERT_TRUE(first_.setAlive(true));
  ASSERT_TRUE(life.hears(2));
  EXPECT_TRUE(alive(device));
  bringBack();
  EXPECT_EQ(first_.starts(), 1);
}

TEST_F(ComingAndGoing, aRestartThatFailsIsTriedAgain) {
  const AudioObjectID device = listOne();
  RegisteredProc proc(device, [](auto&, auto&) {});
  ASSERT_EQ(proc.start(), noErr);
  first_.setStartStatus(kAudioDevicePermissionsError);
  lose();
  bringBack();
  ASSERT_TRUE(eventually([&] { return first_.liveSessions() == 0; }));
  EXPECT_FALSE(alive(device));
  first_.setStartStatus(noErr);
  EXPECT_TRUE(startedAgain(2));
}

TEST_F(ComingAndGoing, stopWhileLostIsForGood) {
  const AudioObjectID device = listOne();
  RegisteredProc proc(device, [](auto&, auto&) {});
  ASSERT_EQ(proc.start(), noErr);
  lose();
  ASSERT_TRUE(eventually([&] { return !alive(device); }));
  ASSERT_EQ(proc.stop(), noErr);
  bringBack();
  ASSERT_TRUE(eventually([&] { return alive(device); }));
  std::this_thread::sleep_for(50ms);
  EXPECT_EQ(first_.starts(), 1);
  EXPECT_EQ(first_.liveSessions(), 0);
  EXPECT_EQ(proc.start(), noErr);
  EXPECT_EQ(first_.starts(), 2);
}

TEST_F(ComingAndGoing, theFormerSessionsLastCyclesAreSilence) {
  const AudioObjectID device = listOne();
  std::atomic<int> cycles{0};
  RegisteredProc proc(device, [&](auto&, auto&) { ++cycles; });
  ASSERT_EQ(proc.start(), noErr);
  first_.ending.close();
  lose();
  bringBack();
  ASSERT_TRUE(eventually([&] { return first_.starts() == 2; }));
  first_.cycleOf(0, 256);  // the former session hangs at its end and still runs cycles
  EXPECT_EQ(cycles.load(), 0);
  first_.cycleOf(1, 256);
  EXPECT_EQ(cycles.load(), 1);
}

TEST_F(ComingAndGoing, channelsKeepTheirNumbers) {
  const AudioObjectID device = listOne(4, 3);
  struct Seen {
    std::vector<AudioBuffer> input;
    std::vector<AudioBuffer> output;
    std::vector<float> first;
  } seen;
  RegisteredProc proc(device, [&](const AudioBufferList& input, AudioBufferList& output) {
    seen.input.assign(input.mBuffers, input.mBuffers + input.mNumberBuffers);
    seen.output.assign(output.mBuffers, output.mBuffers + output.mNumberBuffers);
    seen.first.clear();
    for (const AudioBuffer& buffer : seen.input) {
      seen.first.push_back(buffer.mData == nullptr ? 0.0F : *static_cast<const float*>(buffer.mData));
    }
  });
  ASSERT_EQ(proc.start(), noErr);
  lose();
  bringBack(2, 5);  // two inputs fewer, two outputs more
  ASSERT_TRUE(startedAgain(2));
  ASSERT_TRUE(first_.cycle(100));
  EXPECT_EQ(seen.first, (std::vector<float>{1.0F, 2.0F, 0.0F, 0.0F}));
  ASSERT_EQ(seen.input.size(), 4U);
  ASSERT_EQ(seen.output.size(), 3U);
  for (const auto* side : {&seen.input, &seen.output}) {
    for (const AudioBuffer& buffer : *side) {
      EXPECT_EQ(buffer.mNumberChannels, 1U);
      EXPECT_EQ(buffer.mDataByteSize, 400U);
    }
  }
  EXPECT_EQ(streamsOf(device, kAudioObjectPropertyScopeInput).size(), 2U);
  lose();
  bringBack(4, 3);
  ASSERT_TRUE(startedAgain(3));
  ASSERT_TRUE(first_.cycle(100));
  EXPECT_EQ(seen.first, (std::vector<float>{1.0F, 2.0F, 3.0F, 4.0F}));
}

TEST_F(ComingAndGoing, theLossOfOneDeviceLeavesTheOthersAlone) {
  second_.setDevices({scriptedDevice("two", 1, 1)});
  first_.setDevices({scriptedDevice("one", 2, 2)});
  const auto both = deviceList();
  ASSERT_EQ(both.size(), 2U);
  std::atomic<int> cycles{0};
  RegisteredProc one(both[0], [](auto&, auto&) {});
  RegisteredProc two(both[1], [&](auto&, auto&) { ++cycles; });
  ASSERT_EQ(one.start(), noErr);
  ASSERT_EQ(two.start(), noErr);
  first_.listing.close();  // its server hangs
  lose();
  ASSERT_TRUE(eventually([&] { return !alive(both[0]); }));
  EXPECT_TRUE(alive(both[1]));
  EXPECT_TRUE(second_.cycle(64));
  EXPECT_EQ(cycles.load(), 1);
  EXPECT_EQ(second_.starts(), 1);
  first_.setDevices({scriptedDevice("one", 2, 2)});
  first_.listing.open();
  EXPECT_TRUE(startedAgain(2));
}

}  // namespace

}  // namespace tolvane::test
