// One server hangs and another does not: the HAL's surface keeps its promises.
#include <gmock/gmock.h>

#include "hal/promised_times.h"
#include "hal/servers/engine_client.h"
#include "support/jack_server.h"
#include "support/pipewire_client.h"

namespace tolvane::test {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

/// A start waits for the list too, and the machine is busy.
constexpr auto kStartBound = 1400ms;

class HungServers : public testing::Test {
 protected:
  HungServers() {
    mixer_ = deviceNamed(engine_, "Mixer");
    system_ = deviceNamed(engine_, "system");
    virtual_ = deviceNamed(engine_, "Tolvane Virtual Device");
    EXPECT_TRUE(eventually([] { return deviceList().size() == 3; }));
  }
  ~HungServers() override {
    engine_.stop();
    jack_.resume();
    pipewire_.unhang();
  }

  /// Reads the list in one call, and expects it in time.
  static std::vector<AudioObjectID> listInTime() {
    const auto where = address(kAudioHardwarePropertyDevices);
    std::vector<AudioObjectID> ids(16);
    UInt32 size = 0;
    const auto read = [&] {
      size = static_cast<UInt32>(ids.size() * sizeof(AudioObjectID));
      EXPECT_EQ(AudioObjectGetPropertyData(kAudioObjectSystemObject, &where, 0, nullptr, &size, ids.data()),
                noErr);
    };
    expectWithin(kListBound, [&] { return timeOf(read); });
    ids.resize(size / sizeof(AudioObjectID));
    return ids;
  }

  /// Starts the device, hangs its server, and expects a stop in time.
  template <class Hang>
  void expectStopsWhenHung(AudioDeviceID device, const Hang& hang) {
    ASSERT_FALSE(engine_.start(device, {}));
    ASSERT_TRUE(runs(10s));
    hang();
    expectStopsInASecond(engine_);
  }

  void expectStartEndsInTime(AudioDeviceID device) {
    expectWithin(kStartBound, [&] { return timeOf([&] { EXPECT_TRUE(engine_.start(device, {})); }); });
    EXPECT_FALSE(engine_.isRunning());
  }

  /// Expects all devices in the list again, and that this one runs.
  void expectRecovers(AudioDeviceID device) {
    EXPECT_TRUE(eventually([] { return deviceList().size() == 3; }));
    EXPECT_TRUE(eventually([&] { return !engine_.start(device, {}); }));
    EXPECT_TRUE(runs(10s));
    engine_.stop();
  }

  PipeWireServer pipewire_{{{.name = "Mixer", .inputs = 2, .outputs = 2, .cardId = 900}}};
  JackServer jack_;
  CoreAudioEngine engine_{&countingIoProc};
  AudioDeviceID mixer_ = 0;
  AudioDeviceID system_ = 0;
  AudioDeviceID virtual_ = 0;
};

TEST_F(HungServers, PipeWiresDevicesAreLeftOutInTime) {
  pipewire_.hang();
  for (int ask = 0; ask < 5; ++ask) EXPECT_THAT(listInTime(), ElementsAre(system_, virtual_));
  pipewire_.unhang();
  EXPECT_TRUE(eventually([&] { return deviceList() == std::vector{mixer_, system_, virtual_}; }));
}

TEST_F(HungServers, JacksDevicesAreLeftOutInTime) {
  jack_.pause();
  std::this_thread::sleep_for(150ms);  // until the last answer is too old to be used
  for (int ask = 0; ask < 5; ++ask) EXPECT_THAT(listInTime(), ElementsAre(mixer_, virtual_));
  jack_.resume();
  EXPECT_TRUE(eventually([&] { return deviceList() == std::vector{mixer_, system_, virtual_}; }));
}

TEST_F(HungServers, BothAreLeftOutInTheSameTime) {
  pipewire_.hang();
  jack_.pause();
  std::this_thread::sleep_for(150ms);
  for (int ask = 0; ask < 5; ++ask) EXPECT_THAT(listInTime(), ElementsAre(virtual_));
  jack_.resume();
  pipewire_.unhang();
  EXPECT_TRUE(eventually([&] { return deviceList() == std::vector{mixer_, system_, virtual_}; }));
}

TEST_F(HungServers, ADeviceThatRunsOnPipeWireStopsInASecond) {
  expectStopsWhenHung(mixer_, [this] { pipewire_.hang(); });
  pipewire_.unhang();
  expectRecovers(mixer_);
}

TEST_F(HungServers, ADeviceThatRunsOnJackStopsInASecond) {
  expectStopsWhenHung(system_, [this] { jack_.pause(); });
  jack_.resume();
  expectRecovers(system_);
}

TEST_F(HungServers, AStartThatFindsPipeWireHungEndsInTime) {
  pipewire_.hang();
  expectStartEndsInTime(mixer_);
  pipewire_.unhang();
  expectRecovers(mixer_);
}

TEST_F(HungServers, AStartThatFindsJackHungEndsInTime) {
  jack_.pause();
  expectStartEndsInTime(system_);
  jack_.resume();
  expectRecovers(system_);
}

TEST_F(HungServers, TheOtherServersDeviceRunsOn) {
  ASSERT_FALSE(engine_.start(system_, {}));
  ASSERT_TRUE(runs(10s));
  pipewire_.hang();
  listInTime();
  EXPECT_TRUE(runs(10s));
  EXPECT_TRUE(isAlive(system_));
  expectStopsInASecond(engine_);
}

}  // namespace
}  // namespace tolvane::test
