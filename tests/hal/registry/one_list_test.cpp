// No card is listed twice: a later driver does not list again what an earlier one lists.
#include "hal/registry/scripted_hal_test.h"

namespace tolvane::test {

namespace {

using Uids = std::vector<std::string>;

hal::DeviceInfo cardDevice(const std::string& uid, std::vector<int> cards) {
  hal::DeviceInfo device = scriptedDevice(uid, 2, 2);
  device.alsaCards = std::move(cards);
  return device;
}

class OneList : public ScriptedHal {
 protected:
  static Uids uids() {
    Uids uids;
    for (const AudioObjectID id : deviceList()) uids.push_back(stringOf(id, kAudioDevicePropertyDeviceUID));
    return uids;
  }
};

TEST_F(OneList, ACardIsTheEarlierDrivers) {
  first_.setDevices({cardDevice("server:usb", {1})});
  second_.setDevices(
      {cardDevice("raw:onboard", {0}), cardDevice("raw:usb", {1}), cardDevice("raw:hdmi", {2})});
  EXPECT_EQ(uids(), (Uids{"server:usb", "raw:onboard", "raw:hdmi"}));
}

TEST_F(OneList, ADeviceOfSeveralCardsIsLeftOutWhenAllAreListed) {
  first_.setDevices({cardDevice("server:usb", {1}), cardDevice("server:onboard", {0})});
  second_.setDevices({cardDevice("raw:both", {0, 1}), cardDevice("raw:more", {1, 2})});
  EXPECT_EQ(uids(), (Uids{"server:usb", "server:onboard", "raw:more"}));
}

TEST_F(OneList, ADriverMayHaveSeveralDevicesOnOneCard) {
  first_.setDevices({cardDevice("server:usb-a", {1}), cardDevice("server:usb-b", {1})});
  EXPECT_EQ(uids(), (Uids{"server:usb-a", "server:usb-b"}));
}

TEST_F(OneList, DevicesOfUnknownCardsAreAllListed) {
  first_.setDevices({cardDevice("server:null", {}), cardDevice("server:usb", {1})});
  second_.setDevices({cardDevice("raw:null", {})});
  EXPECT_EQ(uids(), (Uids{"server:null", "server:usb", "raw:null"}));
}

TEST_F(OneList, ACardComesBackToTheLaterDriverWhenTheEarlierOneLosesIt) {
  first_.setDevices({cardDevice("server:usb", {1})});
  second_.setDevices({cardDevice("raw:usb", {1})});
  EXPECT_EQ(uids(), Uids{"server:usb"});
  first_.setDevices({});
  EXPECT_EQ(uids(), Uids{"raw:usb"});
  first_.setDevices({cardDevice("server:usb", {1})});
  EXPECT_EQ(uids(), Uids{"server:usb"});
}

TEST_F(OneList, AChangeOfOneDriverAloneMovesACard) {
  second_.setDevices({cardDevice("raw:usb", {1})});
  const AudioObjectID raw = deviceList().at(0);
  Listening list(kAudioObjectSystemObject, kAudioHardwarePropertyDevices);
  Listening life(raw, kAudioDevicePropertyDeviceIsAlive);
  const int asked = second_.listings();
  first_.setDevices({cardDevice("server:usb", {1})});
  first_.notify();
  EXPECT_TRUE(list.hears(1));
  EXPECT_TRUE(life.hears(1));
  EXPECT_FALSE(alive(raw));
  first_.setDevices({});
  first_.notify();
  EXPECT_TRUE(list.hears(2));
  EXPECT_TRUE(life.hears(2));
  EXPECT_TRUE(alive(raw));
  EXPECT_EQ(second_.listings(), asked);  // its last answer still holds
  EXPECT_EQ(deviceList(), std::vector<AudioObjectID>{raw});
}

TEST_F(OneList, ACardOfADriverThatHangsIsTheLaterOnesMeanwhile) {
  first_.setDevices({cardDevice("server:usb", {1})});
  second_.setDevices({cardDevice("raw:usb", {1})});
  EXPECT_EQ(uids(), Uids{"server:usb"});
  first_.listing.close();
  EXPECT_EQ(uids(), Uids{"raw:usb"});
  first_.listing.open();
  EXPECT_TRUE(eventually([] { return uids() == Uids{"server:usb"}; }));
}

TEST_F(OneList, OfTwoDriversForOneServerTheFirstAloneIsUsed) {
  first_.setServer("pipewire");
  second_.setServer("pipewire");
  useScripts(true);
  first_.setDevices({scriptedDevice("native:a", 2, 2)});
  second_.setDevices({scriptedDevice("compatible:a", 2, 2), scriptedDevice("compatible:b", 2, 2)});
  EXPECT_EQ(uids(), Uids{"native:a"});
  first_.setDevices({});  // it answers, but has no device
  EXPECT_EQ(uids(), Uids{});
  EXPECT_EQ(second_.listings(), 0);
}

TEST_F(OneList, ADriverForAServerOfItsOwnIsUsed) {
  first_.setServer("pipewire");
  useScripts(true);
  first_.setDevices({scriptedDevice("one", 2, 2)});
  second_.setDevices({scriptedDevice("two", 2, 2)});
  EXPECT_EQ(uids(), (Uids{"one", "two"}));
}

TEST_F(OneList, DriversWithoutAServerAreAllListed) {
  first_.setDevices({scriptedDevice("a", 2, 2)});
  second_.setDevices({scriptedDevice("b", 2, 2)});
  EXPECT_EQ(uids(), (Uids{"a", "b"}));
}

}  // namespace

}  // namespace tolvane::test
