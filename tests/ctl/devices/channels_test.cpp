// The channels of devices as a table and as JSON, and the names that other commands read.
#include "ctl/devices/channels.h"

#include <limits>

#include <gtest/gtest.h>

#include "engine/core_audio_engine.h"
#include "support/scripted_hal.h"

namespace tolvane::ctl {
namespace {

class DeviceChannelsOf : public testing::Test {
 protected:
  DeviceChannelsOf() {
    hal_.devices.push_back({.id = 40,
                            .name = "Desk",
                            .inputStreams = {1, 1},
                            .outputStreams = {2},
                            .uid = "pipewire:desk",
                            .inputs = {{"Kick", "desk.source", "capture_AUX0"}, {"", "desk.source", "x"}},
                            .outputs = {{"Größe"}}});
    hal_.devices.push_back({.id = 41, .name = "Box", .inputStreams = {1}});
  }
  static std::vector<DeviceChannels> channels() {
    return channelDetailsOf(CoreAudioEngine().getAllDevices());
  }

  test::ScriptedHal hal_;
};

TEST_F(DeviceChannelsOf, AllAsATable) {
  EXPECT_EQ(channelTable(channels()),
            "device  channel  name   node         port\n"
            "Desk    in 1     Kick   desk.source  capture_AUX0\n"
            "Desk    in 2     -      desk.source  x\n"
            "Desk    out 1    Größe  -            -\n"
            "Desk    out 2    -      -            -\n"
            "Box     in 1     -      -            -\n");
}

TEST_F(DeviceChannelsOf, OneAsJson) {
  hal_.devices[0].outputStreams = {1};
  hal_.devices.pop_back();
  EXPECT_EQ(channelJson(channels()), R"([
  {
    "id": 40,
    "uid": "pipewire:desk",
    "name": "Desk",
    "inputChannels": 2,
    "outputChannels": 1,
    "driver": "virtual",
    "sampleRate": 48000.0,
    "bufferFrames": 512,
    "cardUid": null,
    "inputs": [
      {
        "channel": 0,
        "name": "Kick",
        "node": "desk.source",
        "port": "capture_AUX0"
      },
      {
        "channel": 1,
        "name": null,
        "node": "desk.source",
        "port": "x"
      }
    ],
    "outputs": [
      {
        "channel": 0,
        "name": "Größe",
        "node": null,
        "port": null
      }
    ]
  }
]
)");
}

TEST_F(DeviceChannelsOf, HostileOnesAreEscapedAndCut) {
  hal_.devices[0].inputs = {{"a\033[2J\nb\xC2\x9B", "n\tn", "p\x7F"}, {std::string(3000, 'x')}};
  const std::string table = channelTable(channels());
  EXPECT_NE(table.find(R"(a\x1b[2J\nb\u009b)"), std::string::npos) << table;
  EXPECT_NE(table.find(R"(n\tn)"), std::string::npos);
  EXPECT_NE(table.find(R"(p\x7f)"), std::string::npos);
  EXPECT_NE(table.find(' ' + std::string(99, 'x') + "…"), std::string::npos);
  EXPECT_EQ(table.find(std::string(100, 'x')), std::string::npos);
  const std::string json = channelJson(channels());
  EXPECT_NE(json.find(R"("a\u001b[2J\nb\u009b")"), std::string::npos) << json;
  EXPECT_NE(json.find(std::string(3000, 'x')), std::string::npos);
}

TEST_F(DeviceChannelsOf, NamesAreReadOnceAndKeptWhileTheyAreAway) {
  const auto devices = CoreAudioEngine().getAllDevices();
  ChannelNames names;
  EXPECT_EQ(names.ofInput(0), "");
  names.read(devices[0]);
  EXPECT_EQ(names.ofInput(0), "Kick");
  EXPECT_EQ(names.ofInput(1), "");
  EXPECT_EQ(names.ofOutput(0), "Größe");
  for (const std::int64_t none :
       {std::int64_t{-1}, std::int64_t{2}, std::numeric_limits<std::int64_t>::max()})
    EXPECT_EQ(names.ofInput(none), "");
  hal_.devices[0].inputs = {{}, {"Snare"}};
  EXPECT_EQ(names.ofInput(1), "");
  names.read(devices[0]);
  EXPECT_EQ(names.ofInput(0), "Kick");
  EXPECT_EQ(names.ofInput(1), "Snare");
}

}  // namespace
}  // namespace tolvane::ctl
