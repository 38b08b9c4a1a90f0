// The names of a device's channels as properties of its elements.
#include <optional>
#include <string>

#include "hal/registry/scripted_hal_test.h"

namespace tolvane::test {

namespace {

constexpr auto kInput = kAudioObjectPropertyScopeInput;
constexpr auto kOutput = kAudioObjectPropertyScopeOutput;

AudioObjectPropertyAddress channelProperty(AudioObjectPropertySelector selector,
                                           AudioObjectPropertyScope scope, UInt32 element) {
  return {selector, scope, element};
}

/// None if the property is unknown. Expects the size and the data to agree.
std::optional<std::string> channelText(AudioObjectID device, const AudioObjectPropertyAddress& where) {
  CFStringRef string = nullptr;
  UInt32 size = sizeof string;
  const OSStatus status = AudioObjectGetPropertyData(device, &where, 0, nullptr, &size, &string);
  UInt32 wanted = 0;
  EXPECT_EQ(AudioObjectGetPropertyDataSize(device, &where, 0, nullptr, &wanted), status);
  if (status == kAudioHardwareUnknownPropertyError) return std::nullopt;
  EXPECT_EQ(status, noErr);
  EXPECT_EQ(wanted, sizeof string);
  std::string text(static_cast<std::size_t>(CFStringGetLength(string)) * 3 + 1, '\0');
  EXPECT_NE(CFStringGetCString(string, text.data(), static_cast<CFIndex>(text.size()), kCFStringEncodingUTF8),
            0);
  CFRelease(string);
  return text.substr(0, text.find('\0'));
}

class ChannelNames : public ScriptedHal {
 protected:
  ChannelNames() {
    info_ = scriptedDevice("one", 3, 2);
    info_.inputs = {{"Kick", "desk", "out_1"}, {"", "desk", "out_2"}};
    info_.outputs = {{"Left", "", ""}, {"Right\xFF\n", "n\xC3", "p\x80"}};
  }
  AudioObjectID list() {
    first_.setDevices({info_});
    first_.notify();
    return deviceList().at(0);
  }
  [[nodiscard]] static std::optional<std::string> name(AudioObjectID device, AudioObjectPropertyScope scope,
                                                       UInt32 element) {
    return channelText(device, channelProperty(kAudioObjectPropertyElementName, scope, element));
  }

  hal::DeviceInfo info_;
};

TEST_F(ChannelNames, areReadByScopeAndByElementFromOne) {
  const AudioObjectID device = list();
  EXPECT_EQ(name(device, kInput, 1), "Kick");
  EXPECT_EQ(name(device, kOutput, 1), "Left");
  EXPECT_EQ(channelText(device, channelProperty(kTolvaneDevicePropertyChannelNode, kInput, 2)), "desk");
  EXPECT_EQ(channelText(device, channelProperty(kTolvaneDevicePropertyChannelPort, kInput, 2)), "out_2");
}

TEST_F(ChannelNames, areUnknownWhereThereIsNone) {
  const AudioObjectID device = list();
  EXPECT_EQ(name(device, kInput, 2), std::nullopt);  // a channel without a name
  EXPECT_EQ(name(device, kInput, 3), std::nullopt);  // nothing is known of it
  EXPECT_EQ(name(device, kInput, 4), std::nullopt);  // no such channel
  EXPECT_EQ(name(device, kInput, 0), std::nullopt);
  EXPECT_EQ(name(device, kInput, 0xFFFFFFFF), std::nullopt);
  EXPECT_EQ(name(device, kAudioObjectPropertyScopeGlobal, 1), std::nullopt);
  EXPECT_EQ(channelText(device, channelProperty(kTolvaneDevicePropertyChannelNode, kOutput, 1)),
            std::nullopt);
}

TEST_F(ChannelNames, leaveTheDevicesOtherPropertiesToTheDeviceItself) {
  const AudioObjectID device = list();
  EXPECT_EQ(
      channelText(device, channelProperty(kAudioObjectPropertyName, kAudioObjectPropertyScopeGlobal, 1)),
      std::nullopt);
  EXPECT_EQ(stringOf(device, kAudioObjectPropertyName), "Device one");
}

TEST_F(ChannelNames, areValidTextWhateverTheDriverReports) {
  const AudioObjectID device = list();
  EXPECT_EQ(name(device, kOutput, 2), "Right\uFFFD\n");
  EXPECT_EQ(channelText(device, channelProperty(kTolvaneDevicePropertyChannelNode, kOutput, 2)), "n\uFFFD");
  EXPECT_EQ(channelText(device, channelProperty(kTolvaneDevicePropertyChannelPort, kOutput, 2)), "p\uFFFD");
  info_.inputs[0].name = std::string(100000, 'x');
  EXPECT_EQ(name(list(), kInput, 1), info_.inputs[0].name);
}

TEST_F(ChannelNames, cannotBeSetAndNeedRoom) {
  const AudioObjectID device = list();
  const auto where = channelProperty(kAudioObjectPropertyElementName, kInput, 1);
  char text[8] = "";
  UInt32 size = 4;
  EXPECT_EQ(AudioObjectGetPropertyData(device, &where, 0, nullptr, &size, text),
            kAudioHardwareBadPropertySizeError);
  EXPECT_EQ(AudioObjectSetPropertyData(device, &where, 0, nullptr, sizeof text, text),
            kAudioHardwareUnsupportedOperationError);
}

TEST_F(ChannelNames, listenersHearOfTheirChannelAlone) {
  const AudioObjectID device = list();
  Heard kick;
  Heard right;
  const auto kickAt = channelProperty(kAudioObjectPropertyElementName, kInput, 1);
  const auto rightAt = channelProperty(kAudioObjectPropertyElementName, kOutput, 2);
  ASSERT_EQ(AudioObjectAddPropertyListener(device, &kickAt, hear, &kick), noErr);
  ASSERT_EQ(AudioObjectAddPropertyListener(device, &rightAt, hear, &right), noErr);
  info_.outputs[1].name = "Off";
  list();
  EXPECT_TRUE(eventually([&] { return right.count.load() == 1; }));
  info_.outputs.pop_back();  // the name goes
  list();
  EXPECT_TRUE(eventually([&] { return right.count.load() == 2; }));
  EXPECT_EQ(kick.count.load(), 0);
  EXPECT_EQ(AudioObjectRemovePropertyListener(device, &kickAt, hear, &kick), noErr);
  info_.outputs.push_back({"Back", "", ""});
  list();
  EXPECT_TRUE(eventually([&] { return right.count.load() == 3; }));
  EXPECT_EQ(AudioObjectRemovePropertyListener(device, &rightAt, hear, &right), noErr);
}

}  // namespace

}  // namespace tolvane::test
