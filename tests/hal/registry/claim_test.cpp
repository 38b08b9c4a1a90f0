// A sound card that a sound server uses: it is known by its uid, and listed once it is claimed.
#include <string>

#include "hal/registry/scripted_hal_test.h"

namespace tolvane::test {

namespace {

constexpr int kCard = 3;

hal::DeviceInfo serversDevice(std::vector<int> cards) {
  auto device = scriptedDevice("server:box", 2, 2);
  device.alsaCards = std::move(cards);
  return device;
}

hal::DeviceInfo heldCard() {
  auto card = scriptedDevice("alsa:box", 2, 2);
  card.alsaCards = {kCard};
  card.isHeld = true;
  return card;
}

OSStatus claim(const std::string& uid) {
  const auto where = address(kTolvanePropertyClaim);
  return AudioObjectSetPropertyData(kAudioObjectSystemObject, &where, 0, nullptr,
                                    static_cast<UInt32>(uid.size()), uid.data());
}

class Claim : public ScriptedHal {
 protected:
  void SetUp() override {
    ScriptedHal::SetUp();
    first_.setDevices({serversDevice({kCard})});
    second_.setDevices({heldCard()});
    list_ = deviceList();
  }

  std::vector<AudioObjectID> list_;
};

TEST_F(Claim, aHeldCardIsNotListedButKnown) {
  ASSERT_EQ(list_.size(), 1U);
  EXPECT_EQ(stringOf(list_[0], kAudioDevicePropertyDeviceUID), "server:box");
  EXPECT_EQ(stringOf(list_[0], kTolvaneDevicePropertyCardUID), "alsa:box");
}

TEST_F(Claim, aDeviceOfOtherOrOfSeveralCardsHasNoCardOfItsOwn) {
  for (const auto& cards : std::vector<std::vector<int>>{{}, {kCard + 1}, {kCard, kCard + 1}}) {
    first_.setDevices({serversDevice(cards)});
    EXPECT_EQ(stringOf(deviceList().at(0), kTolvaneDevicePropertyCardUID), "") << cards.size();
  }
  second_.setDevices({});
  first_.setDevices({serversDevice({kCard})});
  EXPECT_EQ(stringOf(deviceList().at(0), kTolvaneDevicePropertyCardUID), "");
}

TEST_F(Claim, ofACardWithBytesThatAreNoTextTakesItsUidAsItIsShown) {
  auto card = heldCard();
  card.uid = "alsa:\xFF";
  second_.setDevices({card});
  const AudioObjectID device = deviceList().at(0);
  const std::string shown = stringOf(device, kTolvaneDevicePropertyCardUID);
  EXPECT_EQ(shown, "alsa:\xEF\xBF\xBD");
  EXPECT_EQ(claim(shown), noErr);
  EXPECT_EQ(deviceList().size(), 2U);
}

TEST_F(Claim, makesADeviceOfIt) {
  Listening list(kAudioObjectSystemObject, kAudioHardwarePropertyDevices);
  first_.setDevices({});  // the server releases it
  EXPECT_EQ(claim("alsa:box"), noErr);
  EXPECT_TRUE(list.hears(1));
  const auto now = deviceList();
  ASSERT_EQ(now.size(), 1U);
  EXPECT_EQ(stringOf(now[0], kAudioDevicePropertyDeviceUID), "alsa:box");
  EXPECT_EQ(stringOf(now[0], kTolvaneDevicePropertyCardUID), "");
}

TEST_F(Claim, ofACardThatIsListedDoesNothing) {
  ASSERT_EQ(claim("alsa:box"), noErr);
  second_.setSettingStatus(kAudioDevicePermissionsError);
  second_.setDevices({scriptedDevice("alsa:box", 2, 2)});
  deviceList();
  EXPECT_EQ(claim("alsa:box"), noErr);
  EXPECT_EQ(claim("server:box"), noErr);
}

TEST_F(Claim, tellsWhyItFails) {
  EXPECT_EQ(claim("alsa:other"), OSStatus{kAudioHardwareBadDeviceError});
  EXPECT_EQ(claim(std::string("alsa:box\0", 9)), OSStatus{kAudioHardwareBadDeviceError});
  EXPECT_EQ(claim(""), OSStatus{kAudioHardwareBadPropertySizeError});
  for (const OSStatus status :
       {OSStatus{kAudioDevicePermissionsError}, OSStatus{kAudioHardwareUnsupportedOperationError},
        OSStatus{kAudioHardwareBadDeviceError}}) {
    second_.setSettingStatus(status);
    EXPECT_EQ(claim("alsa:box"), status);
  }
  EXPECT_EQ(deviceList(), list_);
}

TEST_F(Claim, doesNotWaitForADriverThatHangs) {
  second_.setting.close();
  EXPECT_EQ(claim("alsa:box"), OSStatus{kAudioHardwareNotReadyError});
}

TEST_F(Claim, cannotBeRead) {
  const auto where = address(kTolvanePropertyClaim);
  UInt32 size = 8;
  UInt64 value = 0;
  EXPECT_EQ(AudioObjectGetPropertyData(kAudioObjectSystemObject, &where, 0, nullptr, &size, &value),
            OSStatus{kAudioHardwareUnsupportedOperationError});
}

}  // namespace

}  // namespace tolvane::test
