#include "ctl/device_choice.h"

#include <gtest/gtest.h>

namespace tolvane::ctl {
namespace {

const std::vector<AudioDeviceInfo> kDevices = {
    {10, "Built-in Audio", 2, 2},
    {11, "Stage Box", 16, 16},
    {12, "Stage Box Monitor", 0, 8},
    {13, "12", 1, 1},
    {14, "Twin", 2, 2},
    {15, "Twin", 2, 2},
};

AudioDeviceID chosen(const std::string& wanted) {
  const DeviceChoice choice = chooseDevice(kDevices, wanted);
  return choice ? choice.value().id : 0;
}

TEST(DeviceChoice, FirstWhenNothingIsWanted) {
  EXPECT_EQ(chosen(""), 10U);
}

TEST(DeviceChoice, ExactNameBeforeAPartOfAnother) {
  EXPECT_EQ(chosen("Stage Box"), 11U);
}

TEST(DeviceChoice, ExactNameBeforeANumber) {
  EXPECT_EQ(chosen("12"), 13U);
}

TEST(DeviceChoice, NumberIsAnIdentifier) {
  EXPECT_EQ(chosen("11"), 11U);
  EXPECT_EQ(chosen("15"), 15U);
}

TEST(DeviceChoice, NumberThatIsNoIdentifierIsNoPartOfAName) {
  EXPECT_EQ(chosen("1"), 0U);
  EXPECT_EQ(chosen("4294967307"), 0U);  // 11, if it were cut to 32 bits
}

TEST(DeviceChoice, PartOfANameWhateverTheCapitals) {
  EXPECT_EQ(chosen("BUILT"), 10U);
  EXPECT_EQ(chosen("monitor"), 12U);
}

TEST(DeviceChoice, RefusesAPartOfSeveralNames) {
  const DeviceChoice choice = chooseDevice(kDevices, "stage");
  ASSERT_FALSE(choice);
  EXPECT_EQ(choice.error().status, ExitStatus::noSuchDevice);
  EXPECT_EQ(
      choice.error().text,
      "several devices are called \"stage\", give an identifier; the devices are:\n  10  Built-in Audio\n"
      "  11  Stage Box\n  12  Stage Box Monitor\n  13  12\n  14  Twin\n  15  Twin");
}

TEST(DeviceChoice, RefusesANameThatSeveralHave) {
  EXPECT_EQ(chosen("Twin"), 0U);
}

TEST(DeviceChoice, RefusesWithoutAnyDevice) {
  const DeviceChoice choice = chooseDevice({}, "");
  ASSERT_FALSE(choice);
  EXPECT_EQ(choice.error().status, ExitStatus::noSuchDevice);
  EXPECT_EQ(choice.error().text, "there is no audio device");
}

}  // namespace
}  // namespace tolvane::ctl
