// The device list for devices that report much, little or nonsense.
#include "ctl/devices/list.h"

#include <gtest/gtest.h>

#include "engine/core_audio_engine.h"
#include "support/scripted_hal.h"

namespace tolvane::ctl {
namespace {

constexpr std::uint32_t fourCharacters(const char (&text)[5]) {
  return static_cast<std::uint32_t>(static_cast<unsigned char>(text[0])) << 24U |
         static_cast<std::uint32_t>(static_cast<unsigned char>(text[1])) << 16U |
         static_cast<std::uint32_t>(static_cast<unsigned char>(text[2])) << 8U |
         static_cast<unsigned char>(text[3]);
}

TEST(DeviceList, NamesTheTransports) {
  EXPECT_EQ(transportName(kAudioDeviceTransportTypeVirtual), "virtual");
  EXPECT_EQ(transportName(kAudioDeviceTransportTypeJack), "jack");
  EXPECT_EQ(transportName(kAudioDeviceTransportTypePipeWire), "pipewire");
  EXPECT_EQ(transportName(kAudioDeviceTransportTypeAlsa), "alsa");
  EXPECT_EQ(transportName(kAudioDeviceTransportTypeAggregate), "aggregate");
  EXPECT_EQ(transportName(fourCharacters("usb ")), "usb");
  EXPECT_EQ(transportName(fourCharacters("bltn")), "built-in");
  EXPECT_EQ(transportName(fourCharacters("zzzz")), "zzzz");
  EXPECT_EQ(transportName(0), "unknown");
  EXPECT_EQ(transportName(0x1B5B306DU), "unknown");  // no control characters on the terminal
}

class DeviceListOf : public testing::Test {
 protected:
  DeviceListOf() {
    hal_.devices.push_back({.id = 40,
                            .name = "Größe \"X\"",
                            .inputStreams = {2, 16},
                            .outputStreams = {8},
                            .uid = "jack:größe\n",
                            .sampleRate = 44100.5,
                            .bufferFrames = 64,
                            .transport = kAudioDeviceTransportTypeJack});
    hal_.devices.push_back({.id = 41, .name = "Odd\033[31m", .inputStreams = {1}});
  }
  test::ScriptedHal hal_;
};

TEST_F(DeviceListOf, TwoAsATable) {
  for (const auto selector : {kAudioDevicePropertyNominalSampleRate, kAudioDevicePropertyBufferFrameSize}) {
    hal_.failProperty(test::HalCall::getPropertyData, 41, selector, kAudioObjectPropertyScopeGlobal,
                      kAudioHardwareUnknownPropertyError);
  }
  EXPECT_EQ(deviceTable(detailsOf(CoreAudioEngine().getAllDevices())),
            "id  name         inputs  outputs  driver   sample rate  buffer frames\n"
            "40  Größe \"X\"        18        8  jack         44100.5             64\n"
            "41  Odd\\x1b[31m       1        0  virtual            -              -\n");
}

TEST_F(DeviceListOf, TwoAsALongTable) {
  EXPECT_EQ(deviceTable(detailsOf(CoreAudioEngine().getAllDevices()), TableForm::longer),
            "id  name         inputs  outputs  driver   sample rate  buffer frames  uid\n"
            "40  Größe \"X\"        18        8  jack         44100.5             64  jack:größe\\n\n"
            "41  Odd\\x1b[31m       1        0  virtual        48000            512  -\n");
}

TEST_F(DeviceListOf, ACardNotInItsProAudioProfileAsALongTable) {
  const DeviceDetails card{{2, "Box\n", 2, 2}, "pipewire", 48000.0, 256, "pipewire:box", "pw-cli this"};
  const std::string table = deviceTable({card}, TableForm::longer);
  EXPECT_EQ(table.substr(table.find("\n\n")),
            "\n\nBox\\n: is not in its pro-audio profile, which has all channels, in order and untouched. To "
            "change the profile:\n  pw-cli this\n");
  EXPECT_EQ(deviceTable({card}).find("pro-audio"), std::string::npos);
}

TEST_F(DeviceListOf, ACardOfASoundServerAsALongTableAndAsJson) {
  const DeviceDetails card{{2, "Box", 2, 2}, "pipewire", 48000.0, 256, "pipewire:box", "", "alsa:Box\n"};
  const std::string table = deviceTable({card}, TableForm::longer);
  EXPECT_EQ(table.substr(table.find("\n\n")),
            "\n\nBox: can be used without the sound server. The server releases the card if you run:\n"
            "  alsa:Box\\n\n");
  EXPECT_EQ(deviceTable({card}).find("alsa:"), std::string::npos);
  EXPECT_NE(deviceJson({card}).find(R"("cardUid": "alsa:Box\n")"), std::string::npos);
}

TEST_F(DeviceListOf, TwoAsJson) {
  hal_.failProperty(test::HalCall::getPropertyData, 41, kAudioDevicePropertyNominalSampleRate,
                    kAudioObjectPropertyScopeGlobal, kAudioHardwareUnknownPropertyError);
  EXPECT_EQ(deviceJson(detailsOf(CoreAudioEngine().getAllDevices())), R"([
  {
    "id": 40,
    "uid": "jack:größe\n",
    "name": "Größe \"X\"",
    "inputChannels": 18,
    "outputChannels": 8,
    "driver": "jack",
    "sampleRate": 44100.5,
    "bufferFrames": 64,
    "cardUid": null
  },
  {
    "id": 41,
    "uid": null,
    "name": "Odd\u001b[31m",
    "inputChannels": 1,
    "outputChannels": 0,
    "driver": "virtual",
    "sampleRate": null,
    "bufferFrames": 512,
    "cardUid": null
  }
]
)");
}

TEST(DeviceListWithout, AnyDeviceIsTitlesOrAnEmptyArray) {
  const test::ScriptedHal hal;
  EXPECT_EQ(deviceTable(detailsOf(CoreAudioEngine().getAllDevices())),
            "id  name  inputs  outputs  driver  sample rate  buffer frames\n");
  EXPECT_EQ(deviceJson(detailsOf(CoreAudioEngine().getAllDevices())), "[]\n");
}

}  // namespace
}  // namespace tolvane::ctl
