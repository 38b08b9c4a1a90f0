// The labels of the meters: the channels' numbers, and their names where they have one.
#include "ctl/run/meter_readings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/scripted_hal.h"

namespace tolvane::ctl {
namespace {

using testing::ElementsAre;

class MeterLabels : public testing::Test {
 protected:
  MeterLabels() {
    hal_.devices.push_back({.id = 7, .name = "Box", .inputStreams = {3}, .outputStreams = {2}});
  }

  /// Of the routes from every input to every output.
  std::vector<std::string> labels() {
    const AudioDeviceInfo device{7, "Box", 3, 2};
    ChannelNames names;
    names.read(device);
    MeterBank bank(3, 2);
    MeterPicture picture;
    readMeters(bank, std::vector<PatchConnection>{{0, 0}, {1, 1}, {2, 0}, {3, 1}}, device, names, picture);
    std::vector<std::string> labels;
    for (const MeterReading& reading : picture.inputs) labels.push_back(reading.label);
    for (const MeterReading& reading : picture.outputs) labels.push_back(reading.label);
    return labels;
  }

  test::ScriptedHal hal_;
};

TEST_F(MeterLabels, AreNumbersWithoutNames) {
  EXPECT_THAT(labels(), ElementsAre("in 1", "in 2", "in 3", "out 1", "out 2"));
}

TEST_F(MeterLabels, HaveTheNamesBehindTheNumbers) {
  hal_.devices[0].inputs = {{"Kick"}, {}, {"Snare top"}};
  hal_.devices[0].outputs = {{}, {"Größe"}};
  EXPECT_THAT(labels(), ElementsAre("in 1 Kick", "in 2", "in 3 Snare top", "out 1", "out 2 Größe"));
}

TEST_F(MeterLabels, AreEscapedAndCut) {
  hal_.devices[0].inputs = {{"a\033[2J\n"}, {std::string(39, 'x') + "ää"}, {"\xC2\x9B"}};
  EXPECT_THAT(labels(), ElementsAre(R"(in 1 a\x1b[2J\n)", "in 2 " + std::string(39, 'x') + "…",
                                    R"(in 3 \u009b)", "out 1", "out 2"));
}

}  // namespace
}  // namespace tolvane::ctl
