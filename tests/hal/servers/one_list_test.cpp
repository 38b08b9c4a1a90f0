// PipeWire and JACK at the same time: one list, with each device in it once.
#include <gmock/gmock.h>

#include "hal/servers/engine_client.h"
#include "support/jack_server.h"
#include "support/jack_test_client.h"
#include "support/pipewire_client.h"

namespace tolvane::test {
namespace {

using testing::ElementsAre;

TEST(OneListOfTwoServers, HasEveryCardOnceInTheDriversOrder) {
  const PipeWireServer pipewire({{.name = "Mixer", .inputs = 4, .outputs = 4, .cardId = 900},
                                 {.name = "Box", .inputs = 2, .outputs = 2, .cardId = 901}});
  JackServer jack;
  JackTestClient card = JackTestClient::card("card", 3, 1);
  card.activate();
  const CoreAudioEngine engine;
  deviceNamed(engine, "Box");
  deviceNamed(engine, "card");
  std::vector<AudioDeviceInfo> list;
  // From two cards PipeWire's driver also makes an aggregate.
  EXPECT_TRUE(eventually([&] { return (list = engine.getAllDevices()).size() == 6; }));
  EXPECT_THAT(namesOf(list),
              ElementsAre("Mixer", "Box", "All Interfaces", "system", "card", "Tolvane Virtual Device"));
  for (const AudioDeviceInfo& info : list) {
    const auto transport = valueOf<UInt32>(info.id, kAudioDevicePropertyTransportType);
    const bool isPipeWires = info.name == "Mixer" || info.name == "Box";
    const bool isJacks = info.name == "system" || info.name == "card";
    EXPECT_EQ(transport == kAudioDeviceTransportTypePipeWire, isPipeWires) << info.name;
    EXPECT_EQ(transport == kAudioDeviceTransportTypeJack, isJacks) << info.name;
  }
}

TEST(OneListOfTwoServers, FollowsBothByItself) {
  const PipeWireServer pipewire({{.name = "Mixer", .inputs = 4, .outputs = 4, .cardId = 900}});
  JackServer jack;
  const CoreAudioEngine engine;
  deviceNamed(engine, "Mixer");
  deviceNamed(engine, "system");
  std::atomic<int> told{0};
  const AudioObjectPropertyAddress list = address(kAudioHardwarePropertyDevices);
  const auto hear = [](AudioObjectID, UInt32, const AudioObjectPropertyAddress*, void* counter) -> OSStatus {
    ++*static_cast<std::atomic<int>*>(counter);
    return noErr;
  };
  ASSERT_EQ(AudioObjectAddPropertyListener(kAudioObjectSystemObject, &list, hear, &told), noErr);
  PipeWireClient hardware;
  hardware.addCard({.name = "usb", .inputs = 2});
  EXPECT_TRUE(eventually([&] { return told >= 1; }));
  EXPECT_THAT(namesOf(engine.getAllDevices()), testing::Contains("usb"));
  const int before = told;
  {
    JackTestClient card = JackTestClient::card("card", 3, 1);
    card.activate();
    EXPECT_TRUE(eventually([&] { return told > before; }));
    EXPECT_THAT(namesOf(engine.getAllDevices()), testing::Contains("card"));
  }
  EXPECT_TRUE(eventually([&] { return told > before + 1; }));
  EXPECT_THAT(namesOf(engine.getAllDevices()),
              ElementsAre("Mixer", "usb", "system", "Tolvane Virtual Device"));
  EXPECT_EQ(AudioObjectRemovePropertyListener(kAudioObjectSystemObject, &list, hear, &told), noErr);
}

}  // namespace
}  // namespace tolvane::test
